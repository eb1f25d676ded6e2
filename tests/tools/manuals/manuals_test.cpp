// SPDX-License-Identifier: MIT
// The manuals of the tools against the tools: every transcript in them is run, every verb and
// option of --help stands in them, and nothing else does.
//
// manuals_test --update DOCUMENT... writes what the programs print now into the documents.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <regex>
#include <set>

#include "base/output.h"
#include "base/text.h"
#include "support/registry_fixture.h"
#include "tools/manuals/transcript.h"
#include "tools/support/json_shape.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

std::wstring PathOf(const std::string& document) {
    return L"Z:" + tools::Widen(std::string(KORA4_ROOT) + "/" + document);
}

// --- transcripts -------------------------------------------------------------------------

// A machine as it is before the first step of a manual: nothing stored, nothing registered.
void ResetMachine() {
    RemoveStore();
    LoadedLibrary().UnregisterServer();
    RemoveStore();
    std::error_code isAbsent;
    std::filesystem::remove_all(L"C:\\KalLogs", isAbsent);
}

Outputs RunTranscripts(const std::vector<std::string>& document, const std::string& name,
                       bool isCompared) {
    ResetMachine();
    Outputs outputs;
    TranscriptShell shell;
    for (const TranscriptBlock& block : TranscriptsOf(document)) {
        if (!block.reasonNotToRun.empty()) {
            std::printf("%s: a transcript is not run: %s\n", name.c_str(),
                        block.reasonNotToRun.c_str());
            continue;
        }
        for (const TranscriptStep& step : block.steps) {
            const std::vector<std::string> printed = shell.Run(step.command);
            if (IsSameOutput(step.expected, printed))
                continue;
            outputs[step.line] = printed;
            if (isCompared)
                ADD_FAILURE() << name << ":" << step.line << ": $ " << step.command
                              << "\n--- in the document\n"
                              << tools::Join(step.expected, "\n") << "\n--- printed\n"
                              << tools::Join(printed, "\n");
        }
    }
    ResetMachine();
    return outputs;
}

class Transcripts : public testing::TestWithParam<const char*> {};

TEST_P(Transcripts, ShowWhatTheProgramsPrint) {
    const std::vector<std::string> document = ReadLines(PathOf(GetParam()));
    ASSERT_FALSE(TranscriptsOf(document).empty()) << GetParam();
    RunTranscripts(document, GetParam(), true);
}

INSTANTIATE_TEST_SUITE_P(Of, Transcripts,
                         testing::Values("README.md", "docs/kora4ctl.md", "docs/kora4sim.md"),
                         [](const auto& document) {
                             return std::regex_replace(std::string(document.param),
                                                       std::regex("[^A-Za-z0-9]"), "_");
                         });

TEST(Transcript, IsToldFromAnotherOne) {
    EXPECT_TRUE(IsSameOutput({"12:00:01.250  enable  off"}, {"08:59:59.001  enable  off"}));
    EXPECT_FALSE(IsSameOutput({"12:00:01.250  enable  off"}, {"12:00:01.250  enable  on"}));
    EXPECT_FALSE(IsSameOutput({"7"}, {"7", "8"}));
    EXPECT_TRUE(IsSameOutput({"{", "...", "}"}, {"{", "1", "2", "}"}));
    EXPECT_FALSE(IsSameOutput({"{", "...", "}"}, {"{", "1", "2"}));
    const std::vector<std::string> document = {"text", "```console", "$ kora4ctl get enable",
                                               "on",   "```",        "text"};
    EXPECT_EQ((std::vector<std::string>{"text", "```console", "$ kora4ctl get enable", "off",
                                        "```", "text"}),
              WithOutputs(document, {{3, {"off"}}}));
}

// --- shapes of JSON ----------------------------------------------------------------------

// Like a transcript, in a block of its own: a command and the shape of what it prints as JSON.
std::vector<TranscriptStep> ShapesOf(std::vector<std::string> document) {
    for (std::string& line : document) {
        if (line == "```shape")
            line = "```console";
        else if (line == "```console")
            line = "```";
    }
    std::vector<TranscriptStep> steps;
    for (const TranscriptBlock& block : TranscriptsOf(document))
        steps.insert(steps.end(), block.steps.begin(), block.steps.end());
    return steps;
}

TEST(Manual, OfKora4ctlHasTheShapeOfEveryDocument) {
    const std::vector<TranscriptStep> steps = ShapesOf(ReadLines(PathOf("docs/kora4ctl.md")));
    ASSERT_LT(30u, steps.size());
    ResetMachine();
    TranscriptShell shell;
    shell.Run("kora4ctl register");
    shell.Run("kora4sim --for 0.5 --quiet");
    for (const TranscriptStep& step : steps) {
        const std::string printed = tools::Join(shell.Run(step.command + " --json"), "\n");
        const Json document = Json::parse(printed, nullptr, false);
        EXPECT_TRUE(HasShape(document, tools::Join(step.expected, "\n")))
            << "docs/kora4ctl.md:" << step.line << ": $ " << step.command << "\n"
            << printed;
    }
    ResetMachine();
}

// --- verbs and options -------------------------------------------------------------------

// What the --help of a verb offers.
struct Help {
    std::set<std::string> options;  // "--count"
    std::set<std::string> verbs;
};

Help HelpOf(const std::string& program, std::vector<std::string> verb) {
    verb.push_back("--help");
    const ToolResult result = RunTool(program, verb);
    EXPECT_EQ(0u, result.exitCode) << result;
    Help help;
    static const std::regex cOption("^  (-\\w, )?(--[a-z][a-z-]*)");
    static const std::regex cVerb("^  ([a-z][a-z-]*)(  .*)?$");
    bool areVerbs = false;
    bool areOptions = false;
    for (const std::string& line : result.Lines()) {
        EXPECT_GE(80u, tools::Columns(line)) << tools::Join(verb, " ") << ": " << line;
        if (!line.empty() && line[0] != ' ') {
            areVerbs = line == "Commands:";
            areOptions = line == "Options:";
        }
        std::smatch match;
        if (areOptions && std::regex_search(line, match, cOption))
            help.options.insert(match[2]);
        else if (areVerbs && std::regex_search(line, match, cVerb))
            help.verbs.insert(match[1]);
    }
    return help;
}

// The text below the heading "## `verb`", up to the next heading of that rank: what is said,
// and the commands, but nothing that programs print.
std::string SectionOf(const std::vector<std::string>& document, const std::string& heading) {
    std::string text;
    bool isInside = false;
    bool isTranscript = false;
    for (const std::string& line : document) {
        if (line.starts_with("## "))
            isInside = line == heading;
        else if (line.starts_with("```"))
            isTranscript = line == "```console";
        else if (isInside && (!isTranscript || line.starts_with("$ kora4ctl")))
            text += line + "\n";
    }
    return text;
}

std::set<std::string> OptionsIn(const std::string& text) {
    static const std::regex cOption("(^|[^-a-zA-Z0-9])(--[a-z][a-z-]*)");
    std::set<std::string> options;
    for (std::sregex_iterator it(text.begin(), text.end(), cOption), end; it != end; ++it)
        options.insert((*it)[2]);
    return options;
}

std::set<std::string> Without(std::set<std::string> options,
                              const std::set<std::string>& others) {
    for (const std::string& option : others)
        options.erase(option);
    return options;
}

// The options that every verb has, documented once.
std::set<std::string> CommonOptions(const std::string& program) {
    std::set<std::string> options = HelpOf(program, {}).options;
    options.insert("--help");
    return options;
}

TEST(Manual, OfKora4ctlHasEveryVerbAndOptionAndNoOther) {
    const std::vector<std::string> document = ReadLines(PathOf("docs/kora4ctl.md"));
    const std::set<std::string> common = CommonOptions("kora4ctl");
    const Help root = HelpOf("kora4ctl", {});
    ASSERT_LT(20u, root.verbs.size());
    std::set<std::string> headings;
    for (const std::string& verb : root.verbs) {
        const std::string heading = "## `" + verb + "`";
        headings.insert(heading);
        const std::string section = SectionOf(document, heading);
        ASSERT_FALSE(section.empty()) << "no section: " << heading;
        Help help = HelpOf("kora4ctl", {verb});
        for (const std::string& below : help.verbs) {
            EXPECT_NE(std::string::npos, section.find(verb + " " + below)) << verb << below;
            help.options.merge(HelpOf("kora4ctl", {verb, below}).options);
        }
        EXPECT_EQ(Without(help.options, common), Without(OptionsIn(section), common)) << verb;
    }
    for (const std::string& line : document) {
        if (line.starts_with("## `")) {
            EXPECT_TRUE(headings.contains(line)) << "there is no such verb: " << line;
        }
    }
    const std::string general = SectionOf(document, "## Options of every verb");
    EXPECT_EQ(common, OptionsIn(general));
}

TEST(Manual, OfKora4simHasEveryOptionAndNoOther) {
    std::string document;
    for (const std::string& line : ReadLines(PathOf("docs/kora4sim.md")))
        document += line + "\n";
    // The client's options stand in its own manual.
    document = std::regex_replace(document, std::regex("\\$ kora4ctl [^\n]*"), "");
    document = std::regex_replace(document, std::regex("`kora4ctl [^`]*`"), "");
    EXPECT_EQ(CommonOptions("kora4sim"), OptionsIn(document));
}

// --- pages for man ---------------------------------------------------------------------------

std::wstring PathOfPage(const std::string& program) {
    return PathOf("docs/man/" + program + ".1");
}

// What the program prints, line by line.
std::vector<std::string> PageOf(const std::string& program) {
    const ToolResult result = RunTool(program, {"--man"});
    EXPECT_EQ(0u, result.exitCode) << result;
    return result.Lines();
}

TEST(Manual, PagesForManAreWhatTheProgramsPrint) {
    for (const std::string program : {"kora4ctl", "kora4sim"}) {
        const std::vector<std::string> page = PageOf(program);
        ASSERT_LT(50u, page.size());
        EXPECT_EQ(page, ReadLines(PathOfPage(program))) << "run scripts/manuals.sh";
    }
}

// --- settings ----------------------------------------------------------------------------

constexpr char cSettingsMark[] = "<!-- compared: settings -->";

std::string TextOr(const Json& value, const std::string& other) {
    return value.is_null() ? other : value.get<std::string>();
}

// The table of settings as the program describes them, in the wording of the manual.
std::vector<std::string> SettingsTable() {
    const ToolResult result = RunCtl({"describe", "--all", "--json"});
    EXPECT_EQ(0u, result.exitCode) << result;
    std::vector<std::string> lines = {
        "| Name | What | Allowed | Unit | Per profile | Methods | Stored in |",
        "|---|---|---|---|---|---|---|"};
    for (const Json& setting : Json::parse(result.out)) {
        std::vector<std::string> methods;
        for (const char* const way : {"reader", "writer"}) {
            if (!setting.at(way).is_null())
                methods.push_back("`" + setting.at(way).get<std::string>() + "`");
        }
        const std::string keys = TextOr(setting.at("keySet"), "-");
        const std::string name = TextOr(setting.at("valueName"), "");
        lines.push_back("| `" + setting.at("name").get<std::string>() + "` | " +
                        setting.at("summary").get<std::string>() + " | " +
                        setting.at("allowed").get<std::string>() + " | " +
                        TextOr(setting.at("unit"), "") + " | " +
                        (setting.at("perProfile").get<bool>() ? "yes" : "") + " | " +
                        (methods.empty() ? "-" : tools::Join(methods, ", ")) + " | " + keys +
                        (name.empty() ? "" : ": `" + name + "`") + " |");
    }
    return lines;
}

// The lines of the table below the mark: from `first` to before `last`.
struct Place {
    std::size_t first;
    std::size_t last;
};
Place PlaceOfSettingsTable(const std::vector<std::string>& document) {
    const auto mark = std::find(document.begin(), document.end(), cSettingsMark);
    std::size_t first = static_cast<std::size_t>(mark - document.begin()) + 2;
    first = std::min(first, document.size());
    std::size_t last = first;
    while (last < document.size() && document[last].starts_with("|"))
        ++last;
    return {first, last};
}

// What stands in the manual is what the tool says on a machine with nothing stored.
TEST(Manual, OfKora4ctlHasTheTableOfSettings) {
    ResetMachine();
    const std::vector<std::string> document = ReadLines(PathOf("docs/kora4ctl.md"));
    const Place place = PlaceOfSettingsTable(document);
    const auto at = [&document](std::size_t line) {
        return document.begin() + static_cast<std::ptrdiff_t>(line);
    };
    const std::vector<std::string> table(at(place.first), at(place.last));
    ASSERT_LT(20u, table.size());
    EXPECT_EQ(SettingsTable(), table);
}

void UpdateSettingsTable(std::vector<std::string>& document) {
    const Place place = PlaceOfSettingsTable(document);
    if (place.first == document.size())
        return;
    const std::vector<std::string> table = SettingsTable();
    const auto first = document.begin() + static_cast<std::ptrdiff_t>(place.first);
    const auto last = document.begin() + static_cast<std::ptrdiff_t>(place.last);
    document.insert(document.erase(first, last), table.begin(), table.end());
}

}  // namespace
}  // namespace kora4::test

int main(int count, char** arguments) {
    using namespace kora4::test;
    if (count > 2 && std::string(arguments[1]) == "--update") {
        for (int i = 2; i < count; ++i) {
            const std::wstring path = PathOf(arguments[i]);
            std::vector<std::string> document = ReadLines(path);
            UpdateSettingsTable(document);
            const Outputs outputs = RunTranscripts(document, arguments[i], false);
            WriteLines(path, WithOutputs(document, outputs));
            std::printf("%s: %u outputs replaced\n", arguments[i],
                        static_cast<unsigned>(outputs.size()));
        }
        for (const char* const program : {"kora4ctl", "kora4sim"})
            WriteLines(PathOfPage(program), PageOf(program));
        return 0;
    }
    testing::InitGoogleTest(&count, arguments);
    return RUN_ALL_TESTS();
}
