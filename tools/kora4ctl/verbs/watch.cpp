// SPDX-License-Identifier: MIT
// kora4ctl watch: every notification of the library.
#include <algorithm>

#include "base/text.h"
#include "base/utc_time.h"
#include "kora4ctl/access/held_store.h"
#include "kora4ctl/command_line/run_limits.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/notifications/hook_program.h"
#include "kora4ctl/notifications/notification_listener.h"
#include "kora4ctl/verbs.h"
#include "process/api_session.h"
#include "settings/settings_table.h"

namespace kora4::tools {

namespace {

struct Options {
    RunLimits limits;
    std::vector<std::string> only;
    std::optional<std::string> command;
    bool snapshot = false;
};

constexpr char cFooter[] =
    "One line for each change: the time, what changed, and its new value. The message\n"
    "'Watching...' says that changes are reported from now on; with --json, so does a first\n"
    "line with the event 'ready'. Every further line has 'time', 'event' ('enable', "
    "'profile',\n"
    "'switch', 'value', 'graphic-eq' or 'table'), 'name' and 'value'.\n"
    "Only the active profile's values are reported; when the profile changes, only the\n"
    "profile. With --snapshot, all its values and switches follow, with the event\n"
    "'snapshot'.\n"
    "--exec runs a program for each line but those of a snapshot, one after the other, and\n"
    "tells it the change in KORA4_TIME, KORA4_EVENT, KORA4_NAME, KORA4_VALUE (as in a line)\n"
    "and KORA4_JSON. No shell reads them. Its output goes to standard error.\n"
    "Ends on Ctrl-C, when the output is closed, and as the options say.\n";

constexpr char cTable[] = "custom-profiles";

// As notifications have it. What is never reported would be waited for without end.
std::string ReportedName(const std::string& word) {
    if (Lower(word) == cTable)
        return cTable;
    const Setting& setting = SettingNamed(word);
    switch (setting.methods) {
        case ApiMethods::eActiveProfile:
        case ApiMethods::eEnable:
        case ApiMethods::eSwitch:
        case ApiMethods::ePatchValue:
        case ApiMethods::eBands:
            return setting.name;
        case ApiMethods::eFrequencies:
        case ApiMethods::eGains:
            return WordOf(setting.technology).word;
        case ApiMethods::eProfileName:
            return cTable;
        default:
            throw BadInput("Changes of '" + setting.name + "' are not reported.",
                           "Reported are profile, enable, custom-profiles, and the values and "
                           "switches that have methods (kora4ctl describe NAME).");
    }
}

class Watcher {
  public:
    Watcher(const Context& context, const Options& options)
        : m_context(context), m_options(options) {
        for (const std::string& word : options.only)
            m_only.push_back(ReportedName(word));
        if (options.command)
            m_hook.emplace(*options.command);
    }

    ExitCode Run() {
        Output& output = m_context.output;
        WaitForStore(m_context);
        ApiSession api;
        NotificationListener listener(*api, m_context.interrupt.Event());
        const Deadline deadline = m_options.limits.Start();
        if (output.json)
            output.PrintJsonLine({{"time", UtcTime::Now().Iso()}, {"event", "ready"}});
        output.Say("Watching; press Ctrl-C to stop.");
        for (std::vector<Notification> told; !output.IsBroken();) {
            const Wake wake = listener.Wait(deadline, told);
            for (const Notification& notification : told) {
                if (!Report(notification))
                    return ExitCode::eDone;
                if (m_options.snapshot && notification.name == "profile")
                    for (const Notification& one : SnapshotOf(*api))
                        Print(one);
                if (m_options.limits.IsReached(m_count))
                    return ExitCode::eDone;
            }
            if (wake == Wake::eInterrupted)
                break;
            if (wake == Wake::eTimedOut)
                return m_options.limits.OnTimeout(m_count);
        }
        return ExitCode::eDone;
    }

  private:
    // Whether it was among those that are wanted.
    bool Print(const Notification& notification) const {
        Output& output = m_context.output;
        const auto& only = m_only;
        if (!only.empty() &&
            std::find(only.begin(), only.end(), notification.name) == only.end())
            return false;
        if (output.json)
            output.PrintJsonLine(notification.Document());
        else
            output.Print(notification.Line());
        return true;
    }

    // False when Ctrl-C ends the program that is run for it.
    bool Report(const Notification& notification) {
        if (!Print(notification))
            return true;
        ++m_count;
        return !m_hook || m_hook->Run(m_context, notification);
    }

    const Context& m_context;
    const Options& m_options;
    std::vector<std::string> m_only;
    std::optional<HookProgram> m_hook;
    unsigned m_count = 0;
};

ExitCode Watch(const Context& context, const Options& options) {
    return Watcher(context, options).Run();
}

}  // namespace

void AddWatch(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "watch", "print every change as it happens", Watch);
    verb.add_option("--only", options.only, "only these settings, with commas between them")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("NAMES");
    verb.add_option("--exec", options.command, "run this program for each change")
        ->type_name("COMMAND");
    verb.add_flag("--snapshot", options.snapshot,
                  "print all values after the profile has changed");
    options.limits.AddTo(verb, "notifications");
    verb.footer(cFooter);
}

}  // namespace kora4::tools
