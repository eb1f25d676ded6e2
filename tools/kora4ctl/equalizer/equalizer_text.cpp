// SPDX-License-Identifier: MIT
// Takes equalizer texts apart line by line, and computes what their filters do.
#include "kora4ctl/equalizer/equalizer_text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kora4::tools {
namespace {

constexpr std::string_view cByteOrderMark = "\xEF\xBB\xBF";
constexpr double cPi = 3.14159265358979323846;
constexpr double cShelfQ = 0.70710678118654752440;

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return lower;
}

// The words of a line, without its comment.
std::vector<std::string> WordsOf(std::string_view line) {
    constexpr char cBlanks[] = " \t\r";
    line = line.substr(0, line.find('#'));
    std::vector<std::string> words;
    for (;;) {
        line.remove_prefix(std::min(line.find_first_not_of(cBlanks), line.size()));
        if (line.empty())
            return words;
        const std::size_t end = std::min(line.find_first_of(cBlanks), line.size());
        words.emplace_back(line.substr(0, end));
        line.remove_prefix(end);
    }
}

struct KindWord {
    const char* word;
    Filter::Kind kind;
};
constexpr KindWord cKinds[] = {
    {"pk", Filter::Kind::ePeak},       {"peq", Filter::Kind::ePeak},
    {"ls", Filter::Kind::eLowShelf},   {"lsc", Filter::Kind::eLowShelf},
    {"lsq", Filter::Kind::eLowShelf},  {"hs", Filter::Kind::eHighShelf},
    {"hsc", Filter::Kind::eHighShelf}, {"hsq", Filter::Kind::eHighShelf},
};

// The parameters of a filter: the unit may be left out.
struct Parameter {
    const char* word;
    const char* unit;
    double Filter::*member;
};
constexpr Parameter cParameters[] = {
    {"fc", "hz", &Filter::frequency}, {"gain", "db", &Filter::gain}, {"q", "", &Filter::q}};

class Parser {
  public:
    explicit Parser(std::string_view text) : m_text(text) {
        if (m_text.starts_with(cByteOrderMark))
            m_text.remove_prefix(cByteOrderMark.size());
    }

    EqualizerText Parse() {
        while (m_read.problem.empty() && !m_text.empty()) {
            const std::size_t end = std::min(m_text.find('\n'), m_text.size());
            const std::vector<std::string> words = WordsOf(m_text.substr(0, end));
            ++m_read.line;
            const std::string first = words.empty() ? "" : Lower(words[0]);
            if (first == "preamp:") {
                ReadPreamp(words);
            } else if (first == "filter" || first == "filter:") {
                ReadFilter(words);
            } else if (!words.empty()) {
                ReadCurve(words[0]);
                break;
            }
            m_text.remove_prefix(std::min(end + 1, m_text.size()));
        }
        if (m_read.problem.empty() && !m_read.hasFilters && m_read.curve.empty())
            Refuse(m_read.preamp ? "nothing follows the preamp" : "the file is empty");
        return std::move(m_read);
    }

  private:
    void ReadPreamp(const std::vector<std::string>& words) {
        float preamp = 0;
        if (m_read.preamp)
            return Refuse("there is a second preamp");
        const bool hasUnit = words.size() == 3 && Lower(words[2]) == "db";
        if ((words.size() != 2 && !hasUnit) || !ParseDecimal(words[1], preamp))
            return Refuse("expected a preamp such as 'Preamp: -6.2 dB'");
        m_read.preamp = preamp;
    }

    // "Filter 1: ON PK Fc 105 Hz Gain -3.4 dB Q 0.70"
    void ReadFilter(const std::vector<std::string>& words) {
        m_read.hasFilters = true;
        std::size_t at = words[0].ends_with(':') ? 1 : 2;
        const auto word = [&](std::size_t i) { return i < words.size() ? words[i] : ""; };
        const std::string state = Lower(word(at));
        if (!words[0].ends_with(':') && !word(1).ends_with(':'))
            return Refuse("expected 'Filter N:'");
        if (state == "off" || (state == "on" && Lower(word(at + 1)) == "none"))
            return;
        if (state != "on")
            return Refuse("'" + word(at) + "' instead of 'ON' or 'OFF'");
        const std::string type = Lower(word(at + 1));
        const auto known =
            std::find_if(std::begin(cKinds), std::end(cKinds),
                         [&](const KindWord& kind) { return type == kind.word; });
        if (known == std::end(cKinds))
            return Refuse("filters of type '" + word(at + 1) +
                          "' cannot be applied; only PK, LS, LSC, LSQ, HS, HSC and HSQ can");
        Filter filter;
        filter.kind = known->kind;
        if (filter.kind != Filter::Kind::ePeak)
            filter.q = cShelfQ;
        for (at += 2; at < words.size();)
            if (!ReadParameter(words, at, filter))
                return;
        if (!(filter.frequency > 0) || filter.frequency >= cFilterRate / 2)
            return Refuse("a filter needs a frequency (Fc) above 0 and below " +
                          FormatDecimal(static_cast<float>(cFilterRate / 2)) + " Hz");
        if (!(filter.q > 0))
            return Refuse("a filter needs a Q above 0");
        m_read.filters.push_back(filter);
    }

    bool ReadParameter(const std::vector<std::string>& words, std::size_t& at, Filter& filter) {
        const std::string name = Lower(words[at]);
        const auto known =
            std::find_if(std::begin(cParameters), std::end(cParameters),
                         [&](const Parameter& parameter) { return name == parameter.word; });
        float number = 0;
        if (known == std::end(cParameters))
            return Refuse("'" + words[at] + "' instead of 'Fc', 'Gain' or 'Q'"), false;
        if (++at == words.size() || !ParseDecimal(words[at], number))
            return Refuse("'" + words[at - 1] + "' needs a number with a decimal point"), false;
        filter.*known->member = static_cast<double>(number);
        if (++at < words.size() && Lower(words[at]) == known->unit)
            ++at;
        return true;
    }

    void ReadCurve(const std::string& word) {
        if (m_read.hasFilters)
            return Refuse("'" + word + "' instead of 'Filter'");
        // Which a curve may begin with, but only where the whole text begins.
        if (m_text.starts_with(cByteOrderMark))
            return Refuse("'" + word + "' instead of 'GraphicEQ:'");
        ParsedEqualizer parsed = ParseGraphicEq(m_text);
        m_read.curve = std::move(parsed.bands);
        m_read.problem = std::move(parsed.problem);
        if (parsed.line > 0)
            m_read.line += parsed.line - 1;
    }

    void Refuse(std::string problem) {
        m_read.problem = std::move(problem);
        m_read.line = std::max<std::size_t>(m_read.line, 1);
    }

    std::string_view m_text;
    EqualizerText m_read;
};

// ---- What filters do ----------------------------------------------------------------------

// A second-order filter at a rate, of which the frequencies are bent: the analogue filter at
// the tangents.
double Bent(double frequency) {
    // Not quite the half, where the tangent has no end.
    const double most = cFilterRate * 0.4999;
    return std::tan(cPi * std::min(frequency, most) / cFilterRate);
}

double GainOf(const Filter& filter, double frequency) {
    const double w = Bent(frequency) / Bent(filter.frequency);
    const double a = std::pow(10.0, filter.gain / 40);
    const auto square = [](double x) { return x * x; };
    if (filter.kind == Filter::Kind::ePeak) {
        const double real = square(1 - w * w);
        return 10 * std::log10((real + square(w * a / filter.q)) /
                               (real + square(w / (a * filter.q))));
    }
    const double middle = a * square(w / filter.q);
    const double towards = square(a - w * w) + middle;
    const double away = square(1 - a * w * w) + middle;
    const bool isLow = filter.kind == Filter::Kind::eLowShelf;
    return 10 * std::log10(square(a) * (isLow ? towards / away : away / towards));
}

}  // namespace

EqualizerText ReadEqualizerText(std::string_view text) {
    return Parser(text).Parse();
}

double GainAt(const EqualizerText& text, double frequency) {
    double gain = text.preamp ? static_cast<double>(*text.preamp) : 0;
    for (const Filter& filter : text.filters)
        gain += GainOf(filter, frequency);
    return gain;
}

Fit FitTo(const EqualizerText& text, Bands bands) {
    constexpr int cPoints = 500;
    Fit fit;
    for (Band& band : bands)
        band.gain = StorableGain(GainAt(text, static_cast<double>(band.frequency)));
    Bands limited = bands;
    for (Band& band : limited)
        band.gain = std::clamp(band.gain, KORA4_GRAPHIC_EQ_MIN_GAIN, KORA4_GRAPHIC_EQ_MAX_GAIN);
    fit.bands = std::move(bands);
    if (limited.empty())
        return fit;
    const auto first = static_cast<double>(limited.front().frequency);
    const double span = static_cast<double>(limited.back().frequency) / first;
    for (int i = 0; i <= cPoints; ++i) {
        const double frequency = first * std::pow(span, static_cast<double>(i) / cPoints);
        const Bands point = Resample(limited, {{static_cast<float>(frequency), 0}});
        const double error =
            std::abs(static_cast<double>(point.front().gain) - GainAt(text, frequency));
        if (error > fit.largestError) {
            fit.largestError = error;
            fit.errorAt = frequency;
        }
    }
    return fit;
}

}  // namespace kora4::tools
