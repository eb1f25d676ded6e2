// SPDX-License-Identifier: MIT
// Fits texts into columns: aligns, cuts, and replaces what a terminal would act on.
#include "kora4ctl/command_line/options.h"

#include <algorithm>

#include "base/text.h"

namespace kora4::tools {

std::string Aligned(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], Columns(row[i]));
    }
    std::string text;
    for (const auto& row : rows) {
        text += "  ";
        for (std::size_t i = 0; i < row.size(); ++i)
            text += i + 1 < row.size() ? Padded(row[i], widths[i] + 2) : row[i];
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    return text;
}

namespace {

constexpr char cDots[] = "...";
constexpr std::size_t cDotColumns = 3;

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

}  // namespace

std::string Cut(const std::string& text, std::size_t columns) {
    if (Columns(text) <= columns)
        return text;
    std::string cut = text;
    while (!cut.empty() && Columns(cut) + cDotColumns > columns) {
        while (IsContinuation(cut.back()))
            cut.pop_back();
        cut.pop_back();
    }
    return cut + cDots;
}

std::string CutFront(const std::string& text, std::size_t columns) {
    if (Columns(text) <= columns)
        return text;
    std::string_view cut = text;
    while (!cut.empty() && Columns(cut) + cDotColumns > columns) {
        cut.remove_prefix(1);
        while (!cut.empty() && IsContinuation(cut.front()))
            cut.remove_prefix(1);
    }
    return cDots + std::string(cut);
}

std::string Shown(const std::string& text) {
    std::string shown;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            shown += "\uFFFD";
        else
            shown += c;
    }
    return shown;
}

}  // namespace kora4::tools
