// SPDX-License-Identifier: MIT
// docs/platforms.md has the probe's questions and expectations, and what Wine answers to them;
// and whatever code names Wine is behind a question.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "checks/documents_markdown.h"
#include "platform_probe/question.h"
#include "platform_probe/roles.h"
#include "platform_probe/table.h"

namespace kora4::probe {
namespace {

using test::Row;

const std::vector<Row>& RowsOfDocument() {
    static const test::Document document =
        test::ParseDocument(test::ReadProjectFile("docs/platforms.md"));
    static const std::vector<Row> none;
    const test::MarkedTable* const table = document.Find("platform questions");
    return table ? table->rows : none;
}

std::vector<const Question*> InOrder() {
    std::vector<const Question*> all;
    for (const auto& questions : AllQuestions())
        for (const Question& question : questions)
            all.push_back(&question);
    return all;
}

constexpr std::size_t cOnWindows = 4;
constexpr std::size_t cUnderWine = 5;

TEST(PlatformsDocument, HasTheQuestionsOfTheProbe) {
    const std::vector<const Question*> questions = InOrder();
    const std::vector<Row>& rows = RowsOfDocument();
    ASSERT_EQ(questions.size(), rows.size()) << "platform_probe --table prints them all";
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Row row = rows[i];
        EXPECT_NE("", row[cOnWindows]) << row[0] << ": 'not yet seen', or what was seen";
        row.erase(row.begin() + cOnWindows, row.begin() + cUnderWine + 1);
        EXPECT_EQ(CellsOf(*questions[i]), row);
    }
}

// One that is decided by chance has several answers in the document; one that no program can
// answer may have been answered by hand.
TEST(PlatformsDocument, HasTheAnswersOfWine) {
    ASSERT_EQ(InOrder().size(), RowsOfDocument().size());
    for (std::size_t i = 0; const Question* question : InOrder()) {
        const std::string documented = RowsOfDocument()[i++][cUnderWine];
        std::string answer = Answer(*question);
        for (int again = 0; answer == cNoAnswer && again < 3; ++again)
            answer = Answer(*question);
        if (answer.starts_with(cCannotTell) && documented.starts_with("by hand: "))
            continue;
        EXPECT_NE(std::string::npos,
                  (" or " + documented + " or ").find(" or " + answer + " or "))
            << question->name << ": the document says '" << documented << "', Wine '" << answer
            << "'";
    }
}

std::set<std::string> FilesThatNameWine() {
    const std::filesystem::path root = KORA4_ROOT;
    std::set<std::string> files;
    for (const char* folder : {"src", "tools", "sdk/include", "sdk/proxies"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
            const std::string extension = entry.path().extension().string();
            if (extension != ".h" && extension != ".cpp" && extension != ".c")
                continue;
            std::ostringstream text;
            text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            if (text.str().find("Wine") != std::string::npos)
                files.insert(entry.path().lexically_relative(root).generic_string());
        }
    }
    return files;
}

TEST(PlatformQuestions, CoverTheFilesThatNameWine) {
    std::set<std::string> covered;
    for (const Question* question : InOrder()) {
        std::istringstream code(question->code);
        for (std::string file; code >> file;) {
            EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(KORA4_ROOT) / file))
                << question->name << " names " << file;
            covered.insert(file);
        }
    }
    const std::set<std::string> files = FilesThatNameWine();
    EXPECT_LT(10u, files.size());
    for (const std::string& file : files)
        EXPECT_TRUE(covered.contains(file)) << "no question names " << file;
}

TEST(PlatformQuestions, JudgeAnAnswerByTheExpectation) {
    const Question documented{"", "", "yes", "a title", "", nullptr};
    const Question unknown{"", "", "", "", "", nullptr};
    EXPECT_STREQ("same", Verdict(documented, "yes"));
    EXPECT_STREQ("different", Verdict(documented, "no"));
    EXPECT_STREQ("not known", Verdict(documented, Answer(documented)));
    EXPECT_STREQ("not known", Verdict(unknown, "yes"));
}

}  // namespace
}  // namespace kora4::probe

int main(int count, char** arguments) {
    if (const auto code = kora4::probe::PlayRole(count, arguments))
        return *code;
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
