// SPDX-License-Identifier: MIT
// The bands of a graphic equalizer, and the text by which equalizer programs exchange them:
//
//   GraphicEQ: 20 -1.5; 25 0; 31.5 2
//
// Frequencies in Hz and gains in dB, in pairs. Standard C++17 without a platform header: usable
// alone, on any thread, and by programs that have nothing to do with COM.
#ifndef KORA4_EQUALIZER_HPP
#define KORA4_EQUALIZER_HPP

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kora4api_constants.h"

namespace kora4 {
inline namespace v1 {

// One band of the graphic equalizer.
struct Band {
    float frequency = 0;  // centre, Hz
    float gain = 0;       // dB, KORA4_GRAPHIC_EQ_MIN_GAIN to KORA4_GRAPHIC_EQ_MAX_GAIN

    friend bool operator==(const Band& a, const Band& b) noexcept { return !(a != b); }
    friend bool operator!=(const Band& a, const Band& b) noexcept {
        return a.frequency < b.frequency || a.frequency > b.frequency || a.gain < b.gain ||
               a.gain > b.gain;
    }
};

// In the order of their frequencies; the API takes KORA4_GRAPHIC_EQ_MAX_BANDS at most.
using Bands = std::vector<Band>;

// What ParseGraphicEq made of a text.
struct ParsedEqualizer {
    Bands bands;  // all of them, or none when there is a problem
    std::string
        problem;  // why the text was refused, without a full stop; empty when it was not
    std::size_t line = 0;  // where the problem is, counted from 1

    explicit operator bool() const noexcept { return problem.empty(); }
};

// The shortest decimal text without an exponent that reads back as the same float, whatever
// the locale: "7", "0.33", "-12". May throw std::bad_alloc.
inline std::string FormatDecimal(float number) {
    char buffer[64];
    const std::to_chars_result result =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed);
    return std::string(buffer, result.ptr);
}

// One decimal number with a point as its decimal sign, with or without a sign, without an
// exponent, and with nothing behind it; whatever the locale. False, and `number` as it was or
// unspecified, when the text is something else or the number is too large for a float.
inline bool ParseDecimal(std::string_view text, float& number) noexcept {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const std::from_chars_result result =
        std::from_chars(text.data(), end, number, std::chars_format::fixed);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(number);
}

namespace detail {

// Takes the text apart, knows in which line it is, and keeps the first problem.
class EqualizerScanner {
  public:
    explicit EqualizerScanner(std::string_view text) : m_text(text) {
        constexpr std::string_view cByteOrderMark = "\xEF\xBB\xBF";
        if (m_text.substr(0, cByteOrderMark.size()) == cByteOrderMark)
            m_at = cByteOrderMark.size();
    }

    ParsedEqualizer Parse() {
        if (IsAtEnd())
            Refuse("the file is empty");
        else if (!Takes("graphiceq:"))
            Refuse("'" + Word() + "' instead of 'GraphicEQ:'");
        while (m_parsed.problem.empty() && !IsAtEnd()) {
            ReadBand();
            if (m_parsed.problem.empty() && !IsAtEnd() && !Takes(";"))
                Refuse("'" + Word() + "' instead of ';'");
        }
        if (m_parsed.problem.empty() && m_parsed.bands.empty())
            Refuse("no bands after 'GraphicEQ:'");
        return std::move(m_parsed);
    }

  private:
    static bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    // Blanks, line ends and comments.
    void SkipBlanks() {
        for (; m_at < m_text.size(); ++m_at) {
            if (m_text[m_at] == '#')
                m_at = (std::min)(m_text.find('\n', m_at), m_text.size());
            if (m_at == m_text.size() || !IsBlank(m_text[m_at]))
                return;
            m_line += m_text[m_at] == '\n';
        }
    }

    bool IsAtEnd() {
        SkipBlanks();
        return m_at == m_text.size();
    }

    // `word` is in lower case.
    bool Takes(std::string_view word) {
        SkipBlanks();
        const std::string_view next = m_text.substr(m_at, word.size());
        const auto isSame = [](char c, char lower) {
            return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == lower;
        };
        if (next.size() != word.size() ||
            !std::equal(next.begin(), next.end(), word.begin(), isSame))
            return false;
        m_at += word.size();
        return true;
    }

    std::string Word() {
        SkipBlanks();
        const std::size_t begin = m_at;
        while (m_at < m_text.size() && !IsBlank(m_text[m_at]) && m_text[m_at] != ';' &&
               m_text[m_at] != '#')
            ++m_at;
        return std::string(m_text.substr(begin, m_at - begin));
    }

    bool Number(const char* what, float& number) {
        const std::string word = Word();
        if (ParseDecimal(word, number))
            return true;
        if (word.empty())
            Refuse(std::string("expected a ") + what);
        else
            Refuse("'" + word + "' is not a " + what +
                   (word.find(',') == std::string::npos ? "" : "; use a decimal point"));
        return false;
    }

    void ReadBand() {
        Band band;
        if (!Number("frequency", band.frequency))
            return;
        const std::string text = "the frequency " + FormatDecimal(band.frequency);
        if (!(band.frequency > 0))
            return Refuse(text + " is not above 0 Hz");
        if (!m_parsed.bands.empty() && band.frequency <= m_parsed.bands.back().frequency)
            return Refuse(text + " is not above " +
                          FormatDecimal(m_parsed.bands.back().frequency) +
                          ", the previous one");
        if (Number("gain", band.gain))
            m_parsed.bands.push_back(band);
    }

    void Refuse(std::string problem) {
        m_parsed.bands.clear();
        m_parsed.problem = std::move(problem);
        m_parsed.line = m_line;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_line = 1;
    ParsedEqualizer m_parsed;
};

}  // namespace detail

// Reads the text of an equalizer: "GraphicEQ:" in any case of letters, then pairs of a
// frequency and a gain, separated by ';', which may also stand at the end. Frequencies are
// above 0 Hz and ascend; gains and the number of bands are not limited. '#' begins a comment
// that goes to the end of its line; blanks, line ends and comments may stand between any two
// words, and a UTF-8 byte order mark in front. May throw std::bad_alloc.
inline ParsedEqualizer ParseGraphicEq(std::string_view text) {
    return detail::EqualizerScanner(text).Parse();
}

// One line without its end; every finite number reads back as the same float. What
// ParseGraphicEq refuses comes out all the same: no bands give "GraphicEQ:". May throw
// std::bad_alloc.
inline std::string FormatGraphicEq(const Bands& bands) {
    std::string text = "GraphicEQ:";
    for (const Band& band : bands) {
        text += &band == &bands.front() ? " " : "; ";
        text += FormatDecimal(band.frequency) + " " + FormatDecimal(band.gain);
    }
    return text;
}

// To the nearest gain that can be stored; the library itself cuts off what is finer.
inline float StorableGain(double gain) noexcept {
    constexpr double cSteps = KORA4_GRAPHIC_EQ_STEPS_PER_DB;
    return static_cast<float>(std::round(gain * cSteps) / cSteps);
}

// The bands of a profile with the gains that a curve has at their frequencies, which can be
// stored: linear in dB over the logarithm of the frequency, and beyond its ends what it is at
// the ends. The curve has a band; the frequencies of both are above 0 Hz, the curve's ascend.
// May throw std::bad_alloc.
inline Bands Resample(const Bands& curve, Bands bands) {
    const auto log = [](const Band& band) {
        return std::log2(static_cast<double>(band.frequency));
    };
    for (Band& band : bands) {
        const auto above = std::find_if(curve.begin(), curve.end(), [&band](const Band& point) {
            return point.frequency >= band.frequency;
        });
        const Band& high = above == curve.end() ? curve.back() : *above;
        const Band& low = above == curve.begin() || above == curve.end() ? high : *(above - 1);
        const double span = log(high) - log(low);
        const double share = span > 0 ? (log(band) - log(low)) / span : 0;
        const auto from = static_cast<double>(low.gain);
        band.gain = StorableGain(from + share * (static_cast<double>(high.gain) - from));
    }
    return bands;
}

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_EQUALIZER_HPP
