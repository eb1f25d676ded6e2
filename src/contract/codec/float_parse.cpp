// SPDX-License-Identifier: MIT
// Reads a decimal text as the nearest float, in integer arithmetic: locale, C runtime and the
// rounding mode of the processor belong to the host.
#include <algorithm>
#include <bit>
#include <cstdint>

#include "contract/codec/big_number.h"
#include "contract/codec/float_text.h"
#include "contract/codec/white_space.h"

namespace kora4::codec {

namespace {

// The midpoint between two floats has at most 113 significant digits; of what follows
// these it only matters whether it is zero.
constexpr int cDigitLimit = 120;

constexpr int cMantissaBits = 23;
constexpr int cLowestExponent = -149;  // of the last mantissa bit
constexpr int cHighestExponent = 104;

// Decimal magnitudes (the place of the first digit) that need no arithmetic: from 10^39
// on too large, below 10^-46 less than half the smallest denormal.
constexpr std::int64_t cHighestPlace = 39;
constexpr std::int64_t cLowestPlace = -46;

// Exponents are cut to this: far outside the floats, and safe to add text lengths to.
constexpr std::int64_t cExponentLimit = std::int64_t{1} << 40;

constexpr bool IsDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

// digits * 10^exponent; no digits stand for zero.
struct DecimalNumber {
    BigNumber digits{0};
    int digitCount = 0;
    std::int64_t exponent = 0;
};

// Digits after the limit are dropped, except for one that stands for all that are not zero.
void AddDigit(DecimalNumber& number, std::uint32_t digit, bool afterPoint) {
    const bool leadingZero = number.digitCount == 0 && digit == 0;
    const bool atLimit = number.digitCount == cDigitLimit;
    const bool dropped = number.digitCount > cDigitLimit || (atLimit && digit == 0);
    if (dropped) {
        number.exponent += afterPoint ? 0 : 1;
        return;
    }
    number.exponent -= afterPoint ? 1 : 0;
    if (leadingZero)
        return;
    number.digits.MultiplyAdd(10, atLimit ? 1 : digit);
    ++number.digitCount;
}

// Reads the digits and the point; null when there is no digit.
const char16_t* ReadDigits(const char16_t* p, DecimalNumber& number) {
    const char16_t* const pWhole = p;
    for (; IsDigit(*p); ++p)
        AddDigit(number, static_cast<std::uint32_t>(*p - u'0'), false);
    bool any = p != pWhole;
    if (*p == u'.') {
        const char16_t* const pFraction = ++p;
        for (; IsDigit(*p); ++p)
            AddDigit(number, static_cast<std::uint32_t>(*p - u'0'), true);
        any = any || p != pFraction;
    }
    return any ? p : nullptr;
}

// The exponent at p, or 0 when there is none.
std::int64_t ReadExponent(const char16_t* p) {
    if (*p != u'e' && *p != u'E')
        return 0;
    ++p;
    const bool negative = *p == u'-';
    if (*p == u'-' || *p == u'+')
        ++p;
    std::int64_t exponent = 0;
    for (; IsDigit(*p); ++p)
        exponent = std::min(exponent * 10 + (*p - u'0'), cExponentLimit);
    return negative ? -exponent : exponent;
}

// The bits of the float nearest to quotient * 2^exponent, or to a little more when there is a
// remainder; false when it is too large. The quotient has the mantissa and one bit to round by,
// or more; denormals have fewer.
bool RoundToFloat(std::uint64_t quotient, bool hasRemainder, int exponent,
                  std::uint32_t* pBits) {
    const int excess =
        std::max(static_cast<int>(std::bit_width(quotient)) - (cMantissaBits + 2), 0);
    const bool sticky = hasRemainder || (quotient & ((std::uint64_t{1} << excess) - 1)) != 0;
    auto mantissa = static_cast<std::uint32_t>(quotient >> excess);
    const bool half = (mantissa & 1) != 0;
    mantissa >>= 1;
    exponent += excess + 1;
    if (half && (sticky || (mantissa & 1) != 0))
        ++mantissa;
    if (mantissa >> (cMantissaBits + 1) != 0) {
        mantissa >>= 1;
        ++exponent;
    }
    if (exponent > cHighestExponent)
        return false;
    // A mantissa without its leading bit is a denormal's and adds no exponent.
    const auto biased = static_cast<std::uint32_t>(exponent - cLowestExponent);
    *pBits = (biased << cMantissaBits) + mantissa;
    return true;
}

// The same for a decimal number that is not zero.
bool RoundToFloat(const DecimalNumber& number, std::uint32_t* pBits) {
    const std::int64_t place = number.exponent + number.digitCount - 1;
    if (place >= cHighestPlace)
        return false;
    if (place < cLowestPlace) {
        *pBits = 0;
        return true;
    }
    BigNumber numerator = number.digits;
    BigNumber denominator(1);
    const int power = static_cast<int>(number.exponent);
    numerator.MultiplyByPowerOfTen(std::max(power, 0));
    denominator.MultiplyByPowerOfTen(std::max(-power, 0));

    // The quotient in units of 2^exponent gets the mantissa, one bit to round by, and
    // possibly one bit more. Denormals get fewer bits.
    constexpr int cQuotientBits = cMantissaBits + 3;
    int exponent = numerator.BitLength() - denominator.BitLength() - cMantissaBits - 2;
    exponent = std::max(exponent, cLowestExponent - 1);
    denominator.ShiftLeft(cQuotientBits + std::max(exponent, 0));
    numerator.ShiftLeft(std::max(-exponent, 0));
    std::uint32_t quotient = 0;
    for (int i = 0; i < cQuotientBits; ++i) {
        numerator.ShiftLeft(1);
        quotient <<= 1;
        if (!numerator.IsBelow(denominator)) {
            numerator.Subtract(denominator);
            quotient |= 1;
        }
    }

    return RoundToFloat(quotient, !numerator.IsZero(), exponent, pBits);
}

// Reads a number of any length; false when there is none, or none that a float can hold.
bool ReadLong(const char16_t* p, std::uint32_t* pBits) {
    DecimalNumber number;
    p = ReadDigits(p, number);
    if (p == nullptr)
        return false;
    *pBits = 0;
    if (number.digitCount == 0)
        return true;
    number.exponent += ReadExponent(p);
    return RoundToFloat(number, pBits);
}

// The same for the form that the library and nearly all others write: few digits and no
// exponent, so that 64 bits are enough. False for all other texts.
bool ReadShort(const char16_t* p, std::uint32_t* pBits) {
    constexpr int cShortDigits = 18;                   // less than 2^63
    constexpr std::uint64_t cMaxPower = 100000000000;  // leaves a quotient of 27 bits or more
    std::uint64_t digits = 0;
    std::uint64_t power = 1;  // of ten, by the digits behind the point
    int count = 0;
    bool afterPoint = false;
    for (; count <= cShortDigits; ++p) {
        if (IsDigit(*p)) {
            digits = digits * 10 + static_cast<std::uint64_t>(*p - u'0');
            power *= afterPoint ? 10 : 1;
            ++count;
        } else if (*p == u'.' && !afterPoint) {
            afterPoint = true;
        } else {
            break;
        }
    }
    if (count == 0 || count > cShortDigits || power > cMaxPower || *p == u'e' || *p == u'E')
        return false;
    *pBits = 0;
    if (digits == 0)
        return true;
    const int shift = std::countl_zero(digits);
    digits <<= shift;
    return RoundToFloat(digits / power, digits % power != 0, -shift, pBits);
}

}  // namespace

bool ParseFloat(const char16_t* pText, float* pValue) {
    if (pText == nullptr)
        return false;
    const char16_t* p = SkipWhiteSpace(pText);
    const bool negative = *p == u'-';
    if (*p == u'-' || *p == u'+')
        ++p;
    if (p[0] == u'0' && (p[1] == u'x' || p[1] == u'X'))
        return false;

    std::uint32_t bits;
    if (!ReadShort(p, &bits) && !ReadLong(p, &bits))
        return false;
    *pValue = std::bit_cast<float>(bits | (negative ? 1u << 31 : 0u));
    return true;
}

}  // namespace kora4::codec
