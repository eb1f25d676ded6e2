// SPDX-License-Identifier: MIT
// The text form of a single float: what "%f" gives, whatever the host's locale.
//
// Pure functions: no allocation, no lock, any thread; neither the C runtime's formatted
// input and output nor the processor's rounding mode takes part.
#pragma once

#include <cstddef>

namespace kora4::codec {

// Room for every float: a sign, 39 digits, the point, 6 digits and the terminator are 48.
inline constexpr std::size_t cFloatTextChars = 64;

// The exact value rounded half to even to six decimals, zero-terminated; returns the
// number of characters. NaN and the infinities give "nan", "inf" and "-inf", which
// ParseFloat does not convert back: a reader then takes its default.
std::size_t FormatFloat(float value, char16_t (&text)[cFloatTextChars]);

// Converts the decimal number that the zero-terminated text begins with: white space
// (blank, \t \n \v \f \r), a sign, digits with or without a point, an exponent. What
// follows the number is ignored. False, and *pValue is unchanged, if there is no such number (a
// null text, "nan", "inf", anything that begins like a hexadecimal number) or its magnitude
// rounds to more than the largest float. A magnitude too small gives a denormal or a zero of
// its sign. Correctly rounded, half to even.
bool ParseFloat(const char16_t* pText, float* pValue);

}  // namespace kora4::codec
