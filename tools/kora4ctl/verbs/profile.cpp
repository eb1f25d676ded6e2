// SPDX-License-Identifier: MIT
// kora4ctl profile: the profiles, one by one and as a table.
#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/document_files.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"
#include "settings/backup.h"
#include "settings/lint.h"

namespace kora4::tools {

namespace {

struct ShowOptions {
    std::optional<std::string> profile;
    bool all = false;
};

struct ProfileOptions {
    std::string profile;
    std::string name;
    std::optional<std::string> from;
};

const char* KindOf(std::uint32_t profile) {
    return IsPresetProfile(profile)   ? "preset"
           : IsCustomProfile(profile) ? "custom"
           : IsDemoProfile(profile)   ? "demo"
                                      : "unknown";
}

// ---- show -------------------------------------------------------------------------------

// Columns in front of the values.
constexpr std::size_t cShowMargin = 44;

void PrintReadings(const std::vector<Reading>& readings, Output& output) {
    std::vector<std::vector<std::string>> rows;
    bool isAnyOutside = false;
    for (const Reading& reading : readings) {
        std::string note = reading.stored.is_null() ? "default" : "";
        if (!reading.IsInRange()) {
            note += note.empty() ? "!" : " !";
            isAnyOutside = true;
        }
        rows.push_back(
            {reading.setting->name, note, Fitting(output, reading.Text(true), cShowMargin)});
    }
    output.Table({"setting", "", "value"}, rows);
    if (isAnyOutside)
        output.Print("! outside what programs can set");
}

ExitCode Show(const Context& context, const ShowOptions& options) {
    SettingAccess access(context);
    const std::uint32_t active = access.ActiveProfile();
    std::optional<std::uint32_t> named;
    if (options.profile)
        named = ProfileNamed(context, *options.profile);
    const std::uint32_t profile = named.value_or(active);
    std::vector<const Setting*> settings;
    for (const Setting& setting : SettingsTable()) {
        // The bands stand there as frequencies and gains already.
        if (setting.perProfile && setting.isStored && setting.role != Role::eName &&
            (options.all || !setting.isCarried))
            settings.push_back(&setting);
    }
    const std::vector<Reading> readings = access.Read(settings, named, Detail::eStored);
    std::optional<std::string> name;
    if (IsCustomProfile(profile))
        name = ReadProfileNames(access.Api())[profile];
    Output& output = context.output;
    if (output.json) {
        Json documents = Json::array();
        for (const Reading& reading : readings)
            documents.push_back(reading.Document());
        output.PrintJson({{"profile", ProfileName(profile)},
                          {"number", profile},
                          {"kind", KindOf(profile)},
                          {"name", OrNull(name)},
                          {"active", profile == active},
                          {"settings", documents}});
        return ExitCode::eDone;
    }
    output.Print(output.Paint(Style::eStrong, ProfileName(profile)) + ", " + KindOf(profile) +
                 " profile" + (name ? " " + Quoted(*name) : std::string()) +
                 (profile == active ? ", active" : ""));
    if (IsCustomProfile(profile) && !name)
        output.Print("does not exist; these values would be in effect");
    PrintReadings(readings, output);
    return ExitCode::eDone;
}

// ---- What changes profiles --------------------------------------------------------------

ExitCode Use(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ProfileNamed(context, options.profile);
    if (!IsSelectableProfile(profile))
        throw BadInput(ProfileName(profile) + " is a demo profile and cannot be selected.",
                       "Enter it with 'kora4ctl demo enter'.");
    SettingAccess access(context);
    const std::uint32_t before = access.ActiveProfile();
    Check(access.Api().SetActiveProfile(static_cast<LONG>(profile)),
          "Making " + ProfileName(profile) + " the active profile");
    const std::string now = ProfileName(access.ActiveProfile());
    return PrintResult(context, "profile: " + ProfileName(before) + " -> " + now,
                       {{"profile", now}, {"old", ProfileName(before)}});
}

// The names of the values to which a preset profile is reverted although they are not the
// built-in ones.
std::vector<std::string> ChangedFactoryValues(std::uint32_t profile, StoreAccess& store) {
    std::vector<std::string> names;
    for (const SchemaValue& value : Schema()) {
        if (value.role != Role::eField || value.profile != DemoProfileOf(profile))
            continue;
        const std::optional<StoredValue> stored = store.Read(value.keySet, value.key);
        if (stored && IsChangedFactoryValue(value, *stored))
            names.push_back(NameOf(value));
    }
    return names;
}

ExitCode Revert(const Context& context, const NoOptions&) {
    SettingAccess access(context);
    const std::uint32_t active = access.ActiveProfile();
    const std::string profile = ProfileName(active);
    Plan before;
    {
        const HeldStore store = access.Store(OpenMode::eRead);
        // Other profiles are refused, and nothing changes.
        if (IsPresetProfile(active))
            Backups().Keep("revert", *store, store.lock);
        before = CheckDocument(Dump(*store, Scope::eUser, InDemo::eStored));
    }
    Check(access.Api().RevertActiveProfile(), "Reverting " + profile);
    std::vector<Difference> changes;
    std::vector<std::string> others;
    {
        const HeldStore store = access.Store(OpenMode::eRead);
        changes = Compare(before, *store);
        others = ChangedFactoryValues(active, *store);
    }
    // Seen from before: what is stored now was written then.
    for (Difference& change : changes)
        std::swap(change.stored, change.wanted);
    const ChangeCounts counts(changes);
    PrintResult(context,
                profile + " was reset to its factory values: " + counts.InWords() + ".",
                {{"profile", profile},
                 {"written", counts.written},
                 {"deleted", counts.deleted},
                 {"notBuiltIn", others}});
    if (!others.empty())
        context.output.Say("Not the built-in ones, but those stored for " +
                           ProfileName(DemoProfileOf(active)) + ": " + Join(others, ", ") +
                           ".");
    return ExitCode::eDone;
}

// What is in effect in one profile, as the values of another.
ChangedSettings CopyProfile(const Context& context, std::uint32_t from, std::uint32_t to,
                            const std::optional<std::string>& name, const char* backup) {
    const HeldStore store(context, OpenMode::eReadWrite);
    Json document = DumpProfile(*store, from);
    document.erase("name");
    if (name)
        document["name"] = *name;
    Plan plan = CheckProfileDocument(document, to);
    CheckTakesValues(plan, to, *store);
    return ApplyPlan(context, plan, store, backup);
}

ExitCode Copy(const Context& context, const ProfileOptions& options) {
    const std::uint32_t from = ProfileNamed(context, *options.from);
    const std::uint32_t to = ProfileNamed(context, options.profile);
    if (from == to)
        throw BadInput(ProfileName(to) + " cannot be copied to itself.");
    const ChangedSettings changed = CopyProfile(context, from, to, {}, "copy");
    Json document = {{"profile", ProfileName(to)}, {"from", ProfileName(from)}};
    document.update(DocumentOf(changed));
    return PrintResult(context,
                       ProfileName(from) + " was copied to " + ProfileName(to) + EndOf(changed),
                       document);
}

// The library copies the active profile and no other.
std::uint32_t CreateFrom(const Context& context, const ProfileOptions& options,
                         std::uint32_t profile) {
    SettingAccess access(context);
    if (!options.from) {
        CreateProfile(profile, options.name, access.Api());
        return access.ActiveProfile();
    }
    const std::uint32_t from = ProfileNamed(context, *options.from);
    CheckIsFree(profile, options.name, access.Api());
    CopyProfile(context, from, profile, options.name, "");
    return from;
}

ExitCode Create(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ProfileNamed(context, options.profile);
    const std::string from = ProfileName(CreateFrom(context, options, profile));
    TellIfHidden(context, profile, options.name);
    return PrintResult(
        context,
        ProfileName(profile) + " " + Quoted(options.name) + " was created as a copy of " +
            from + ".",
        {{"profile", ProfileName(profile)}, {"name", options.name}, {"from", from}});
}

ExitCode Rename(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ProfileNamed(context, options.profile);
    CheckIsCustom(profile);
    SettingAccess access(context);
    Api& api = access.Api();
    const std::optional<std::string> old = ReadProfileNames(api)[profile];
    RenameProfile(profile, options.name, api);
    TellIfHidden(context, profile, options.name);
    return PrintResult(
        context,
        ProfileName(profile) + ": " + Quoted(old.value_or("")) + " -> " + Quoted(options.name),
        {{"profile", ProfileName(profile)}, {"name", options.name}, {"old", OrNull(old)}});
}

ExitCode Delete(const Context& context, const ProfileOptions& options) {
    const std::uint32_t profile = ProfileNamed(context, options.profile);
    SettingAccess access(context);
    DeleteProfile(profile, access.Api());
    return PrintResult(context, ProfileName(profile) + " was deleted.",
                       {{"profile", ProfileName(profile)}});
}

// ---- list -------------------------------------------------------------------------------

// Columns in front of the names.
constexpr std::size_t cTableMargin = 36;

ExitCode List(const Context& context, const NoOptions&) {
    SettingAccess access(context);
    const std::uint32_t active = access.ActiveProfile();
    const ProfileTable names = ReadProfileNames(access.Api());
    Output& output = context.output;
    Json documents = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (std::uint32_t profile = 0; profile < names.size(); ++profile) {
        const bool exists = IsPresetProfile(profile) || names[profile].has_value();
        documents.push_back({{"profile", ProfileName(profile)},
                             {"number", profile},
                             {"kind", KindOf(profile)},
                             {"exists", exists},
                             {"name", OrNull(names[profile])},
                             {"active", profile == active}});
        rows.push_back({ProfileName(profile), std::to_string(profile), KindOf(profile),
                        profile == active ? "active" : "",
                        names[profile] ? Fitting(output, Quoted(*names[profile]), cTableMargin)
                        : exists       ? ""
                                       : "-"});
    }
    if (output.json) {
        output.PrintJson(documents);
        return ExitCode::eDone;
    }
    output.Table({"profile", "number", "kind", "", "name"}, rows);
    if (!IsSelectableProfile(active))
        output.Say("The active profile is " + ProfileName(active) + ".");
    return ExitCode::eDone;
}

const std::string cNameHelp = "any text of at most " + std::to_string(cMaxTextChars) +
                              " UTF-16 characters; '' is allowed";

}  // namespace

void AddProfile(Context& context) {
    CLI::App& profile = AddGroup(context, "profile", "show and change profiles");
    const auto add = [&](const char* name, const char* summary, auto run) {
        return AddVerb(profile, context, name, summary, run);
    };
    const auto addForCustom = [&](const char* name, const char* summary, auto run) {
        const auto verb = add(name, summary, run);
        verb.app.add_option("P", verb.options.profile, CustomProfiles())->required();
        return verb;
    };
    const auto addWithName = [&](const char* name, const char* summary, auto run) {
        const auto verb = addForCustom(name, summary, run);
        verb.app.add_option("NAME", verb.options.name, cNameHelp)->required();
        return verb;
    };
    const auto [show, shown] = add("show", "show all values of a profile", Show);
    show.add_option("P", shown.profile, "movie, music, ...; the active profile if omitted");
    show.add_flag("--all", shown.all, "also the fields that are only carried");
    const auto [use, used] = add("use", "select the active profile", Use);
    use.add_option("P", used.profile, "movie, music, games, " + CustomProfiles())->required();
    add("revert", "reset the active preset profile to its factory values", Revert);
    const auto [create, created] =
        addWithName("create", "create a custom profile as a copy of another one", Create);
    create.add_option("--from", created.from, "the profile to copy; the active one if omitted")
        ->type_name("P");
    const auto [copy, copied] = add("copy", "give a profile the values of another one", Copy);
    copy.add_option("FROM", copied.from, "the profile to copy; its values stay")->required();
    copy.add_option("TO", copied.profile, "the profile that gets them; its name stays")
        ->required();
    addWithName("rename", "rename a custom profile", Rename);
    addForCustom("delete", "delete a custom profile", Delete);
    // Its name before there was a list of anything else.
    add("list", "list the profiles and their names", List).app.alias("table");
}

}  // namespace kora4::tools
