// SPDX-License-Identifier: MIT
// One value of the store as the registry holds it: a type and bytes, right or wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/value_kind.h"

namespace kora4::tools {

using Bytes = std::vector<std::uint8_t>;

// More than this of a value is never read: no reader of the store takes nearly as much.
inline constexpr std::size_t cMaxReadBytes = 1u << 20;

// The type is checked by the readers below, not on construction: anything that the registry
// can hold fits.
struct StoredValue {
    std::uint32_t type = 0;  // REG_DWORD, REG_SZ, REG_BINARY, or whatever stands there
    Bytes bytes;
    // The size of a value that was not read, because it has more than cMaxReadBytes; `bytes`
    // are empty then, and readers take it for absent.
    std::uint32_t unread = 0;

    // REG_DWORD of four bytes.
    static StoredValue FromDword(std::uint32_t number);
    // REG_SZ with its terminator.
    static StoredValue FromText(std::u16string_view text);
    // REG_BINARY.
    static StoredValue FromBlob(Bytes bytes);

    // A REG_DWORD of four bytes; none for anything else.
    std::optional<std::uint32_t> AsDword() const;
    // A REG_SZ as the library reads it: up to the first terminator, or to its end when there
    // is none; an odd last byte is dropped. None for another type and above cMaxTextBytes.
    std::optional<std::u16string> AsText() const;

    // A REG_BINARY; none for another type.
    std::optional<Bytes> AsBlob() const;

    friend bool operator==(const StoredValue&, const StoredValue&) = default;
};

// "REG_DWORD"; "type 12" for a number that is not a registry type.
std::string TypeName(std::uint32_t type);

// What is stored, for people, in one line: the number, the text in quotes, or the bytes in
// hexadecimal digits (at most `longest` characters, then "..."), with the type when it is no
// usual form.
std::string Describe(const StoredValue& value, std::size_t longest = 60);

// Two lower-case digits a byte, without separators.
std::string ToHex(const Bytes& bytes);
// None unless the text is an even number of hexadecimal digits.
std::optional<Bytes> FromHex(std::string_view digits);

// Between UTF-8 and UTF-16. Malformed text becomes U+FFFD.
std::u16string ToUtf16(std::string_view text);
std::string ToUtf8(std::u16string_view text);

}  // namespace kora4::tools
