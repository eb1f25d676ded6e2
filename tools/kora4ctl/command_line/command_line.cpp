// SPDX-License-Identifier: MIT
// Puts the program together: its summary, every verb, and the exit codes below the help.
#include "kora4ctl/command_line/command_line.h"

#include "kora4ctl/verbs.h"
#include "process/help_text.h"

namespace kora4::tools {

namespace {

constexpr char cSummary[] =
    "Reads, changes and watches the settings of the KORA4 audio engine.";

constexpr char cFooter[] =
    "Exit codes: 0 done, 1 failed, 2 bad command line, 3 refused,\n"
    "4 library not registered or unusable, 5 bad value or file, 6 timed out, 7 findings.\n";

}  // namespace

void AddVerbs(Context& context) {
    context.root.require_subcommand(1);
    context.root.footer(cFooter);
    context.root
        .add_option("--wait", context.wait,
                    "seconds to wait while another program holds the store; default 30")
        ->transform(Within(0.0, 86400.0))
        ->type_name("S");
    for (VerbAdder* add : cVerbs)
        add(context);
}

int RunKora4Ctl(const std::vector<std::string>& arguments) {
    return RunProgram("kora4ctl", cSummary, arguments, AddVerbs);
}

}  // namespace kora4::tools
