// SPDX-License-Identifier: MIT
// The table of functions with their codes, and the replacements that fail or go on.
#include "faults/failing_functions.h"

#include <windows.h>
// After it.
#include <aclapi.h>
#include <objbase.h>
#include <oleauto.h>
#include <sddl.h>

#include <array>
#include <cstdlib>
#include <type_traits>
#include <utility>

#include "faults/fault_injector.h"

namespace kora4::test {
namespace {

[[noreturn]] void Die() {
    TerminateProcess(GetCurrentProcess(), cKilled);
    std::abort();
}

// ---- What a failing call leaves behind besides its result ----------------------------------

template <typename... A>
void BeforeFailing(const ImportedFunction&, A...) {}

// The value has grown since its size was asked.
void BeforeFailing(const ImportedFunction& function, HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE,
                   LPDWORD pSize) {
    if (CodeOf(function) == ERROR_MORE_DATA && pSize)
        *pSize = *pSize * 2 + 1;
}

// The stream is released in any case.
void BeforeFailing(const ImportedFunction&, LPSTREAM pStream, REFIID, LPVOID*) {
    CoReleaseMarshalData(pStream);
    pStream->Release();
}

template <typename R>
R Failed(const ImportedFunction& function) {
    const std::uint32_t code = CodeOf(function);
    if (function.failing != Failing::eResult)
        SetLastError(code);
    if constexpr (std::is_pointer_v<R>)
        return function.failing == Failing::eInvalidHandle
                   ? reinterpret_cast<R>(INVALID_HANDLE_VALUE)
                   : nullptr;
    else if (function.failing == Failing::eResult)
        return static_cast<R>(code);
    else
        return static_cast<R>(function.failing == Failing::eWait ? WAIT_FAILED : 0);
}

// ---- The replacements ----------------------------------------------------------------------

// `Unique` keeps functions of the same signature apart.
template <typename F, typename Unique>
struct Replacement;

template <typename R, typename... A, typename Unique>
struct Replacement<R (*)(A...), Unique> {
    static R Call(A... arguments) {
        const Fate fate = FateOf(*s_self);
        if (fate == Fate::eDieBefore)
            Die();
        if (fate == Fate::eFail) {
            BeforeFailing(*s_self, arguments...);
            return Failed<R>(*s_self);
        }
        const R result = reinterpret_cast<R (*)(A...)>(s_original)(arguments...);
        if constexpr (std::is_pointer_v<R>) {
            if (s_self->role == Role::eAllocates && result)
                CountBlocks(1);
        }
        if (fate == Fate::eDieAfter)
            Die();
        return result;
    }

    static inline void* s_original = nullptr;
    static inline const ImportedFunction* s_self = nullptr;
};

// What gives a block back cannot fail.
template <typename Block, typename Unique>
struct Replacement<void (*)(Block), Unique> {
    static void Call(Block block) {
        if (block)
            CountBlocks(-1);
        reinterpret_cast<void (*)(Block)>(s_original)(block);
    }

    static inline void* s_original = nullptr;
    static inline const ImportedFunction* s_self = nullptr;
};

// On x64 there is one calling convention.
template <typename F, typename Unique = decltype([] {})>
ImportedFunction Row(const char* name, Failing failing, std::vector<std::uint32_t> codes,
                     Role role = Role::eOther, bool isOnceOnly = false) {
    using Replaced = Replacement<F, Unique>;
    return {name,
            failing,
            std::move(codes),
            role,
            isOnceOnly,
            reinterpret_cast<void*>(&Replaced::Call),
            &Replaced::s_original,
            &Replaced::s_self};
}

// ---- The tables ----------------------------------------------------------------------------

using Functions = std::vector<ImportedFunction>;

constexpr std::uint32_t cOutOfMemory = ERROR_NOT_ENOUGH_MEMORY;

constexpr std::uint32_t Code(HRESULT hr) {
    return static_cast<std::uint32_t>(hr);
}
constexpr std::uint32_t cNoMemory = Code(E_OUTOFMEMORY);

#define KORA4_ROW(function, ...) Row<decltype(&function)>(#function, __VA_ARGS__)

Functions RegistryFunctions() {
    using enum Failing;
    constexpr std::uint32_t cAbsent = ERROR_FILE_NOT_FOUND;
    constexpr std::uint32_t cDenied = ERROR_ACCESS_DENIED;
    constexpr std::uint32_t cBadHandle = ERROR_INVALID_HANDLE;
    constexpr std::uint32_t cDeleted = ERROR_KEY_DELETED;
    return {
        KORA4_ROW(RegOpenKeyExW, eResult, {cAbsent, cDenied, cOutOfMemory, cDeleted}),
        KORA4_ROW(RegCreateKeyExW, eResult, {cDenied, cOutOfMemory, cDeleted}, Role::eWrites),
        KORA4_ROW(RegQueryValueExW, eResult,
                  {cAbsent, cDenied, cBadHandle, cOutOfMemory, ERROR_MORE_DATA, cDeleted}),
        KORA4_ROW(RegQueryInfoKeyW, eResult, {cDenied, cBadHandle, cOutOfMemory, cDeleted}),
        KORA4_ROW(RegSetKeyValueW, eResult, {cDenied, cBadHandle, cOutOfMemory, cDeleted},
                  Role::eWrites),
        KORA4_ROW(RegDeleteValueW, eResult, {cAbsent, cDenied, cBadHandle, cDeleted},
                  Role::eWrites),
        KORA4_ROW(RegDeleteKeyW, eResult, {cAbsent, cDenied, cDeleted}, Role::eWrites),
        KORA4_ROW(RegDeleteTreeW, eResult, {cAbsent, cDenied, cDeleted}, Role::eWrites),
        KORA4_ROW(RegNotifyChangeKeyValue, eResult,
                  {cDenied, cBadHandle, cOutOfMemory, cDeleted}),
        KORA4_ROW(RegSetKeySecurity, eResult, {cDenied, cBadHandle}),
        KORA4_ROW(GetSecurityInfo, eResult, {cDenied, cBadHandle, cOutOfMemory}),
        KORA4_ROW(SetSecurityInfo, eResult, {cDenied, cBadHandle, cOutOfMemory}),
        KORA4_ROW(ConvertStringSecurityDescriptorToSecurityDescriptorW, eFalse, {cOutOfMemory}),
        KORA4_ROW(ConvertSecurityDescriptorToStringSecurityDescriptorW, eFalse, {cOutOfMemory}),
        KORA4_ROW(GetSecurityDescriptorDacl, eFalse, {ERROR_INVALID_SECURITY_DESCR}),
        KORA4_ROW(OpenThreadToken, eFalse, {ERROR_NO_TOKEN, cDenied}),
        KORA4_ROW(OpenProcessToken, eFalse, {cDenied}),
        KORA4_ROW(LookupPrivilegeValueW, eFalse, {ERROR_NO_SUCH_PRIVILEGE}),
        KORA4_ROW(AdjustTokenPrivileges, eFalse, {cDenied, cBadHandle}),
    };
}

Functions KernelFunctions() {
    using enum Failing;
    constexpr std::uint32_t cDenied = ERROR_ACCESS_DENIED;
    constexpr std::uint32_t cBadHandle = ERROR_INVALID_HANDLE;
    return {
        KORA4_ROW(CreateEventW, eFalse, {cOutOfMemory}),
        KORA4_ROW(CreateMutexW, eFalse, {cDenied, cBadHandle, cOutOfMemory}),
        KORA4_ROW(OpenMutexW, eFalse, {ERROR_FILE_NOT_FOUND, cDenied, cOutOfMemory}),
        KORA4_ROW(CreateThread, eFalse, {cOutOfMemory}),
        KORA4_ROW(DuplicateHandle, eFalse, {cOutOfMemory}),
        // A host may have closed a handle that is not its own.
        KORA4_ROW(WaitForSingleObject, eWait, {cBadHandle}),
        KORA4_ROW(WaitForMultipleObjects, eWait, {cBadHandle}),
        KORA4_ROW(GetModuleHandleExW, eFalse, {ERROR_MOD_NOT_FOUND}),
        KORA4_ROW(GetModuleFileNameW, eFalse, {cOutOfMemory}),
        KORA4_ROW(GetProcessHandleCount, eFalse, {cDenied}),
        KORA4_ROW(FindResourceW, eFalse, {ERROR_RESOURCE_NAME_NOT_FOUND}),
        KORA4_ROW(LoadResource, eFalse, {cOutOfMemory}),
        KORA4_ROW(
            CreateFileA, eInvalidHandle,
            {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, cDenied, ERROR_SHARING_VIOLATION}),
        KORA4_ROW(WriteFile, eFalse, {cBadHandle, cOutOfMemory, ERROR_DISK_FULL}),
        KORA4_ROW(GetFileInformationByHandleEx, eFalse, {cBadHandle, ERROR_MORE_DATA}),
        KORA4_ROW(malloc, eFalse, {cOutOfMemory}, Role::eAllocates),
        KORA4_ROW(free, eFalse, {}, Role::eFrees),
        KORA4_ROW(PostThreadMessageW, eFalse, {ERROR_NOT_ENOUGH_QUOTA}),
        KORA4_ROW(RegisterWindowMessageW, eFalse, {cOutOfMemory}),
    };
}

Functions ComFunctions() {
    using enum Failing;
    constexpr std::uint32_t cNotInitialized = Code(CO_E_NOTINITIALIZED);
    return {
        KORA4_ROW(CoTaskMemAlloc, eFalse, {cOutOfMemory}, Role::eAllocates),
        KORA4_ROW(CoTaskMemFree, eFalse, {}, Role::eFrees),
        KORA4_ROW(CoInitializeEx, eResult, {cNoMemory, Code(RPC_E_CHANGED_MODE)}),
        KORA4_ROW(CoIncrementMTAUsage, eResult, {cNoMemory}),
        KORA4_ROW(CoRegisterInitializeSpy, eResult, {cNoMemory}),
        KORA4_ROW(CoRegisterClassObject, eResult, {cNoMemory, cNotInitialized}),
        KORA4_ROW(CoRegisterPSClsid, eResult, {cNoMemory, cNotInitialized}),
        KORA4_ROW(CoMarshalInterThreadInterfaceInStream, eResult,
                  {cNoMemory, Code(E_NOINTERFACE), Code(REGDB_E_IIDNOTREG)}),
        KORA4_ROW(CoGetInterfaceAndReleaseStream, eResult,
                  {cNoMemory, Code(RPC_E_DISCONNECTED), Code(REGDB_E_CLASSNOTREG)}),
        KORA4_ROW(CoEnableCallCancellation, eResult, {cNoMemory}),
        KORA4_ROW(CoDisableCallCancellation, eResult, {cNoMemory, Code(CO_E_CANCEL_DISABLED)}),
        KORA4_ROW(CoDisconnectObject, eResult, {cNoMemory}),
        // An owner that never lets a call in makes its monitor's thread end by force.
        KORA4_ROW(CoWaitForMultipleHandles, eResult, {cNoMemory, Code(RPC_E_CALL_CANCELED)},
                  Role::eOther, true),
        // Its own header is for C.
        Row<HRESULT (*)(REFCLSID, REFIID, void**, const void*, const CLSID*, void*)>(
            "NdrDllGetClassObject", eResult, {cNoMemory}),
        KORA4_ROW(LoadTypeLibEx, eResult, {cNoMemory, Code(TYPE_E_CANTLOADLIBRARY)}),
        KORA4_ROW(RegisterTypeLib, eResult, {cNoMemory, Code(TYPE_E_REGISTRYACCESS)}),
        KORA4_ROW(UnRegisterTypeLib, eResult, {cNoMemory, Code(TYPE_E_REGISTRYACCESS)}),
    };
}

#undef KORA4_ROW

}  // namespace

std::vector<ImportedFunction>& ImportedFunctions() {
    static Functions functions = [] {
        Functions all = RegistryFunctions();
        for (Functions& some : std::array{KernelFunctions(), ComFunctions()})
            all.insert(all.end(), some.begin(), some.end());
        return all;
    }();
    return functions;
}

}  // namespace kora4::test
