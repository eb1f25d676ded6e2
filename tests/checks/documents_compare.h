// SPDX-License-Identifier: MIT
// The comparisons of the documents with the library, one for each marked table.
#ifndef KORA4_TESTS_CHECKS_DOCUMENTS_COMPARE_H
#define KORA4_TESTS_CHECKS_DOCUMENTS_COMPARE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "checks/documents_markdown.h"

namespace kora4::test {

using Findings = std::vector<std::string>;

// One marked table and what the library says of it.
struct Comparison {
    const char* mark;
    // The leading columns that are compared; the others are prose.
    std::size_t columns;
    // What the rows should be, in these columns. Tables of examples give the answers of the
    // library to the document's own inputs: those are the columns before firstAnswer.
    std::function<std::vector<Row>(const Document&)> expected;
    std::size_t firstAnswer = 0;
};

extern const std::vector<Comparison> cSchemaComparisons;
extern const std::vector<Comparison> cApiComparisons;

// Rows that only one of the two has, as sentences. A document without the table, or with a
// marked table that nothing compares, differs too.
Findings Compare(const Document& document, const Comparison& comparison);
Findings Compare(const Document& document, const Comparison& comparison,
                 const std::vector<Row>& expected);
Findings CompareAll(const Document& document, const std::vector<Comparison>& comparisons);

// --- helpers of the comparisons ------------------------------------------------------------

// The rows of a marked table; none when it is missing.
std::vector<Row> RowsOf(const Document& document, const char* mark);

std::string Text(std::uint64_t number);
// The shortest decimal that reads back as the same float.
std::string FloatText(float value);
// "1, 2, 5 to 9": numbers in ascending order; three and more neighbours as a range.
std::string Numbers(const std::vector<std::uint32_t>& numbers);
std::string Narrow(const std::u16string& text);
std::u16string Widened(const std::string& text);

}  // namespace kora4::test

#endif  // KORA4_TESTS_CHECKS_DOCUMENTS_COMPARE_H
