// SPDX-License-Identifier: MIT
// kora4ctl demo: into a demonstration and out of it.
#include "base/failure.h"
#include "base/results.h"
#include "contract/profiles.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/verbs.h"
#include "settings/names.h"

namespace kora4::tools {

namespace {

struct DemoOptions {
    std::string profile;
    bool isOn = false;
    bool isOff = false;
};

constexpr char cForceLeave[] = "Leave it for every program: kora4ctl demo force-leave";

struct State {
    std::uint32_t profile;
    bool isEnabled;
};

State ReadState(SettingAccess& access) {
    const bool isOn = Check(access.Api().GetVeltoEnable(), "Reading the master enable");
    return {access.ActiveProfile(), isOn};
}

ExitCode Tell(const Context& context, const std::string& what, const State& now) {
    const std::string name = ProfileName(now.profile);
    return PrintResult(
        context,
        what + " The active profile is " + name + "; the master enable is " +
            (now.isEnabled ? "on" : "off") + ".",
        {{"profile", name}, {"demo", IsDemoProfile(now.profile)}, {"enable", now.isEnabled}});
}

// The preset profile's name says which demo.
std::uint32_t DemoOf(const Context& context, const std::string& word) {
    const std::uint32_t profile = ProfileNamed(context, word);
    if (IsPresetProfile(profile))
        return DemoProfileOf(profile);
    if (!IsDemoProfile(profile))
        throw BadInput("There is no demo for " + ProfileName(profile) + ".",
                       "There are demos for movie, music and games.");
    return profile;
}

ExitCode Enter(const Context& context, const DemoOptions& options) {
    const std::uint32_t profile = DemoOf(context, options.profile);
    SettingAccess access(context);
    const HRESULT hr =
        access.Api().SetDemoProfileAndEnable(static_cast<LONG>(profile), !options.isOff).Code();
    if (hr == KORA4_S_DEMO_MODE_ACTIVE)
        throw Failure(
            ExitCode::eRefused,
            "Nothing changed: the demo " + ProfileName(access.ActiveProfile()) +
                " is active, and only the program that entered it can switch to another.",
            cForceLeave);
    Check(hr, "Entering " + ProfileName(profile));
    return Tell(context, "Entered the demo.", ReadState(access));
}

ExitCode ForceLeave(const Context& context, const NoOptions&) {
    SettingAccess access(context);
    const State before = ReadState(access);
    Check(access.Api().ForceRevertFromDemoMode(), "Leaving the demo");
    const std::string what = IsDemoProfile(before.profile)
                                 ? ProfileName(before.profile) + " was left."
                                 : "No demo was active.";
    return Tell(context, what, ReadState(access));
}

constexpr char cEnterHelp[] =
    "The active profile and the master enable are saved and restored when the demo is left.\n"
    "In a demo, values are built in and cannot be changed.\n";

}  // namespace

void AddDemo(Context& context) {
    CLI::App& demo = AddGroup(context, "demo", "enter and leave the demo mode");
    const auto [enter, options] = AddVerb(
        demo, context, "enter", "demonstrate a profile with its built-in values", Enter);
    enter.add_option("P", options.profile, "movie, music or games")->required();
    auto* const on =
        enter.add_flag("--on", options.isOn, "with the master enable on (the default)");
    enter.add_flag("--off", options.isOff, "with the master enable off")->excludes(on);
    enter.footer(cEnterHelp);
    AddVerb(demo, context, "force-leave", "end a demo, whoever entered it", ForceLeave);
}

}  // namespace kora4::tools
