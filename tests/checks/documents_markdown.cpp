// SPDX-License-Identifier: MIT
// Reads Markdown line by line: marks, tables, cells without their markup.
#include "checks/documents_markdown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

namespace kora4::test {

namespace {

constexpr char cMarkBegin[] = "<!-- compared: ";
constexpr char cMarkEnd[] = " -->";

std::string Trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

// "the [levels](#blob)" says "the levels".
std::string WithoutLinks(const std::string& text) {
    static const std::regex cLink(R"(\[([^\]]+)\]\([^)]*\))");
    return std::regex_replace(text, cLink, "$1");
}

// Blanks inside backticks belong to the text.
Row Cells(const std::string& line) {
    Row cells;
    std::istringstream parts(line.substr(1));
    for (std::string part; std::getline(parts, part, '|');) {
        std::string cell = Trimmed(part);
        std::erase(cell, '`');
        cells.push_back(WithoutLinks(cell));
    }
    return cells;
}

}  // namespace

MarkedTable* Document::Find(const std::string& mark) {
    const auto found = std::ranges::find(tables, mark, &MarkedTable::mark);
    return found == tables.end() ? nullptr : &*found;
}

const MarkedTable* Document::Find(const std::string& mark) const {
    return const_cast<Document*>(this)->Find(mark);
}

Document ParseDocument(const std::string& text) {
    Document document;
    std::istringstream lines(text);
    bool open = false;    // a mark whose table has not ended yet
    bool fenced = false;  // inside the block of a mark
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(cMarkBegin)) {
            const std::size_t begin = sizeof cMarkBegin - 1;
            document.tables.push_back(
                {line.substr(begin, line.find(cMarkEnd) - begin), {}, {}, {}});
            open = true;
            continue;
        }
        if (!open)
            continue;
        MarkedTable& table = document.tables.back();
        if (line.starts_with("```")) {
            open = !fenced;
            fenced = !fenced;
        } else if (fenced) {
            table.block += line + "\n";
        } else if (line.starts_with("|")) {
            Row cells = Cells(line);
            if (table.columns.empty()) {
                table.columns = cells;
            } else if (!cells.empty() && !cells[0].starts_with("---")) {
                cells.resize(table.columns.size());
                table.rows.push_back(cells);
            }
        } else if (!Trimmed(line).empty() || !table.columns.empty()) {
            open = false;
        }
    }
    return document;
}

std::string ReadProjectFile(const std::string& path) {
    // The self-test kit brings the documents that its programs read.
    const char* const kit = std::getenv("KORA4_ROOT");
    std::ifstream file(std::string(kit ? kit : KORA4_ROOT) + "/" + path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace kora4::test
