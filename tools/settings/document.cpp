// SPDX-License-Identifier: MIT
// Reads, checks and writes settings documents, and compares one with the store.
#include "settings/document.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/checked_json.h"
#include "base/strict_json.h"
#include "base/text.h"
#include "contract/field_ids.h"
#include "contract/general_settings.h"
#include "contract/profiles.h"
#include "settings/content.h"
#include "settings/setting_values.h"

namespace kora4::tools {
namespace {

constexpr char cGeneral[] = "general";
constexpr char cProfiles[] = "profiles";
constexpr char cGlobal[] = "global";
// Of a document of one profile: its scope, and the section with its values.
constexpr char cProfile[] = "profile";
constexpr char cName[] = "name";
constexpr char cMadeByDump[] = "Settings documents are made by 'kora4ctl dump'.";

const char* ScopeName(Scope scope) {
    return scope == Scope::eAll ? "all" : "user";
}

// ---- One value ---------------------------------------------------------------------------

std::string Excerpt(const Json& json) {
    std::string text = json.dump(-1, ' ', true, Json::error_handler_t::replace);
    constexpr std::size_t cLongest = 60;
    return text.size() > cLongest ? text.substr(0, cLongest) + "..." : text;
}

Failure BadForm(const Setting& setting, const CheckedJson& json) {
    return json.Bad("invalid value " + Excerpt(json.Raw()) + ": expected " + setting.Allowed() +
                    ".");
}

bool IsWhole(const Json& json) {
    constexpr auto cLargest = std::numeric_limits<std::uint32_t>::max();
    return json.is_number_unsigned() && json.get<std::uint64_t>() <= cLargest;
}

float ReadFloat(const Setting& setting, const CheckedJson& json) {
    if (!json.Raw().is_number())
        throw BadForm(setting, json);
    const auto number = static_cast<float>(json.Raw().get<double>());
    // Half a step beyond the largest float rounds down to it.
    if (!std::isfinite(number))
        throw json.Bad("invalid value " + Excerpt(json.Raw()) + ": too large.");
    return number;
}

Value ReadArray(const Setting& setting, const CheckedJson& json) {
    if (!json.Raw().is_array())
        throw BadForm(setting, json);
    std::vector<float> numbers;
    std::vector<bool> flags;
    for (const CheckedJson& element : json.Elements(0, json.Raw().size())) {
        if (setting.kind == Kind::eNumericArray)
            numbers.push_back(ReadFloat(setting, element));
        else if (element.Raw().is_boolean())
            flags.push_back(element.Switch());
        else
            throw BadForm(setting, element);
    }
    return setting.kind == Kind::eNumericArray ? Value(numbers) : Value(flags);
}

Value ReadContent(const Setting& setting, const CheckedJson& json) {
    const Json& raw = json.Raw();
    const bool isNumber = setting.kind == Kind::eNumber || setting.kind == Kind::eCurveIndex;
    if (setting.kind == Kind::eFloat)
        return ReadFloat(setting, json);
    if (setting.IsArray())
        return ReadArray(setting, json);
    if (setting.IsSwitch() && raw.is_boolean())
        return json.Switch();
    if ((setting.IsSwitch() || isNumber) && IsWhole(raw))
        return raw.get<std::uint32_t>();
    if (isNumber && raw.is_string())
        for (const ValueWord& word : setting.words)
            if (raw == word.word)
                return word.number;
    if (setting.IsSwitch() || isNumber || !raw.is_string())
        throw BadForm(setting, json);
    return json.Text();
}

// Encode knows the reason and not the place.
StoredValue Encoded(const SchemaValue& value, const Value& content, const CheckedJson& json) {
    try {
        return Encode(value, content);
    } catch (const Failure& failure) {
        throw json.Bad(failure.what(), failure.Next());
    }
}

// {"text": ...} or {"type": ..., "data": ...}: what is stored, to the byte.
StoredValue ReadRaw(const CheckedJson& json) {
    if (json.Raw().size() == 1 && json.Has("text")) {
        return Encoded({.kind = Kind::eText}, json["text"].Text(), json);
    }
    if (json.Raw().size() != 2 || !json.Has("type") ||
        (!json.Has("data") && !json.Has("unread")))
        throw json.Bad(
            "expected an object with 'text', or with 'type' and either 'data' or 'unread'.");
    const Json& type = json["type"].Raw();
    if (!IsWhole(type))
        throw json.Bad("invalid 'type': expected the number of a registry type.");
    if (json.Has("unread")) {
        const Json& unread = json["unread"].Raw();
        if (!IsWhole(unread) || unread == 0)
            throw json.Bad("invalid 'unread': expected a number of bytes.");
        return {type.get<std::uint32_t>(), {}, unread.get<std::uint32_t>()};
    }
    const std::optional<Bytes> bytes = FromHex(json["data"].Text());
    if (!bytes)
        throw json.Bad("invalid 'data': expected an even number of hexadecimal digits.");
    if (bytes->size() > cMaxReadBytes)
        throw json.Bad("invalid 'data': too large for a registry value.");
    return {type.get<std::uint32_t>(), *bytes};
}

// Does writing the JSON value back give exactly what is stored?
bool IsExact(const Setting& setting, const Json& json, const StoredValue& stored) {
    try {
        return StoredFromJson(setting, CheckedJson(json)) == stored;
    } catch (const Failure&) {
        return false;
    }
}

// ---- What a document covers -----------------------------------------------------------------

const char* SectionOf(const Setting& setting) {
    if (setting.perProfile)
        return cProfiles;
    return setting.technology.family == Family::eGlobal ? cGlobal : cGeneral;
}

// The settings of a section, in the order of the table.
std::vector<const Setting*> SettingsOf(const char* section, Scope scope) {
    std::vector<const Setting*> settings;
    for (const Setting& setting : SettingsTable()) {
        const contract::GeneralSetting* const general =
            contract::FindGeneralSetting(setting.name);
        const bool isUsers =
            setting.perProfile || (general && general->role == contract::SettingRole::eUser);
        if (setting.isStored && SectionOf(setting) == section &&
            (scope == Scope::eAll || isUsers))
            settings.push_back(&setting);
    }
    return settings;
}

std::vector<std::uint32_t> ProfilesOf(Scope scope) {
    std::vector<std::uint32_t> numbers;
    for (const ProfileWord& profile : Profiles())
        if (scope == Scope::eAll || IsSelectableProfile(profile.number))
            numbers.push_back(profile.number);
    return numbers;
}

bool Has(const Setting& setting, std::uint32_t profile) {
    return setting.role != Role::eName || IsCustomProfile(profile);
}

// ---- Reading ------------------------------------------------------------------------------

CheckedJson Member(const CheckedJson& document, const char* name, const char* meaning) {
    if (!document.Has(name))
        throw document.Bad(
            std::string("The document has no '") + name + "', which " + meaning + ".",
            cMadeByDump);
    return document[name];
}

// The scope of a document of this format and version.
CheckedJson ReadHead(const CheckedJson& document) {
    if (!document.Raw().is_object())
        throw document.Bad("Not a settings document: expected a JSON object.", cMadeByDump);
    const CheckedJson format = Member(document, "format", "says what it is");
    if (format.Raw() != cDocumentFormat)
        throw format.Bad(std::string("not a settings document: expected '") + cDocumentFormat +
                         "'.");
    const CheckedJson version = Member(document, "version", "says how to read it");
    if (!version.Raw().is_number_integer() || version.Raw().get<std::int64_t>() < 1)
        throw version.Bad("expected a whole number from 1.");
    if (version.Raw() != cDocumentVersion)
        throw document.Bad("version " + version.Raw().dump() +
                           " is not supported; the newest supported version is " +
                           std::to_string(cDocumentVersion) + ".");
    return Member(document, "scope", "says what it covers");
}

Scope ReadScope(const CheckedJson& scope) {
    for (const Scope known : {Scope::eUser, Scope::eAll})
        if (scope.Raw() == ScopeName(known))
            return known;
    if (scope.Raw() == cProfile)
        throw scope.Bad("this document has one profile.",
                        "Load it with 'kora4ctl load FILE --into P'.");
    throw scope.Bad("expected 'user' or 'all'.");
}

class Reader {
  public:
    Reader(const Json& document, Completeness completeness)
        : m_document(document), m_completeness(completeness) {}

    Plan Read() {
        m_plan.scope = ReadScope(ReadHead(m_document));
        m_document.CheckMembers({},
                                {"format", "version", "scope", cGeneral, cProfiles, cGlobal});
        ReadSection(cGeneral, m_document.Section(cGeneral), {});
        const CheckedJson profiles = m_document.Section(cProfiles);
        std::vector<std::string> names;
        for (const std::uint32_t profile : ProfilesOf(m_plan.scope))
            names.push_back(ProfileName(profile));
        profiles.CheckMembers({}, names);
        for (const std::uint32_t profile : ProfilesOf(m_plan.scope))
            ReadSection(cProfiles, profiles.Section(ProfileName(profile)), profile);
        ReadSection(cGlobal, m_document.Section(cGlobal), {});
        return std::move(m_plan);
    }

    Plan ReadProfile(std::uint32_t into) {
        const CheckedJson scope = ReadHead(m_document);
        if (scope.Raw() != cProfile)
            throw scope.Bad("only a document of one profile can be loaded into another.",
                            "Make one: kora4ctl dump --profile P FILE");
        m_document.CheckMembers({cProfile}, {"format", "version", "scope", cName});
        ReadSection(cProfiles, m_document.Section(cProfile), into);
        std::erase_if(m_plan.values, [](const PlannedValue& planned) {
            return planned.value.role == Role::eName;
        });
        if (IsCustomProfile(into) && m_document.Has(cName)) {
            const CheckedJson name = m_document[cName];
            m_plan.values.push_back(
                {NameValue(into), Encoded(NameValue(into), name.Text(), name)});
        }
        return std::move(m_plan);
    }

  private:
    void ReadSection(const char* section, const CheckedJson& json,
                     std::optional<std::uint32_t> profile) {
        std::vector<const Setting*> settings = SettingsOf(section, m_plan.scope);
        if (profile)
            std::erase_if(settings, [&](const Setting* s) { return !Has(*s, *profile); });
        std::vector<std::string> names;
        for (const Setting* const setting : settings)
            names.push_back(setting->name);
        CheckScope(section, json, names);
        json.CheckMembers({}, names);
        for (const Setting* const setting : settings) {
            const SchemaValue value = setting->Stored(profile.value_or(0));
            if (json.Has(setting->name))
                m_plan.values.push_back({value, StoredFromJson(*setting, json[setting->name])});
            else if (m_completeness == Completeness::eExact)
                m_plan.values.push_back({value, {}});
        }
    }

    // A better word for what only documents of scope all may have.
    void CheckScope(const char* section, const CheckedJson& json,
                    const std::vector<std::string>& names) const {
        if (m_plan.scope == Scope::eAll)
            return;
        for (const Setting* const setting : SettingsOf(section, Scope::eAll)) {
            const bool isCovered =
                std::find(names.begin(), names.end(), setting->name) != names.end();
            if (!isCovered && !setting->perProfile && json.Has(setting->name))
                throw json[setting->name].Bad(
                    "documents of scope 'user' do not cover this setting.",
                    "Change the scope to 'all'; it covers all settings.");
        }
    }

    const CheckedJson m_document;
    Completeness m_completeness;
    Plan m_plan;
};

// ---- Writing ------------------------------------------------------------------------------

bool IsInDemo(StoreAccess& store) {
    return IsDemoProfile(
        store.Number(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), cMovieProfile));
}

// What is stored; in a demo, of the profile and the enable, what the demo returns to. Absent or
// unreadable ones are taken as leaving the demo takes them.
std::optional<StoredValue> ReadLasting(const SchemaValue& value, StoreAccess& store) {
    const bool isProfile = value.role == Role::eActiveProfile;
    const bool isEnable = value.key == pkey::Setting(pkey::cMasterEnablePid);
    if ((!isProfile && !isEnable) || !IsInDemo(store))
        return store.Read(value.keySet, value.key);
    const std::uint32_t saved =
        store.Number(eKeySetStatic,
                     pkey::Setting(isProfile ? pkey::cSavedProfilePid : pkey::cSavedEnablePid),
                     isProfile ? cMovieProfile : 1);
    if (isProfile)
        return StoredValue::FromDword(IsSelectableProfile(saved) ? saved : cMovieProfile);
    return StoredValue::FromDword(saved != 0);
}

Json DumpSection(StoreAccess& store, const std::vector<const Setting*>& settings,
                 std::uint32_t profile, InDemo inDemo) {
    Json section = Json::object();
    for (const Setting* const setting : settings) {
        if (setting->perProfile && !Has(*setting, profile))
            continue;
        const SchemaValue value = setting->Stored(profile);
        const std::optional<StoredValue> stored = inDemo == InDemo::eReturn
                                                      ? ReadLasting(value, store)
                                                      : store.Read(value.keySet, value.key);
        if (stored)
            section[setting->name] = StoredToJson(*setting, *stored);
    }
    return section;
}

// A value that is not a setting has the form of its kind.
Json ToDocument(const SchemaValue& value, const std::optional<StoredValue>& stored) {
    if (!stored)
        return nullptr;
    if (const Setting* const setting = SettingOf(value))
        return StoredToJson(*setting, *stored);
    return StoredToJson({{.kind = value.kind}}, *stored);
}

std::string Shown(const SchemaValue& value, const std::optional<StoredValue>& stored) {
    const Json json = ToDocument(value, stored);
    if (json.is_null())
        return "unset";
    return json.is_object() ? Describe(*stored) : json.dump();
}

// ---- Bands ------------------------------------------------------------------------------

constexpr Technology cGraphicEq = Preset(eStandardEQTech);

bool IsGains(const SchemaValue& value) {
    return value.role == Role::eField && value.technology == cGraphicEq &&
           value.key.pid == pkey::cStandardEQGainPid;
}

// The elements in effect; none when they cannot be told.
std::vector<float> NumbersOf(const SchemaValue& value,
                             const std::optional<StoredValue>& stored) {
    std::optional<Value> content = stored ? Decode(value, *stored) : std::nullopt;
    if (!content)
        content = BuiltIn(value);
    return std::get<std::vector<float>>(*content);
}

std::vector<float> FrequenciesThatStay(const Plan& plan, const SchemaValue& gains,
                                       StoreAccess& store) {
    const SchemaValue value = FieldValue(cGraphicEq, *gains.profile, pkey::cStandardEQFreqPid);
    const std::optional<StoredValue> before = store.Read(value.keySet, value.key);
    std::optional<StoredValue> after = before;
    for (const PlannedValue& planned : plan.values)
        if (planned.value.key == value.key)
            after = planned.wanted;
    std::vector<float> frequencies = NumbersOf(value, after);
    return frequencies == NumbersOf(value, before) ? frequencies : std::vector<float>();
}

// Empty when no band tells the difference.
std::string BandLines(const Difference& difference) {
    const std::vector<float>& frequencies = difference.frequencies;
    if (frequencies.empty())
        return {};
    std::vector<float> before = NumbersOf(difference.value, difference.stored);
    std::vector<float> after = NumbersOf(difference.value, difference.wanted);
    before.resize(frequencies.size());
    after.resize(frequencies.size());
    const std::string place = ProfileName(*difference.value.profile) + ": " +
                              WordOf(difference.value.technology).word + " ";
    std::string lines;
    for (std::size_t i = 0; i < frequencies.size(); ++i)
        if (before[i] != after[i])
            lines += (lines.empty() ? "" : "\n") + place + Decimal(frequencies[i]) +
                     " Hz: " + Decimal(before[i]) + " -> " + Decimal(after[i]) + " dB";
    return lines;
}

}  // namespace

Json StoredToJson(const Setting& setting, const StoredValue& stored) {
    if (stored.unread)
        return {{"type", stored.type}, {"unread", stored.unread}};
    // Bytes have no form but their own.
    const std::optional<Value> content =
        setting.kind == Kind::eBlob ? std::nullopt : Decode(setting, stored);
    if (content) {
        Json json = ToJson(setting, *content);
        if (IsExact(setting, json, stored))
            return json;
        if (setting.IsSwitch())
            return *stored.AsDword();
    }
    if (const std::optional<std::u16string> text = stored.AsText()) {
        Json json = {{"text", ToUtf8(*text)}};
        if (IsExact(setting, json, stored))
            return json;
    }
    return {{"type", stored.type}, {"data", ToHex(stored.bytes)}};
}

StoredValue StoredFromJson(const Setting& setting, const CheckedJson& json) {
    return json.Raw().is_object() ? ReadRaw(json)
                                  : Encoded(setting, ReadContent(setting, json), json);
}

Json Dump(StoreAccess& store, Scope scope, InDemo inDemo) {
    Json document = {{"format", cDocumentFormat},
                     {"version", cDocumentVersion},
                     {"scope", ScopeName(scope)}};
    document[cGeneral] = DumpSection(store, SettingsOf(cGeneral, scope), 0, inDemo);
    const std::vector<const Setting*> ofProfiles = SettingsOf(cProfiles, scope);
    Json& profiles = document[cProfiles] = Json::object();
    for (const std::uint32_t profile : ProfilesOf(scope)) {
        Json section = DumpSection(store, ofProfiles, profile, inDemo);
        if (!section.empty())
            profiles[ProfileName(profile)] = std::move(section);
    }
    if (scope == Scope::eAll)
        document[cGlobal] = DumpSection(store, SettingsOf(cGlobal, scope), 0, inDemo);
    return document;
}

Json DumpProfile(StoreAccess& store, std::uint32_t profile) {
    Json document = {
        {"format", cDocumentFormat}, {"version", cDocumentVersion}, {"scope", cProfile}};
    if (IsCustomProfile(profile))
        if (const std::optional<Value> name = Effective(NameValue(profile), store))
            document[cName] = std::get<std::string>(*name);
    Json& values = document[cProfile] = Json::object();
    for (const Setting* const setting : SettingsOf(cProfiles, Scope::eAll)) {
        const SchemaValue value = setting->Stored(profile);
        const std::optional<StoredValue> standIn = value.Default();
        if (!standIn)
            continue;
        const std::optional<StoredValue> stored = store.Read(value.keySet, value.key);
        values[setting->name] =
            StoredToJson(*setting, stored && Decode(value, *stored) ? *stored : *standIn);
    }
    return document;
}

Plan ReadProfileDocument(std::string_view text, std::uint32_t into, Completeness completeness,
                         const std::function<void()>& poll) {
    return CheckProfileDocument(ParseStrictJson(text, poll), into, completeness);
}

Plan CheckProfileDocument(const Json& document, std::uint32_t into, Completeness completeness) {
    return Reader(document, completeness).ReadProfile(into);
}

Plan ReadDocument(std::string_view text, Completeness completeness,
                  const std::function<void()>& poll) {
    return CheckDocument(ParseStrictJson(text, poll), completeness);
}

Plan CheckDocument(const Json& document, Completeness completeness) {
    return Reader(document, completeness).Read();
}

std::string Difference::Line() const {
    std::string bands = BandLines(*this);
    if (!bands.empty())
        return bands;
    return PlaceOf(value) + ": " + Shown(value, stored) + " -> " + Shown(value, wanted);
}

Json Difference::Document() const {
    return {{"name", NameOf(value)},
            {"profile", OrNull(value.profile ? ProfileName(*value.profile) : std::string())},
            {"stored", ToDocument(value, stored)},
            {"wanted", ToDocument(value, wanted)}};
}

std::vector<Difference> Compare(const Plan& plan, StoreAccess& store) {
    std::vector<Difference> differences;
    for (const PlannedValue& planned : plan.values) {
        if (planned.wanted && planned.wanted->unread)
            continue;
        std::optional<StoredValue> stored = store.Read(planned.value.keySet, planned.value.key);
        if (stored == planned.wanted)
            continue;
        differences.push_back({planned.value, std::move(stored), planned.wanted});
        if (IsGains(planned.value))
            differences.back().frequencies = FrequenciesThatStay(plan, planned.value, store);
    }
    return differences;
}

}  // namespace kora4::tools
