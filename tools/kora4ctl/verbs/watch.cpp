// SPDX-License-Identifier: MIT
// kora4ctl watch: every notification of the library.
#include "base/utc_time.h"
#include "kora4ctl/access/held_store.h"
#include "kora4ctl/command_line/run_limits.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/notifications/notification_listener.h"
#include "kora4ctl/verbs.h"
#include "process/api_session.h"

namespace kora4::tools {

namespace {

constexpr char cFooter[] =
    "One line for each change: the time, what changed, and its new value. The message\n"
    "'Watching...' says that changes are reported from now on; with --json, so does a first\n"
    "line with the event 'ready'. Every further line has 'time', 'event' ('enable', "
    "'profile',\n"
    "'switch', 'value', 'graphic-eq' or 'table'), 'name' and 'value'.\n"
    "Only the active profile's values are reported; when the profile changes, only the\n"
    "profile.\n"
    "Ends on Ctrl-C, when the output is closed, and as the options say.\n";

ExitCode Watch(const Context& context, const RunLimits& limits) {
    Output& output = context.output;
    WaitForStore(context);
    ApiSession api;
    NotificationListener listener(*api, context.interrupt.Event());
    const Deadline deadline = limits.Start();
    if (output.json)
        output.PrintJsonLine({{"time", UtcTime::Now().Iso()}, {"event", "ready"}});
    output.Say("Watching; press Ctrl-C to stop.");
    unsigned count = 0;
    for (std::vector<Notification> told; !output.IsBroken();) {
        const Wake wake = listener.Wait(deadline, told);
        for (const Notification& notification : told) {
            if (output.json)
                output.PrintJsonLine(notification.Document());
            else
                output.Print(notification.Line());
            if (limits.IsReached(++count))
                return ExitCode::eDone;
        }
        if (wake == Wake::eInterrupted)
            break;
        if (wake == Wake::eTimedOut)
            return limits.OnTimeout(count);
    }
    return ExitCode::eDone;
}

}  // namespace

void AddWatch(Context& context) {
    const auto [verb, limits] =
        AddVerb(context.root, context, "watch", "print every change as it happens", Watch);
    limits.AddTo(verb, "notifications");
    verb.footer(cFooter);
}

}  // namespace kora4::tools
