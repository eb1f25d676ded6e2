// SPDX-License-Identifier: MIT
// kora4ctl completion: scripts that let a shell complete the command line.
#include "kora4ctl/command_line/completion.h"

#include <memory>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct Shell {
    const char* name;
    std::string (*script)(const Completion& completion);
};

constexpr Shell cShells[] = {{"bash", BashScript}, {"powershell", PowerShellScript}};

ExitCode Print(const Context& context, const std::string& name) {
    std::vector<std::string> names;
    for (const Shell& shell : cShells) {
        if (Lower(name) == shell.name) {
            context.output.Write(shell.script(CompletionOf(context.root)));
            return ExitCode::eDone;
        }
        names.emplace_back(shell.name);
    }
    throw Failure(ExitCode::eBadInput,
                  "There is no completion for '" + name + "'. " + Suggestion(name, names));
}

}  // namespace

void AddCompletion(Context& context) {
    const auto name = std::make_shared<std::string>();
    CLI::App* verb = context.root.add_subcommand(
        "completion", "a script that completes the command line in a shell");
    verb->add_option("SHELL", *name, "bash or powershell")->required()->type_name("SHELL");
    verb->footer(
        "bash:        source <(kora4ctl completion bash)\n"
        "PowerShell:  kora4ctl completion powershell | Out-String | Invoke-Expression\n");
    OnRun(*verb, context, [&context, name] { return Print(context, *name); });
}

}  // namespace kora4::tools
