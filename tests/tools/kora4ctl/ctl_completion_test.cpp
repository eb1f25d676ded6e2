// SPDX-License-Identifier: MIT
// kora4ctl completion: the scripts hold the whole command line. What bash makes of its script
// is tried in ctl_completion_test.sh.
#include <CLI/CLI.hpp>

#include "kora4ctl/command_line/command_line.h"
#include "settings/settings_table.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::string Script(const char* shell) {
    const ToolResult result = RunCtl({"completion", shell});
    EXPECT_EQ(cDone, result.exitCode) << result;
    EXPECT_EQ("", result.err);
    return result.out;
}

// How a script names a long option.
std::string Dashes(const std::string& shell) {
    return shell == "fish" ? "-l " : "--";
}

// Looks at every command of the real command line.
void ForEachCommand(const CLI::App& app, const std::string& path,
                    const std::function<void(const CLI::App&, const std::string&)>& look) {
    look(app, path);
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; }))
        ForEachCommand(*verb, path + (path.empty() ? "" : " ") + verb->get_name(), look);
}

class CompletionScript : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Shells, CompletionScript,
                         testing::Values("bash", "fish", "powershell", "zsh"),
                         [](const auto& shell) { return std::string(shell.param); });

TEST_P(CompletionScript, HasEachVerbAndEachOption) {
    const std::string script = Script(GetParam());
    tools::Output output;
    tools::Interrupt interrupt;
    CLI::App root;
    tools::Context context{output, interrupt, root, {}};
    tools::AddVerbs(context);
    int commands = 0;
    ForEachCommand(root, "", [&](const CLI::App& app, const std::string& path) {
        ++commands;
        EXPECT_TRUE(Has(script, "'" + path + "'")) << path;
        for (const CLI::Option* option : app.get_options())
            for (const std::string& name : option->get_lnames())
                EXPECT_TRUE(Has(script, Dashes(GetParam()) + name)) << path << " --" << name;
    });
    EXPECT_LT(25, commands);
}

TEST_P(CompletionScript, HasEachSettingProfileAndCategory) {
    const std::string script = Script(GetParam());
    for (const std::string& name : tools::SettingNames())
        EXPECT_TRUE(Has(script, name)) << name;
    for (const char* word : {"demo-games", "p6", "notification-threads", "KORA4ASLDLL", "warm"})
        EXPECT_TRUE(Has(script, word)) << word;
}

TEST_P(CompletionScript, IsForBothNamesOfTheProgramAndEndsItsLinesAsShellsLikeIt) {
    const std::string script = Script(GetParam());
    EXPECT_TRUE(Has(script, "kora4ctl.exe"));
    EXPECT_FALSE(Has(script, "\r"));
    EXPECT_TRUE(script.ends_with("\n"));
}

TEST(PowerShellScript, ClosesWhatItOpens) {
    std::string open;
    char quote = 0;
    bool isComment = false;
    for (const char c : Script("powershell")) {
        if (c == '\n') {
            EXPECT_EQ(0, quote) << "a text goes on behind the end of its line";
            isComment = false;
        } else if (quote) {
            quote = c == quote ? '\0' : quote;
        } else if (isComment || c == '#') {
            isComment = true;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '(' || c == '{' || c == '[') {
            open += c;
        } else if (c == ')' || c == '}' || c == ']') {
            ASSERT_FALSE(open.empty());
            EXPECT_EQ(c, open.back() == '(' ? ')' : open.back() + 2);
            open.pop_back();
        }
    }
    EXPECT_EQ("", open);
}

TEST_P(CompletionScript, IsThereForKora4simToo) {
    const ToolResult result = RunTool("kora4sim", {"--completion", GetParam()});
    EXPECT_EQ(cDone, result.exitCode) << result;
    for (const char* word : {"kora4sim.exe", "engine-basic", "garbage=nan", "no-publish"})
        EXPECT_TRUE(Has(result.out, word)) << word;
    EXPECT_FALSE(Has(result.out, "kora4ctl"));
}

TEST(CompletionVerb, RefusesOtherShells) {
    const ToolResult result = RunCtl({"completion", "bsh"});
    EXPECT_EQ(cBadInput, result.exitCode) << result;
    EXPECT_TRUE(Has(result.err, "'bash'")) << result;
    EXPECT_EQ(cUsage, RunCtl({"completion"}).exitCode);
}

}  // namespace
}  // namespace kora4::test
