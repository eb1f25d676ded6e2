// SPDX-License-Identifier: MIT
// kora4ctl help: what --help of a command shows.
#include "base/failure.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/verbs.h"
#include "process/complaint.h"

namespace kora4::tools {

namespace {

using Words = std::vector<std::string>;

ExitCode Help(const Context& context, const Words& words) {
    const CLI::App* app = &context.root;
    std::string path;
    for (const std::string& word : words) {
        const CLI::App* const command = FindCommand(*app, word);
        if (command == nullptr)
            throw Failure(ExitCode::eUsage, UnknownCommand(*app, path, word));
        app = command;
        path += app->get_name() + " ";
    }
    std::string name = context.root.get_name() + " " + path;
    name.pop_back();
    const std::string text =
        app->get_formatter()->make_help(app, name, CLI::AppFormatMode::Normal);
    if (context.output.json)
        context.output.PrintJson({{"command", name}, {"help", text}});
    else
        context.output.Write(text);
    return ExitCode::eDone;
}

}  // namespace

void AddHelp(Context& context) {
    const auto [verb, words] =
        AddVerb(context.root, context, "help", "print the help of a command", Help);
    verb.add_option("COMMAND", words, "such as profile create; all commands if omitted");
}

}  // namespace kora4::tools
