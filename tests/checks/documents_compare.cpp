// SPDX-License-Identifier: MIT
// Compares marked tables row by row, and formats what is missing or too much.
#include "checks/documents_compare.h"

#include <algorithm>
#include <charconv>

namespace kora4::test {

namespace {

std::string Shown(const Row& row) {
    std::string shown;
    for (const std::string& cell : row)
        shown += "| " + cell + " ";
    return shown + "|";
}

std::vector<Row> Without(std::vector<Row> rows, const std::vector<Row>& others) {
    for (const Row& other : others) {
        const auto found = std::ranges::find(rows, other);
        if (found != rows.end())
            rows.erase(found);
    }
    return rows;
}

}  // namespace

Findings Compare(const Document& document, const Comparison& comparison) {
    return Compare(document, comparison, comparison.expected(document));
}

Findings Compare(const Document& document, const Comparison& comparison,
                 const std::vector<Row>& expected) {
    const std::string mark = comparison.mark;
    const MarkedTable* pTable = document.Find(mark);
    if (!pTable)
        return {mark + ": the document has no such table"};
    if (pTable->columns.size() < comparison.columns)
        return {mark + ": columns are missing"};
    std::vector<Row> rows = pTable->rows;
    for (Row& row : rows)
        row.resize(comparison.columns);
    Findings findings;
    for (const Row& row : Without(rows, expected))
        findings.push_back(mark + ": the document alone says " + Shown(row));
    for (const Row& row : Without(expected, rows))
        findings.push_back(mark + ": the library alone says  " + Shown(row));
    if (expected.empty())
        findings.push_back(mark + ": nothing was compared");
    return findings;
}

Findings CompareAll(const Document& document, const std::vector<Comparison>& comparisons) {
    Findings findings;
    for (const Comparison& comparison : comparisons)
        std::ranges::copy(Compare(document, comparison), std::back_inserter(findings));
    for (const MarkedTable& table : document.tables) {
        const auto isThis = [&](const Comparison& comparison) {
            return table.mark == comparison.mark;
        };
        if (table.block.empty() && std::ranges::none_of(comparisons, isThis))
            findings.push_back(table.mark + ": marked, and compared with nothing");
    }
    return findings;
}

std::vector<Row> RowsOf(const Document& document, const char* mark) {
    const MarkedTable* pTable = document.Find(mark);
    return pTable ? pTable->rows : std::vector<Row>{};
}

std::string Text(std::uint64_t number) {
    return std::to_string(number);
}

std::string FloatText(float value) {
    char text[64];
    const auto [pEnd, error] = std::to_chars(text, text + sizeof text, value);
    return error == std::errc{} ? std::string(text, pEnd) : "?";
}

std::string Numbers(const std::vector<std::uint32_t>& numbers) {
    std::string text;
    for (std::size_t i = 0; i < numbers.size();) {
        std::size_t end = i + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1)
            ++end;
        if (end - i < 3)
            end = i + 1;
        text += (text.empty() ? "" : ", ") + Text(numbers[i]);
        if (end - i > 1)
            text += " to " + Text(numbers[end - 1]);
        i = end;
    }
    return text;
}

std::string Narrow(const std::u16string& text) {
    std::string narrow;
    for (const char16_t c : text)
        narrow += c < 0x80 ? static_cast<char>(c) : '?';
    return narrow;
}

std::u16string Widened(const std::string& text) {
    std::u16string wide;
    for (const char c : text)
        wide += static_cast<unsigned char>(c);
    return wide;
}

}  // namespace kora4::test
