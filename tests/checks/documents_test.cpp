// SPDX-License-Identifier: MIT
// The documents of the store and of the API say what the library does, and a document that
// says anything else is found out.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "checks/documents_compare.h"

namespace kora4::test {
namespace {

struct Contract {
    const char* name;
    const char* path;
    const std::vector<Comparison>& comparisons;
};

void PrintTo(const Contract& contract, std::ostream* pStream) {
    *pStream << contract.path;
}

const Contract cContracts[] = {
    {"StoreSchema", "docs/store-schema.md", cSchemaComparisons},
    {"Api", "docs/api.md", cApiComparisons},
};

std::string AsText(const Findings& findings) {
    std::string text;
    for (const std::string& finding : findings)
        text += finding + "\n";
    return text;
}

// Another text of the same kind: the last digit counts on, a text without one grows.
std::string Changed(std::string cell) {
    const auto digit =
        std::find_if(cell.rbegin(), cell.rend(), [](char c) { return c >= '0' && c <= '9'; });
    if (digit == cell.rend())
        return cell + "x";
    *digit = *digit == '9' ? '0' : static_cast<char>(*digit + 1);
    return cell;
}

std::string Place(const MarkedTable& table, std::size_t row, std::size_t column) {
    return table.mark + ", row " + std::to_string(row + 1) + ", " + table.columns[column] +
           ": " + table.rows[row][column];
}

class Documents : public testing::TestWithParam<Contract> {
  protected:
    const std::vector<Comparison>& Comparisons() const { return GetParam().comparisons; }

    const std::string m_text = ReadProjectFile(GetParam().path);
    Document m_document = ParseDocument(m_text);
};

TEST_P(Documents, SayWhatTheLibraryDoes) {
    const Findings findings = CompareAll(m_document, Comparisons());
    EXPECT_TRUE(findings.empty()) << GetParam().path << "\n" << AsText(findings);
}

TEST_P(Documents, AreFoundOutWithAnyComparedCellChanged) {
    std::size_t cells = 0;
    for (const Comparison& comparison : Comparisons()) {
        MarkedTable& table = *m_document.Find(comparison.mark);
        const std::vector<Row> expected = comparison.expected(m_document);
        // Only the answers of examples move with the document.
        const bool examples = comparison.firstAnswer != 0;
        for (std::size_t row = 0; row < table.rows.size(); ++row) {
            for (std::size_t column = comparison.firstAnswer; column < comparison.columns;
                 ++column, ++cells) {
                std::string& cell = table.rows[row][column];
                const std::string original = cell;
                cell = Changed(original);
                const std::vector<Row> now =
                    examples ? comparison.expected(m_document) : expected;
                EXPECT_FALSE(Compare(m_document, comparison, now).empty())
                    << Place(table, row, column);
                cell = original;
            }
        }
        EXPECT_TRUE(Compare(m_document, comparison, expected).empty()) << comparison.mark;
    }
    RecordProperty("ComparedCells", static_cast<int>(cells));
    EXPECT_LT(200u, cells);
}

// Examples may be fewer or more; every other table is complete.
TEST_P(Documents, AreFoundOutWithARowMissingOrOneTooMany) {
    for (const Comparison& comparison : Comparisons()) {
        if (comparison.firstAnswer != 0)
            continue;
        MarkedTable& table = *m_document.Find(comparison.mark);
        const std::vector<Row> expected = comparison.expected(m_document);
        const std::vector<Row> original = table.rows;
        for (std::size_t row = 0; row < original.size(); ++row) {
            table.rows.erase(table.rows.begin() + static_cast<std::ptrdiff_t>(row));
            EXPECT_FALSE(Compare(m_document, comparison, expected).empty())
                << comparison.mark << ", row " << row + 1;
            table.rows = original;
        }
        table.rows.push_back(original.back());
        EXPECT_FALSE(Compare(m_document, comparison, expected).empty()) << comparison.mark;
        table.rows = original;
    }
}

TEST_P(Documents, AreFoundOutWithoutOneOfTheirTables) {
    for (const Comparison& comparison : Comparisons()) {
        const std::vector<Row> expected = comparison.expected(m_document);
        Document document = m_document;
        std::erase_if(document.tables,
                      [&](const MarkedTable& table) { return table.mark == comparison.mark; });
        EXPECT_FALSE(Compare(document, comparison, expected).empty()) << comparison.mark;
    }
}

TEST_P(Documents, AreFoundOutWithATableThatNothingCompares) {
    m_document.tables.push_back({"something else", {"A"}, {{"1"}}, {}});
    EXPECT_EQ(1u, CompareAll(m_document, Comparisons()).size());
}

INSTANTIATE_TEST_SUITE_P(Of, Documents, testing::ValuesIn(cContracts),
                         [](const auto& contract) { return std::string(contract.param.name); });

// The document's text with the first `from` in it replaced.
Findings FindingsWith(const Contract& contract, const std::string& from,
                      const std::string& to) {
    std::string text = ReadProjectFile(contract.path);
    const std::size_t at = text.find(from);
    EXPECT_NE(std::string::npos, at) << from;
    if (at != std::string::npos)
        text.replace(at, from.size(), to);
    return CompareAll(ParseDocument(text), contract.comparisons);
}

TEST(DocumentTexts, AreComparedAsTheyStandInTheFile) {
    const Contract& schema = cContracts[0];
    EXPECT_EQ(2u,
              FindingsWith(schema, "| 0.33 | 0.33 | 0.33 |", "| 0.33 | 0.34 | 0.33 |").size());
    EXPECT_EQ(2u, FindingsWith(schema, "| 57 | static | number | 200 |",
                               "| 57 | static | number | 100 |")
                      .size());
    EXPECT_FALSE(FindingsWith(schema, "00 00 a0 c1", "00 00 a0 41").empty());
    EXPECT_FALSE(FindingsWith(schema, "0010  ", "0011  ").empty());
    const Contract& api = cContracts[1];
    EXPECT_EQ(
        2u,
        FindingsWith(api, "| 11 | `RevertFromDemoMode`", "| 12 | `RevertFromDemoMode`").size());
    EXPECT_EQ(2u, FindingsWith(api, "`m_volumeSlider` | ULONG | 0 | 10 |",
                               "`m_volumeSlider` | ULONG | 0 | 11 |")
                      .size());
    EXPECT_FALSE(FindingsWith(api, "<!-- compared: results -->", "").empty());
}

}  // namespace
}  // namespace kora4::test
