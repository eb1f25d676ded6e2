// SPDX-License-Identifier: MIT
// kora4ctl completion: scripts that let a shell complete the command line.
#include "kora4ctl/command_line/completion_scripts.h"

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct Shell {
    const char* name;
    std::string (*script)(const Completion& completion);
};

constexpr Shell cShells[] = {{"bash", BashScript}, {"powershell", PowerShellScript}};

struct Options {
    std::string shell;
};

ExitCode Print(const Context& context, const Options& options) {
    std::vector<std::string> names;
    for (const Shell& shell : cShells) {
        if (Lower(options.shell) == shell.name) {
            context.output.Write(shell.script(CompletionOf(context.root)));
            return ExitCode::eDone;
        }
        names.emplace_back(shell.name);
    }
    throw BadInput("No completion for '" + options.shell + "'. " +
                   Suggestion(options.shell, names));
}

}  // namespace

void AddCompletion(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "completion",
                "print a script that completes the command line in a shell", Print);
    verb.add_option("SHELL", options.shell, "bash or powershell")
        ->required()
        ->type_name("SHELL");
    verb.footer(
        "  bash        source <(kora4ctl completion bash)\n"
        "  PowerShell  kora4ctl completion powershell | Out-String | Invoke-Expression\n");
}

}  // namespace kora4::tools
