// SPDX-License-Identifier: MIT
// The lists that shells complete from: settings and their values, profiles, categories.
#include "kora4ctl/command_line/vocabulary.h"

#include "contract/messages/trace_categories.h"
#include "contract/messages/trace_writers.h"
#include "contract/profiles.h"
#include "kora4ctl/explain/trace_word.h"
#include "process/completion/shell_scripts.h"
#include "settings/names.h"
#include "settings/settings_table.h"

namespace kora4::tools {
namespace {

constexpr CompletionRule cRules[] = {
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
    {"help", "COMMAND", "commands"},
    {nullptr, "FILE", cFileWords},
    {nullptr, "PATH", cFileWords},
    {nullptr, "--backup", cFileWords},
};

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

Vocabulary KnownWords(const CLI::App& root) {
    std::vector<WordList> lists = {
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
        {"shells", ShellNames()},
        ListOf(
            "commands", root.get_subcommands({}), [](const auto&) { return true; },
            [](const CLI::App* one) { return one->get_name(); }),
    };
    return {{std::begin(cRules), std::end(cRules)}, std::move(lists), AllValues()};
}

}  // namespace kora4::tools
