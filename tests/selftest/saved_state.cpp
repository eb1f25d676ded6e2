// SPDX-License-Identifier: MIT
// Keys as lines of text. Names and data are hexadecimal: whatever stands in them, a line stays
// a line.
#include "selftest/saved_state.h"

#include <objbase.h>
#include <sddl.h>
#include <veltokora4api.h>
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "base/text.h"
#include "contract/registry_paths.h"
#include "platform/handles.h"
#include "process/guarded_folder.h"

namespace kora4::selftest {

namespace {

using tools::Narrow;
using tools::Widen;

constexpr wchar_t cMachine[] = L"HKEY_LOCAL_MACHINE\\";
constexpr wchar_t cUser[] = L"HKEY_CURRENT_USER\\";
// It may be there for other products.
constexpr wchar_t cVendorKey[] = L"SOFTWARE\\Velto";

// The other lines of the file.
constexpr char cVendor[] = "vendor";
constexpr char cFolder[] = "folder ";
constexpr char cNoFolder[] = "no-folder ";
constexpr char cEnd[] = "end\n";

[[noreturn]] void Fail(const std::wstring& what, long status) {
    throw std::runtime_error(Narrow(what) + ": error " + std::to_string(status));
}

void Check(LSTATUS status, const std::wstring& what) {
    if (status != ERROR_SUCCESS)
        Fail(what, status);
}

HKEY RootOf(const std::wstring& path) {
    return path.starts_with(cUser) ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

std::wstring BelowRoot(const std::wstring& path) {
    return path.substr(path.find(L'\\') + 1);
}

// None if it does not exist.
UniqueRegKey Open(const std::wstring& path, REGSAM access) {
    UniqueRegKey key;
    const LSTATUS status =
        RegOpenKeyExW(RootOf(path), BelowRoot(path).c_str(), REG_OPTION_OPEN_LINK,
                      access | KEY_WOW64_64KEY, key.Put());
    if (status != ERROR_FILE_NOT_FOUND)
        Check(status, path);
    return key;
}

std::string Hex(const void* data, std::size_t size) {
    static constexpr char cDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        const unsigned char byte = static_cast<const unsigned char*>(data)[i];
        text += cDigits[byte / 16];
        text += cDigits[byte % 16];
    }
    return text;
}

std::string HexOf(const std::wstring& text) {
    return Hex(text.data(), text.size() * sizeof(wchar_t));
}

std::vector<BYTE> Bytes(const std::string& hex) {
    std::vector<BYTE> bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<BYTE>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::wstring TextOf(const std::string& hex) {
    const std::vector<BYTE> bytes = Bytes(hex);
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

std::wstring ListOf(const UniqueRegKey& key, const std::wstring& path) {
    DWORD size = 0;
    RegGetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, nullptr, &size);
    std::vector<BYTE> descriptor(size);
    Check(RegGetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor.data(), &size),
          path);
    wchar_t* text = nullptr;
    if (!ConvertSecurityDescriptorToStringSecurityDescriptorW(
            descriptor.data(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr))
        Fail(path, static_cast<long>(GetLastError()));
    const UniqueLocalMemory memory(text);
    return text;
}

// "key PATH LIST", then "value TYPE NAME DATA" for each, then the subkeys.
void Append(std::ostream& out, const std::wstring& path) {
    const UniqueRegKey key = Open(path, KEY_READ);
    if (!key)
        return;
    out << "key " << HexOf(path) << ' ' << HexOf(ListOf(key, path)) << '\n';
    std::vector<wchar_t> name(16384);
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size());
        DWORD type = 0;
        DWORD size = 0;
        LSTATUS status =
            RegEnumValueW(key.Get(), i, name.data(), &length, nullptr, &type, nullptr, &size);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        Check(status, path);
        std::vector<BYTE> data(size + 1);
        Check(RegQueryValueExW(key.Get(), name.data(), nullptr, &type, data.data(), &size),
              path);
        out << "value " << type << ' ' << HexOf(std::wstring(name.data(), length)) << "- "
            << Hex(data.data(), size) << "-\n";
    }
    std::vector<std::wstring> subkeys;
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size());
        const LSTATUS status = RegEnumKeyExW(key.Get(), i, name.data(), &length, nullptr,
                                             nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        Check(status, path);
        subkeys.emplace_back(name.data(), length);
    }
    for (const std::wstring& subkey : subkeys)
        Append(out, path + L"\\" + subkey);
}

std::string KeysAsText() {
    std::ostringstream out;
    for (const std::wstring& path : SavedKeys())
        Append(out, path);
    return out.str();
}

void RemoveKeys() {
    for (const std::wstring& path : SavedKeys()) {
        const LSTATUS status = RegDeleteTreeW(RootOf(path), BelowRoot(path).c_str());
        if (status != ERROR_FILE_NOT_FOUND)
            Check(status, path);
    }
}

// One line of what was saved; values belong to the key before. The list of each key comes last:
// it may refuse what is written.
class Writer {
  public:
    void Read(const std::string& line) {
        std::istringstream in(line);
        std::string kind;
        in >> kind;
        if (kind == "key")
            ReadKey(in);
        else if (kind == "value")
            ReadValue(in);
    }
    void SetLists() const {
        for (const auto& [path, list] : m_lists) {
            const UniqueRegKey key = Open(path, WRITE_DAC);
            UniqueLocalMemory descriptor;
            ConvertStringSecurityDescriptorToSecurityDescriptorW(list.c_str(), SDDL_REVISION_1,
                                                                 descriptor.Put(), nullptr);
            Check(RegSetKeySecurity(key.Get(), DACL_SECURITY_INFORMATION, descriptor.Get()),
                  path);
        }
    }

  private:
    void ReadKey(std::istream& in) {
        std::string path;
        std::string list;
        in >> path >> list;
        m_path = TextOf(path);
        Check(RegCreateKeyExW(RootOf(m_path), BelowRoot(m_path).c_str(), 0, nullptr, 0,
                              KEY_WRITE | KEY_WOW64_64KEY, nullptr, m_key.Put(), nullptr),
              m_path);
        m_lists.emplace_back(m_path, TextOf(list));
    }
    void ReadValue(std::istream& in) {
        DWORD type = 0;
        std::string name;
        std::string hex;
        in >> type >> name >> hex;
        // The platform adds the terminator that it finds behind a text without one.
        std::vector<BYTE> data = Bytes(hex);
        const DWORD size = static_cast<DWORD>(data.size());
        data.insert(data.end(), 4, 0xFF);
        Check(RegSetValueExW(m_key.Get(), TextOf(name).c_str(), 0, type, data.data(), size),
              m_path);
    }

    std::wstring m_path;
    UniqueRegKey m_key;
    std::vector<std::pair<std::wstring, std::wstring>> m_lists;
};

// ---- Folders ----------------------------------------------------------------------------

std::vector<std::wstring> SavedFolders() {
    return {L"C:\\KalLogs", Widen(tools::DataFolder())};
}

std::wstring Aside(const std::wstring& folder) {
    return folder + L".of-selftest";
}

bool IsThere(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void Rename(const std::wstring& from, const std::wstring& to) {
    if (!MoveFileExW(from.c_str(), to.c_str(), 0))
        Fail(from + L" cannot be renamed", static_cast<long>(GetLastError()));
}

// What the tests made goes; what was there comes back.
void RestoreFolder(const std::wstring& folder, bool wasThere) {
    const std::wstring aside = Aside(folder);
    if (wasThere && !IsThere(aside))
        return;  // it was never renamed, or is back
    std::error_code error;
    std::filesystem::remove_all(folder, error);
    if (error)
        Fail(folder + L" cannot be removed", error.value());
    if (wasThere)
        Rename(aside, folder);
}

// ---- The file ---------------------------------------------------------------------------

std::string ReadFile(const std::wstring& path) {
    std::ostringstream text;
    text << std::ifstream(std::filesystem::path(path), std::ios::binary).rdbuf();
    return text.str();
}

// Under another name until it is complete.
void WriteFile(const std::wstring& path, const std::string& text) {
    const std::wstring draft = path + L".new";
    std::ofstream file(std::filesystem::path(draft), std::ios::binary);
    file << text;
    file.close();
    if (!file || !MoveFileExW(draft.c_str(), path.c_str(),
                              MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        Fail(path, static_cast<long>(GetLastError()));
}

void Save(const std::wstring& file) {
    std::string text = KeysAsText();
    if (Open(std::wstring(cMachine) + cVendorKey, KEY_READ))
        text += std::string(cVendor) + "\n";
    for (const std::wstring& folder : SavedFolders()) {
        if (IsThere(Aside(folder)))
            Fail(Aside(folder) + L" is left from an earlier run", ERROR_ALREADY_EXISTS);
        text += (IsThere(folder) ? cFolder : cNoFolder) + HexOf(folder) + "\n";
    }
    WriteFile(file, text + cEnd);
    for (const std::wstring& folder : SavedFolders())
        if (IsThere(folder))
            Rename(folder, Aside(folder));
}

bool IsOfKeys(const std::string& line) {
    return line.starts_with("key ") || line.starts_with("value ");
}

// Keys that are as they were stay untouched: their clients need not look again.
void RestoreKeys(const std::string& saved) {
    if (saved == KeysAsText())
        return;
    RemoveKeys();
    Writer writer;
    std::istringstream in(saved);
    for (std::string line; std::getline(in, line);)
        writer.Read(line);
    writer.SetLists();
}

void Restore(const std::wstring& file) {
    const std::string text = ReadFile(file);
    if (!text.ends_with(cEnd))
        Fail(file + L" is damaged", ERROR_INVALID_DATA);
    std::string keys;
    bool isVendorThere = false;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (IsOfKeys(line))
            keys += line + "\n";
        isVendorThere = isVendorThere || line == cVendor;
        const bool wasThere = line.starts_with(cFolder);
        if (wasThere || line.starts_with(cNoFolder))
            RestoreFolder(TextOf(line.substr(line.find(' ') + 1)), wasThere);
    }
    RestoreKeys(keys);
    // Only if nothing is left in it.
    if (!isVendorThere)
        RegDeleteKeyExW(HKEY_LOCAL_MACHINE, cVendorKey, KEY_WOW64_64KEY, 0);
    if (!DeleteFileW(file.c_str()))
        Fail(file, static_cast<long>(GetLastError()));
}

bool Done(void (*work)(const std::wstring&), const std::wstring& file) {
    try {
        work(file);
        return true;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return false;
    }
}

std::wstring GuidText(const GUID& guid) {
    wchar_t text[64] = L"";
    StringFromGUID2(guid, text, 64);
    return text;
}

}  // namespace

std::vector<std::wstring> SavedKeys() {
    const std::wstring classes = L"SOFTWARE\\Classes\\";
    std::vector<std::wstring> keys{std::wstring(cMachine) + cBaseKeyPath};
    std::vector<std::wstring> ofClasses{
        L"CLSID\\" + GuidText(CLSID_VeltoKORA4APITestCoclass),
        L"AppID\\{D4086C01-F20F-480F-A293-938122C6452B}",
        L"AppID\\QXA64T.DLL",
        L"TypeLib\\{4D455D10-5B43-48E6-AE4E-308A29CFE9D1}",
    };
    // A proxy's class has the identifier of its first interface.
    for (const GUID& iid : {IID_IVeltoKORA4API, IID_IVeltoKORA4APICallback}) {
        ofClasses.push_back(L"CLSID\\" + GuidText(iid));
        ofClasses.push_back(L"Interface\\" + GuidText(iid));
    }
    for (const wchar_t* root : {cMachine, cUser})
        for (const std::wstring& key : ofClasses)
            keys.push_back(root + classes + key);
    return keys;
}

std::vector<std::wstring> WhatIsThere() {
    std::vector<std::wstring> found;
    for (const std::wstring& key : SavedKeys()) {
        UniqueRegKey opened;
        if (RegOpenKeyExW(RootOf(key), BelowRoot(key).c_str(), 0, KEY_READ | KEY_WOW64_64KEY,
                          opened.Put()) != ERROR_FILE_NOT_FOUND)
            found.push_back(key);
    }
    return found;
}

bool SaveState(const std::wstring& file) {
    return Done(&Save, file);
}

bool RestoreState(const std::wstring& file) {
    return Done(&Restore, file);
}

}  // namespace kora4::selftest
