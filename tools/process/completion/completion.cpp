// SPDX-License-Identifier: MIT
// Collects the completions from the command line itself, so that a new verb or option needs
// nothing more.
#include "process/completion/completion.h"

#include <algorithm>

namespace kora4::tools {
namespace {

std::string WordsOf(const std::vector<CompletionRule>& rules, const std::string& path,
                    const std::string& name) {
    for (const CompletionRule& rule : rules) {
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

void AddOptions(const CLI::App& app, const std::vector<CompletionRule>& rules,
                CompletedCommand& command) {
    for (const CLI::Option* option : app.get_options()) {
        const bool repeats = option->get_items_expected_max() > 1;
        if (option->get_positional()) {
            command.arguments.push_back(
                WordsOf(rules, command.path, option->get_single_name()) +
                (repeats ? cRepeats : ""));
            continue;
        }
        const bool takesValue = option->get_items_expected_max() > 0;
        const std::vector<std::string> names = OptionNames(*option);
        const std::string words = takesValue ? WordsOf(rules, command.path, names.front()) : "";
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
    AddOptions(app, completion.words.rules, command);
    if (!completion.commands.empty())
        AddCommonOptions(completion.commands.front(), command);
    completion.commands.push_back(std::move(command));
    for (const CLI::App* verb : verbs)
        Walk(*verb, path + (path.empty() ? "" : " ") + verb->get_name(), completion);
}

}  // namespace

Completion CompletionOf(const CLI::App& root, std::string request, Vocabulary words) {
    Completion completion{root.get_name(), std::move(request), {}, std::move(words)};
    Walk(root, {}, completion);
    return completion;
}

}  // namespace kora4::tools
