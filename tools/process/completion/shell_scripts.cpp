// SPDX-License-Identifier: MIT
// The table of shells.
#include "process/completion/shell_scripts.h"

#include "base/failure.h"
#include "base/nearest.h"
#include "process/completion/script_texts.h"

namespace kora4::tools {
namespace {

struct Shell {
    const char* name;
    std::string (*script)(const Completion& completion);
};

constexpr Shell cShells[] = {{"bash", BashScript},
                             {"fish", FishScript},
                             {"powershell", PowerShellScript},
                             {"zsh", ZshScript}};

}  // namespace

std::vector<std::string> ShellNames() {
    std::vector<std::string> names;
    for (const Shell& shell : cShells)
        names.emplace_back(shell.name);
    return names;
}

std::string ShellScript(const std::string& shell, const Completion& completion) {
    for (const Shell& known : cShells)
        if (Lower(shell) == known.name)
            return known.script(completion);
    throw BadInput("No completion for '" + shell + "'. " + Suggestion(shell, ShellNames()));
}

}  // namespace kora4::tools
