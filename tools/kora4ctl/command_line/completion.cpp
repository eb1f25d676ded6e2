// SPDX-License-Identifier: MIT
// Collects the completions from the command line itself, so that a new verb or option needs
// nothing more.
#include "kora4ctl/command_line/completion.h"

#include <string_view>

#include "contract/messages/trace_categories.h"
#include "contract/messages/trace_writers.h"
#include "contract/profiles.h"
#include "kora4ctl/explain/trace_word.h"
#include "settings/names.h"
#include "settings/settings_table.h"

namespace kora4::tools {
namespace {

// Which words an argument or the value of an option takes. The first rule that fits.
struct Rule {
    const char* path;  // null: of any command
    const char* name;
    const char* words;
};

constexpr Rule cRules[] = {
    {"get", "NAME", "settings"},
    {"set", "NAME", "settings"},
    {"reset", "NAME", "settings"},
    {"ab", "STATE", "states"},
    {"describe", "NAME", "settings"},
    {"toggle", "NAME", "switches"},
    {"set", "VALUE", cValueWords},
    {"demo enter", "P", "preset-profiles"},
    {"profile use", "P", "selectable-profiles"},
    {"profile create", "P", "custom-profiles"},
    {nullptr, "--from", "profiles"},
    {"profile copy", "FROM", "profiles"},
    {"profile copy", "TO", "selectable-profiles"},
    {nullptr, "--into", "selectable-profiles"},
    {"watch", "--only", "settings"},
    {"watch", "--exec", cFileWords},
    {"profile rename", "P", "custom-profiles"},
    {"profile delete", "P", "custom-profiles"},
    {nullptr, "P", "profiles"},
    {nullptr, "--profile", "profiles"},
    {nullptr, "CATEGORY", "categories"},
    {nullptr, "--module", "modules"},
    {nullptr, "SHELL", "shells"},
    {nullptr, "FILE", cFileWords},
    {nullptr, "PATH", cFileWords},
    {nullptr, "--backup", cFileWords},
};

std::string WordsOf(const std::string& path, const std::string& name) {
    for (const Rule& rule : cRules) {
        if ((!rule.path || path == rule.path) && name == rule.name)
            return rule.words;
    }
    return {};
}

std::vector<std::string> OptionNames(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    return names;
}

void AddOptions(const CLI::App& app, CompletedCommand& command) {
    for (const CLI::Option* option : app.get_options()) {
        const bool repeats = option->get_items_expected_max() > 1;
        if (option->get_positional()) {
            command.arguments.push_back(WordsOf(command.path, option->get_single_name()) +
                                        (repeats ? cRepeats : ""));
            continue;
        }
        const bool takesValue = option->get_items_expected_max() > 0;
        const std::vector<std::string> names = OptionNames(*option);
        const std::string words = takesValue ? WordsOf(command.path, names.front()) : "";
        for (const std::string& name : names)
            command.options.push_back({name, option->get_description(), takesValue, words});
    }
}

// The program's own options can be given behind a verb, too.
void AddCommonOptions(const CompletedCommand& root, CompletedCommand& command) {
    for (const CompletedOption& option : root.options) {
        const auto isSame = [&](const CompletedOption& own) { return own.name == option.name; };
        if (option.name != "--version" &&
            std::none_of(command.options.begin(), command.options.end(), isSame))
            command.options.push_back(option);
    }
}

void Walk(const CLI::App& app, const std::string& path, Completion& completion) {
    CompletedCommand command;
    command.path = path;
    const auto verbs = app.get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* verb : verbs)
        command.verbs.push_back({verb->get_name(), verb->get_description()});
    AddOptions(app, command);
    if (!completion.commands.empty())
        AddCommonOptions(completion.commands.front(), command);
    completion.commands.push_back(std::move(command));
    for (const CLI::App* verb : verbs)
        Walk(*verb, path + (path.empty() ? "" : " ") + verb->get_name(), completion);
}

// The words of those elements that are wanted.
template <typename Elements, typename IsWanted, typename Word>
WordList ListOf(const char* name, const Elements& elements, IsWanted isWanted, Word word) {
    WordList list{name, {}};
    for (const auto& element : elements) {
        if (isWanted(element))
            list.words.emplace_back(word(element));
    }
    return list;
}

WordList ProfilesThat(const char* name, bool (*isWanted)(std::uint32_t)) {
    return ListOf(
        name, Profiles(), [&](const ProfileWord& one) { return isWanted(one.number); },
        [](const ProfileWord& one) { return one.word; });
}

std::vector<WordList> AllValues() {
    std::vector<WordList> all;
    for (const Setting& setting : SettingsTable()) {
        WordList values{setting.name, CompletionWords(setting)};
        if (!setting.IsSwitch() && SwitchOf(setting)) {
            values.words.emplace_back("on");
            values.words.emplace_back("off");
        }
        if (!values.words.empty())
            all.push_back(std::move(values));
    }
    return all;
}

}  // namespace

Completion CompletionOf(const CLI::App& root) {
    Completion completion;
    completion.program = root.get_name();
    Walk(root, {}, completion);
    completion.lists = {
        {"settings", SettingNames()},
        ListOf(
            "switches", SettingsTable(), [](const Setting& one) { return SwitchOf(one); },
            [](const Setting& one) { return one.name; }),
        {"profiles", ProfileNames()},
        ProfilesThat("selectable-profiles", IsSelectableProfile),
        ProfilesThat("custom-profiles", IsCustomProfile),
        ProfilesThat("preset-profiles", IsPresetProfile),
        {"categories", TraceCategoryNames()},
        ListOf(
            "modules", contract::cTraceTags, [](const auto&) { return true; },
            [](const contract::TraceTag& one) { return one.tag; }),
        {"states", {"A", "B", "save"}},
        {"shells", {"bash", "powershell"}},
    };
    completion.values = AllValues();
    return completion;
}

}  // namespace kora4::tools
