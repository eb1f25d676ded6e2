// SPDX-License-Identifier: MIT
// kora4ctl completion: scripts that let a shell complete the command line.
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/command_line/vocabulary.h"
#include "kora4ctl/verbs.h"
#include "process/completion/shell_scripts.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string shell;
};

ExitCode Print(const Context& context, const Options& options) {
    context.output.Write(ShellScript(
        options.shell,
        CompletionOf(context.root, "kora4ctl completion", KnownWords(context.root))));
    return ExitCode::eDone;
}

}  // namespace

void AddCompletion(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "completion",
                "print a script that completes the command line in a shell", Print);
    verb.add_option("SHELL", options.shell, "bash, fish, powershell or zsh")
        ->required()
        ->type_name("SHELL");
    verb.footer(
        "  bash, zsh   source <(kora4ctl completion bash)\n"
        "  fish        kora4ctl completion fish | source\n"
        "  PowerShell  kora4ctl completion powershell | Out-String | Invoke-Expression\n"
        "\nFor zsh, write zsh in place of bash, behind compinit.\n");
}

}  // namespace kora4::tools
