// SPDX-License-Identifier: MIT
// Reads and writes the model's values in the registry, and describes the first difference.
#include "model/stored_values.h"

#include <cstring>
#include <set>

namespace kora4::test {

namespace {

constexpr DWORD cCapacity = 4096;  // bytes of a value

UniqueRegKey OpenKey(const wchar_t* key) {
    UniqueRegKey opened;
    const std::wstring path = std::wstring(L"SOFTWARE\\Velto\\KORA4\\") + key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | KEY_WRITE,
                      opened.Put()) != ERROR_SUCCESS)
        Die("the keys of the store cannot be opened");
    return opened;
}

// A type that the model does not know is shown by its number.
StoreModel::Value ValueOf(DWORD type, const BYTE* data, DWORD size) {
    if (type == REG_DWORD && size == sizeof(DWORD)) {
        std::uint32_t number = 0;
        std::memcpy(&number, data, sizeof number);
        return number;
    }
    std::wstring text(size / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data, text.size() * sizeof(wchar_t));
    if (type == REG_SZ && !text.empty() && text.back() == L'\0') {
        text.pop_back();
        return text;
    }
    return L"type " + std::to_wstring(type) + L", " + std::to_wstring(size) + L" bytes";
}

std::string Narrow(const std::wstring& wide) {
    std::string text;
    for (const wchar_t c : wide)
        text += c < 0x7F ? static_cast<char>(c) : '?';
    return text;
}

}  // namespace

StoredValues::StoredValues() : m_static(OpenKey(cStatic)), m_dynamic(OpenKey(cDynamic)) {}

std::optional<StoreModel::Value> StoredValues::Read(const StoreModel::Address& address) const {
    BYTE data[cCapacity];
    DWORD size = sizeof data;
    DWORD type = 0;
    if (RegQueryValueExW(KeyOf(address.first), address.second.c_str(), nullptr, &type, data,
                         &size) != ERROR_SUCCESS)
        return std::nullopt;
    return ValueOf(type, data, size);
}

StoreModel::Values StoredValues::ReadAll() const {
    StoreModel::Values values;
    for (const bool dynamic : {false, true}) {
        for (DWORD i = 0;; ++i) {
            wchar_t name[256];
            DWORD length = 256;
            BYTE data[cCapacity];
            DWORD size = sizeof data;
            DWORD type = 0;
            const LSTATUS status =
                RegEnumValueW(KeyOf(dynamic), i, name, &length, nullptr, &type, data, &size);
            if (status == ERROR_NO_MORE_ITEMS)
                break;
            if (status != ERROR_SUCCESS)
                Die("the values of the store cannot be listed");
            values.emplace(StoreModel::Address{dynamic, std::wstring(name, length)},
                           ValueOf(type, data, size));
        }
    }
    return values;
}

void StoredValues::Write(const StoreModel::Address& address,
                         const StoreModel::Value& value) const {
    const wchar_t* name = address.second.c_str();
    LSTATUS status = ERROR_SUCCESS;
    if (const auto* pNumber = std::get_if<std::uint32_t>(&value)) {
        status = RegSetValueExW(KeyOf(address.first), name, 0, REG_DWORD,
                                reinterpret_cast<const BYTE*>(pNumber), sizeof *pNumber);
    } else {
        const std::wstring& text = std::get<std::wstring>(value);
        status = RegSetValueExW(KeyOf(address.first), name, 0, REG_SZ,
                                reinterpret_cast<const BYTE*>(text.c_str()),
                                static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }
    if (status != ERROR_SUCCESS)
        Die("a value of the store cannot be written");
}

std::string Text(const StoreModel::Address& address,
                 const std::optional<StoreModel::Value>& value) {
    std::string text =
        (address.first ? "dynamic " : "static ") + Narrow(address.second) + " = ";
    if (!value)
        return text + "(absent)";
    if (const auto* pNumber = std::get_if<std::uint32_t>(&*value))
        return text + std::to_string(*pNumber);
    return text + "'" + Narrow(std::get<std::wstring>(*value)) + "'";
}

std::string Difference(const StoreModel::Values& model, const StoreModel::Values& stored) {
    const auto find = [](const StoreModel::Values& values, const StoreModel::Address& address) {
        const auto found = values.find(address);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    };
    std::set<StoreModel::Address> addresses;
    for (const auto& [address, value] : model)
        addresses.insert(address);
    for (const auto& [address, value] : stored)
        addresses.insert(address);
    std::string difference;
    for (const StoreModel::Address& address : addresses) {
        const auto expected = find(model, address);
        const auto actual = find(stored, address);
        if (expected != actual)
            difference += "  model: " + Text(address, expected) +
                          "\n  store: " + Text(address, actual) + "\n";
    }
    return difference;
}

}  // namespace kora4::test
