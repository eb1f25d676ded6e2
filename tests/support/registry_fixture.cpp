// SPDX-License-Identifier: MIT
// Registry helpers that report what fails, the dump of a key, and the registration of the
// library for a test.
#include "support/registry_fixture.h"

#include <objbase.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "contract/registry_paths.h"

namespace kora4::test {

namespace {

[[noreturn]] void Die(const char* what, long status) {
    std::fprintf(stderr, "registry fixture: %s failed with %ld (0x%lx)\n", what, status,
                 static_cast<unsigned long>(status));
    std::fflush(stderr);
    std::_Exit(3);
}

void Check(LSTATUS status, const char* what) {
    if (status != ERROR_SUCCESS)
        Die(what, status);
}

bool IsAbsent(LSTATUS status) {
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
}

UniqueRegKey OpenToRead(HKEY root, const std::wstring& path) {
    UniqueRegKey key;
    const LSTATUS status = RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.Put());
    if (status != ERROR_SUCCESS && !IsAbsent(status))
        Die("opening a key", status);
    return key;
}

std::string Narrow(const std::wstring& text) {
    const int length = WideCharToMultiByte(
        CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), narrow.data(),
                        length, nullptr, nullptr);
    return narrow;
}

std::wstring TextOf(const RawValue& value) {
    std::wstring text(value.data.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), value.data.data(), text.size() * sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}

std::string Describe(const RawValue& value) {
    char part[32];
    if (value.type == REG_SZ)
        return "REG_SZ " + Narrow(TextOf(value));
    if (value.type == REG_DWORD && value.data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, value.data.data(), sizeof(number));
        std::snprintf(part, sizeof(part), "REG_DWORD %08lx", number);
        return part;
    }
    std::snprintf(part, sizeof(part), "type(%lu)", value.type);
    std::string text = part;
    for (const std::uint8_t byte : value.data) {
        std::snprintf(part, sizeof(part), " %02x", static_cast<unsigned>(byte));
        text += part;
    }
    return text;
}

void AppendDump(HKEY hKey, const std::wstring& relative, std::string& dump) {
    std::vector<std::string> values;
    std::vector<std::wstring> subkeys;
    wchar_t name[16384];
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(std::size(name));
        const LSTATUS status =
            RegEnumValueW(hKey, i, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        Check(status, "listing values");
        const auto value = ReadValue(hKey, L"", std::wstring(name, length));
        values.push_back(Narrow(std::wstring(name, length)) + " " +
                         (value ? Describe(*value) : "(gone)") + "\n");
    }
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(std::size(name));
        const LSTATUS status =
            RegEnumKeyExW(hKey, i, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        Check(status, "listing keys");
        subkeys.emplace_back(name, length);
    }
    std::sort(values.begin(), values.end());
    std::sort(subkeys.begin(), subkeys.end());
    dump += "[" + Narrow(relative) + "]\n";
    for (const std::string& value : values)
        dump += value;
    for (const std::wstring& subkey : subkeys) {
        if (const UniqueRegKey key = OpenToRead(hKey, subkey))
            AppendDump(key.Get(), relative.empty() ? subkey : relative + L"\\" + subkey, dump);
    }
}

}  // namespace

bool KeyExists(HKEY root, const std::wstring& path) {
    return static_cast<bool>(OpenToRead(root, path));
}

void CreateKey(HKEY root, const std::wstring& path) {
    UniqueRegKey key;
    Check(RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(),
                          nullptr),
          "creating a key");
}

void RemoveKey(HKEY root, const std::wstring& path) {
    const LSTATUS status = RegDeleteTreeW(root, path.c_str());
    if (!IsAbsent(status))
        Check(status, "removing a key");
}

void WriteValue(HKEY root, const std::wstring& path, const std::wstring& name, DWORD type,
                const void* data, std::size_t size) {
    UniqueRegKey key;
    Check(RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Put(),
                          nullptr),
          "creating a key");
    Check(RegSetValueExW(key.Get(), name.c_str(), 0, type, static_cast<const BYTE*>(data),
                         static_cast<DWORD>(size)),
          "writing a value");
}

std::optional<RawValue> ReadValue(HKEY root, const std::wstring& path,
                                  const std::wstring& name) {
    const UniqueRegKey key = OpenToRead(root, path);
    if (!key)
        return std::nullopt;
    RawValue value;
    DWORD size = 0;
    LSTATUS status =
        RegQueryValueExW(key.Get(), name.c_str(), nullptr, &value.type, nullptr, &size);
    if (IsAbsent(status))
        return std::nullopt;
    Check(status, "reading the size of a value");
    value.data.resize(size);
    if (size != 0) {
        status = RegQueryValueExW(key.Get(), name.c_str(), nullptr, &value.type,
                                  value.data.data(), &size);
        Check(status, "reading a value");
        value.data.resize(size);
    }
    return value;
}

std::optional<std::wstring> ReadString(HKEY root, const std::wstring& path,
                                       const std::wstring& name) {
    const auto value = ReadValue(root, path, name);
    if (!value || value->type != REG_SZ)
        return std::nullopt;
    return TextOf(*value);
}

std::string DumpKey(HKEY root, const std::wstring& path) {
    std::string dump;
    if (const UniqueRegKey key = OpenToRead(root, path))
        AppendDump(key.Get(), L"", dump);
    return dump;
}

std::wstring KeySetPath(KORA4KeySet keySet) {
    switch (keySet) {
        case eKeySetStatic:
            return cStaticKeysPath;
        case eKeySetDynamic:
            return cDynamicKeysPath;
        case eKeySetApp:
            return cAppKeysPath;
        default:
            Die("finding the path of a key set", static_cast<long>(keySet));
    }
}

// The value name of a property key, made with the platform's own GUID formatting.
static std::wstring ValueNameOf(const PropertyKey& key) {
    wchar_t guid[64];
    if (StringFromGUID2(std::bit_cast<GUID>(key.fmtid), guid, 64) == 0)
        Die("formatting a GUID", 0);
    return std::wstring(guid) + L"," + std::to_wstring(key.pid);
}

void RemoveStore() {
    RemoveKey(HKEY_LOCAL_MACHINE, cBaseKeyPath);
}

void ResetStore() {
    RemoveStore();
    CreateKey(HKEY_LOCAL_MACHINE, cStaticKeysPath);
    CreateKey(HKEY_LOCAL_MACHINE, cDynamicKeysPath);
}

void WriteRaw(KORA4KeySet keySet, const PropertyKey& key, DWORD type, const void* data,
              std::size_t size) {
    WriteValue(HKEY_LOCAL_MACHINE, KeySetPath(keySet), ValueNameOf(key), type, data, size);
}

void WriteStoredUINT(KORA4KeySet keySet, const PropertyKey& key, std::uint32_t value) {
    WriteRaw(keySet, key, REG_DWORD, &value, sizeof(value));
}

void WriteStoredText(KORA4KeySet keySet, const PropertyKey& key, const std::wstring& text) {
    WriteRaw(keySet, key, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void WriteStoredBlob(KORA4KeySet keySet, const PropertyKey& key,
                     const std::vector<std::uint8_t>& data) {
    WriteRaw(keySet, key, REG_BINARY, data.data(), data.size());
}

void DeleteStored(KORA4KeySet keySet, const PropertyKey& key) {
    const LSTATUS status = RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, KeySetPath(keySet).c_str(),
                                              ValueNameOf(key).c_str());
    if (!IsAbsent(status))
        Check(status, "deleting a value");
}

std::optional<RawValue> ReadRaw(KORA4KeySet keySet, const PropertyKey& key) {
    return ReadValue(HKEY_LOCAL_MACHINE, KeySetPath(keySet), ValueNameOf(key));
}

std::optional<std::uint32_t> ReadStoredUINT(KORA4KeySet keySet, const PropertyKey& key) {
    const auto value = ReadRaw(keySet, key);
    if (!value || value->type != REG_DWORD || value->data.size() != sizeof(std::uint32_t))
        return std::nullopt;
    std::uint32_t number = 0;
    std::memcpy(&number, value->data.data(), sizeof(number));
    return number;
}

std::optional<std::wstring> ReadStoredText(KORA4KeySet keySet, const PropertyKey& key) {
    return ReadString(HKEY_LOCAL_MACHINE, KeySetPath(keySet), ValueNameOf(key));
}

std::string StoreSnapshot() {
    return DumpKey(HKEY_LOCAL_MACHINE, cBaseKeyPath);
}

std::wstring ProgramFolder() {
    wchar_t path[MAX_PATH * 4];
    const DWORD length = GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    const std::wstring program(path, length);
    return program.substr(0, program.find_last_of(L'\\'));
}

std::wstring LibraryPath() {
    return ProgramFolder() + L"\\QXA64T.dll";
}

LoadedLibrary::LoadedLibrary(const std::wstring& path)
    : m_library(LoadLibraryW(path.c_str())) {}

HRESULT LoadedLibrary::CallPlain(const char* name) const {
    const FARPROC function = m_library ? GetProcAddress(m_library.Get(), name) : nullptr;
    if (!function)
        return HRESULT_FROM_WIN32(GetLastError());
    using Plain = HRESULT(STDAPICALLTYPE*)();
    return std::bit_cast<Plain>(function)();
}

HRESULT LoadedLibrary::GetClassObject(REFCLSID clsid, REFIID iid, void** ppv) const {
    const FARPROC function =
        m_library ? GetProcAddress(m_library.Get(), "DllGetClassObject") : nullptr;
    if (!function)
        return HRESULT_FROM_WIN32(GetLastError());
    using Get = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    return std::bit_cast<Get>(function)(clsid, iid, ppv);
}

RegisteredLibrary::RegisteredLibrary(const std::wstring& path) : m_library(path) {
    const HRESULT hr = m_library.RegisterServer();
    if (FAILED(hr))
        Die("registering the library", hr);
}

RegisteredLibrary::~RegisteredLibrary() {
    const HRESULT hr = m_library.UnregisterServer();
    if (FAILED(hr))
        Die("unregistering the library", hr);
}

}  // namespace kora4::test
