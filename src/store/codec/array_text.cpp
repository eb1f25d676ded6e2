#include "store/codec/array_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

#include "store/codec/white_space.h"
#include "trace/trace.h"

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

constexpr bool EndsToken(char16_t c) {
    return c == u',' || c == u'\0' || IsWhiteSpace(c);
}

// Walks over the tokens of a text.
class TokenReader {
  public:
    explicit TokenReader(const char16_t* pText) : m_p(pText) {}

    // Reads one token, the white space around it and the comma after it.
    bool Next(std::uint32_t* pValue) {
        const char16_t* const pToken = m_p = SkipWhiteSpace(m_p);
        if (m_p[0] == u'0' && (m_p[1] == u'x' || m_p[1] == u'X'))
            m_p += 2;
        const char16_t* const pDigits = m_p;

        std::uint64_t value = 0;
        bool fits = true;
        for (std::uint32_t digit; (digit = DigitValue(*m_p)) != cNoDigit; ++m_p) {
            value = value << 4 | digit;
            fits = fits && value <= UINT32_MAX;
        }
        if (m_p == pDigits || !EndsToken(*m_p) || !fits)
            return false;
        if (static_cast<std::size_t>(m_p - pToken) >= cTokenLimit)
            return false;
        if (*m_p != u',')
            m_p = SkipWhiteSpace(m_p);
        if (*m_p == u',')
            ++m_p;
        *pValue = static_cast<std::uint32_t>(value);
        return true;
    }

    bool AtEnd() { return *SkipWhiteSpace(m_p) == u'\0'; }

  private:
    const char16_t* m_p;
};

// Reads the count and that many elements, which `convert` turns from numbers into what
// is stored; it gives false for a number that is no element.
template <typename Element, typename Convert>
bool ReadElements(TokenReader reader, std::uint32_t* pCount, Element* pElements,
                  Convert convert) {
    std::uint32_t count = 0;
    if (!reader.Next(&count) || count > cArrayCapacity)
        return false;
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint32_t number = 0;
        if (!reader.Next(&number) || !convert(number, &pElements[i]))
            return false;
    }
    *pCount = count;
    return reader.AtEnd();
}

template <typename Element>
void Clear(std::uint32_t* pCount, Element* pElements) {
    *pCount = 0;
    std::fill_n(pElements, cArrayCapacity, Element{});
}

bool ReadNumericArray(const char16_t* pText, std::uint32_t* pCount, float* pElements) {
    TokenReader reader(pText);
    std::uint32_t scale = 0;
    if (!reader.Next(&scale) || scale == 0)
        return false;
    const double divisor = scale;
    return ReadElements(reader, pCount, pElements,
                        [divisor](std::uint32_t number, float* pElement) {
                            if (number >= 0x10000)
                                return false;
                            const auto word = static_cast<std::int16_t>(number);
                            *pElement = static_cast<float>(word / divisor);
                            return true;
                        });
}

bool ReadFlagArray(const char16_t* pText, std::uint32_t* pCount, std::uint32_t* pFlags) {
    return ReadElements(TokenReader(pText), pCount, pFlags,
                        [](std::uint32_t number, std::uint32_t* pFlag) {
                            *pFlag = number != 0 ? 1 : 0;
                            return true;
                        });
}

// Four digits side by side: each nibble of the word gets a lane of 16 bits, the highest
// nibble the lowest lane, which is the first character in memory.
inline void PutWord(char16_t* p, std::uint32_t word) {
    static_assert(std::endian::native == std::endian::little);
    constexpr std::uint64_t cOnes = 0x0001000100010001;
    const std::uint64_t w = word;
    const std::uint64_t nibbles =
        (w >> 12 & 0xF) | (w >> 8 & 0xF) << 16 | (w >> 4 & 0xF) << 32 | (w & 0xF) << 48;
    const std::uint64_t letters = (nibbles + 6 * cOnes) >> 4 & cOnes;
    const std::uint64_t digits = nibbles + u'0' * cOnes + letters * (u'a' - u'0' - 10);
    std::memcpy(p, &digits, sizeof digits);
}

// Hexadecimal digits of the number, at least `width` of them.
inline char16_t* PutHex(char16_t* p, std::uint32_t value, int width) {
    if (width == 4 && value <= 0xFFFF) {
        PutWord(p, value);
        return p + 4;
    }
    int digits = (static_cast<int>(std::bit_width(value)) + 3) / 4;
    digits = std::max(digits, width);
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        *p++ = u"0123456789abcdef"[value >> shift & 0xF];
    return p;
}

inline HRESULT PutField(char16_t** ppCursor, std::size_t* pCharsAvail, ArrayField field,
                        std::uint32_t value) {
    static constexpr trace::Site cSite{"KORA4PropKey",
                                       "KORA4PropKeyStoreAccess::WriteArrayNumericField"};
    HRESULT hr = result::cOk;
    const trace::Scope scope(cSite, __LINE__, trace::eStoreEntry, trace::eStoreExitResult, &hr);
    if (*pCharsAvail < cArrayFieldRoom)
        return hr = result::cOutOfMemory;

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
            return hr = result::cFail;
    }
    const auto written = static_cast<std::size_t>(p - *ppCursor);
    KALASSERT_TEXT(cSite, written <= *pCharsAvail, "(UINT) written <= charsAvail");
    *ppCursor = p;
    *pCharsAvail -= written;
    return hr;
}

// The text under construction, one character kept for the terminator.
class TextBuilder {
  public:
    explicit TextBuilder(char16_t* pText) : m_pText(pText), m_pCursor(pText) {}

    void Append(ArrayField field, std::uint32_t value) {
        if (m_hr == result::cOk)
            m_hr = PutField(&m_pCursor, &m_charsAvail, field, value);
    }

    bool Failed() const { return m_hr != result::cOk; }

    HRESULT Finish() {
        *(Failed() ? m_pText : m_pCursor) = u'\0';
        return m_hr;
    }

  private:
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
    Clear(pCount, pElements);
    if (pText != nullptr && ReadNumericArray(pText, pCount, pElements))
        return result::cOk;
    Clear(pCount, pElements);
    return result::cFail;
}

HRESULT DecodeFlagArray(const char16_t* pText, std::uint32_t* pCount, std::uint32_t* pFlags) {
    if (pCount == nullptr || pFlags == nullptr)
        return result::cInvalidArg;
    Clear(pCount, pFlags);
    if (pText != nullptr && ReadFlagArray(pText, pCount, pFlags))
        return result::cOk;
    Clear(pCount, pFlags);
    return result::cFail;
}

HRESULT WriteArrayNumericField(char16_t** ppCursor, std::size_t* pCharsAvail, ArrayField field,
                               std::uint32_t value) {
    return PutField(ppCursor, pCharsAvail, field, value);
}

HRESULT EncodeNumericArray(std::uint32_t scale, std::uint32_t count, const float* pElements,
                           char16_t (&text)[cArrayTextChars]) {
    text[0] = u'\0';
    if (scale == 0 || scale >= cScaleLimit)
        return result::cInvalidArg;
    const double factor = scale;
    TextBuilder builder(text);
    builder.Append(ArrayField::eFirst, scale);
    builder.Append(ArrayField::eWord, count);
    for (std::uint32_t i = 0; i < count && !builder.Failed(); ++i)
        builder.Append(ArrayField::eWord, NumericElement(pElements[i], factor));
    return builder.Finish();
}

HRESULT EncodeFlagArray(std::uint32_t count, const std::uint32_t* pFlags,
                        char16_t (&text)[cArrayTextChars]) {
    TextBuilder builder(text);
    builder.Append(ArrayField::eFirst, count);
    for (std::uint32_t i = 0; i < count && !builder.Failed(); ++i)
        builder.Append(ArrayField::eFlag, pFlags[i] != 0 ? 1 : 0);
    return builder.Finish();
}

}  // namespace kora4::codec
