// SPDX-License-Identifier: MIT
// kora4ctl describe, list: what settings there are, and what they are.
#include <set>

#include "base/failure.h"
#include "base/shown_text.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/setting_access.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/terminal/text_layout.h"
#include "kora4ctl/verbs.h"

namespace kora4::tools {

namespace {

struct DescribeOptions {
    ProfileOption profile;
    std::vector<std::string> names;
    bool all = false;
};

void AddAll(CLI::App& verb, DescribeOptions& options) {
    verb.add_flag("--all", options.all, "also the fields that are only carried");
}

constexpr const char* cAccesses[] = {"read-write", "read-only", "store-only"};

const char* AccessName(const Setting& setting) {
    return cAccesses[static_cast<std::size_t>(setting.access)];
}

// ---- Defaults ---------------------------------------------------------------------------

// The rows of defaults: each preset profile, and one for all custom ones.
struct DefaultsRow {
    const char* name;
    std::uint32_t profile;
};
constexpr DefaultsRow cDefaultsRows[] = {{"movie", cMovieProfile},
                                         {"music", cMusicProfile},
                                         {"games", cGamesProfile},
                                         {"custom", cFirstCustomProfile}};

std::optional<Value> DefaultOf(const Setting& setting, std::uint32_t profile) {
    // Preset profiles have no name.
    if (!setting.isStored || setting.role == Role::eName)
        return std::nullopt;
    const SchemaValue value = setting.Stored(profile);
    const std::optional<StoredValue> standIn = value.Default();
    return standIn ? Decode(value, *standIn) : std::nullopt;
}

std::string DefaultText(const Setting& setting) {
    std::vector<std::string> texts;
    std::set<std::string> different;
    for (const DefaultsRow& row : cDefaultsRows) {
        const std::optional<Value> value = DefaultOf(setting, row.profile);
        const std::string text = value ? FormatValue(setting, *value, true) : "none";
        different.insert(text);
        texts.push_back(std::string(row.name) + " " + text);
    }
    return different.size() == 1 ? *different.begin() : Join(texts, ", ");
}

Json DefaultDocument(const Setting& setting) {
    const auto json = [&setting](std::uint32_t profile) {
        const std::optional<Value> value = DefaultOf(setting, profile);
        return value ? ToJson(setting, *value) : Json();
    };
    if (!setting.perProfile)
        return json(0);
    Json rows = Json::object();
    for (const DefaultsRow& row : cDefaultsRows)
        rows[row.name] = json(row.profile);
    return rows;
}

// ---- describe ---------------------------------------------------------------------------

std::string Methods(const Setting& setting) {
    const std::string reader = ReaderName(setting.methods);
    const std::string writer = WriterName(setting.methods);
    if (reader.empty())
        return "none; through the store";
    return reader + (writer.empty() ? "; no method sets it" : ", " + writer);
}

// The place in the registry; of custom profiles where a setting belongs to no other.
std::optional<SchemaValue> PlaceOf(const Setting& setting,
                                   std::optional<std::uint32_t> profile) {
    if (!setting.isStored)
        return std::nullopt;
    const std::uint32_t first = setting.role == Role::eName ? cFirstCustomProfile : 0;
    return setting.Stored(std::max(profile.value_or(first), first));
}

// The present value, or why it cannot be read: a description needs no library.
struct Present {
    std::optional<Reading> reading;
    std::string problem;
};

Present ReadPresent(SettingAccess& access, const Setting& setting,
                    std::optional<std::uint32_t> profile) {
    Present present;
    try {
        present.reading = access.Read(setting, profile, Detail::eStored);
    } catch (const Failure& failure) {
        present.problem = failure.what();
    }
    return present;
}

std::string PresentText(const Present& present) {
    if (!present.reading)
        return "unknown: " + present.problem;
    const Reading& reading = *present.reading;
    std::string text = reading.value ? reading.Text(true) : "none";
    if (reading.profile)
        text += " in " + ProfileName(*reading.profile);
    if (reading.value && reading.stored.is_null() && reading.setting->isStored)
        text += ", the default";
    if (!reading.IsInRange())
        text += ", outside what programs can set";
    return text;
}

Json Description(const Setting& setting, const Present& present,
                 std::optional<std::uint32_t> profile) {
    Json json;
    json["name"] = setting.name;
    json["summary"] = setting.summary;
    json["type"] = NameOf(setting.kind);
    json["unit"] = OrNull(setting.unit);
    json["allowed"] = setting.Allowed();
    json["lowest"] = OrNull(setting.lowest);
    json["highest"] = OrNull(setting.highest);
    Json words = Json::object();
    for (const ValueWord& word : setting.words)
        words[word.word] = word.number;
    json["words"] = words;
    json["default"] = DefaultDocument(setting);
    json["perProfile"] = setting.perProfile;
    json["access"] = AccessName(setting);
    json["reader"] = OrNull(ReaderName(setting.methods));
    json["writer"] = OrNull(WriterName(setting.methods));
    const std::optional<SchemaValue> place = PlaceOf(setting, profile);
    json["keySet"] = place ? Json(KeySetName(place->keySet)) : Json();
    json["valueName"] = place ? Json(place->Name()) : Json();
    json["value"] = present.reading ? present.reading->Document()["value"] : Json();
    json["profile"] = present.reading ? present.reading->Document()["profile"] : Json();
    json["problem"] = OrNull(present.problem);
    return json;
}

void Print(const Setting& setting, const Present& present, std::optional<std::uint32_t> profile,
           Output& output) {
    output.Print(output.Paint(Style::eStrong, setting.name) + ": " + setting.summary);
    const std::optional<SchemaValue> place = PlaceOf(setting, profile);
    std::vector<std::vector<std::string>> rows = {
        {"  type", NameOf(setting.kind)},
        {"  allowed", setting.Allowed()},
        {"  unit", setting.unit.empty() ? "none" : setting.unit},
        {"  default", DefaultText(setting)},
        {"  methods", Methods(setting)},
        {"  stored", place ? KeySetName(place->keySet) + " keys, " + place->Name() : "nowhere"},
        {"  now", PresentText(present)},
    };
    output.Table({}, rows);
}

ExitCode Describe(const Context& context, const DescribeOptions& options) {
    std::vector<const Setting*> settings;
    for (const std::string& name : options.names)
        settings.push_back(&SettingNamed(name));
    if (options.names.empty()) {
        for (const Setting& setting : SettingsTable())
            if (options.all || !setting.isCarried)
                settings.push_back(&setting);
    }
    const std::optional<std::uint32_t> profile = options.profile.Get(context);
    SettingAccess access(context);
    Output& output = context.output;
    Json documents = Json::array();
    for (const Setting* setting : settings) {
        const auto itsProfile = setting->perProfile ? profile : std::nullopt;
        const Present present = ReadPresent(access, *setting, itsProfile);
        const std::optional<std::uint32_t> shown =
            present.reading && !itsProfile ? present.reading->profile : itsProfile;
        if (output.json) {
            documents.push_back(Description(*setting, present, shown));
            continue;
        }
        if (setting != settings.front())
            output.Print();
        Print(*setting, present, shown, output);
    }
    if (output.json)
        output.PrintJson(options.names.size() == 1 ? documents.front() : documents);
    return ExitCode::eDone;
}

// ---- list -------------------------------------------------------------------------------

// Columns of a wide list in front of the last one.
constexpr std::size_t cListMargin = 68;

ExitCode List(const Context& context, const DescribeOptions& options) {
    const std::optional<std::uint32_t> profile = options.profile.Get(context);
    std::vector<const Setting*> settings;
    for (const Setting& setting : SettingsTable()) {
        if ((setting.perProfile || !profile) && (options.all || !setting.isCarried))
            settings.push_back(&setting);
    }
    SettingAccess access(context);
    const std::vector<Reading> readings = access.Read(settings, profile, Detail::eStored);
    Output& output = context.output;
    Json documents = Json::array();
    std::vector<std::vector<std::string>> rows;
    const bool isWide = output.Width() >= 120;
    for (const Reading& reading : readings) {
        const Setting& setting = *reading.setting;
        Json document = reading.Document();
        document["allowed"] = setting.Allowed();
        document["access"] = AccessName(setting);
        documents.push_back(document);
        const std::string value =
            Cut(ShownText(reading.Text(true)), 20) + (reading.IsInRange() ? "" : " !");
        if (isWide)
            rows.push_back({setting.name, value, AccessName(setting),
                            Cut(setting.summary, output.Width() - cListMargin)});
        else
            rows.push_back({setting.name, value, Cut(setting.Allowed(), 24)});
    }
    if (output.json) {
        output.PrintJson(documents);
        return ExitCode::eDone;
    }
    if (isWide)
        output.Table({"setting", "value", "access", "meaning"}, rows);
    else
        output.Table({"setting", "value", "allowed"}, rows);
    return ExitCode::eDone;
}

}  // namespace

void AddDescribe(Context& context) {
    const auto [verb, options] = AddVerb(context.root, context, "describe",
                                         "describe a setting and where it is stored", Describe);
    verb.add_option("NAME", options.names, "settings; all if omitted");
    options.profile.AddTo(verb);
    AddAll(verb, options);
}

void AddList(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "list", "list all settings and their values", List);
    options.profile.AddTo(verb);
    AddAll(verb, options);
}

}  // namespace kora4::tools
