// SPDX-License-Identifier: MIT
// kora4ctl get, set, toggle: every setting by its name.
#include <algorithm>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct SettingOptions {
    ProfileOption profile;
    std::vector<std::string> names;
    std::string name;
    std::vector<std::string> values;
    bool isStored = false;
};

// "volume-leveler off" means its switch; numbers are its value.
const Setting& SettingFor(const std::string& name, const std::string& value) {
    const Setting& setting = SettingNamed(name);
    const Setting* const itsSwitch = SwitchOf(setting);
    const std::string word = Lower(value);
    for (const char* const state : {"on", "off", "true", "false", "yes", "no", "toggle"}) {
        if (word == state && itsSwitch != nullptr)
            return *itsSwitch;
    }
    return setting;
}

constexpr int cMostProfiles = KORA4_PROFILE_TABLE_ENTRIES;

Detail DetailFor(const Context& context) {
    return context.output.json ? Detail::eStored : Detail::eValue;
}

void CheckTakesProfile(const Setting& setting, std::optional<std::uint32_t> profile) {
    if (profile && !setting.perProfile)
        throw BadInput("'" + setting.name + "' is the same in all profiles.",
                       "Omit --profile.");
}

void TellUnreadable(const Context& context, SettingAccess& access,
                    const std::vector<const Setting*>& settings,
                    std::optional<std::uint32_t> profile) {
    for (const Setting* const setting : access.Unreadable(settings, profile))
        context.output.Say("'" + setting->name +
                           "' is stored but cannot be read: its default is in effect. List "
                           "such values: kora4ctl lint");
}

ExitCode Get(const Context& context, const SettingOptions& options) {
    const std::optional<std::uint32_t> profile = options.profile.Get(context);
    std::vector<const Setting*> settings;
    for (const std::string& name : options.names) {
        settings.push_back(&SettingNamed(name));
        CheckTakesProfile(*settings.back(), profile);
    }
    SettingAccess access(context);
    const std::vector<Reading> readings = access.Read(settings, profile, DetailFor(context));
    TellUnreadable(context, access, settings, profile);
    Output& output = context.output;
    if (output.json) {
        Json documents = Json::array();
        for (const Reading& reading : readings)
            documents.push_back(reading.Document());
        output.PrintJson(documents.size() == 1 ? documents.front() : documents);
        return ExitCode::eDone;
    }
    for (const Reading& reading : readings) {
        output.Print(reading.Text());
        if (!reading.value)
            output.Say("'" + reading.setting->name + "' has no value.");
    }
    return ExitCode::eDone;
}

ExitCode Tell(const Context& context, const Change& change) {
    const Setting& setting = *change.now.setting;
    Json document = change.now.Document();
    document["old"] = change.old ? ToJson(setting, *change.old) : Json();
    const std::string old = change.old ? FormatValue(setting, *change.old) : "none";
    return PrintResult(context, setting.name + ": " + old + " -> " + change.now.Text(),
                       document);
}

// The next one that exists, and no further than the first or the last.
std::uint32_t ProfileAtStep(SettingAccess& access, int step) {
    const std::uint32_t active = access.ActiveProfile();
    CheckSettable(active);
    const ProfileTable names = ReadProfileNames(access.Api());
    std::vector<std::uint32_t> profiles;
    int place = 0;
    for (std::uint32_t profile = 0; profile < names.size(); ++profile) {
        if (profile == active)
            place = static_cast<int>(profiles.size());
        if (IsPresetProfile(profile) || names[profile] || profile == active)
            profiles.push_back(profile);
    }
    const int last = static_cast<int>(profiles.size()) - 1;
    return profiles[static_cast<std::size_t>(std::clamp(place + step, 0, last))];
}

// Of the active profile: steps and names of custom profiles as the words that everybody knows.
std::string ProfileWordOf(const Context& context, SettingAccess& access,
                          const std::string& value) {
    const bool isStep = value.starts_with('+') || value.starts_with('-');
    const std::string number = value.substr(value.starts_with('+') ? 1 : 0);
    if (const std::optional<int> step = ReadNumber<int>(number); step && isStep)
        return ProfileName(
            ProfileAtStep(access, std::clamp(*step, -cMostProfiles, cMostProfiles)));
    const std::optional<std::uint32_t> profile = FindProfileNamed(context, value);
    return profile ? ProfileName(*profile) : value;
}

ExitCode Set(const Context& context, const SettingOptions& options) {
    std::string value = Join(options.values, " ");
    const Setting& setting = SettingFor(options.name, value);
    const std::optional<std::uint32_t> profile = options.profile.Get(context);
    CheckTakesProfile(setting, profile);
    SettingAccess access(context);
    if (setting.role == Role::eActiveProfile)
        value = ProfileWordOf(context, access, value);
    TellUnreadable(context, access, {&setting}, profile);
    return Tell(context, access.Set(setting, profile, value,
                                    options.isStored ? Limits::eStore : Limits::eApi,
                                    DetailFor(context)));
}

ExitCode Toggle(const Context& context, const SettingOptions& options) {
    const Setting& named = SettingNamed(options.name);
    const Setting* const setting = SwitchOf(named);
    if (setting == nullptr)
        throw BadInput("'" + named.name + "' is not a switch.",
                       "It takes " + named.Allowed() + ".");
    const std::optional<std::uint32_t> profile = options.profile.Get(context);
    CheckTakesProfile(*setting, profile);
    SettingAccess access(context);
    return Tell(context, access.Toggle(*setting, profile, DetailFor(context)));
}

// Made when somebody asks for help, and not at every start.
std::string TableOfSettings() {
    std::vector<std::vector<std::string>> rows;
    for (const Setting& setting : SettingsTable()) {
        if (setting.isCarried)
            continue;
        const bool isReadOnly = setting.access == Access::eReadOnly;
        rows.push_back({setting.name, setting.Allowed() + (isReadOnly ? "; read-only" : "")});
    }
    return "Settings:\n" + Aligned(rows) +
           "\n'kora4ctl list --all' also lists the fields that are only carried.\n"
           "A technology's name alone means its value; 'on' and 'off' set its switch.\n"
           "\nProfiles: " +
           Join(ProfileNames(), " ") + "\n";
}

constexpr char cSetNotes[] =
    "Values: numbers, on/off/true/false/yes/no/toggle, the words in the table, 50% (of the\n"
    "range), and steps: +1, -10% (of the range). Profiles can also be given by the name of a\n"
    "custom profile, and +1 is the next one that exists. Separate the numbers of an array\n"
    "with blanks or commas.\n\n";

}  // namespace

void AddGet(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "get", "print the value of a setting", Get);
    verb.add_option("NAME", options.names, "a setting; several print one line each")
        ->required();
    options.profile.AddTo(verb);
    verb.footer(TableOfSettings);
}

void AddSet(Context& context) {
    const auto [verb, options] = AddVerb(context.root, context, "set", "change a setting", Set);
    verb.add_option("NAME", options.name, "a setting")->required();
    verb.add_option("VALUE", options.values, "its new value")->required();
    options.profile.AddTo(verb);
    verb.add_flag("--stored", options.isStored,
                  "write to the store, bypassing the library and its limits");
    verb.footer([] { return cSetNotes + TableOfSettings(); });
}

void AddToggle(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "toggle", "toggle a switch", Toggle);
    verb.add_option("NAME", options.name, "a switch, or a technology that has one")->required();
    options.profile.AddTo(verb);
}

}  // namespace kora4::tools
