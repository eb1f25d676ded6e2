// SPDX-License-Identifier: MIT
// The compile-time check whether the format of a trace statement fits its arguments.
#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "contract/messages/conversion.h"

namespace kora4::trace {

template <typename... Arguments>
struct Types {};

// The types of the arguments as they are passed; never called.
template <typename... Arguments>
Types<Arguments...> TypesOf(Arguments...);

template <typename Argument>
consteval bool Takes(const contract::Conversion& conversion) {
    using Pointee = std::remove_cv_t<std::remove_pointer_t<Argument>>;
    constexpr bool cIsPointer = std::is_pointer_v<Argument>;
    switch (conversion.kind) {
        case 's':
        case 'S':
            // The same 16 bits under two names, and another width in native builds.
            if (conversion.IsWide())
                return cIsPointer &&
                       (std::is_same_v<Pointee, wchar_t> || std::is_same_v<Pointee, char16_t>);
            return cIsPointer && std::is_same_v<Pointee, char>;
        case 'd':
        case 'u':
        case 'x':
        case 'X':
            return std::is_integral_v<Argument> && sizeof(Argument) <= 4;
        case 'p':
            return cIsPointer;
        case 'f':
            return std::is_floating_point_v<Argument> && sizeof(Argument) <= sizeof(double);
        default:
            return false;
    }
}

consteval contract::Conversion NextConversion(std::string_view* pFormat) {
    pFormat->remove_prefix(pFormat->find('%'));
    const contract::Conversion conversion = contract::ConversionAt(*pFormat);
    pFormat->remove_prefix(conversion.length);
    return conversion;
}

// One fitting conversion for each argument, in order, and no other.
template <typename... Arguments>
consteval bool FitsFormat(std::string_view format, Types<Arguments...>) {
    const bool fits = ((format.find('%') != std::string_view::npos &&
                        Takes<Arguments>(NextConversion(&format))) &&
                       ...);
    return fits && format.find('%') == std::string_view::npos;
}

}  // namespace kora4::trace
