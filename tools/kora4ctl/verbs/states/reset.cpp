// SPDX-License-Identifier: MIT
// kora4ctl reset: stored values go, so that the defaults are in effect again.
#include <algorithm>
#include <numeric>

#include "contract/general_settings.h"
#include "contract/profiles.h"
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct Options {
    ProfileOption profile;
    std::vector<std::string> names;
    bool all = false;
    bool isStored = false;
};

constexpr char cFooter[] =
    "With names: those settings, in the active profile or in the one of --profile. With\n"
    "--profile alone: all values and switches of that profile. With --all: all settings of\n"
    "the user, in all profiles. A name of a profile has no default and always stays.\n"
    "A backup is kept before anything changes; see 'kora4ctl undo'.\n";

bool HasDefault(const Setting& setting) {
    return setting.isStored && setting.Default().has_value();
}

bool IsUsers(const Setting& setting) {
    const contract::GeneralSetting* const general = contract::FindGeneralSetting(setting.name);
    return setting.perProfile || (general && general->role == contract::SettingRole::eUser);
}

// Adds what a name stands for: the bands are two settings.
void AddNamed(const std::string& name, bool isStored, std::vector<const Setting*>& settings) {
    const Setting& setting = SettingNamed(name);
    if (setting.perProfile && !setting.isStored) {
        for (const char* const part : {".frequencies", ".gains"})
            settings.push_back(&SettingNamed(setting.name + part));
        return;
    }
    if (!HasDefault(setting))
        throw BadInput("'" + setting.name + "' has no default.");
    if (setting.access == Access::eReadOnly && !isStored)
        throw BadInput(
            "The library has no method that sets '" + setting.name + "'.",
            "Reset it in the store with --stored; programs read it when they start.");
    settings.push_back(&setting);
}

std::vector<const Setting*> SettingsOf(const Options& options, bool hasProfile) {
    std::vector<const Setting*> settings;
    for (const std::string& name : options.names) {
        AddNamed(name, options.isStored, settings);
        if (hasProfile && !settings.back()->perProfile)
            throw BadInput("'" + settings.back()->name + "' is the same in all profiles.",
                           "Omit --profile.");
    }
    if (!options.names.empty())
        return settings;
    for (const Setting& setting : SettingsTable())
        if (HasDefault(setting) && (options.all ? IsUsers(setting) : setting.perProfile))
            settings.push_back(&setting);
    return settings;
}

std::vector<std::uint32_t> ProfilesOf(const Options& options,
                                      std::optional<std::uint32_t> named,
                                      const std::vector<const Setting*>& settings,
                                      StoreAccess& store) {
    if (named)
        return {*named};
    const std::uint32_t active = StoredActiveProfile(store);
    if (std::any_of(settings.begin(), settings.end(), [](const Setting* setting) {
            return IsFrozenInDemo(*setting) || setting->role == Role::eActiveProfile;
        }))
        CheckSettable(active);
    if (!options.all)
        return {active};
    std::vector<std::uint32_t> profiles(cSelectableProfileBound);
    std::iota(profiles.begin(), profiles.end(), 0u);
    return profiles;
}

Plan PlanOf(const std::vector<const Setting*>& settings,
            const std::vector<std::uint32_t>& profiles) {
    Plan plan;
    for (const std::uint32_t profile : profiles)
        for (const Setting* const setting : settings)
            if (setting->perProfile || profile == profiles.front())
                plan.values.push_back({setting->Stored(profile), {}});
    return plan;
}

std::string LineOf(const Difference& change) {
    if (!change.frequencies.empty())
        return change.Line();
    const Setting& setting = *SettingOf(change.value);
    const std::optional<Value> old = Decode(change.value, *change.stored);
    return PlaceOf(change.value) + ": " +
           (old ? FormatValue(setting, *old, true) : Describe(*change.stored)) + " -> " +
           FormatValue(setting, *BuiltIn(change.value), true) + " (default)";
}

ExitCode Reset(const Context& context, const Options& options) {
    const std::optional<std::uint32_t> profile = options.profile.Get(context);
    if (options.names.empty() && !profile && !options.all)
        throw Failure(ExitCode::eUsage, "Nothing to reset: no setting is named.",
                      "Name settings, or use --profile P or --all.");
    if (profile && IsDemoProfile(*profile) && !options.isStored)
        throw BadInput("What is stored for " + ProfileName(*profile) +
                           " are the factory values of a preset profile.",
                       "Use --stored to replace them with the built-in values.");
    const std::vector<const Setting*> settings = SettingsOf(options, profile.has_value());
    ChangedSettings changed;
    {
        const HeldStore store(context, OpenMode::eReadWrite);
        TellIfAbandoned(context, store.lock);
        const Plan plan = PlanOf(settings, ProfilesOf(options, profile, settings, *store));
        changed = ApplyPlan(context, plan, store, "reset");
    }
    Output& output = context.output;
    if (output.json) {
        output.PrintJson(DocumentOf(changed));
        return ExitCode::eDone;
    }
    for (const Difference& change : changed.changes)
        output.Print(LineOf(change));
    output.Say(changed.changes.empty()
                   ? "The defaults are already in effect; nothing was changed."
                   : CountOf(changed.changes.size(), "value") + " reset" + EndOf(changed));
    return ExitCode::eDone;
}

}  // namespace

void AddReset(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "reset", "put the defaults in effect again", Reset);
    auto* const names = verb.add_option("NAME", options.names, "settings");
    options.profile.AddTo(verb);
    verb.add_flag("--all", options.all, "all settings of the user, in all profiles")
        ->excludes(names)
        ->excludes(verb.get_option("--profile"));
    verb.add_flag("--stored", options.isStored,
                  "also what programs cannot set, such as factory values");
    verb.footer(cFooter);
}

}  // namespace kora4::tools
