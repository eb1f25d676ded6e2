// SPDX-License-Identifier: MIT
// Lays the bars of the levels out in the columns and lines that there are.
#include "kora4ctl/terminal/levels_picture.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "base/text.h"
#include "kora4ctl/equalizer/bands_picture.h"
#include "kora4ctl/terminal/text_layout.h"
#include "settings/display_bands.h"

namespace kora4::tools {

namespace {

// The range of the bars, in dB, moved so that 0 dB lies between two lines. Levels outside are
// drawn at its ends.
constexpr float cTop = 24;
constexpr float cBottom = -84;
constexpr float cScaleStep = 12;

// Gains from here on deserve a warning, and those beyond the top of the bars, in dB.
constexpr float cHot = 12;
constexpr float cOver = cTop;

constexpr std::size_t cBands = KORA4_VISUALIZATION_BANDS;
constexpr std::size_t cScaleColumns = 5;  // "-12 |" with a line for the bar
constexpr std::size_t cMostRows = 36;
// Beside the bars: the numbers of the bands, their frequencies, and the words.
constexpr std::size_t cOtherRows = 3;

std::string RightAligned(const std::string& text, std::size_t columns) {
    return std::string(columns > text.size() ? columns - text.size() : 0, ' ') + text;
}

// How the columns of a line are shared out.
struct Layout {
    bool hasScale = true;
    std::size_t gain = 1;        // columns of a bar
    std::size_t excitation = 1;  // 0: there is no room for it
    std::size_t gap = 1;
    std::size_t bands = cBands;

    std::size_t Cell() const { return gain + excitation + gap; }

    static Layout For(std::size_t width) {
        Layout layout;
        layout.hasScale = width >= cScaleColumns + cBands;
        const std::size_t room = width - (layout.hasScale ? cScaleColumns : 0);
        const std::size_t cell = std::min<std::size_t>(room / cBands, 9);
        layout.gap = cell >= 3 ? 1 : 0;
        layout.excitation = cell >= 2 ? (cell - layout.gap) / 2 : 0;
        layout.gain =
            std::max<std::size_t>(1, cell - std::min(cell, layout.gap + layout.excitation));
        layout.bands = std::min(cBands, room / layout.Cell());
        return layout;
    }
};

// One line of the bars: what lies between two levels, either above 0 dB or below.
struct Row {
    float high;
    float low;

    const char* Gain(float level) const {
        const bool isAbove = low >= 0;
        if (std::isnan(level) || level <= KORA4_SILENT_GAIN)
            return " ";
        return BarCell(level, isAbove, isAbove ? low : -high, high - low);
    }
    const char* Excitation(float level) const { return level >= (high + low) / 2 ? "░" : " "; }
    // The highest level of the scale in the line, "" when there is none.
    std::string Label() const {
        const float mark = std::floor(high / cScaleStep) * cScaleStep;
        return mark > low ? std::to_string(static_cast<int>(mark)) : std::string();
    }
};

Style StyleOfGain(float gain) {
    return gain >= cOver ? Style::eBad : gain >= cHot ? Style::eWarning : Style::eGood;
}

StyledLine DrawRow(const Row& row, const Levels& levels, const Layout& layout) {
    StyledLine line;
    if (layout.hasScale)
        line.push_back({Style::eDim, RightAligned(row.Label(), cScaleColumns - 2) +
                                         (row.Label().empty() ? " │" : " ┤")});
    for (std::size_t band = 0; band < layout.bands; ++band) {
        line.push_back({StyleOfGain(levels.gains[band]),
                        Repeated(row.Gain(levels.gains[band]), layout.gain)});
        line.push_back({Style::eDim,
                        Repeated(row.Excitation(levels.excitations[band]), layout.excitation)});
        line.push_back({Style::ePlain, std::string(layout.gap, ' ')});
    }
    return line;
}

// The numbers of the bands; every fifth where not all have room.
std::string Numbers(const Layout& layout, std::size_t width) {
    std::string line(layout.hasScale ? cScaleColumns : 0, ' ');
    const std::size_t begin = line.size();
    const std::size_t step = layout.Cell() >= 3 ? 1 : 5;
    for (std::size_t band = step; band <= layout.bands; band += step) {
        const std::string number = std::to_string(band);
        const std::size_t place = begin + (band - 1) * layout.Cell();
        if (place + number.size() > width)
            break;
        line.resize(place, ' ');
        line += number;
    }
    return line;
}

std::string Frequencies(const Layout& layout, std::size_t width) {
    if (!layout.hasScale)
        return {};
    const std::string line =
        FrequencyLabels(DisplayFrequencies(), cScaleColumns, layout.Cell(), width);
    return RightAligned("Hz", cScaleColumns - 2) + line.substr(cScaleColumns - 2);
}

std::string Words(const Levels& levels, std::size_t width) {
    const auto loudest = std::max_element(
        levels.gains.begin(), levels.gains.end(),
        [](float a, float b) { return std::isnan(a) || (!std::isnan(b) && a < b); });
    const std::string words = "dB: █ gain ░ excitation   loudest " + LevelText(*loudest) +
                              " in band " + std::to_string(loudest - levels.gains.begin() + 1) +
                              "   Ctrl-C ends";
    return Columns(words) <= width ? words : std::string();
}

}  // namespace

bool AreSame(const Levels& a, const Levels& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

std::vector<StyledLine> DrawLevels(const Levels& levels, const std::string& warning,
                                   std::size_t width, std::size_t height) {
    const Layout layout = Layout::For(width);
    const std::size_t rows =
        std::clamp<std::size_t>(height > cOtherRows ? height - cOtherRows : 1, 1, cMostRows);
    const float step = (cTop - cBottom) / static_cast<float>(rows);
    const auto rowsAboveZero = static_cast<int>(std::lround(cTop / step));
    std::vector<StyledLine> lines;
    for (std::size_t i = 0; i < rows; ++i) {
        const int place = rowsAboveZero - static_cast<int>(i);
        const float high = step * static_cast<float>(place);
        const float low = step * static_cast<float>(place - 1);
        lines.push_back(DrawRow({high, low}, levels, layout));
    }
    if (height > rows)
        lines.push_back({{Style::eDim, Numbers(layout, width)}});
    if (height > rows + 1)
        lines.push_back({{Style::eDim, Frequencies(layout, width)}});
    if (height > rows + 2)
        lines.push_back({warning.empty() ? Span{Style::eDim, Words(levels, width)}
                                         : Span{Style::eWarning, Cut(warning, width)}});
    return lines;
}

std::string LevelText(float level) {
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, level, std::chars_format::fixed, 1);
    const std::string result(text, end.ptr);
    return result == "-0.0" ? "0.0" : result;
}

std::string LevelsLine(const Levels& levels) {
    std::string line = "gain";
    for (const float gain : levels.gains)
        line += " " + LevelText(gain);
    line += "  excitation";
    for (const float excitation : levels.excitations)
        line += " " + LevelText(excitation);
    return line;
}

Json LevelsDocument(const std::optional<Levels>& levels) {
    const auto list = [](const auto& numbers) {
        Json array = Json::array();
        for (const float number : numbers)
            array.push_back(std::isfinite(number) ? Json::parse(Decimal(number)) : Json());
        return array;
    };
    return {{"frequencies", list(DisplayFrequencies())},
            {"gains", levels ? list(levels->gains) : Json()},
            {"excitations", levels ? list(levels->excitations) : Json()}};
}

}  // namespace kora4::tools
