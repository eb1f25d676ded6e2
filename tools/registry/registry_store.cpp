// SPDX-License-Identifier: MIT
// Raw values in the three registry keys of the store.
#include "registry/registry_store.h"

#include <algorithm>

#include "base/text.h"
#include "contract/registry_paths.h"
#include "process/win32_failure.h"
#include "registry/app_keys.h"

namespace kora4::tools {
namespace {

StoreWrapper g_wrapper = nullptr;

constexpr REGSAM cView = KEY_WOW64_64KEY;

const wchar_t* PathOf(KORA4KeySet keySet) {
    switch (keySet) {
        case eKeySetStatic:
            return cStaticKeysPath;
        case eKeySetDynamic:
            return cDynamicKeysPath;
        case eKeySetApp:
            return cAppKeysPath;
        default:
            throw Failure(ExitCode::eFailed, "Key set " + std::to_string(keySet) +
                                                 " is not kept in the registry.");
    }
}

LSTATUS Open(KORA4KeySet keySet, REGSAM access, UniqueRegKey& hKey) {
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, PathOf(keySet), 0, access | cView, hKey.Put());
}

[[noreturn]] void Refuse(LSTATUS status, const std::string& doing, KORA4KeySet keySet) {
    const std::string next =
        status == ERROR_ACCESS_DENIED
            ? keySet == eKeySetApp
                  ? "Run this as an administrator: only administrators can write the app keys."
                  : "Run 'kora4ctl register' as an administrator; it gives every user write "
                    "access to the store."
        : status == ERROR_KEY_DELETED
            ? "The key was deleted. Run 'kora4ctl register' as an administrator."
            : "Run 'kora4ctl doctor' to find out why.";
    throw Win32Failure(static_cast<DWORD>(status), doing, next);
}

std::wstring WideName(const PropertyKey& key) {
    return Widen(ValueName(key));
}

std::string Place(KORA4KeySet keySet, const PropertyKey& key) {
    return ValueName(key) + " in the " + KeySetName(keySet) + " keys";
}

// Windows and Wine add the terminator that they happen to find behind a text without one; what
// is written shall be what is there.
class Guarded {
  public:
    explicit Guarded(const Bytes& bytes) : m_padded(bytes.size() + cMargin, 0xFF) {
        std::copy(bytes.begin(), bytes.end(), m_padded.begin());
    }
    const BYTE* Data() const { return m_padded.data(); }

  private:
    static constexpr std::size_t cMargin = 4;
    Bytes m_padded;
};

}  // namespace

std::string KeySetPath(KORA4KeySet keySet) {
    return Narrow(PathOf(keySet));
}

RegistryStore::RegistryStore(OpenMode mode)
    : m_access(mode == OpenMode::eRead ? KEY_READ : KEY_READ | KEY_WRITE) {
    RegistryStore::Reopen();
}

void RegistryStore::Reopen() {
    Keys keys;
    for (const KORA4KeySet keySet : {eKeySetStatic, eKeySetDynamic})
        OpenNeeded(keySet, m_access, KeyIn(keys, keySet));
    // The installer's: a user may read them and most may not write.
    if (Open(eKeySetApp, m_access, KeyIn(keys, eKeySetApp)) == ERROR_ACCESS_DENIED)
        Open(eKeySetApp, KEY_READ, KeyIn(keys, eKeySetApp));
    m_keys = std::move(keys);
}

void RegistryStore::OpenNeeded(KORA4KeySet keySet, REGSAM access, UniqueRegKey& hKey) {
    const LSTATUS status = Open(keySet, access, hKey);
    if (status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND)
        throw Failure(ExitCode::eNotReady,
                      "The settings store does not exist: HKEY_LOCAL_MACHINE\\" +
                          KeySetPath(keySet) + " is missing.",
                      "Run 'kora4ctl register' as an administrator.");
    if (status != ERROR_SUCCESS)
        Refuse(status, "Opening the " + KeySetName(keySet) + " keys", keySet);
}

std::optional<StoredValue> RegistryStore::Read(KORA4KeySet keySet, const PropertyKey& key) {
    const HKEY hKey = KeyOf(keySet).Get();
    if (!hKey)
        return {};
    const std::wstring name = WideName(key);
    // Enough for every DWORD and most texts; a value may grow between two queries.
    StoredValue value{0, Bytes(512)};
    for (;;) {
        DWORD type = REG_NONE;
        auto size = static_cast<DWORD>(value.bytes.size());
        const LSTATUS status =
            RegQueryValueExW(hKey, name.c_str(), nullptr, &type, value.bytes.data(), &size);
        if (status == ERROR_FILE_NOT_FOUND)
            return {};
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
            Refuse(status, "Reading " + Place(keySet, key), keySet);
        value.type = type;
        if (size > cMaxReadBytes) {
            value.bytes.clear();
            value.unread = size;
            return value;
        }
        value.bytes.resize(size);
        if (status == ERROR_SUCCESS)
            return value;
    }
}

void RegistryStore::Write(KORA4KeySet keySet, const PropertyKey& key,
                          const StoredValue& value) {
    UniqueRegKey& hKey = KeyOf(keySet);
    LSTATUS status = ERROR_SUCCESS;
    // The others are open, or the store would not be.
    if (!hKey)
        status = CreateAppKeys(m_access, hKey);
    if (status != ERROR_SUCCESS)
        Refuse(status, "Creating the " + KeySetName(keySet) + " keys", keySet);
    status =
        RegSetValueExW(hKey.Get(), WideName(key).c_str(), 0, value.type,
                       Guarded(value.bytes).Data(), static_cast<DWORD>(value.bytes.size()));
    if (status != ERROR_SUCCESS)
        Refuse(status, "Writing " + Place(keySet, key), keySet);
}

void RegistryStore::Delete(KORA4KeySet keySet, const PropertyKey& key) {
    const HKEY hKey = KeyOf(keySet).Get();
    if (!hKey)
        return;
    const LSTATUS status = RegDeleteValueW(hKey, WideName(key).c_str());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND)
        Refuse(status, "Deleting " + Place(keySet, key), keySet);
}

std::vector<std::string> RegistryStore::ValueNames(KORA4KeySet keySet) {
    std::vector<std::string> names;
    const HKEY hKey = KeyOf(keySet).Get();
    // The longest name of a registry value.
    constexpr DWORD cLongestName = 16383;
    std::wstring name(cLongestName + 1, L'\0');
    for (DWORD i = 0; hKey; ++i) {
        DWORD length = cLongestName + 1;
        const LSTATUS status =
            RegEnumValueW(hKey, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        if (status != ERROR_SUCCESS)
            Refuse(status, "Listing the " + KeySetName(keySet) + " keys", keySet);
        names.push_back(Narrow(std::wstring_view(name.data(), length)));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::unique_ptr<StoreAccess> OpenStore(OpenMode mode) {
    std::unique_ptr<StoreAccess> store = std::make_unique<RegistryStore>(mode);
    return g_wrapper ? g_wrapper(std::move(store)) : std::move(store);
}

void SetStoreWrapper(StoreWrapper wrapper) {
    g_wrapper = wrapper;
}

}  // namespace kora4::tools
