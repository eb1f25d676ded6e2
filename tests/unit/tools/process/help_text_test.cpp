// SPDX-License-Identifier: MIT
// The layout of --help, and what is said of a command line that is not understood.
#include "process/help_text.h"

#include <gtest/gtest.h>

#include "process/complaint.h"

namespace kora4::tools {
namespace {

std::string Word(std::size_t length) {
    return std::string(length, 'x');
}

TEST(Filled, JoinsTheLinesOfAParagraphAndBreaksThemAt80Columns) {
    EXPECT_EQ("One sentence. Another one.\n\nNext.\n",
              Filled("One sentence.\nAnother one.\n\nNext.\n"));
    EXPECT_EQ(Word(40) + " " + Word(39) + "\n" + Word(2) + "\n",
              Filled(Word(40) + "\n" + Word(39) + "\n" + Word(2)));
    EXPECT_EQ(Word(40) + "\n" + Word(40) + "\n", Filled(Word(40) + " " + Word(40)));
    EXPECT_EQ("", Filled(""));
}

TEST(Filled, KeepsIndentedLinesAndContinuesThemBelowTheirLastColumn) {
    EXPECT_EQ("Kinds:\n  a  one\n  b  two\n", Filled("Kinds:\n  a  one\n  b  two\n"));
    EXPECT_EQ("  a  " + Word(60) + "\n     " + Word(40) + "\n",
              Filled("  a  " + Word(60) + " " + Word(40)));
    EXPECT_EQ("  " + Word(60) + "\n    " + Word(40) + "\n",
              Filled("  " + Word(60) + " " + Word(40)));
}

TEST(Filled, LeavesAWordThatIsTooLongWhole) {
    EXPECT_EQ("a\n" + Word(90) + "\nb\n", Filled("a " + Word(90) + " b"));
}

// A program with one of everything.
class CommandLine : public testing::Test {
  protected:
    CommandLine() {
        m_app.formatter(std::make_shared<HelpFormatter>());
        m_app.fallthrough();
        m_app.require_subcommand(1);
        m_app.add_flag("--json", m_flag, "print the result as JSON");
        CLI::App& verb = *m_app.add_subcommand("show", "show everything");
        verb.add_option("NAME", m_name, "what to show")->required();
        verb.add_option("-n,--lines", m_lines, "how many lines to show, of all those there are")
            ->type_name("N")
            ->check(Within(1u, 40u));
        verb.add_option("--speed", m_speed, "how fast");
        CLI::Option* const on = verb.add_flag("--on", m_flag, "on");
        verb.add_flag("--off", m_flag, "off")->excludes(on);
        verb.add_option("--file", m_name, "where to")->needs(on);
        m_app.add_subcommand("hide", "hide everything");
    }

    std::string ComplaintAbout(const std::vector<std::string>& arguments) {
        try {
            m_app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        } catch (const CLI::ParseError& error) {
            const Failure failure = ComplaintOf(error, m_app, arguments);
            EXPECT_EQ(ExitCode::eUsage, failure.Code());
            return failure.what();
        }
        return "none";
    }

    CLI::App m_app{"A program.", "tool"};
    std::string m_name;
    unsigned m_lines = 0;
    double m_speed = 0;
    bool m_flag = false;
};

TEST_F(CommandLine, HelpNamesEveryPartWithItsRange) {
    EXPECT_EQ(
        "A program.\nUsage: tool [OPTIONS] COMMAND\n\n"
        "Options:\n"
        "  -h, --help              Print this help message and exit\n"
        "  --json                  print the result as JSON\n\n"
        "Commands:\n"
        "  show                    show everything\n"
        "  hide                    hide everything\n",
        m_app.help());
    EXPECT_EQ(
        "show everything\nUsage: tool show [OPTIONS] NAME\n\n"
        "Arguments:\n"
        "  NAME                    what to show\n\n"
        "Options:\n"
        "  -h, --help              Print this help message and exit\n"
        "  -n, --lines N           how many lines to show, of all those there are (1 to\n"
        "                          40)\n"
        "  --speed N               how fast\n"
        "  --on                    on\n"
        "  --off                   off\n"
        "  --file TEXT             where to\n",
        m_app.get_subcommand("show")->help("tool"));
}

TEST_F(CommandLine, MistakesAreToldInTheProgramsOwnWords) {
    const struct {
        std::vector<std::string> arguments;
        const char* complaint;
    } cases[] = {
        {{}, "Missing command. Commands: show, hide."},
        {{"shwo"}, "Unknown command 'shwo'. Did you mean 'show'?"},
        {{"show"}, "Missing argument NAME."},
        {{"show", "a", "b"}, "Unexpected argument 'b'."},
        {{"show", "a", "--lnies", "3"}, "Unknown option '--lnies'. Did you mean '--lines'?"},
        {{"show", "-x"}, "Unknown option '-x'. If it is a value, put '--' before it."},
        {{"hide", "-x"}, "Unknown option '-x'. Short options are listed in the help."},
        {{"show", "a", "--lines"}, "Option --lines requires a value."},
        {{"show", "a", "--lines", "0"},
         "Invalid value '0' for --lines: expected a whole number from 1 to 40."},
        {{"show", "a", "-n", "1.5"},
         "Invalid value '1.5' for --lines: expected a whole number from 1 to 40."},
        {{"show", "a", "--lines", "1", "--lines", "2"},
         "Option --lines is given more than once."},
        {{"show", "a", "--speed", "fast"}, "Invalid value 'fast' for --speed."},
        {{"show", "a", "--on", "--off"}, "Options --on and --off cannot be combined."},
        {{"show", "a", "--file", "f"}, "Option --file requires --on."},
        {{"show", "a", "--json=maybe"}, "Option --json takes no value."},
    };
    for (const auto& [arguments, complaint] : cases)
        EXPECT_EQ(complaint, ComplaintAbout(arguments));
}

TEST_F(CommandLine, WhatFollowsTwoDashesIsNoOption) {
    EXPECT_EQ("none", ComplaintAbout({"show", "--", "-x"}));
    EXPECT_EQ("-x", m_name);
}

}  // namespace
}  // namespace kora4::tools
