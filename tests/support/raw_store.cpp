// SPDX-License-Identifier: MIT
// Value names put together from numbers, and registry calls on them.
#include "support/raw_store.h"

#include <cwchar>

namespace kora4::test {
namespace {

constexpr wchar_t cBase[] = L"SOFTWARE\\Velto\\KORA4";

std::wstring Path(const wchar_t* key) {
    return std::wstring(cBase) + L"\\" + key;
}

std::wstring Name(std::uint32_t first, const wchar_t* rest, std::uint32_t pid) {
    wchar_t text[64];
    std::swprintf(text, 64, L"{%08X-%ls},%u", static_cast<unsigned>(first), rest,
                  static_cast<unsigned>(pid));
    return text;
}

void Set(const wchar_t* key, const std::wstring& name, DWORD type, const void* data,
         std::size_t size) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, Path(key).c_str(), name.c_str(), type, data,
                    static_cast<DWORD>(size));
}

}  // namespace

std::wstring SettingName(std::uint32_t pid) {
    return Name(0x5C2E8A47, L"91D3-4B6F-A0E2-3F7C19B84D60", pid);
}

std::wstring MasterEnablesName() {
    return Name(0x2B7E1F93, L"6C40-4D85-A1F7-93D0C5E8B426", 0);
}

std::wstring PatchName(RawTechnology technology, std::uint32_t profile, std::uint32_t pid) {
    return Name(0x5E0A0000 | profile << 8 | static_cast<std::uint32_t>(technology),
                L"2C71-4B9E-8F36-D41A07C9B2E5", pid);
}

std::wstring TriggerName(RawTechnology technology) {
    return Name(0x3D95E200 | static_cast<std::uint32_t>(technology),
                L"7A1C-4F08-9B64-C2E8510FA93D", 0);
}

std::wstring GlobalPatchName(std::uint32_t offset, std::uint32_t pid) {
    return Name(0x8F3B6A00 | offset, L"D24C-4E71-9C05-B7E2164A3D98", pid);
}

std::wstring GlobalTriggerName(std::uint32_t offset) {
    return Name(0xC6417F00 | offset, L"0B5E-4A2D-8E93-6F21D4B7A058", 0);
}

std::wstring ProfileNameName(std::uint32_t profile) {
    return Name(0x71C40000 | profile << 8, L"3FA8-4D12-B65B-0E927DA4C813", 0);
}

RawStore::RawStore() {
    DeleteKeys();
    CreateKeys();
}

RawStore::~RawStore() {
    DeleteKeys();
}

void RawStore::DeleteKeys() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, cBase);
}

void RawStore::CreateKeys() {
    for (const wchar_t* key : {cStatic, cDynamic, cApp}) {
        UniqueRegKey created;
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, Path(key).c_str(), 0, nullptr, 0, KEY_READ, nullptr,
                        created.Put(), nullptr);
    }
}

bool RawStore::KeyExists(const wchar_t* key) {
    UniqueRegKey opened;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, Path(key).c_str(), 0, KEY_READ, opened.Put()) ==
           ERROR_SUCCESS;
}

void RawStore::SetNumber(const wchar_t* key, const std::wstring& name, DWORD value) {
    Set(key, name, REG_DWORD, &value, sizeof value);
}

void RawStore::SetText(const wchar_t* key, const std::wstring& name, const std::wstring& text) {
    Set(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void RawStore::SetBytes(const wchar_t* key, const std::wstring& name,
                        const std::vector<std::uint8_t>& bytes) {
    Set(key, name, REG_BINARY, bytes.data(), bytes.size());
}

std::optional<DWORD> RawStore::Number(const wchar_t* key, const std::wstring& name) {
    DWORD value = 0;
    DWORD size = sizeof value;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, Path(key).c_str(), name.c_str(), RRF_RT_REG_DWORD,
                     nullptr, &value, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return value;
}

std::optional<std::wstring> RawStore::Text(const wchar_t* key, const std::wstring& name) {
    wchar_t text[2048];
    DWORD size = sizeof text;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, Path(key).c_str(), name.c_str(), RRF_RT_REG_SZ,
                     nullptr, text, &size) != ERROR_SUCCESS)
        return std::nullopt;
    return std::wstring(text);
}

DWORD RawStore::Count(const wchar_t* key) {
    DWORD count = 0;
    UniqueRegKey opened;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, Path(key).c_str(), 0, KEY_READ, opened.Put());
    RegQueryInfoKeyW(opened.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count,
                     nullptr, nullptr, nullptr, nullptr);
    return count;
}

void RawStore::Bump(const std::wstring& name) {
    SetNumber(cDynamic, name, Number(cDynamic, name).value_or(0) + 1);
}

RawTransaction::RawTransaction()
    : m_mutex(CreateMutexW(nullptr, FALSE, L"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}")) {
    WaitForSingleObject(m_mutex.Get(), INFINITE);
}

RawTransaction::~RawTransaction() {
    ReleaseMutex(m_mutex.Get());
}

}  // namespace kora4::test
