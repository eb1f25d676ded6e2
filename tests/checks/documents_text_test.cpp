// SPDX-License-Identifier: MIT
// What the documents show as code stands in a source that is built, and their links lead
// somewhere.
#include <gtest/gtest.h>
#include <kora4/result_codes.hpp>

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

// All documents, by their paths from the root.
std::vector<std::string> DocumentPaths() {
    const std::filesystem::path root = KORA4_ROOT;
    std::vector<std::string> paths;
    for (std::filesystem::recursive_directory_iterator file(root), end; file != end; ++file) {
        const std::string name = file->path().filename().string();
        if (file->is_directory() && (name == "build" || name.starts_with(".")))
            file.disable_recursion_pending();
        else if (file->path().extension() == ".md")
            paths.push_back(file->path().lexically_relative(root).string());
    }
    return paths;
}

// Line by line, without indentation: a document shows a piece of a function at its margin.
std::string Unindented(const std::string& text) {
    static const std::regex cIndentation("(^|\n) +");
    return std::regex_replace(text, cIndentation, "$1");
}

// Each block of C and C++ follows a line `<!-- code: FILE -->` and is a part of that file.
Findings CodeThatIsNotBuilt(const std::string& document) {
    static const std::regex cBlock("([^\n]*)\n```(?:c|cpp|xml)\n([^`]*)```");
    static const std::regex cMark("<!-- code: (\\S+) -->");
    Findings findings;
    for (std::sregex_iterator i(document.begin(), document.end(), cBlock), end; i != end; ++i) {
        const std::string before = (*i)[1];
        std::smatch mark;
        // check.sdk_blocks does.
        if (before == "<!-- compiled -->")
            continue;
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

// The folder that a document's links start at. This one is installed in the first folder of the
// SDK, which has the documents in the same place.
std::filesystem::path FolderOf(const std::string& path) {
    return path == "sdk/package/README.md" ? std::filesystem::path()
                                           : std::filesystem::path(path).parent_path();
}

Findings LinksThatLeadNowhere(const std::string& path, const std::string& document) {
    static const std::regex cLink(R"(\]\(([^)#\s]*)(#([^)\s]*))?\))");
    Findings findings;
    const std::string text = WithoutCode(document);
    for (std::sregex_iterator i(text.begin(), text.end(), cLink), end; i != end; ++i) {
        const std::string file = (*i)[1];
        if (file.starts_with("https://"))
            continue;
        const std::filesystem::path target = file.empty()
                                                 ? std::filesystem::path(path)
                                                 : (FolderOf(path) / file).lexically_normal();
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

// The codes of the page of messages have the names and the proxies that `kora4ctl explain`
// knows.
TEST(DocumentTexts, NameTheResultsByTheirCodes) {
    const Document page = ParseDocument(ReadProjectFile("docs/troubleshooting.md"));
    const MarkedTable* const pTable = page.Find("messages");
    ASSERT_TRUE(pTable);
    for (const Row& row : pTable->rows) {
        const auto code = static_cast<std::uint32_t>(std::stoul(row[0], nullptr, 16));
        const ResultCode* const pResult = FindResult(code);
        ASSERT_TRUE(pResult) << row[0];
        EXPECT_EQ(pResult->name, row[1]) << row[0];
        const auto namesProxies = [](const std::string& text) {
            return text.find("Kora4RegisterProxies") != std::string::npos;
        };
        EXPECT_EQ(namesProxies(pResult->next), namesProxies(row[3])) << row[0];
    }
    EXPECT_LT(10u, pTable->rows.size());
}

// What a document says in prose, and the test that shows it of the library.
struct Statement {
    const char* document;
    const char* words;
    const char* test;  // FILE: SUITE, NAME
};

constexpr Statement cStatements[] = {
    {"README.md", "It is called in the apartment that registered it",
     "tests/contract/proxy/object_test.cpp: "
     "ProxiedObject, AllSixNotificationsArriveInTheClientsApartment"},
    {"docs/api.md", "**Callbacks are called in the apartment that registered them.**",
     "tests/contract/proxy/object_test.cpp: "
     "ProxiedObject, AllSixNotificationsArriveInTheClientsApartment"},
    {"docs/api.md", "`E_INVALIDARG`, but only an initialised object looks at them.",
     "tests/contract/api_core_test.cpp: "
     "ApiCore, ATechnologyWithoutAValueIsRefusedAfterTheInitialisation"},
    {"docs/api.md",
     "`CoCreateInstance` returns `REGDB_E_CLASSNOTREG` (0x80040154); `DllGetClassObject`, when "
     "a program calls it directly, returns `CLASS_E_CLASSNOTAVAILABLE` (0x80040111).",
     "tests/contract/server/registration_test.cpp: "
     "Registration, ComKnowsNothingOfTheClassesThatAreNotServed"},
    {"docs/api.md",
     "the store refuses a write (a key was deleted, access was denied), the "
     "result is `E_FAIL`.",
     "tests/contract/api_store_failure_test.cpp: ApiWithoutKeys, WhatIsWrittenFails"},
    {"docs/api.md",
     "A value that cannot be read is no failure: it has its "
     "[default](store-schema.md#how-to-read).",
     "tests/contract/api_store_failure_test.cpp: ApiWithoutKeys, WhatIsReadIsItsDefault"},
    {"docs/api.md",
     "Only what has no default fails: the names of the custom profiles, and "
     "levels that cannot be read.",
     "tests/contract/api_store_failure_test.cpp: ApiWithoutKeys, NamesAndLevelsFailToo"},
    {"docs/api.md", "marshalling the interface fails with `E_NOINTERFACE` (0x80004002;",
     "tests/contract/proxy/sdk_registration_test.cpp: "
     "SdkProxies, WithoutThemMarshallingFindsNoInterface"},
    {"docs/api.md", "unmarshalling it with `REGDB_E_CLASSNOTREG` (0x80040154).",
     "tests/contract/proxy/sdk_registration_test.cpp: "
     "SdkProxies, WithoutThemUnmarshallingFindsNoClass"},
    {"docs/store-schema.md", "257 reads Music's values.",
     "tests/contract/api_store_failure_test.cpp: "
     "ApiUnlistedProfile, ReadsWhatIsStoredUnderItsLowEightBits"},
    {"docs/store-schema.md",
     "Where nothing is stored there, its values default to the Movie "
     "row and its switches to on.",
     "tests/contract/api_store_failure_test.cpp: "
     "ApiUnlistedProfile, HasMoviesValuesAndAllSwitchesOnWhereNothingIsStored"},
    {"docs/store-schema.md", "Values that a client sets are not stored.",
     "tests/contract/api_store_failure_test.cpp: ApiUnlistedProfile, WhatIsSetStoresNothing"},
    {"docs/store-schema.md",
     "Such a key has the access list that it inherits, not the one "
     "that registering sets",
     "tests/contract/server/registration_test.cpp: "
     "Registration, AStaticKeyThatAClientCreatedIsNotOpenToEverybodyUntilItIsRepaired"},
    {"docs/store-schema.md", "everybody may create keys below `SOFTWARE\\Velto\\KORA4`.",
     "tests/contract/server/registration_test.cpp: "
     "Registration, LeavesTheKeyOfTheApplicationsToEverybody"},
};

// One blank for every run of blanks and line ends.
std::string Joined(const std::string& text) {
    std::istringstream words(text);
    std::string joined;
    for (std::string word; words >> word;)
        joined += word + " ";
    return joined;
}

Findings StatementsThatNothingShows(const std::string& document, const Statement& statement) {
    Findings findings;
    if (Joined(document).find(statement.words) == std::string::npos)
        findings.push_back(std::string(statement.document) +
                           " does not say: " + statement.words);
    const std::string test = statement.test;
    const std::size_t colon = test.find(": ");
    if (Joined(ReadProjectFile(test.substr(0, colon)))
            .find("(" + test.substr(colon + 2) + ")") == std::string::npos)
        findings.push_back("there is no test " + test);
    return findings;
}

TEST(DocumentTexts, SayInProseWhatATestShows) {
    for (const Statement& statement : cStatements)
        EXPECT_EQ(Findings(),
                  StatementsThatNothingShows(ReadProjectFile(statement.document), statement));
}

TEST(DocumentTexts, AreFoundOutWithStatementsThatNothingShows) {
    const Statement& statement = cStatements[0];
    const std::string words = statement.words;
    EXPECT_EQ(Findings(), StatementsThatNothingShows("So. " + words + ".\n", statement));
    EXPECT_EQ(1u, StatementsThatNothingShows("It is called somewhere.", statement).size());
    const Statement untested = {"README.md", statement.words,
                                "tests/contract/proxy/object_test.cpp: ProxiedObject, None"};
    EXPECT_EQ(1u, StatementsThatNothingShows(words, untested).size());
}

// Every file below `tests` of that kind, by its path, with its text.
std::vector<std::pair<std::filesystem::path, std::string>> TestFiles(const char* suffix) {
    std::vector<std::pair<std::filesystem::path, std::string>> files;
    const std::filesystem::path root = KORA4_ROOT;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / "tests")) {
        const std::string path = entry.path().lexically_relative(root).generic_string();
        if (path.ends_with(suffix))
            files.emplace_back(path, ReadProjectFile(path));
    }
    return files;
}

// Whether a test of that name is in a source of the program.
bool HasTest(const std::string& program, const std::string& name) {
    static const auto sources = TestFiles("_test.cpp");
    static const auto lists = TestFiles("CMakeLists.txt");
    const std::size_t dot = name.find('.');
    const std::string definition = name.substr(0, dot) + ", " + name.substr(dot + 1) + ")";
    for (const auto& [path, text] : sources) {
        if (Joined(text).find("(" + definition) == std::string::npos)
            continue;
        if (path.stem() == program)
            return true;
        for (const auto& [list, words] : lists)
            if (words.find(program) != std::string::npos &&
                words.find(path.filename().string()) != std::string::npos)
                return true;
    }
    return false;
}

TEST(DocumentTexts, NameTheTestOfEachClaimOfSecurity) {
    const Document page = ParseDocument(ReadProjectFile("docs/security.md"));
    const MarkedTable* const pTable = page.Find("security tests");
    ASSERT_TRUE(pTable);
    EXPECT_LT(30u, pTable->rows.size());
    for (const Row& row : pTable->rows) {
        std::istringstream names(row[2]);
        for (std::string name; names >> name;) {
            if (name.ends_with(","))
                name.pop_back();
            EXPECT_TRUE(HasTest(row[1], name)) << row[1] << " has no test " << name;
        }
    }
    EXPECT_FALSE(HasTest("security_test", "AccessLists.None"));
    EXPECT_FALSE(HasTest("codec_test", "AccessLists.ThatAreNarrowLetEveryMethodWork"));
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
