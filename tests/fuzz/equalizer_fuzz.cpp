// SPDX-License-Identifier: MIT
// Equalizer texts: a curve or filters, read by lines and words cut beforehand.
#include <kora4/equalizer.hpp>

#include <cmath>
#include <cstdlib>
#include <optional>

#include "fuzz/frame.h"
#include "kora4ctl/equalizer/equalizer_text.h"

namespace kora4::fuzz {

namespace {

using Words = std::vector<std::string>;

struct Refused {};

std::string Lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + 32);
    return text;
}

// The lines without comments and line ends.
Words LinesOf(const std::string& text) {
    Words lines(1);
    bool inComment = false;
    for (const char c : text) {
        inComment = c != '\n' && (inComment || c == '#');
        if (c == '\n')
            lines.emplace_back();
        else if (!inComment)
            lines.back() += c;
    }
    return lines;
}

Words WordsOf(const std::string& line, const std::string& blanks) {
    Words words;
    bool inWord = false;
    for (const char c : line) {
        const bool isBlank = blanks.find(c) != std::string::npos && c != '\0';
        if (!isBlank && !inWord)
            words.emplace_back();
        if (!isBlank)
            words.back() += c;
        inWord = !isBlank;
    }
    return words;
}

// One decimal number without an exponent.
float NumberOf(const std::string& word) {
    std::size_t at = word.starts_with('+') || word.starts_with('-') ? 1 : 0;
    int digits = 0;
    int points = 0;
    for (; at < word.size(); ++at) {
        digits += word[at] >= '0' && word[at] <= '9' ? 1 : 0;
        points += word[at] == '.' ? 1 : 0;
        if (word[at] != '.' && (word[at] < '0' || word[at] > '9'))
            throw Refused();
    }
    const float number = digits > 0 && points <= 1 ? std::strtof(word.c_str(), nullptr) : NAN;
    if (!std::isfinite(number))
        throw Refused();
    return number;
}

// ---- Curves --------------------------------------------------------------------------------

Bands CurveOf(const std::string& text) {
    std::string joined;
    for (const std::string& line : LinesOf(text))
        joined += line + "\n";
    // A separator is a word of its own wherever it stands, also in front of the first band.
    std::string spaced;
    for (const char c : joined)
        spaced += c == ';' ? std::string(" ; ") : std::string(1, c);
    constexpr char cHead[] = "graphiceq:";
    const std::size_t head = spaced.find_first_not_of(" \t\r\n");
    if (head == std::string::npos || Lower(spaced.substr(head, sizeof cHead - 1)) != cHead)
        throw Refused();
    const Words words = WordsOf(spaced.substr(head + sizeof cHead - 1), " \t\r\n");
    Bands bands;
    for (std::size_t i = 0; i < words.size(); i += 3) {
        if (i + 1 >= words.size() || (i + 2 < words.size() && words[i + 2] != ";"))
            throw Refused();
        const Band band{NumberOf(words[i]), NumberOf(words[i + 1])};
        if (!(band.frequency > 0) ||
            (!bands.empty() && band.frequency <= bands.back().frequency))
            throw Refused();
        bands.push_back(band);
    }
    if (bands.empty())
        throw Refused();
    return bands;
}

// ---- Filters -------------------------------------------------------------------------------

using tools::EqualizerText;
using tools::Filter;

float PreampOf(const Words& words) {
    if (words.size() < 2 || words.size() > 3 || (words.size() == 3 && Lower(words[2]) != "db"))
        throw Refused();
    return NumberOf(words[1]);
}

// The number behind a name, and the unit behind the number.
std::optional<double> Take(Words& words, const char* name, const char* unit) {
    if (words.empty() || Lower(words[0]) != name)
        return {};
    if (words.size() < 2)
        throw Refused();
    const float number = NumberOf(words[1]);
    const bool hasUnit = *unit != '\0' && words.size() > 2 && Lower(words[2]) == unit;
    words.erase(words.begin(), words.begin() + (hasUnit ? 3 : 2));
    return number;
}

// None: the filter is off.
std::optional<Filter> FilterOf(Words words) {
    const bool hasColon = words[0].back() == ':';
    if (!hasColon && (words.size() < 2 || words[1].back() != ':'))
        throw Refused();
    words.erase(words.begin(), words.begin() + (hasColon ? 1 : 2));
    words.resize(std::max<std::size_t>(words.size(), 2));
    const std::string state = Lower(words[0]);
    const std::string type = Lower(words[1]);
    if (state == "off" || (state == "on" && type == "none"))
        return {};
    Filter filter;
    if (type == "pk" || type == "peq")
        filter.kind = Filter::Kind::ePeak;
    else if (type == "ls" || type == "lsc" || type == "lsq")
        filter.kind = Filter::Kind::eLowShelf;
    else if (type == "hs" || type == "hsc" || type == "hsq")
        filter.kind = Filter::Kind::eHighShelf;
    else
        throw Refused();
    if (state != "on")
        throw Refused();
    filter.q = filter.kind == Filter::Kind::ePeak ? 0 : 1 / std::sqrt(2.0);
    words.erase(words.begin(), words.begin() + 2);
    while (!words.empty()) {
        if (const auto hertz = Take(words, "fc", "hz"))
            filter.frequency = *hertz;
        else if (const auto gain = Take(words, "gain", "db"))
            filter.gain = *gain;
        else if (const auto q = Take(words, "q", ""))
            filter.q = *q;
        else
            throw Refused();
    }
    if (!(filter.frequency > 0) || !(filter.frequency < 24000) || !(filter.q > 0))
        throw Refused();
    return filter;
}

EqualizerText Read(std::string text) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.erase(0, 3);
    EqualizerText read;
    std::size_t begin = 0;
    for (const std::string& line : LinesOf(text)) {
        const Words words = WordsOf(line, " \t\r");
        const std::string first = words.empty() ? "" : Lower(words[0]);
        if (first == "preamp:") {
            if (read.preamp)
                throw Refused();
            read.preamp = PreampOf(words);
        } else if (first == "filter" || first == "filter:") {
            read.hasFilters = true;
            if (const auto filter = FilterOf(words))
                read.filters.push_back(*filter);
        } else if (!words.empty()) {
            if (read.hasFilters)
                throw Refused();
            read.curve = CurveOf(text.substr(begin));
            return read;
        }
        begin = std::min(text.find('\n', begin), text.size() - 1) + 1;
    }
    if (!read.hasFilters)
        throw Refused();
    return read;
}

// ---- The comparison ------------------------------------------------------------------------

void ExpectSameBands(const Bands& expected, const Bands& seen) {
    ExpectSame("bands", expected.size(), seen.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ExpectSameFloat("frequency", expected[i].frequency, seen[i].frequency);
        ExpectSameFloat("gain", expected[i].gain, seen[i].gain);
    }
}

void ExpectSameFilters(const EqualizerText& expected, const EqualizerText& seen) {
    ExpectSame("there is a preamp", expected.preamp.has_value(), seen.preamp.has_value());
    ExpectSameFloat("preamp", expected.preamp.value_or(0), seen.preamp.value_or(0));
    ExpectSame("it has filters", expected.hasFilters, seen.hasFilters);
    ExpectSame("filters", expected.filters.size(), seen.filters.size());
    for (std::size_t i = 0; i < expected.filters.size(); ++i) {
        const Filter& wanted = expected.filters[i];
        const Filter& got = seen.filters[i];
        if (wanted.kind != got.kind || wanted.frequency != got.frequency ||
            wanted.gain != got.gain || std::abs(wanted.q - got.q) > 1e-15)
            Differ("filter", Shown(wanted.frequency), Shown(got.frequency));
    }
}

void CheckCurve(const std::string& text) {
    const ParsedEqualizer seen = ParseGraphicEq(text);
    try {
        const bool hasMark = text.starts_with("\xEF\xBB\xBF");
        const Bands expected = CurveOf(text.substr(hasMark ? 3 : 0));
        ExpectSame("problem of the curve", std::string(), seen.problem);
        ExpectSameBands(expected, seen.bands);
        // What is written reads back as the same bands.
        ExpectSameBands(expected, ParseGraphicEq(FormatGraphicEq(expected)).bands);
    } catch (const Refused&) {
        ExpectSame("the curve is refused", true, !seen.problem.empty() && seen.line > 0);
    }
}

}  // namespace

void Check(std::string_view input) {
    const std::string text(input);
    CheckCurve(text);
    const std::vector<char> exact(input.begin(), input.end());
    const EqualizerText seen = tools::ReadEqualizerText({exact.data(), exact.size()});
    try {
        const EqualizerText expected = Read(text);
        ExpectSame("problem", std::string(), seen.problem);
        ExpectSameFilters(expected, seen);
        ExpectSameBands(expected.curve, seen.curve);
    } catch (const Refused&) {
        ExpectSame("it is refused", true, !seen.problem.empty() && seen.line > 0);
    }
}

}  // namespace kora4::fuzz
