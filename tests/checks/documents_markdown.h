// SPDX-License-Identifier: MIT
// The tables of a Markdown document that stand below a mark.
#ifndef KORA4_TESTS_CHECKS_DOCUMENTS_MARKDOWN_H
#define KORA4_TESTS_CHECKS_DOCUMENTS_MARKDOWN_H

#include <string>
#include <vector>

namespace kora4::test {

using Row = std::vector<std::string>;

// What stands below `<!-- compared: mark -->`: a table or a fenced block.
struct MarkedTable {
    std::string mark;
    Row columns;
    std::vector<Row> rows;  // as many cells as there are columns; without backticks
    std::string block;      // of a fenced block
};

// A document by its marked tables.
struct Document {
    std::vector<MarkedTable> tables;

    MarkedTable* Find(const std::string& mark);
    const MarkedTable* Find(const std::string& mark) const;
};

// A row that is longer or shorter than the head of its table is cut or filled up.
Document ParseDocument(const std::string& text);

// A file of the project, by its path from the root. A missing one fails the test.
std::string ReadProjectFile(const std::string& path);

}  // namespace kora4::test

#endif  // KORA4_TESTS_CHECKS_DOCUMENTS_MARKDOWN_H
