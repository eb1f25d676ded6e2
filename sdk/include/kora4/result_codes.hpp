// SPDX-License-Identifier: MIT
// The results that a client can see, in words: the API's own codes, and those of the platform
// that come up around it (creating the object, proxies, apartments, registration). Standard
// C++17 without a platform header: usable alone.
#ifndef KORA4_RESULT_CODES_HPP
#define KORA4_RESULT_CODES_HPP

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
typedef long HRESULT;  // the platform's own definition, repeated
#else
typedef std::int32_t HRESULT;
#endif

#include "kora4api_codes.h"

namespace kora4 {
inline namespace v1 {

// One result code with what a person needs to know about it.
struct ResultCode {
    std::uint32_t code;   // the HRESULT, without a sign
    const char* name;     // of the constant in the headers
    const char* meaning;  // what it says, without a full stop
    const char* why;      // how it comes about, in sentences
    const char* next;     // what to do, in sentences; empty when there is nothing to do
};

// The code as documents and tables have it, without a sign.
constexpr std::uint32_t CodeOf(HRESULT hr) noexcept {
    return static_cast<std::uint32_t>(hr);
}

// The facility of a Win32 error number that was made a result.
constexpr std::uint32_t cWin32Results = 0x80070000;

namespace detail {

// What helps against several of them.
inline constexpr char cRegisterInPlace[] =
    "See 'kora4ctl register --check', then register the library where it is.";
inline constexpr char cInstallAgain[] =
    "Install the library again and run 'kora4ctl register'.";
inline constexpr char cCreateAgain[] = "Release the proxy and create the object again.";
inline constexpr char cCreateAndRead[] = "Create the object again and read the settings.";

}  // namespace detail

// What the methods of the interface return.
inline constexpr ResultCode cApiResults[] = {
    {0x00000000, "S_OK", "done", "The call did what it says.", ""},
    {0x00000001, "S_FALSE",
     "what was asked for is absent: no levels published, no such profile to delete",
     "Reading the levels: the engine has published none. Deleting a custom profile: there is "
     "none of that number. In the store: the value does not exist.",
     "Start the engine or kora4sim to have levels; otherwise nothing needs to be done."},
    {CodeOf(KORA4_S_DEMO_MODE_ACTIVE), "KORA4_S_DEMO_MODE_ACTIVE",
     "nothing changed: a demo profile is active that must be left first; or, for "
     "RevertFromDemoMode, this object entered no demo",
     "A client entered the demo mode, and only that client leaves it with "
     "RevertFromDemoMode. A client that ended in its demo leaves the demo profile active.",
     "Leave the demo in the client that entered it, or run 'kora4ctl demo force-leave'."},
    {CodeOf(KORA4_S_NOT_IN_DEMO_PROFILE), "KORA4_S_NOT_IN_DEMO_PROFILE",
     "nothing changed: this object entered a demo, but no demo profile is active any more",
     "Somebody else ended the demo meanwhile, for example with ForceRevertFromDemoMode.",
     "Nothing: an ordinary profile is active already."},
    {CodeOf(KORA4_S_NO_SUCH_CUSTOM_PROFILE), "KORA4_S_NO_SUCH_CUSTOM_PROFILE",
     "nothing changed: the custom profile does not exist",
     "A custom profile, P1 to P6, exists once it has been created and until it is deleted; "
     "its name can be read then.",
     "See which there are with 'kora4ctl profile table', or create it with 'kora4ctl profile "
     "create'."},
    {CodeOf(KORA4_S_NOT_A_PRESET_PROFILE), "KORA4_S_NOT_A_PRESET_PROFILE",
     "nothing changed: the active profile is not a preset profile",
     "Only Movie, Music and Games have factory values to go back to; custom and demo profiles "
     "have none.",
     "Make a preset profile the active one first: 'kora4ctl profile use music'."},
    {0x80004003, "E_POINTER", "creating the object with a null out pointer",
     "The class factory was given no place for the interface pointer.",
     "Pass the address of an interface pointer."},
    {0x80004005, "E_FAIL",
     "the store failed; the profile exists already, does not exist, or is active; a key to "
     "watch is missing",
     "Creating a custom profile that exists, renaming one that does not, deleting the active "
     "one; a registry key of the store that was deleted, or that this user may not open; "
     "Initialize when the library was never registered or is already running on this thread.",
     "Run 'kora4ctl doctor', which looks at the keys and their access lists. For a profile, "
     "see 'kora4ctl profile table'."},
    {0x8007000E, "E_OUTOFMEMORY", "no memory",
     "The process could not get the memory for an object or a text.",
     "Close what takes the memory, or restart the program."},
    {0x80070057, "E_INVALIDARG", "a null pointer, or a number or value outside its range",
     "The argument was refused before anything was read or written.",
     "See what is allowed with 'kora4ctl describe NAME'. The trace names the argument: "
     "'kora4ctl trace on messages'."},
    {CodeOf(APOERR_NOT_INITIALIZED), "APOERR_NOT_INITIALIZED",
     "Initialize has not succeeded yet",
     "Every method but Initialize and GetVeltoKORA4Version needs an initialised object.",
     "Call Initialize and look at its result; when it fails, run 'kora4ctl doctor'."},
};

// What the class object, COM, the proxies and the registry return.
inline constexpr ResultCode cPlatformResults[] = {
    {0x80004001, "E_NOTIMPL", "not implemented",
     "The object has no such operation; the factory of a callback gate, for example, creates "
     "nothing.",
     "Use another method: this one will not work later either."},
    {0x80004002, "E_NOINTERFACE", "the object has no such interface",
     "A wrong interface identifier, or an interface pointer was to be marshalled in an "
     "apartment in which the proxies are not registered.",
     "Call Kora4RegisterProxies in each apartment that takes part, or create the object in "
     "the apartment that uses it."},
    {0x80004004, "E_ABORT", "the operation was broken off",
     "Somebody cancelled the call while it was running.", "Repeat the call."},
    {0x8000FFFF, "E_UNEXPECTED", "a state that should not occur",
     "COM or the process is going down, or its memory was damaged.", "Restart the program."},
    {0x80010001, "RPC_E_CALL_REJECTED", "the other side took no call at that moment",
     "The thread that has to answer was busy in a call of its own and refused.",
     "Repeat the call a little later."},
    {0x80010002, "RPC_E_CALL_CANCELED", "the call was cancelled",
     "The call was cancelled while it waited: the monitor of an object does that to a "
     "notification when the object is released.",
     "Nothing, when the object was being released; otherwise repeat the call."},
    {0x80010007, "RPC_E_SERVER_DIED", "the process on the other side is gone",
     "It ended while a call was running; the call may or may not have been done.",
     detail::cCreateAndRead},
    {0x80010012, "RPC_E_SERVER_DIED_DNE", "the process on the other side is gone",
     "It ended before the call reached it: the call was not done.",
     "Create the object again and repeat the call."},
    {0x80010105, "RPC_E_SERVERFAULT", "the other side failed while it ran the call",
     "A callback method, or what it called, raised an exception.",
     "Mend the client whose callback it was."},
    {0x80010106, "RPC_E_CHANGED_MODE", "the thread is in an apartment of the other kind",
     "CoInitializeEx was called before with another kind of apartment.",
     "Go on with the apartment that the thread has, or use another thread."},
    {0x80010108, "RPC_E_DISCONNECTED", "the object is no longer connected to its clients",
     "The object, its apartment or its process has ended; a proxy is all that is left.",
     detail::cCreateAgain},
    {0x8001010D, "RPC_E_CANTCALLOUT_ININPUTSYNCCALL",
     "no call can go out while a message that was sent is being handled",
     "The thread is inside the handling of a message that another thread sent and waits for.",
     "Post a message to yourself and make the call from there."},
    {0x8001010E, "RPC_E_WRONG_THREAD",
     "the interface pointer belongs to another apartment than this thread's",
     "A pointer was handed to another thread as it is, without being marshalled.",
     "Marshal it, with the proxies registered, or create an object for each thread."},
    {0x8001010F, "RPC_E_THREAD_NOT_INIT", "the thread is in no apartment",
     "CoInitializeEx was not called on this thread.", "Call CoInitializeEx first."},
    {0x80040110, "CLASS_E_NOAGGREGATION", "the object cannot be part of another one",
     "CoCreateInstance was given an outer object.", "Create the object without one."},
    {0x80040111, "CLASS_E_CLASSNOTAVAILABLE",
     "the library has no such class; it serves the Test class alone",
     "The Analog and HDMI classes stand in the type library and cannot be created.",
     "Create CLSID_VeltoKORA4APITestCoclass."},
    {0x80040154, "REGDB_E_CLASSNOTREG", "the class is not registered",
     "Creating the object: the library is not registered on this machine, or only one of the "
     "other bitness (it is for 64-bit programs), or the class is Analog or HDMI, which cannot "
     "be created. Unmarshalling an interface pointer: the proxies are not registered in that "
     "apartment.",
     "If the object could not be created, run 'kora4ctl register' as an administrator; if a "
     "pointer was carried to another apartment, call Kora4RegisterProxies in each apartment "
     "that takes part."},
    {0x80040155, "REGDB_E_IIDNOTREG", "the proxies of the interface are not registered",
     "The interface was to cross an apartment, and nobody told COM how.",
     "Call Kora4RegisterProxies in each apartment that takes part."},
    {0x800401F0, "CO_E_NOTINITIALIZED", "the thread is in no apartment",
     "CoInitializeEx was not called on this thread, or CoUninitialize already was.",
     "Call CoInitializeEx first; a client needs an apartment as long as it has the object."},
    {0x800401F8, "CO_E_DLLNOTFOUND", "the file of the library is not where it is registered",
     "The library was moved or deleted after it had been registered.",
     detail::cRegisterInPlace},
    {0x800401F9, "CO_E_ERRORINDLL", "the file of the library cannot be loaded",
     "The registered file is damaged, or is no library of this system.", detail::cInstallAgain},
    {0x800401FC, "CO_E_OBJISREG", "registered already",
     "The callback gate of this apartment is registered; that is no failure.", ""},
    {0x800401FD, "CO_E_OBJNOTCONNECTED", "the object is not connected to its clients",
     "The object has ended, or its apartment has.", detail::cCreateAgain},
    {0x80070002, "ERROR_FILE_NOT_FOUND", "the file, key or value does not exist",
     "A key of the store that was never created, or was deleted.",
     "Run 'kora4ctl doctor'; registering the library creates the keys."},
    {0x80070003, "ERROR_PATH_NOT_FOUND", "the folder does not exist",
     "A part of the path is missing.", "Check the path."},
    {0x80070005, "E_ACCESSDENIED", "access denied",
     "Registering needs an administrator; the store's keys let every user write only after "
     "the library was registered.",
     "Repeat it as an administrator; for the store run 'kora4ctl doctor'."},
    {0x80070006, "E_HANDLE", "the handle is not valid",
     "A handle was closed while somebody still used it.", "Restart the program."},
    {0x80070020, "ERROR_SHARING_VIOLATION", "the file is in use by another process",
     "Somebody has the file open, for example a process that has the library loaded.",
     "End the programs that use it and try again."},
    {0x8007007E, "ERROR_MOD_NOT_FOUND", "the file of the library, or one it needs, is missing",
     "The library is registered at a place where it is not, or no longer.",
     detail::cRegisterInPlace},
    {0x8007007F, "ERROR_PROC_NOT_FOUND", "the file has no such entry point",
     "The registered file is no COM library, or of another version.", detail::cInstallAgain},
    {0x800700C1, "ERROR_BAD_EXE_FORMAT", "the file is no program of this bitness",
     "The library is for 64-bit Windows programs; the file may also be damaged.",
     "Use a 64-bit client, or install the library again."},
    {0x80070102, "WAIT_TIMEOUT", "the wait took too long",
     "Whoever was waited for did not answer in time.", "Run 'kora4ctl doctor'."},
    {0x800703F8, "ERROR_REGISTRY_IO_FAILED", "the registry could not be read or written",
     "The file of the registry is damaged, or its disk failed.", "Check the disk."},
    {0x800703FA, "ERROR_KEY_DELETED", "the registry key was deleted while it was open",
     "An object holds the keys of the store open for its life; a key that was created again "
     "is another key.",
     "Run 'kora4ctl doctor' to have the keys back, then initialise a new object."},
    {0x8007045A, "ERROR_DLL_INIT_FAILED", "the library did not start",
     "Its entry point refused, or the process is ending.", "Restart the program."},
    {0x80070522, "ERROR_PRIVILEGE_NOT_HELD", "a privilege is missing",
     "Only some administrators may see the audit part of an access list.",
     "Repeat it as an administrator, if that part is needed."},
    {0x800706BA, "RPC_S_SERVER_UNAVAILABLE", "the process on the other side is not there",
     "It ended, or its apartment did, and a proxy is all that is left.", detail::cCreateAgain},
    {0x800706BE, "RPC_S_CALL_FAILED", "the call to the other side broke off",
     "The process on the other side ended while the call was running.", detail::cCreateAndRead},
    {0x800706C5, "RPC_S_INVALID_TAG",
     "the record's m_technology has no value that could cross an apartment",
     "The proxy has to know which member of the record is in use; eGraphicEQ and numbers that "
     "are no technology have none.",
     "Set m_technology to a technology with a value; the graphic EQ has methods of its own."},
    {0x800706F4, "RPC_X_NULL_REF_POINTER", "a null pointer, found by the proxy",
     "Through a proxy a null pointer fails before it reaches the object, which would answer "
     "E_INVALIDARG.",
     "Pass a valid pointer."},
    {0x800706F5, "RPC_X_ENUM_VALUE_OUT_OF_RANGE",
     "a technology number that the proxy does not let through",
     "Through a proxy an enumerator must fit into 16 bits.",
     "Pass an enumerator of KORA4APITechnology."},
    {0x800706F7, "RPC_X_BAD_STUB_DATA", "what came through the proxy was not understood",
     "The two sides use proxies of different versions.",
     "Build both sides with the same version of the SDK."},
};

namespace detail {

template <std::size_t N>
constexpr const ResultCode* FindIn(const ResultCode (&results)[N],
                                   std::uint32_t code) noexcept {
    for (const ResultCode& result : results)
        if (result.code == code)
            return &result;
    return nullptr;
}

template <std::size_t N>
constexpr bool AreAscending(const ResultCode (&results)[N]) noexcept {
    for (std::size_t i = 1; i < N; ++i)
        if (results[i - 1].code >= results[i].code)
            return false;
    return true;
}

}  // namespace detail

static_assert(detail::AreAscending(cApiResults) && detail::AreAscending(cPlatformResults),
              "results stand in ascending order, each once");

// Null when nobody published the code.
constexpr const ResultCode* FindResult(std::uint32_t code) noexcept {
    const ResultCode* const pResult = detail::FindIn(cApiResults, code);
    return pResult ? pResult : detail::FindIn(cPlatformResults, code);
}

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_RESULT_CODES_HPP
