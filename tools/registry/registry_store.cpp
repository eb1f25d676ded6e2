// SPDX-License-Identifier: MIT
// Raw values in the three registry keys of the store.
#include <windows.h>

#include <algorithm>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/registry_paths.h"
#include "process/handles.h"
#include "registry/store_access.h"

namespace kora4::tools {
namespace {

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

[[noreturn]] void Refuse(LSTATUS status, const std::string& doing, KORA4KeySet keySet) {
    const std::string next =
        status == ERROR_ACCESS_DENIED
            ? keySet == eKeySetApp
                  ? "The app keys belong to the installer: run this as an administrator."
                  : "Run 'kora4ctl register' as an administrator: it lets every user write "
                    "the store."
        : status == ERROR_KEY_DELETED
            ? "The key was deleted meanwhile. Run 'kora4ctl register'."
            : "'kora4ctl doctor' looks for what is wrong.";
    throw Failure(ExitCode::eFailed, doing + ": " + InWords(HRESULT_FROM_WIN32(status)) + ".",
                  next);
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

// The open keys.
class RegistryStore::Keys {
  public:
    explicit Keys(OpenMode mode) : m_access(mode == OpenMode::eRead ? KEY_READ : cReadWrite) {
        OpenNeeded(eKeySetStatic, m_static);
        OpenNeeded(eKeySetDynamic, m_dynamic);
        // The installer owns these keys: users may read them, and most may not write.
        for (const REGSAM access : {m_access, REGSAM{KEY_READ}}) {
            const LSTATUS status = Open(eKeySetApp, access, m_app);
            if (status != ERROR_ACCESS_DENIED)
                break;
        }
    }

    // Null when the key set is optional and absent.
    HKEY Get(KORA4KeySet keySet) const { return Place(keySet).Get(); }

    HKEY ToWrite(KORA4KeySet keySet) {
        UniqueRegKey& key = Place(keySet);
        if (!key) {
            const LSTATUS status = RegCreateKeyExW(
                HKEY_LOCAL_MACHINE, PathOf(keySet), 0, nullptr, REG_OPTION_NON_VOLATILE,
                m_access | cView, nullptr, key.Put(), nullptr);
            if (status != ERROR_SUCCESS)
                Refuse(status, "Creating the " + KeySetName(keySet) + " keys", keySet);
        }
        return key.Get();
    }

  private:
    static constexpr REGSAM cReadWrite = KEY_READ | KEY_WRITE;

    static LSTATUS Open(KORA4KeySet keySet, REGSAM access, UniqueRegKey& key) {
        return RegOpenKeyExW(HKEY_LOCAL_MACHINE, PathOf(keySet), 0, access | cView, key.Put());
    }

    void OpenNeeded(KORA4KeySet keySet, UniqueRegKey& key) const {
        const LSTATUS status = Open(keySet, m_access, key);
        if (status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND)
            throw Failure(ExitCode::eNotReady,
                          "The settings store is not there: HKEY_LOCAL_MACHINE\\" +
                              KeySetPath(keySet) + " does not exist.",
                          "Run 'kora4ctl register'.");
        if (status != ERROR_SUCCESS)
            Refuse(status, "Opening the " + KeySetName(keySet) + " keys", keySet);
    }

    UniqueRegKey& Place(KORA4KeySet keySet) {
        return keySet == eKeySetStatic    ? m_static
               : keySet == eKeySetDynamic ? m_dynamic
                                          : m_app;
    }
    const UniqueRegKey& Place(KORA4KeySet keySet) const {
        return const_cast<Keys*>(this)->Place(keySet);
    }

    REGSAM m_access;
    UniqueRegKey m_static;
    UniqueRegKey m_dynamic;
    UniqueRegKey m_app;
};

RegistryStore::RegistryStore(OpenMode mode) : m_keys(std::make_unique<Keys>(mode)) {}
RegistryStore::~RegistryStore() = default;

std::optional<StoredValue> RegistryStore::Read(KORA4KeySet keySet, const PropertyKey& key) {
    const HKEY hKey = m_keys->Get(keySet);
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
        value.bytes.resize(size);
        value.type = type;
        if (status == ERROR_SUCCESS)
            return value;
    }
}

void RegistryStore::Write(KORA4KeySet keySet, const PropertyKey& key,
                          const StoredValue& value) {
    const LSTATUS status =
        RegSetValueExW(m_keys->ToWrite(keySet), WideName(key).c_str(), 0, value.type,
                       Guarded(value.bytes).Data(), static_cast<DWORD>(value.bytes.size()));
    if (status != ERROR_SUCCESS)
        Refuse(status, "Writing " + Place(keySet, key), keySet);
}

void RegistryStore::Delete(KORA4KeySet keySet, const PropertyKey& key) {
    const HKEY hKey = m_keys->Get(keySet);
    if (!hKey)
        return;
    const LSTATUS status = RegDeleteValueW(hKey, WideName(key).c_str());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND)
        Refuse(status, "Deleting " + Place(keySet, key), keySet);
}

std::vector<std::string> RegistryStore::ValueNames(KORA4KeySet keySet) {
    std::vector<std::string> names;
    const HKEY hKey = m_keys->Get(keySet);
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

}  // namespace kora4::tools
