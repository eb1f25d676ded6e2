// kora4ctl status: everything at a glance.
#include "common/api_session.h"
#include "common/results.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

ExitCode Status(const Context& context) {
    const ApiSession api;
    LONG profile = 0;
    Check(api->GetActiveProfile(&profile), "reading the active profile");
    context.output.Print("profile " + std::to_string(profile));
    return ExitCode::eDone;
}

}  // namespace

void AddStatus(Context& context) {
    CLI::App* verb = context.root.add_subcommand("status", "everything at a glance");
    OnRun(*verb, context, [&context] { return Status(context); });
}

}  // namespace kora4::tools
