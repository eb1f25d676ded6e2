// SPDX-License-Identifier: MIT
// Fits texts into columns: aligns, cuts, wraps, quotes.
#include "kora4ctl/terminal/text_layout.h"

#include <algorithm>
#include <sstream>

#include "base/shown_text.h"
#include "base/text.h"

namespace kora4::tools {

std::string Repeated(const std::string& text, std::size_t times) {
    std::string repeated;
    for (std::size_t i = 0; i < times; ++i)
        repeated += text;
    return repeated;
}

std::string CountOf(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

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

std::string Fitting(const Output& output, const std::string& text, std::size_t margin) {
    return output.IsTerminal() ? Cut(text, output.Width() - margin) : text;
}

std::vector<std::string> Wrapped(const std::string& text, std::size_t columns) {
    std::vector<std::string> lines(1);
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (!lines.back().empty() && Columns(lines.back()) + 1 + Columns(word) > columns)
            lines.emplace_back();
        lines.back() += (lines.back().empty() ? "" : " ") + word;
    }
    return lines;
}

void PrintBeside(Output& output, const std::string& heading, const std::string& text) {
    constexpr std::size_t cLeast = 20;
    const std::size_t indent = Columns(heading);
    // Wine's consoles count the characters of a colour sequence as columns, and none may be
    // left over at the end of the line.
    constexpr std::size_t cSequences = 9;
    const bool isPainted = heading.find(cStyleMark) != std::string::npos;
    const std::size_t taken = indent + (isPainted ? cSequences : 0) + 1;
    const std::size_t columns =
        output.Width() > taken + cLeast ? output.Width() - taken : cLeast;
    std::string margin = heading;
    for (const std::string& line :
         Wrapped(text, output.IsTerminal() ? columns : std::string::npos)) {
        output.Print(margin + line);
        margin.assign(indent, ' ');
    }
}

std::string Quoted(const std::string& text) {
    return "'" + ShownText(text) + "'";
}

}  // namespace kora4::tools
