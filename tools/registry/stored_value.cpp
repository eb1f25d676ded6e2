// SPDX-License-Identifier: MIT
// Makes and reads the three types that the store has, and shows every other one.
#include "registry/stored_value.h"

#include <cstring>

#include "base/shown_text.h"
#include "base/text.h"

namespace kora4::tools {
namespace {

std::u16string CharactersOf(const Bytes& bytes) {
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    if (!text.empty())
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    return text;
}

std::string Shortened(std::string text, std::size_t longest) {
    if (text.size() <= longest)
        return text;
    // Cuts between characters, never inside one of several bytes.
    while (longest > 0 && (static_cast<unsigned char>(text[longest]) & 0xC0) == 0x80)
        --longest;
    return text.substr(0, longest) + "...";
}

}  // namespace

StoredValue StoredValue::FromDword(std::uint32_t number) {
    StoredValue value{cDwordType, Bytes(sizeof number)};
    std::memcpy(value.bytes.data(), &number, sizeof number);
    return value;
}

StoredValue StoredValue::FromText(std::u16string_view text) {
    StoredValue value{cTextType, Bytes((text.size() + 1) * sizeof(char16_t))};
    if (!text.empty())
        std::memcpy(value.bytes.data(), text.data(), text.size() * sizeof(char16_t));
    return value;
}

StoredValue StoredValue::FromBlob(Bytes bytes) {
    return {cBinaryType, std::move(bytes)};
}

std::optional<std::uint32_t> StoredValue::AsDword() const {
    std::uint32_t number = 0;
    if (type != cDwordType || bytes.size() != sizeof number)
        return {};
    std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

std::optional<std::u16string> StoredValue::AsText() const {
    if (type != cTextType || bytes.size() > cMaxTextBytes || unread != 0)
        return {};
    std::u16string text = CharactersOf(bytes);
    if (const std::size_t end = text.find(u'\0'); end != std::u16string::npos)
        text.resize(end);
    return text;
}

std::optional<Bytes> StoredValue::AsBlob() const {
    if (type != cBinaryType || unread != 0)
        return {};
    return bytes;
}

std::string TypeName(std::uint32_t type) {
    static constexpr const char* cNames[] = {
        "REG_NONE",
        "REG_SZ",
        "REG_EXPAND_SZ",
        "REG_BINARY",
        "REG_DWORD",
        "REG_DWORD_BIG_ENDIAN",
        "REG_LINK",
        "REG_MULTI_SZ",
        "REG_RESOURCE_LIST",
        "REG_FULL_RESOURCE_DESCRIPTOR",
        "REG_RESOURCE_REQUIREMENTS_LIST",
        "REG_QWORD",
    };
    if (type < std::size(cNames))
        return cNames[type];
    return "type " + std::to_string(type);
}

std::string Describe(const StoredValue& value, std::size_t longest) {
    if (const auto number = value.AsDword())
        return std::to_string(*number);
    if (const auto text = value.AsText())
        return "'" + Shortened(ShownText(ToUtf8(*text)), longest) + "'";
    const std::string size = std::to_string(value.bytes.size() + value.unread);
    if (value.bytes.empty())
        return TypeName(value.type) + " of " + size + " bytes";
    return TypeName(value.type) + " of " + size + (size == "1" ? " byte: " : " bytes: ") +
           Shortened(ToHex(value.bytes), longest);
}

std::string ToHex(const Bytes& bytes) {
    static constexpr char cDigits[] = "0123456789abcdef";
    std::string hex;
    hex.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        hex += cDigits[byte >> 4];
        hex += cDigits[byte & 0xF];
    }
    return hex;
}

std::optional<Bytes> FromHex(std::string_view digits) {
    if (digits.size() % 2 != 0)
        return {};
    Bytes bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        const std::optional<std::uint8_t> byte =
            ReadNumber<std::uint8_t>(digits.substr(i, 2), 16);
        if (!byte)
            return {};
        bytes.push_back(*byte);
    }
    return bytes;
}

std::u16string ToUtf16(std::string_view text) {
    const std::wstring wide = Widen(text);
    return {wide.begin(), wide.end()};
}

std::string ToUtf8(std::u16string_view text) {
    return Narrow(std::wstring(text.begin(), text.end()));
}

}  // namespace kora4::tools
