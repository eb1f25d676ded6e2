// SPDX-License-Identifier: MIT
// Reads and writes the texts of arrays. Every change of an equalizer uses this, so there is a
// fast path for the form that the writer itself produces.
#include "contract/codec/array_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "contract/codec/white_space.h"
#include "contract/hex_pairs.h"

namespace kora4::codec {

namespace {

constexpr std::uint8_t cNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 128> MakeDigitValues() {
    std::array<std::uint8_t, 128> values{};
    for (std::size_t c = 0; c < values.size(); ++c) {
        if (c >= '0' && c <= '9')
            values[c] = static_cast<std::uint8_t>(c - '0');
        else if (c >= 'a' && c <= 'f')
            values[c] = static_cast<std::uint8_t>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F')
            values[c] = static_cast<std::uint8_t>(c - 'A' + 10);
        else
            values[c] = cNoDigit;
    }
    return values;
}

constexpr std::array<std::uint8_t, 128> cDigitValues = MakeDigitValues();
static_assert(cDigitValues['f'] == 15 && cDigitValues['F'] == 15 && cDigitValues['9'] == 9);
static_assert(cDigitValues['g'] == cNoDigit && cDigitValues[0] == cNoDigit);

constexpr std::uint32_t DigitValue(char16_t c) {
    return c < cDigitValues.size() ? cDigitValues[c] : cNoDigit;
}

constexpr std::uint32_t LowDigit(char16_t c) {
    return cDigitValues[c & 0x7F];
}

constexpr bool EndsToken(char16_t c) {
    return c == u',' || c == u'\0' || IsWhiteSpace(c);
}

// A number that was read, and where the next token's white space begins; null after a token
// that is not a number.
struct Token {
    const char16_t* pNext;
    std::uint32_t value;
};

constexpr Token cBadToken{nullptr, 0};

// Reads one token, the white space around it and the comma after it.
Token ReadToken(const char16_t* p) {
    const char16_t* const pToken = p = SkipWhiteSpace(p);
    if (p[0] == u'0' && (p[1] == u'x' || p[1] == u'X'))
        p += 2;
    const char16_t* const pDigits = p;

    std::uint32_t value = 0;
    bool fits = true;
    for (std::uint32_t digit; (digit = DigitValue(*p)) != cNoDigit; ++p) {
        fits = fits && value >> 28 == 0;
        value = value << 4 | digit;
    }
    if (p == pDigits || !EndsToken(*p) || !fits)
        return cBadToken;
    if (static_cast<std::size_t>(p - pToken) >= cTokenLimit)
        return cBadToken;
    if (*p != u',')
        p = SkipWhiteSpace(p);
    if (*p == u',')
        ++p;
    return {p, value};
}

// The same, quicker for the form that the writer gives to all numbers but the last: four
// digits and a comma. A digit is looked up by its low seven bits, the high ones of all
// four are checked at the end.
inline Token NextToken(const char16_t* p) {
    // One after the other: what follows a terminator must not be read.
    const std::uint32_t d0 = LowDigit(p[0]);
    if (d0 == cNoDigit)
        return ReadToken(p);
    const std::uint32_t d1 = LowDigit(p[1]);
    if (d1 == cNoDigit)
        return ReadToken(p);
    const std::uint32_t d2 = LowDigit(p[2]);
    if (d2 == cNoDigit)
        return ReadToken(p);
    const std::uint32_t d3 = LowDigit(p[3]);
    if (d3 == cNoDigit || (p[0] | p[1] | p[2] | p[3]) > 0x7F || p[4] != u',')
        return ReadToken(p);
    return {p + 5, d0 << 12 | d1 << 8 | d2 << 4 | d3};
}

// Reads the count and that many elements, which `convert` turns from numbers into what is
// stored; it returns false for a number that cannot be an element. Clears the places after
// them.
template <typename Element, typename Convert>
bool ReadElements(const char16_t* p, std::uint32_t* pCount, Element* pElements,
                  Convert convert) {
    Token token = ReadToken(p);
    const std::uint32_t count = token.value;
    if (token.pNext == nullptr || count > cArrayCapacity)
        return false;
    for (std::uint32_t i = 0; i < count; ++i) {
        token = NextToken(token.pNext);
        if (token.pNext == nullptr || !convert(token.value, &pElements[i]))
            return false;
    }
    if (*SkipWhiteSpace(token.pNext) != u'\0')
        return false;
    std::fill(pElements + count, pElements + cArrayCapacity, Element{});
    *pCount = count;
    return true;
}

// `valueOf` turns the signed number into the element.
template <typename ValueOf>
bool ReadSignedElements(const char16_t* p, std::uint32_t* pCount, float* pElements,
                        ValueOf valueOf) {
    return ReadElements(p, pCount, pElements, [valueOf](std::uint32_t number, float* pElement) {
        *pElement = valueOf(static_cast<std::int16_t>(number));
        return number < 0x10000;
    });
}

bool ReadNumericArray(const char16_t* pText, std::uint32_t* pCount, float* pElements) {
    const Token token = ReadToken(pText);
    const std::uint32_t scale = token.value;
    if (token.pNext == nullptr || scale == 0)
        return false;
    const double divisor = scale;
    const double factor = 1.0 / divisor;
    // The reciprocal of a power of two is exact, and a product cheaper than a quotient.
    if ((scale & (scale - 1)) == 0) {
        return ReadSignedElements(
            token.pNext, pCount, pElements,
            [factor](std::int16_t number) { return static_cast<float>(number * factor); });
    }
    return ReadSignedElements(token.pNext, pCount, pElements, [divisor](std::int16_t number) {
        return static_cast<float>(number / divisor);
    });
}

bool ReadFlagArray(const char16_t* pText, std::uint32_t* pCount, std::uint32_t* pFlags) {
    return ReadElements(pText, pCount, pFlags, [](std::uint32_t number, std::uint32_t* pFlag) {
        *pFlag = number != 0 ? 1 : 0;
        return true;
    });
}

template <typename Element>
HRESULT Refuse(std::uint32_t* pCount, Element* pElements) {
    *pCount = 0;
    std::fill_n(pElements, cArrayCapacity, Element{});
    return result::cFail;
}

static_assert(cHexPairs[0x0A][0] == u'0' && (cHexPairs[0xF9][0] | 0x20) == u'f');

// Hexadecimal digits of the number, at least `width` of them.
inline char16_t* PutHex(char16_t* p, std::uint32_t value, int width) {
    if (width == 4 && value <= 0xFFFF) {
        p = PutHexByte<cLowerCase>(p, value >> 8);
        return PutHexByte<cLowerCase>(p, value);
    }
    int digits = (static_cast<int>(std::bit_width(value)) + 3) / 4;
    digits = std::max(digits, width);
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        *p++ = u"0123456789abcdef"[value >> shift & 0xF];
    return p;
}

inline HRESULT PutField(char16_t** ppCursor, std::size_t* pCharsAvail, ArrayField field,
                        std::uint32_t value) {
    if (*pCharsAvail < cArrayFieldRoom)
        return result::cOutOfMemory;
    char16_t* p = *ppCursor;
    switch (field) {
        case ArrayField::eFirst:
            p = PutHex(p, value, 4);
            break;
        case ArrayField::eWord:
            *p++ = u',';
            p = PutHex(p, value, 4);
            break;
        case ArrayField::eFlag:
            *p++ = u',';
            p = PutHex(p, value, 1);
            break;
        default:
            return result::cFail;
    }
    *pCharsAvail -= static_cast<std::size_t>(p - *ppCursor);
    *ppCursor = p;
    return result::cOk;
}

// The text under construction, with one character reserved for the terminator.
class TextBuilder {
  public:
    TextBuilder(char16_t* pText, ArrayFieldWriter write)
        : m_write(write), m_pText(pText), m_pCursor(pText) {}

    void Append(ArrayField field, std::uint32_t value) {
        if (m_hr != result::cOk)
            return;
        m_hr = m_write ? m_write(&m_pCursor, &m_charsAvail, field, value)
                       : PutField(&m_pCursor, &m_charsAvail, field, value);
    }

    bool Failed() const { return m_hr != result::cOk; }

    HRESULT Finish() {
        *(Failed() ? m_pText : m_pCursor) = u'\0';
        return m_hr;
    }

  private:
    const ArrayFieldWriter m_write;
    char16_t* m_pText;
    char16_t* m_pCursor;
    std::size_t m_charsAvail = cArrayTextChars - 1;
    HRESULT m_hr = result::cOk;
};

inline std::uint32_t NumericElement(float element, double scale) {
    constexpr double cTwoTo63 = 9223372036854775808.0;
    const double product = element * scale;
    if (!(std::fabs(product) < cTwoTo63))
        return 0;
    return static_cast<std::uint16_t>(static_cast<std::int64_t>(product));
}

}  // namespace

HRESULT DecodeNumericArray(const char16_t* pText, std::uint32_t* pCount, float* pElements) {
    if (pCount == nullptr || pElements == nullptr)
        return result::cInvalidArg;
    if (pText != nullptr && ReadNumericArray(pText, pCount, pElements))
        return result::cOk;
    return Refuse(pCount, pElements);
}

HRESULT DecodeFlagArray(const char16_t* pText, std::uint32_t* pCount, std::uint32_t* pFlags) {
    if (pCount == nullptr || pFlags == nullptr)
        return result::cInvalidArg;
    if (pText != nullptr && ReadFlagArray(pText, pCount, pFlags))
        return result::cOk;
    return Refuse(pCount, pFlags);
}

HRESULT PutArrayField(char16_t** ppCursor, std::size_t* pCharsAvail, ArrayField field,
                      std::uint32_t value) {
    return PutField(ppCursor, pCharsAvail, field, value);
}

HRESULT EncodeNumericArray(std::uint32_t scale, std::uint32_t count, const float* pElements,
                           char16_t (&text)[cArrayTextChars], ArrayFieldWriter write) {
    text[0] = u'\0';
    if (scale == 0 || scale >= cScaleLimit)
        return result::cInvalidArg;
    const double factor = scale;
    TextBuilder builder(text, write);
    builder.Append(ArrayField::eFirst, scale);
    builder.Append(ArrayField::eWord, count);
    for (std::uint32_t i = 0; i < count && !builder.Failed(); ++i)
        builder.Append(ArrayField::eWord, NumericElement(pElements[i], factor));
    return builder.Finish();
}

HRESULT EncodeFlagArray(std::uint32_t count, const std::uint32_t* pFlags,
                        char16_t (&text)[cArrayTextChars], ArrayFieldWriter write) {
    TextBuilder builder(text, write);
    builder.Append(ArrayField::eFirst, count);
    for (std::uint32_t i = 0; i < count && !builder.Failed(); ++i)
        builder.Append(ArrayField::eFlag, pFlags[i] != 0 ? 1 : 0);
    return builder.Finish();
}

}  // namespace kora4::codec
