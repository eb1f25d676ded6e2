// SPDX-License-Identifier: MIT
// kora4ctl get, set, toggle: every setting by its name.
#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
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

// A technology without a value of its own is its switch.
const Setting& NamedSetting(const std::string& name) {
    if (const Setting* const setting = FindSetting(name))
        return *setting;
    if (const Setting* const setting = FindSetting(name + ".on"))
        return *setting;
    return SettingNamed(name);
}

// "volume-leveler off" means its switch; numbers are its value.
const Setting& SettingFor(const std::string& name, const std::string& value) {
    const Setting& setting = NamedSetting(name);
    const Setting* const itsSwitch = SwitchOf(setting);
    const std::string word = Lower(value);
    for (const char* const state : {"on", "off", "true", "false", "yes", "no"}) {
        if (word == state && itsSwitch != nullptr)
            return *itsSwitch;
    }
    return setting;
}

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
    const std::optional<std::uint32_t> profile = options.profile.Get();
    std::vector<const Setting*> settings;
    for (const std::string& name : options.names) {
        settings.push_back(&NamedSetting(name));
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

ExitCode Set(const Context& context, const SettingOptions& options) {
    const std::string value = Join(options.values, " ");
    const Setting& setting = SettingFor(options.name, value);
    const std::optional<std::uint32_t> profile = options.profile.Get();
    CheckTakesProfile(setting, profile);
    SettingAccess access(context);
    TellUnreadable(context, access, {&setting}, profile);
    return Tell(context, access.Set(setting, profile, value,
                                    options.isStored ? Limits::eStore : Limits::eApi,
                                    DetailFor(context)));
}

ExitCode Toggle(const Context& context, const SettingOptions& options) {
    const Setting& named = NamedSetting(options.name);
    const Setting* const setting = SwitchOf(named);
    if (setting == nullptr)
        throw BadInput("'" + named.name + "' is not a switch.",
                       "It takes " + named.Allowed() + ".");
    const std::optional<std::uint32_t> profile = options.profile.Get();
    CheckTakesProfile(*setting, profile);
    SettingAccess access(context);
    return Tell(context, access.Toggle(*setting, profile, DetailFor(context)));
}

// Made when somebody asks for help, and not at every start.
std::string TableOfSettings() {
    std::vector<std::vector<std::string>> rows;
    for (const Setting& setting : SettingsTable()) {
        const bool isReadOnly = setting.access == Access::eReadOnly;
        rows.push_back({setting.name, setting.Allowed() + (isReadOnly ? "; read only" : "")});
    }
    return "Settings:\n" + Aligned(rows) +
           "A technology's name alone means its value; 'on' and 'off' set its switch.\n"
           "Profiles: " +
           Join(ProfileNames(), " ") + "\n";
}

constexpr char cSetNotes[] =
    "Values: numbers, on/off/true/false/yes/no, the words in the table, and relative ones: "
    "+1,\n"
    "-10% (per cent of the range). Separate the numbers of an array with blanks or commas.\n\n";

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
