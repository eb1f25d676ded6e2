// SPDX-License-Identifier: MIT
// What the documents show as code stands in a source that is built, and their links lead
// somewhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "checks/documents_compare.h"
#include "checks/documents_markdown.h"

namespace kora4::test {
namespace {

std::vector<std::string> DocumentPaths() {
    std::vector<std::string> paths;
    for (const char* folder : {"", "docs/"})
        for (const auto& file :
             std::filesystem::directory_iterator(KORA4_ROOT "/" + std::string(folder)))
            if (file.path().extension() == ".md")
                paths.push_back(folder + file.path().filename().string());
    return paths;
}

// Line by line, without indentation: a document shows a piece of a function at its margin.
std::string Unindented(const std::string& text) {
    static const std::regex cIndentation("(^|\n) +");
    return std::regex_replace(text, cIndentation, "$1");
}

// Each block of C++ follows a line `<!-- code: FILE -->` and is a part of that file.
Findings CodeThatIsNotBuilt(const std::string& document) {
    static const std::regex cBlock("([^\n]*)\n```cpp\n([^`]*)```");
    static const std::regex cMark("<!-- code: (\\S+) -->");
    Findings findings;
    for (std::sregex_iterator i(document.begin(), document.end(), cBlock), end; i != end; ++i) {
        const std::string before = (*i)[1];
        std::smatch mark;
        if (!std::regex_match(before, mark, cMark))
            findings.push_back("code without a file that it comes from, after: " + before);
        else if (Unindented(ReadProjectFile(mark[1])).find(Unindented((*i)[2])) ==
                 std::string::npos)
            findings.push_back("not in " + mark[1].str() + ": " + (*i)[2].str());
    }
    return findings;
}

std::string WithoutCode(const std::string& document) {
    static const std::regex cCode("(^|\n)```[^`]*```|`[^`\n]*`");
    return std::regex_replace(document, cCode, "$1");
}

// The anchors of a document's headings, as the usual viewers make them.
std::set<std::string> AnchorsOf(const std::string& document) {
    std::set<std::string> anchors;
    std::istringstream lines(document);
    bool isCode = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("```"))
            isCode = !isCode;
        if (isCode || !line.starts_with("#"))
            continue;
        std::string anchor;
        for (const char c : line.substr(line.find_first_not_of("# ")))
            if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_')
                anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            else if (c == ' ')
                anchor += '-';
        anchors.insert(anchor);
    }
    return anchors;
}

Findings LinksThatLeadNowhere(const std::string& path, const std::string& document) {
    static const std::regex cLink(R"(\]\(([^)#\s]*)(#([^)\s]*))?\))");
    Findings findings;
    const std::string text = WithoutCode(document);
    for (std::sregex_iterator i(text.begin(), text.end(), cLink), end; i != end; ++i) {
        const std::string file = (*i)[1];
        if (file.starts_with("https://"))
            continue;
        const std::filesystem::path target =
            file.empty()
                ? std::filesystem::path(path)
                : (std::filesystem::path(path).parent_path() / file).lexically_normal();
        if (!std::filesystem::exists(std::filesystem::path(KORA4_ROOT) / target)) {
            findings.push_back(path + ": there is no " + target.string());
        } else if ((*i)[2].matched) {
            const std::string there =
                file.empty() ? document : ReadProjectFile(target.string());
            if (!AnchorsOf(there).contains((*i)[3]))
                findings.push_back(path + ": " + target.string() + " has no " + (*i)[2].str());
        }
    }
    return findings;
}

TEST(DocumentTexts, ShowCodeThatIsBuilt) {
    int blocks = 0;
    for (const std::string& path : DocumentPaths()) {
        const std::string document = ReadProjectFile(path);
        EXPECT_EQ(Findings(), CodeThatIsNotBuilt(document)) << path;
        blocks += document.find("\n```cpp\n") != std::string::npos;
    }
    EXPECT_LE(2, blocks);
}

TEST(DocumentTexts, HaveLinksThatLeadSomewhere) {
    for (const std::string& path : DocumentPaths())
        EXPECT_EQ(Findings(), LinksThatLeadNowhere(path, ReadProjectFile(path)));
}

TEST(DocumentTexts, AreFoundOutWithCodeThatIsNotBuilt) {
    const std::string file = "tests/checks/documents_text_test.cpp";
    const auto block = [](const std::string& mark, const std::string& code) {
        return mark + "\n```cpp\n" + code + "\n```\n";
    };
    const std::string mark = "<!-- code: " + file + " -->";
    EXPECT_EQ(Findings(), CodeThatIsNotBuilt(block(mark, "int blocks = 0;")));
    EXPECT_EQ(1u, CodeThatIsNotBuilt(block(mark,
                                           "int blocks = "
                                           "1;"))
                      .size());
    EXPECT_EQ(1u, CodeThatIsNotBuilt(block("As in:", "int blocks = 0;")).size());
}

TEST(DocumentTexts, AreFoundOutWithLinksThatLeadNowhere) {
    const std::string document = "# A `b`: c\n[a](#a-b-c) [b](../README.md) `[c](none.md)`\n";
    EXPECT_EQ(Findings(),
              LinksThatLeadNowhere("docs/api.md", document + "[x](api.md#results)"));
    EXPECT_EQ(1u, LinksThatLeadNowhere("docs/api.md", document + "[x](none.md)").size());
    EXPECT_EQ(1u, LinksThatLeadNowhere("docs/api.md", document + "[x](#none)").size());
    EXPECT_EQ(1u, LinksThatLeadNowhere("docs/api.md", document + "[x](api.md#none)").size());
}

}  // namespace
}  // namespace kora4::test
