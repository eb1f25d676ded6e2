// SPDX-License-Identifier: MIT
// kora4ctl profile: the profiles, one by one and as a table.
#include <memory>

#include "base/failure.h"
#include "base/results.h"
#include "contract/profiles.h"
#include "kora4ctl/access/profile_names.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/command_line/options.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct ProfileOptions {
    std::string profile;
    std::string name;
};
using Options = std::shared_ptr<ProfileOptions>;

const char* KindOf(std::uint32_t profile) {
    return IsPresetProfile(profile)   ? "preset"
           : IsCustomProfile(profile) ? "custom"
           : IsDemoProfile(profile)   ? "demo"
                                      : "unknown";
}

// What a JSON reader gets of a profile that something was done to.
ExitCode Tell(const Context& context, const std::string& sentence, const Json& document) {
    if (context.output.json)
        context.output.PrintJson(document);
    else
        context.output.Print(sentence);
    return ExitCode::eDone;
}

Json TextOrNull(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json();
}

// ---- show -------------------------------------------------------------------------------

void PrintReadings(const std::vector<Reading>& readings, Output& output) {
    std::vector<std::vector<std::string>> rows;
    bool isAnyOutside = false;
    for (const Reading& reading : readings) {
        std::string note = reading.stored.is_null() ? "default" : "";
        if (!reading.IsInRange()) {
            note += note.empty() ? "!" : " !";
            isAnyOutside = true;
        }
        const std::string value = reading.Text(true);
        rows.push_back({reading.setting->name, note,
                        output.IsTerminal() ? Cut(value, output.Width() - 44) : value});
    }
    output.Table({"setting", "", "value"}, rows);
    if (isAnyOutside)
        output.Print("! is outside what programs may set");
}

ExitCode Show(const Context& context, const ProfileOptions& options) {
    SettingAccess access(context);
    const std::uint32_t active = access.ActiveProfile();
    std::optional<std::uint32_t> named;
    if (!options.profile.empty())
        named = ParseProfile(options.profile);
    const std::uint32_t profile = named.value_or(active);
    std::vector<const Setting*> settings;
    for (const Setting& setting : SettingsTable()) {
        // The bands stand there as frequencies and gains already.
        if (setting.perProfile && setting.isStored && setting.role != Role::eName)
            settings.push_back(&setting);
    }
    const std::vector<Reading> readings = access.Read(settings, named, Detail::eStored);
    std::optional<std::string> name;
    if (IsCustomProfile(profile))
        name = ReadProfileNames(*access.Api().Get())[profile];
    Output& output = context.output;
    if (output.json) {
        Json documents = Json::array();
        for (const Reading& reading : readings)
            documents.push_back(reading.Document());
        output.PrintJson({{"profile", ProfileName(profile)},
                          {"number", profile},
                          {"kind", KindOf(profile)},
                          {"name", TextOrNull(name)},
                          {"active", profile == active},
                          {"settings", documents}});
        return ExitCode::eDone;
    }
    output.Print(output.Paint(Style::eStrong, ProfileName(profile)) + ", " + KindOf(profile) +
                 " profile" + (name ? " '" + Shown(*name) + "'" : std::string()) +
                 (profile == active ? ", active" : ""));
    if (IsCustomProfile(profile) && !name)
        output.Print("does not exist; these values would count");
    PrintReadings(readings, output);
    return ExitCode::eDone;
}

// ---- What changes profiles --------------------------------------------------------------

ExitCode Use(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ParseProfile(options.profile);
    if (!IsSelectableProfile(profile))
        throw Failure(ExitCode::eBadInput,
                      ProfileName(profile) + " is a demo profile and is entered, not used.",
                      "Enter it with 'kora4ctl demo enter'.");
    SettingAccess access(context);
    const std::uint32_t before = access.ActiveProfile();
    Check(access.Api()->SetActiveProfile(static_cast<LONG>(profile)),
          "Making " + ProfileName(profile) + " the active profile");
    const std::string now = ProfileName(access.ActiveProfile());
    return Tell(context, "profile: " + ProfileName(before) + " -> " + now,
                {{"profile", now}, {"old", ProfileName(before)}});
}

ExitCode Revert(const Context& context, const ProfileOptions&) {
    SettingAccess access(context);
    const std::string profile = ProfileName(access.ActiveProfile());
    Check(access.Api()->RevertActiveProfile(), "Reverting " + profile);
    return Tell(context, profile + " has its factory values again.", {{"profile", profile}});
}

ExitCode Create(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ParseProfile(options.profile);
    SettingAccess access(context);
    CreateProfile(profile, options.name, *access.Api().Get());
    const std::string from = ProfileName(access.ActiveProfile());
    return Tell(
        context,
        ProfileName(profile) + " '" + options.name + "' was made as a copy of " + from + ".",
        {{"profile", ProfileName(profile)}, {"name", options.name}, {"from", from}});
}

ExitCode Rename(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ParseProfile(options.profile);
    RefuseUnlessCustom(profile);
    SettingAccess access(context);
    IVeltoKORA4API& api = *access.Api().Get();
    const std::optional<std::string> old = ReadProfileNames(api)[profile];
    RenameProfile(profile, options.name, api);
    return Tell(
        context,
        ProfileName(profile) + ": '" + old.value_or("") + "' -> '" + options.name + "'",
        {{"profile", ProfileName(profile)}, {"name", options.name}, {"old", TextOrNull(old)}});
}

ExitCode Delete(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ParseProfile(options.profile);
    SettingAccess access(context);
    DeleteProfile(profile, *access.Api().Get());
    return Tell(context, ProfileName(profile) + " was deleted.",
                {{"profile", ProfileName(profile)}});
}

// ---- table ------------------------------------------------------------------------------

// Columns in front of the names.
constexpr std::size_t cTableMargin = 36;

ExitCode Table(const Context& context, const ProfileOptions&) {
    SettingAccess access(context);
    const std::uint32_t active = access.ActiveProfile();
    const ProfileTable names = ReadProfileNames(*access.Api().Get());
    Output& output = context.output;
    Json documents = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (std::uint32_t profile = 0; profile < names.size(); ++profile) {
        const bool exists = IsPresetProfile(profile) || names[profile].has_value();
        documents.push_back({{"profile", ProfileName(profile)},
                             {"number", profile},
                             {"kind", KindOf(profile)},
                             {"exists", exists},
                             {"name", TextOrNull(names[profile])},
                             {"active", profile == active}});
        const std::string name = "'" + Shown(names[profile].value_or("")) + "'";
        const std::string shown =
            output.IsTerminal() ? Cut(name, output.Width() - cTableMargin) : name;
        rows.push_back({ProfileName(profile), std::to_string(profile), KindOf(profile),
                        profile == active ? "active" : "",
                        names[profile] ? "'" + Shown(*names[profile]) + "'"
                        : exists       ? ""
                                       : "-"});
    }
    if (output.json) {
        output.PrintJson(documents);
        return ExitCode::eDone;
    }
    output.Table({"profile", "number", "kind", "", "name"}, rows);
    if (!IsSelectableProfile(active))
        output.Say("Active is " + ProfileName(active) + ".");
    return ExitCode::eDone;
}

using Run = ExitCode (*)(const Context&, const ProfileOptions&);

CLI::App& AddProfileVerb(CLI::App& parent, Context& context, const Options& options,
                         const char* name, const char* summary, Run run) {
    CLI::App* verb = parent.add_subcommand(name, summary);
    OnRun(*verb, context, [&context, options, run] { return run(context, *options); });
    return *verb;
}

const std::string cNameHelp =
    "any text of at most " + std::to_string(cMaxTextChars) + " UTF-16 characters, also ''";

}  // namespace

void AddProfile(Context& context) {
    CLI::App* profile = context.root.add_subcommand("profile", "the profiles");
    profile->require_subcommand(1);
    const auto options = std::make_shared<ProfileOptions>();
    const auto add = [&](const char* name, const char* summary, Run run) -> CLI::App& {
        return AddProfileVerb(*profile, context, options, name, summary, run);
    };
    add("show", "all values of a profile", Show)
        .add_option("P", options->profile, "movie, music, ...; without one the active profile");
    add("use", "make a profile the active one", Use)
        .add_option("P", options->profile, "movie, music, games, " + CustomProfiles())
        ->required();
    add("revert", "give the active preset profile its factory values", Revert);
    CLI::App& create = add("create", "copy the active profile to a custom one", Create);
    create.add_option("P", options->profile, CustomProfiles())->required();
    create.add_option("NAME", options->name, cNameHelp)->required();
    CLI::App& rename = add("rename", "give a custom profile another name", Rename);
    rename.add_option("P", options->profile, CustomProfiles())->required();
    rename.add_option("NAME", options->name, cNameHelp)->required();
    add("delete", "delete a custom profile", Delete)
        .add_option("P", options->profile, CustomProfiles())
        ->required();
    add("table", "the profiles and their names", Table);
}

}  // namespace kora4::tools
