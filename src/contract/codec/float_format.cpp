// SPDX-License-Identifier: MIT
// Writes a float with six decimals, exactly rounded, in integer arithmetic: locale, C runtime
// and the rounding mode of the processor belong to the host.
#include <array>
#include <bit>
#include <cstdint>

#include "contract/codec/float_text.h"

namespace kora4::codec {

namespace {

constexpr std::uint32_t cMantissaBits = 23;
constexpr std::uint32_t cMantissaMask = (1u << cMantissaBits) - 1;
constexpr std::uint32_t cExponentMask = 0xFF;
constexpr int cLowestExponent = -149;      // of the last mantissa bit
constexpr std::uint64_t cMicro = 1000000;  // the six decimals as an integer

std::size_t Put(char16_t* pText, const char16_t* pName) {
    std::size_t length = 0;
    for (; pName[length] != u'\0'; ++length)
        pText[length] = pName[length];
    pText[length] = u'\0';
    return length;
}

// A finite magnitude as whole * 2^shift + micros / 10^6, `shift` only with a whole part
// of more than 24 bits.
struct Decimal {
    std::uint32_t whole;
    int shift;
    std::uint32_t micros;
};

Decimal Split(std::uint32_t mantissa, int exponent) {
    if (exponent >= 0)
        return {mantissa, exponent, 0};
    const int places = -exponent;
    // The product of mantissa and 10^6, less than 2^44, is far under a half of 2^places.
    if (places >= 64)
        return {0, 0, 0};
    const std::uint64_t unit = std::uint64_t{1} << places;
    const std::uint64_t fraction = mantissa & (unit - 1);
    const std::uint64_t scaled = fraction * cMicro;
    const std::uint64_t remainder = scaled & (unit - 1);
    std::uint64_t micros = scaled >> places;
    if (remainder > unit / 2 || (remainder == unit / 2 && (micros & 1) != 0))
        ++micros;
    const auto whole = static_cast<std::uint32_t>(mantissa / unit);
    if (micros == cMicro)
        return {whole + 1, 0, 0};
    return {whole, 0, static_cast<std::uint32_t>(micros)};
}

char16_t* PutSmall(char16_t* p, std::uint32_t value, int digits) {
    for (int i = digits - 1; i >= 0; --i, value /= 10)
        p[i] = static_cast<char16_t>(u'0' + value % 10);
    return p + digits;
}

int CountDigits(std::uint32_t value) {
    int digits = 1;
    for (; value >= 10; value /= 10)
        ++digits;
    return digits;
}

// whole * 2^shift, at most 128 bits wide, in groups of nine digits from the lowest up.
char16_t* PutWhole(char16_t* p, std::uint32_t whole, int shift) {
    std::array<std::uint32_t, 4> limbs{};
    const std::size_t limb = static_cast<std::size_t>(shift) / 32;
    const std::uint64_t wide = std::uint64_t{whole} << (shift % 32);
    limbs[limb] = static_cast<std::uint32_t>(wide);
    if (limb + 1 < limbs.size())
        limbs[limb + 1] = static_cast<std::uint32_t>(wide >> 32);

    constexpr std::uint32_t cGroup = 1000000000;
    std::array<std::uint32_t, 5> groups{};
    std::size_t count = 0;
    bool more = true;
    while (more) {
        std::uint64_t remainder = 0;
        more = false;
        for (std::size_t i = limbs.size(); i-- > 0;) {
            remainder = remainder << 32 | limbs[i];
            limbs[i] = static_cast<std::uint32_t>(remainder / cGroup);
            remainder %= cGroup;
            more = more || limbs[i] != 0;
        }
        groups[count++] = static_cast<std::uint32_t>(remainder);
    }
    p = PutSmall(p, groups[count - 1], CountDigits(groups[count - 1]));
    for (std::size_t i = count - 1; i-- > 0;)
        p = PutSmall(p, groups[i], 9);
    return p;
}

}  // namespace

std::size_t FormatFloat(float value, char16_t (&text)[cFloatTextChars]) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const bool negative = bits >> 31 != 0;
    const std::uint32_t biased = bits >> cMantissaBits & cExponentMask;
    const std::uint32_t fraction = bits & cMantissaMask;
    if (biased == cExponentMask) {
        if (fraction != 0)
            return Put(text, u"nan");
        return Put(text, negative ? u"-inf" : u"inf");
    }

    const bool normal = biased != 0;
    const std::uint32_t mantissa = normal ? fraction | 1u << cMantissaBits : fraction;
    const int exponent = cLowestExponent + (normal ? static_cast<int>(biased) - 1 : 0);
    const Decimal decimal = Split(mantissa, exponent);

    char16_t* p = text;
    if (negative)
        *p++ = u'-';
    p = PutWhole(p, decimal.whole, decimal.shift);
    *p++ = u'.';
    p = PutSmall(p, decimal.micros, 6);
    *p = u'\0';
    return static_cast<std::size_t>(p - text);
}

}  // namespace kora4::codec
