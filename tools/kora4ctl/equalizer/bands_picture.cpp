// SPDX-License-Identifier: MIT
// Draws the curve of an equalizer: one line, or a grid with scale and frequencies.
#include "kora4ctl/equalizer/bands_picture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "base/text.h"
#include "contract/patch_limits.h"
#include "kora4ctl/terminal/text_layout.h"

namespace kora4::tools {

namespace {

constexpr std::array<const char*, 9> cHeights = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

// How much of a cell is filled that begins `below` dB away from zero and is `size` dB high.
double Filling(float gain, double below, double size) {
    return std::clamp((std::abs(static_cast<double>(gain)) - below) / size, 0.0, 1.0);
}

std::string Scale(double gain) {
    const std::string text = gain == 0 ? "0" : SignedGain(static_cast<float>(gain));
    const std::string whole = text.substr(0, text.find(".0"));
    return std::string(whole.size() < 4 ? 4 - whole.size() : 0, ' ') + whole + " ";
}

}  // namespace

// Only two characters fill a part of a cell from its top, so bars below zero are coarser.
const char* BarCell(float gain, bool isAbove, double below, double size) {
    if (isAbove != (gain > 0) || gain == 0)
        return " ";
    const double filling = Filling(gain, below, size);
    if (isAbove)
        return cHeights[static_cast<std::size_t>(std::lround(filling * 8))];
    return filling >= 0.75 ? "█" : filling >= 0.375 ? "▀" : filling > 0 ? "▔" : " ";
}

// As many labels as have room, one blank between them.
std::string FrequencyLabels(const std::vector<float>& frequencies, std::size_t margin,
                            std::size_t columns, std::size_t width) {
    std::string line(margin, ' ');
    for (std::size_t i = 0; i < frequencies.size(); ++i) {
        const std::size_t begin = margin + i * columns;
        const std::string label = ShortFrequency(frequencies[i]);
        if (line.size() <= begin && begin + label.size() <= width)
            line = Padded(line, begin) + label + " ";
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

std::string OneLineCurve(const Bands& bands) {
    const auto span = static_cast<double>(cGraphicEQGainMax - cGraphicEQGainMin);
    std::string curve;
    for (const Band& band : bands) {
        const double share = static_cast<double>(band.gain - cGraphicEQGainMin) / span;
        const double height = std::clamp(std::round(share * 7), 0.0, 7.0);
        curve += cHeights[1 + static_cast<std::size_t>(height)];
    }
    return curve;
}

std::vector<std::string> CurveGrid(const Bands& bands, std::size_t width, unsigned rows) {
    if (bands.empty())
        return {};
    constexpr std::size_t cMargin = 5;
    const std::size_t columns =
        std::clamp<std::size_t>(width > cMargin ? (width - cMargin) / bands.size() : 1, 1, 10);
    const std::size_t bar = columns > 1 ? columns - 1 : 1;
    const std::string gap(columns - bar, ' ');
    const double size = static_cast<double>(cGraphicEQGainMax) / rows;
    std::vector<std::string> lines;
    const auto add = [&](bool isAbove, double below) {
        std::string line = Scale(isAbove ? below + size : -below - size);
        for (const Band& band : bands)
            line += Repeated(BarCell(band.gain, isAbove, below, size), bar) + gap;
        lines.push_back(line);
    };
    for (unsigned row = rows; row-- > 0;)
        add(true, row * size);
    lines.push_back(Scale(0) + Repeated("─", columns * bands.size()));
    for (unsigned row = 0; row < rows; ++row)
        add(false, row * size);
    std::vector<float> frequencies;
    for (const Band& band : bands)
        frequencies.push_back(band.frequency);
    lines.push_back(FrequencyLabels(frequencies, cMargin, columns, std::string::npos));
    for (std::string& line : lines)
        line.erase(line.find_last_not_of(' ') + 1);
    return lines;
}

std::string ShortFrequency(float frequency) {
    return frequency < 1000 ? Decimal(std::round(frequency))
                            : Decimal(std::round(frequency / 100) / 10) + "k";
}

std::string SignedGain(float gain) {
    char buffer[64];
    const float shown = std::round(gain * 100) / 100;
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, std::abs(shown));
    const char* const sign = shown > 0 ? "+" : shown < 0 ? "-" : "";
    const std::string text(buffer, result.ptr);
    return sign + text + (text.find_first_of(".e") == std::string::npos ? ".0" : "");
}

}  // namespace kora4::tools
