// SPDX-License-Identifier: MIT
// Parses and writes the text that equalizer tools exchange, and moves curves to other
// frequencies.
#include "kora4ctl/equalizer/bands.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "base/failure.h"
#include "base/text.h"
#include "contract/field_tables.h"
#include "contract/patch_limits.h"

namespace kora4::tools {

namespace {

constexpr std::string_view cKeyword = "graphiceq:";
constexpr std::string_view cByteOrderMark = "\xEF\xBB\xBF";

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Splits the text into words and keeps count of the lines.
class Scanner {
  public:
    Scanner(std::string_view text, const std::string& name) : m_text(text), m_name(name) {
        if (m_text.starts_with(cByteOrderMark))
            m_at = cByteOrderMark.size();
    }

    bool IsAtEnd() {
        SkipBlanks();
        return m_at == m_text.size();
    }

    bool Takes(std::string_view word) {
        SkipBlanks();
        if (Lower(m_text.substr(m_at, word.size())) != word)
            return false;
        m_at += word.size();
        return true;
    }

    float Number(const char* what) {
        const std::string word = Word();
        float number = 0;
        if (ParseDecimal(word, number))
            return number;
        if (word.empty())
            Fail(std::string("expected a ") + what);
        Fail("'" + word + "' is not a " + what +
             (word.find(',') != std::string::npos ? "; use a decimal point" : ""));
    }

    [[noreturn]] void Fail(const std::string& what) const {
        throw BadInput(m_name + ", line " + std::to_string(m_line) + ": " + what + ".",
                       "Expected: GraphicEQ: 20 -1.5; 25 0; 31.5 2 ...");
    }

    std::string Word() {
        SkipBlanks();
        const std::size_t begin = m_at;
        while (m_at < m_text.size() && !IsBlank(m_text[m_at]) && m_text[m_at] != ';' &&
               m_text[m_at] != '#')
            ++m_at;
        return std::string(m_text.substr(begin, m_at - begin));
    }

  private:
    // Blanks, line ends and comments.
    void SkipBlanks() {
        for (; m_at < m_text.size(); ++m_at) {
            if (m_text[m_at] == '#')
                m_at = std::min(m_text.find('\n', m_at), m_text.size());
            if (m_at == m_text.size() || !IsBlank(m_text[m_at]))
                return;
            m_line += m_text[m_at] == '\n';
        }
    }

    std::string_view m_text;
    const std::string& m_name;
    std::size_t m_at = 0;
    unsigned m_line = 1;
};

Band ReadBand(Scanner& scanner, const Bands& before) {
    Band band;
    band.frequency = scanner.Number("frequency");
    if (!(band.frequency > 0))
        scanner.Fail("the frequency " + Decimal(band.frequency) + " is not above 0 Hz");
    if (!before.empty() && band.frequency <= before.back().frequency)
        scanner.Fail("the frequency " + Decimal(band.frequency) + " is not above " +
                     Decimal(before.back().frequency) + ", the previous one");
    band.gain = scanner.Number("gain");
    return band;
}

}  // namespace

bool ParseDecimal(std::string_view text, float& number) {
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(number);
}

Bands ParseGraphicEq(std::string_view text, const std::string& name) {
    Scanner scanner(text, name);
    if (scanner.IsAtEnd())
        scanner.Fail("the file is empty");
    if (!scanner.Takes(cKeyword))
        scanner.Fail("'" + scanner.Word() + "' instead of 'GraphicEQ:'");
    Bands bands;
    while (!scanner.IsAtEnd()) {
        bands.push_back(ReadBand(scanner, bands));
        if (!scanner.IsAtEnd() && !scanner.Takes(";"))
            scanner.Fail("'" + scanner.Word() + "' instead of ';'");
    }
    if (bands.empty())
        scanner.Fail("no bands after 'GraphicEQ:'");
    return bands;
}

std::string FormatGraphicEq(const Bands& bands) {
    std::string text = "GraphicEQ:";
    for (const Band& band : bands) {
        text += &band == &bands.front() ? " " : "; ";
        text += Decimal(band.frequency) + " " + Decimal(band.gain);
    }
    return text;
}

std::string FrequencyProblem(const Bands& bands, std::size_t index) {
    const float frequency = bands[index].frequency;
    const std::string band =
        "Band " + std::to_string(index + 1) + " is stored at " + Decimal(frequency) + " Hz";
    if (!(frequency > 0))
        return band + ", which is not a valid frequency.";
    if (index > 0 && frequency <= bands[index - 1].frequency)
        return band + ", which is not above the previous band.";
    return {};
}

std::vector<std::string> FrequencyProblems(const Bands& bands) {
    std::vector<std::string> problems;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        std::string problem = FrequencyProblem(bands, i);
        if (!problem.empty())
            problems.push_back(std::move(problem));
    }
    return problems;
}

Bands Resample(const Bands& curve, const Bands& frequencies) {
    Bands bands = frequencies;
    for (Band& band : bands) {
        const auto above = std::find_if(curve.begin(), curve.end(), [&band](const Band& point) {
            return point.frequency >= band.frequency;
        });
        double gain = 0;
        if (above == curve.begin()) {
            gain = static_cast<double>(curve.front().gain);
        } else if (above == curve.end()) {
            gain = static_cast<double>(curve.back().gain);
        } else {
            const Band& low = *(above - 1);
            const double from = std::log2(static_cast<double>(low.frequency));
            const double to = std::log2(static_cast<double>(above->frequency));
            const double at = std::log2(static_cast<double>(band.frequency));
            gain = std::lerp(static_cast<double>(low.gain), static_cast<double>(above->gain),
                             (at - from) / (to - from));
        }
        band.gain = StorableGain(gain);
    }
    return bands;
}

float StorableGain(double gain) {
    return static_cast<float>(std::round(gain * fields::cQ8) / fields::cQ8);
}

std::string GainRange() {
    return Decimal(cGraphicEQGainMin) + " to +" + Decimal(cGraphicEQGainMax);
}

std::string FrequencyRange() {
    return "1 to " + Decimal(cHighestFrequency) + " Hz";
}

}  // namespace kora4::tools
