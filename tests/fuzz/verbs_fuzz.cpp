// SPDX-License-Identifier: MIT
// The commands of kora4ctl: what is refused, and what a command is given. The first line of an
// input is the command, the others are its arguments; "--name value" is two. The oracle is the
// table of the manual. Nothing is run.
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <sstream>

#include "base/output.h"
#include "base/shown_text.h"
#include "fuzz/fault_oracle.h"
#include "fuzz/frame.h"
#include "fuzz/json_oracle.h"
#include "kora4ctl/command_line/command_line.h"
#include "kora4ctl/doctor/doctor.h"
#include "kora4ctl/explain/trace_log.h"

namespace kora4 {

namespace tools {

// The parser only hands them on.
Output::Output() = default;
Interrupt::Interrupt() = default;
Interrupt::~Interrupt() = default;

// Only for the text of the help.
std::string LogFolder() {
    return {};
}
std::span<const DoctorCheck> DoctorChecks() {
    return {};
}

}  // namespace tools

namespace fuzz {

namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t cMany = std::numeric_limits<std::size_t>::max();

// What an option or the argument of a command takes. Without a range: any text.
struct Range {
    double least = 0;
    double most = -1;
    bool isWhole = false;

    bool IsText() const { return most < least; }
};

struct OptionRow {
    const char* name;
    Range range{};
};

struct CommandRow {
    std::size_t least;  // arguments
    std::size_t most;
    Texts flags{};
    std::vector<OptionRow> options{};
    Range range{};         // of its arguments
    Texts alternatives{};  // of which only one may be given; "" stands for an argument
};

// May be given again, and takes several values with commas between them.
constexpr char cList[] = "--only";

const OptionRow cProfile{"--profile"};
const OptionRow cCount{"--count", {1, 1e9, true}};
const OptionRow cTimeout{"--timeout", {0, 1e9}};

const std::map<std::string, CommandRow> cCommands = {
    {"status", {0, 0}},
    {"get", {1, cMany, {}, {cProfile}}},
    {"set", {2, cMany, {"--stored"}, {cProfile}}},
    {"toggle", {1, 1, {}, {cProfile}}},
    {"describe", {0, cMany, {"--all"}, {cProfile}}},
    {"list", {0, 0, {"--all"}, {cProfile}}},
    {"profile show", {0, 1, {"--all"}}},
    {"profile use", {1, 1}},
    {"profile revert", {0, 0}},
    {"profile create", {2, 2, {}, {{"--from"}}}},
    {"profile copy", {2, 2}},
    {"profile rename", {2, 2}},
    {"profile delete", {1, 1}},
    {"profile list", {0, 0}},
    {"demo enter", {1, 1, {"--on", "--off"}, {}, {}, {"--on", "--off"}}},
    {"demo force-leave", {0, 0}},
    {"eq show", {0, 0, {}, {cProfile}}},
    {"eq set",
     {1, cMany, {"--clip", "--stored"}, {cProfile, {"--band", {0, 4294967295, true}}}}},
    {"eq flat", {0, 0, {"--stored"}, {cProfile}}},
    {"eq import", {1, 1, {"--clip", "--stored"}, {cProfile, {"--bands"}}}},
    {"eq export", {0, 1, {"--clip"}, {cProfile}}},
    {"levels", {0, 0, {}, {{"--fps", {0.1, 100}}, cCount, cTimeout}}},
    {"watch", {0, 0, {"--snapshot"}, {{cList}, {"--exec"}, cCount, cTimeout}}},
    {"record", {1, 1, {}, {cCount, cTimeout}}},
    {"replay", {1, 1, {"--no-start"}, {{"--speed", {0, 1e6}}}}},
    {"register",
     {0, 1, {"--check", "--in-use", "--app-keys"}, {}, {}, {"--check", "--in-use"}}},
    {"unregister", {0, 1, {"--settings"}}},
    {"explain", {1, cMany}},
    {"trace on", {0, cMany, {"--files"}}},
    {"trace off", {0, 0, {"--silent"}}},
    {"trace show", {0, 0, {"--follow", "-f"}, {{"--lines", {0, 1e6, true}}, {"--module"}}}},
    {"doctor",
     {0, 0, {"--dry-run", "--deep"}, {{"--wait", {0.1, 60}}}, {}, {"--dry-run", "--deep"}}},
    {"dump", {0, 1, {"--all"}, {cProfile}, {}, {"--all", "--profile"}}},
    {"load", {1, 1, {"--dry-run", "--merge", "--stored"}, {{"--into"}}}},
    {"diff", {1, 1, {"--merge"}}},
    {"lint", {0, 0, {"--fix"}, {{"--backup"}}}},
    {"undo", {0, 1, {}, {}, {1, 10, true}}},
    {"reset", {0, cMany, {"--all", "--stored"}, {cProfile}}},
    {"ab", {0, 2}},
    {"completion", {1, 1}},
    {"help", {0, cMany}},
};

const Texts cCommonFlags = {"--json", "--quiet", "-q"};
const OptionRow cWait{"--wait", {0, 86400}};

bool Has(const Texts& texts, const std::string& text) {
    return std::count(texts.begin(), texts.end(), text) != 0;
}

struct CommandLine {
    Texts all;
    std::string command;
    const CommandRow* row = nullptr;  // null: not known
    Texts arguments;
    std::map<std::string, Texts> options;  // with their values
    Texts flags;
    bool isKnown = true;  // nothing in it but what the table has

    bool Gives(const std::string& name) const {
        return name.empty() ? !arguments.empty() : Has(flags, name) || options.contains(name);
    }
};

const OptionRow* OptionNamed(const CommandRow& row, const std::string& name) {
    for (const OptionRow& option : row.options)
        if (name == option.name)
            return &option;
    return name == cWait.name ? &cWait : nullptr;
}

// The parser gives an option the next argument as well when a list has nothing but commas.
bool IsEmptyList(const std::string& name, const std::string& value) {
    return name == cList && !value.empty() && value.find_first_not_of(',') == std::string::npos;
}

void Add(const std::string& text, CommandLine& line) {
    const std::size_t cut = std::min(text.find_first_of(" ="), text.size());
    const std::string name = text.substr(0, cut);
    const std::string value = cut < text.size() ? text.substr(cut + 1) : std::string();
    const bool isOption = text.size() > 1 && text[0] == '-' && (text[1] < '0' || text[1] > '9');
    if (!isOption) {
        line.all.push_back(text);
        line.arguments.push_back(text);
    } else if (Has(line.row->flags, text) || Has(cCommonFlags, text)) {
        line.all.push_back(text);
        line.flags.push_back(text);
    } else if (OptionNamed(*line.row, name) && cut < text.size() && value != "--" &&
               !IsEmptyList(name, value) && (text[cut] == ' ' || !value.empty())) {
        line.options[name].push_back(value);
        if (text[cut] == ' ')
            line.all.insert(line.all.end(), {name, value});
        else
            line.all.push_back(text);
    } else {
        line.all.push_back(text);
        line.isKnown = false;
    }
}

CommandLine Read(std::string_view input) {
    CommandLine line;
    std::istringstream lines{std::string(input)};
    std::getline(lines, line.command);
    std::istringstream words(line.command);
    for (std::string word; std::getline(words, word, ' ');)
        line.all.push_back(word);
    const auto found = cCommands.find(line.command);
    line.row = found == cCommands.end() ? nullptr : &found->second;
    for (std::string text; std::getline(lines, text);) {
        if (line.row != nullptr)
            Add(text, line);
        else
            line.all.push_back(text);
    }
    return line;
}

void CheckValue(const Range& range, const std::string& value) {
    if (range.IsText())
        return;
    const double number = NumberOf(value);
    Demand(number >= range.least && number <= range.most);
    Demand(!range.isWhole || value.find_first_not_of("0123456789") == std::string::npos);
}

// What an option is given, in parts if it takes a list.
Texts PartsOf(const std::string& name, const Texts& values) {
    if (name != cList)
        return values;
    Texts parts;
    for (const std::string& value : values) {
        if (value.empty())
            parts.push_back(value);
        std::istringstream list(value);
        for (std::string part; std::getline(list, part, ',');) {
            if (!part.empty())
                parts.push_back(part);
        }
    }
    return parts;
}

// Where several arguments are taken, "[a,b]" is two, and "[[a],b]" as well.
void AddParts(const std::string& argument, Texts& parts) {
    if (argument.size() < 2 || argument.front() != '[' || argument.back() != ']') {
        parts.push_back(argument);
        return;
    }
    std::istringstream list(argument.substr(1, argument.size() - 2));
    for (std::string part; std::getline(list, part, ',');)
        if (!part.empty())
            AddParts(part, parts);
}

// The arguments of the command as it gets them.
Texts ArgumentsOf(const CommandLine& line) {
    if (line.row->most != cMany && line.command != "ab")
        return line.arguments;
    Texts parts;
    for (const std::string& argument : line.arguments) {
        if (line.command == "set" && &argument == line.arguments.data())
            parts.push_back(argument);
        else
            AddParts(argument, parts);
    }
    return parts;
}

// Throws Refused.
void Judge(const CommandLine& line) {
    const CommandRow& row = *line.row;
    for (const std::string& argument : line.all)
        Demand(argument != "++" && !argument.starts_with(std::string(101, '[')));
    const Texts arguments = ArgumentsOf(line);
    Demand(arguments.size() >= row.least && arguments.size() <= row.most);
    for (const std::string& argument : arguments)
        CheckValue(row.range, argument);
    for (const auto& [name, values] : line.options) {
        Demand(name == cList || values.size() == 1);
        for (const std::string& value : values)
            CheckValue(OptionNamed(row, name)->range, value);
    }
    Demand(std::ranges::count_if(row.alternatives, [&](const std::string& name) {
               return line.Gives(name);
           }) <= 1);
    if (line.command == "lint")
        Demand(!line.Gives("--backup") || line.Gives("--fix"));
    if (line.command == "reset")
        Demand(!line.Gives("--all") || (!line.Gives("") && !line.Gives("--profile")));
}

// ---- The program ---------------------------------------------------------------------------

// Made once; it takes several hundred times as long as reading a command line.
struct Program {
    tools::Output output;
    tools::Interrupt interrupt;
    CLI::App root{"", "kora4ctl"};
    tools::Context context{output, interrupt, root, {}};

    Program() {
        tools::PrepareCommandLine(root, output);
        tools::AddVerbs(context);
    }
};

// The command that was understood, with the ones above it.
std::vector<const CLI::App*> Understood(const CLI::App& root) {
    std::vector<const CLI::App*> apps = {&root};
    while (!apps.back()->get_subcommands().empty())
        apps.push_back(apps.back()->get_subcommands().front());
    return apps;
}

void CheckRefusal(const tools::Failure& failure) {
    ExpectSame("a refusal has words", false, std::string_view(failure.what()).empty());
    ExpectSame("it is one line", std::string::npos,
               tools::ShownText(failure.what()).find('\n'));
    ExpectSame("exit code", 2, static_cast<int>(failure.Code()));
}

// Numbers may be written in another way.
bool IsSame(const Range& range, const std::string& expected, const std::string& seen) {
    return range.IsText() ? expected == seen : NumberOf(expected) == NumberOf(seen);
}

void ExpectSameValues(const std::string& what, const Range& range, const Texts& expected,
                      const Texts& seen) {
    if (!std::ranges::equal(expected, seen,
                            [&](const std::string& one, const std::string& two) {
                                return IsSame(range, one, two);
                            }))
        Differ(what.c_str(), Shown(expected), Shown(seen));
}

void CheckUnderstood(const Program& program, const CommandLine& line) {
    const std::vector<const CLI::App*> apps = Understood(program.root);
    std::string command;
    std::map<std::string, Texts> options;
    Texts arguments;
    for (const CLI::App* const app : apps) {
        command += app == apps[0] ? "" : (command.empty() ? "" : " ") + app->get_name();
        for (const CLI::Option* const option : app->get_options()) {
            const Texts& values = option->results();
            if (values.empty())
                continue;
            if (option->get_positional())
                arguments.insert(arguments.end(), values.begin(), values.end());
            else if (option->get_items_expected_max() > 0)
                options[option->get_name()] = values;
            else
                ExpectSame("a flag is given", true,
                           std::ranges::any_of(line.flags, [&](const std::string& flag) {
                               return option->check_name(flag);
                           }));
        }
    }
    ExpectSame("command", line.command, command);
    ExpectSameValues("arguments", line.row->range, ArgumentsOf(line), arguments);
    ExpectSame("options", line.options.size(), options.size());
    for (const auto& [name, values] : line.options)
        ExpectSameValues(name, OptionNamed(*line.row, name)->range, PartsOf(name, values),
                         options[name]);
}

}  // namespace

void Check(std::string_view input) {
    static Program s_program;
    const CommandLine line = Read(input);
    bool isUnderstood = true;
    try {
        tools::ParseArguments(s_program.root, line.all);
    } catch (const CLI::Success&) {
        return;
    } catch (const tools::Failure& failure) {
        CheckRefusal(failure);
        isUnderstood = false;
    }
    if (line.row == nullptr || !line.isKnown)
        return;
    bool isExpected = true;
    try {
        Judge(line);
    } catch (const Refused&) {
        isExpected = false;
    }
    ExpectSame("it is understood", isExpected, isUnderstood);
    if (isUnderstood)
        CheckUnderstood(s_program, line);
}

}  // namespace fuzz
}  // namespace kora4
