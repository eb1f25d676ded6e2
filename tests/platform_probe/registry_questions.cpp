// SPDX-License-Identifier: MIT
// Questions about the registry: notifications, deleted keys, links, access lists, views.
#include <aclapi.h>
#include <objbase.h>
#include <oleauto.h>
#include <sddl.h>

#include <array>
#include <thread>

#include "platform_probe/answers.h"
#include "platform_probe/question.h"

namespace kora4::probe {

namespace {

constexpr wchar_t cValue[] = L"value";

void SetNumber(HKEY key, DWORD number) {
    RegSetValueExW(key, cValue, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                   sizeof number);
}

// A key with one value, and an event for its changes.
struct Watched {
    Watched() { SetNumber(key.Get(), 1); }

    LSTATUS Arm() const {
        return RegNotifyChangeKeyValue(key.Get(), TRUE, REG_NOTIFY_CHANGE_LAST_SET, event.Get(),
                                       TRUE);
    }

    ProbeKey key;
    UniqueHandle event{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

std::string IdenticalWrite() {
    const Watched watched;
    watched.Arm();
    SetNumber(watched.key.Get(), 1);
    return YesOrNo(IsSignalled(watched.event.Get()));
}

std::string UnarmedWrite() {
    const Watched watched;
    watched.Arm();
    SetNumber(watched.key.Get(), 2);
    IsSignalled(watched.event.Get());
    SetNumber(watched.key.Get(), 3);
    watched.Arm();
    return YesOrNo(IsSignalled(watched.event.Get()));
}

std::string NewSubkey() {
    const Watched watched;
    watched.Arm();
    UniqueRegKey key;
    RegCreateKeyExW(watched.key.Get(), L"subkey", 0, nullptr, 0, KEY_READ, nullptr, key.Put(),
                    nullptr);
    return YesOrNo(IsSignalled(watched.event.Get()));
}

std::string DeletedWatchedKey() {
    const Watched watched;
    watched.Arm();
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, watched.key.Path().c_str());
    return YesOrNo(IsSignalled(watched.event.Get()));
}

std::string ArmDeletedKey() {
    const Watched watched;
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, watched.key.Path().c_str());
    return NameOf(watched.Arm());
}

std::string EndedThread() {
    const Watched watched;
    std::thread([&] { watched.Arm(); }).join();
    return YesOrNo(IsSignalled(watched.event.Get()));
}

std::string ClosedKey() {
    const Watched watched;
    UniqueRegKey key;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, watched.key.Path().c_str(), 0, KEY_NOTIFY, key.Put());
    RegNotifyChangeKeyValue(key.Get(), TRUE, REG_NOTIFY_CHANGE_LAST_SET, watched.event.Get(),
                            TRUE);
    key.Reset();
    return YesOrNo(IsSignalled(watched.event.Get()));
}

std::string DeletedKey() {
    const Watched watched;
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, watched.key.Path().c_str());
    const ProbeKey again;
    SetNumber(again.Get(), 4);
    return NameOf(
        RegQueryValueExW(watched.key.Get(), cValue, nullptr, nullptr, nullptr, nullptr));
}

// A key that is a link, for the length of a scope.
class Link {
  public:
    Link(HKEY parent, const std::wstring& target) {
        RegCreateKeyExW(parent, cName, 0, nullptr, REG_OPTION_CREATE_LINK, KEY_ALL_ACCESS,
                        nullptr, m_key.Put(), nullptr);
        const std::wstring path = L"\\Registry\\Machine\\" + target;
        RegSetValueExW(m_key.Get(), L"SymbolicLinkValue", 0, REG_LINK,
                       reinterpret_cast<const BYTE*>(path.data()),
                       static_cast<DWORD>(path.size() * sizeof(wchar_t)));
    }
    ~Link() {
        // The documented calls that delete a key take its name, and follow the link.
        const auto deleteKey = reinterpret_cast<LONG(NTAPI*)(HANDLE)>(reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDeleteKey")));
        deleteKey(m_key.Get());
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    static constexpr wchar_t cName[] = L"link";

  private:
    UniqueRegKey m_key;
};

std::string OpenedLink() {
    const ProbeKey parent;
    const Link link(parent.Get(), L"SOFTWARE");
    UniqueRegKey key;
    DWORD type = 0;
    RegOpenKeyExW(parent.Get(), Link::cName, REG_OPTION_OPEN_LINK, KEY_READ, key.Put());
    RegQueryValueExW(key.Get(), L"SymbolicLinkValue", nullptr, &type, nullptr, nullptr);
    return type == REG_LINK ? "the link" : "its target";
}

std::string DeadLink() {
    const ProbeKey parent;
    const Link link(parent.Get(), L"SOFTWARE\\Kora4PlatformProbe\\missing");
    UniqueRegKey key;
    return NameOf(RegOpenKeyExW(parent.Get(), Link::cName, 0, KEY_READ, key.Put()));
}

// What a list that the process may set to anything is set to.
struct OpenList {
    OpenList() {
        ConvertStringSecurityDescriptorToSecurityDescriptorW(
            L"D:P(A;;KA;;;WD)", SDDL_REVISION_1, memory.Put(), nullptr);
        BOOL isThere = FALSE;
        BOOL isDefault = FALSE;
        GetSecurityDescriptorDacl(memory.Get(), &isThere, &dacl, &isDefault);
        attributes = {sizeof attributes, memory.Get(), FALSE};
    }

    UniqueLocalMemory memory;
    PACL dacl = nullptr;
    SECURITY_ATTRIBUTES attributes{};
};

std::string ListWithoutRight() {
    const OpenList list;
    const ProbeKey made;
    UniqueRegKey key;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, made.Path().c_str(), 0, KEY_READ, key.Put());
    return NameOf(
        static_cast<LONG>(SetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION,
                                          nullptr, nullptr, list.dacl, nullptr)));
}

std::string ListOfNewKey() {
    const OpenList list;
    const ProbeKey made(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Kora4PlatformProbe", &list.attributes);
    PACL found = nullptr;
    UniqueLocalMemory memory;
    GetSecurityInfo(made.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                    &found, nullptr, memory.Put());
    return YesOrNo(found && found->AceCount == 1);
}

std::string UnterminatedText() {
    const ProbeKey key;
    constexpr std::array<wchar_t, 4> cText{L'a', L'b', L'c', L'\0'};
    RegSetValueExW(key.Get(), cValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(cText.data()),
                   3 * sizeof(wchar_t));
    DWORD size = 0;
    RegQueryValueExW(key.Get(), cValue, nullptr, nullptr, nullptr, &size);
    return size == 3 * sizeof(wchar_t) ? "as written" : "with the terminator behind it";
}

constexpr wchar_t cClass[] = L"CLSID\\{5D5D8F7E-6B0D-4B57-9A57-0F0D4E8C3B11}";
constexpr GUID cClassId{
    0x5D5D8F7E, 0x6B0D, 0x4B57, {0x9A, 0x57, 0x0F, 0x0D, 0x4E, 0x8C, 0x3B, 0x11}};

std::wstring OfUser(const wchar_t* key) {
    return std::wstring(L"Software\\Classes\\") + key;
}

std::string ClassOfUser() {
    const ProbeKey made(HKEY_CURRENT_USER, OfUser(cClass));
    UniqueRegKey key;
    return YesOrNo(RegOpenKeyExW(HKEY_CLASSES_ROOT, cClass, 0, KEY_READ, key.Put()) ==
                   ERROR_SUCCESS);
}

bool IsElevated() {
    UniqueHandle token;
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) &&
           GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof elevation,
                               &size) &&
           elevation.TokenIsElevated;
}

std::string ElevatedClassOfUser() {
    if (!IsElevated())
        return std::string(cCannotTell) + ": it is not elevated";
    const ProbeKey made(HKEY_CURRENT_USER, OfUser(cClass) + L"\\InprocServer32");
    constexpr wchar_t cNowhere[] = L"C:\\kora4-probe\\nowhere.dll";
    RegSetValueExW(made.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(cNowhere),
                   sizeof cNowhere);
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    IUnknown* object = nullptr;
    const HRESULT hr = CoGetClassObject(cClassId, CLSCTX_INPROC_SERVER, nullptr,
                                        __uuidof(IUnknown), reinterpret_cast<void**>(&object));
    CoUninitialize();
    RegDeleteTreeW(HKEY_CURRENT_USER, OfUser(cClass).c_str());
    return hr == REGDB_E_CLASSNOTREG ? "is ignored" : "is used";
}

// Whether a key that a 64-bit program makes is there for 32-bit ones.
std::string IsShared(const std::wstring& path) {
    const ProbeKey made(HKEY_LOCAL_MACHINE, path);
    UniqueRegKey key;
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0,
                                         KEY_READ | KEY_WOW64_32KEY, key.Put());
    return status == ERROR_SUCCESS ? "shared" : "of its own";
}

std::string StoreOfBoth() {
    return IsShared(L"SOFTWARE\\Kora4PlatformProbe");
}

std::string ClassOfBoth() {
    return IsShared(std::wstring(L"SOFTWARE\\Classes\\") + cClass);
}

std::string ProxyOfBoth() {
    return IsShared(L"SOFTWARE\\Classes\\Interface\\{5D5D8F7E-6B0D-4B57-9A57-0F0D4E8C3B11}");
}

// A type library that is registered as the library registers its own: for one language.
std::string FoundTypeLibrary(LCID language) {
    const std::wstring library =
        L"SOFTWARE\\Classes\\TypeLib\\{5D5D8F7E-6B0D-4B57-9A57-0F0D4E8C3B11}";
    const ProbeKey all(HKEY_LOCAL_MACHINE, library);
    const ProbeKey made(HKEY_LOCAL_MACHINE, library + L"\\1.0\\409\\win64");
    constexpr wchar_t cPath[] = L"C:\\kora4-probe\\some.tlb";
    RegSetValueExW(made.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(cPath),
                   sizeof cPath);
    BSTR path = nullptr;
    const HRESULT hr = QueryPathOfRegTypeLib(cClassId, 1, 0, language, &path);
    SysFreeString(path);
    return NameOf(hr);
}

std::string TypeLibraryOfLanguage() {
    return FoundTypeLibrary(0x409);
}

std::string TypeLibraryOfNoLanguage() {
    return FoundTypeLibrary(LOCALE_NEUTRAL);
}

constexpr char cNotify[] = "RegNotifyChangeKeyValue function (winreg.h)";
constexpr char cMonitor[] =
    "src/monitor/reg_key_monitor_thread.cpp tools/registry/change_watch.cpp";
constexpr char cWow64[] = "Registry Keys Affected by WOW64";
constexpr char cRegistration[] = "src/server/registration.cpp";

constexpr std::array cQuestions{
    Question{"identical-write", "Does writing the value that is stored already notify?", "yes",
             "", "src/monitor/reg_key_monitor_thread.cpp", &IdenticalWrite},
    Question{"write-not-watched",
             "Does a write between two calls of RegNotifyChangeKeyValue notify the second?", "",
             "", cMonitor, &UnarmedWrite},
    Question{"new-subkey", "Does a new subkey notify who watches values?", "no", cNotify,
             cMonitor, &NewSubkey},
    Question{"deleted-watched-key", "Does deleting the watched key notify?", "yes", "",
             "tools/kora4ctl/notifications/watched_keys.h", &DeletedWatchedKey},
    Question{"watching-deleted-key", "What does watching a deleted key give?",
             "ERROR_KEY_DELETED", "System Error Codes (1000-1299)", cMonitor, &ArmDeletedKey},
    Question{"ended-thread", "Does the end of the thread that watches notify?", "yes", cNotify,
             cMonitor, &EndedThread},
    Question{"closed-key", "Does closing the watched key notify?", "yes", cNotify, cMonitor,
             &ClosedKey},
    Question{"deleted-key",
             "What does reading through a handle to a deleted key give, also after the key is "
             "made again?",
             "ERROR_KEY_DELETED", "System Error Codes (1000-1299)",
             "tools/kora4ctl/notifications/watched_keys.h", &DeletedKey},
    Question{"link", "What does REG_OPTION_OPEN_LINK open?", "the link",
             "RegOpenKeyExW function (winreg.h)", "src/monitor/reg_key_security.cpp",
             &OpenedLink},
    Question{"dead-link", "What does opening a link to a missing key give?",
             "ERROR_FILE_NOT_FOUND", "RegOpenKeyExW function (winreg.h)",
             "src/monitor/reg_key_security.cpp", &DeadLink},
    Question{"list-without-right",
             "What does the owner get who sets an access list through a handle without "
             "WRITE_DAC?",
             "success", "SetSecurityInfo function (aclapi.h)",
             "src/monitor/reg_key_security.cpp", &ListWithoutRight},
    Question{"list-of-new-key", "Does a new key have the list that it was created with?", "yes",
             "RegCreateKeyExW function (winreg.h)", "tools/registry/app_keys.cpp",
             &ListOfNewKey},
    Question{"list-after-restart", "Does a key keep its list when the system restarts?", "yes",
             "Registry Key Security and Access Rights",
             "tools/kora4ctl/doctor/checks_access.cpp tools/process/privileges.h", nullptr},
    Question{"unterminated-text",
             "How is a REG_SZ stored that is written without the terminator behind it?", "", "",
             "tools/registry/registry_store.cpp", &UnterminatedText},
    Question{"class-of-user", "Does HKEY_CLASSES_ROOT show what only the user has registered?",
             "yes", "Merged View of HKEY_CLASSES_ROOT",
             "tools/kora4ctl/registration/registration.cpp", &ClassOfUser},
    Question{"elevated-class-of-user",
             "What becomes of a class of the user in an elevated program?", "is ignored",
             "Merged View of HKEY_CLASSES_ROOT", "tools/kora4ctl/registration/registration.h",
             &ElevatedClassOfUser},
    Question{"store-of-32-bit", "Is the store shared with 32-bit programs?", "of its own",
             cWow64, cRegistration, &StoreOfBoth},
    Question{"class-of-32-bit", "Are classes shared with 32-bit programs?", "of its own",
             cWow64, cRegistration, &ClassOfBoth},
    Question{"proxy-of-32-bit", "Are registered proxies shared with 32-bit programs?",
             "of its own", cWow64, "sdk/proxies/proxy_dll.c", &ProxyOfBoth},
    Question{"type-library", "Is a type library found by the language of its registration?",
             "success", "QueryPathOfRegTypeLib function (oleauto.h)", cRegistration,
             &TypeLibraryOfLanguage},
    Question{"type-library-neutral", "Is it found without a language?", "", "", cRegistration,
             &TypeLibraryOfNoLanguage},
};

}  // namespace

std::span<const Question> RegistryQuestions() {
    return cQuestions;
}

}  // namespace kora4::probe
