// SPDX-License-Identifier: MIT
// Builds the table of settings from the schema and from what it does not say: names, aliases,
// methods of the interface.
#include "settings/settings_table.h"

#include <algorithm>

#include "base/failure.h"
#include "base/nearest.h"
#include "base/text.h"
#include "contract/field_def.h"
#include "contract/field_ids.h"
#include "contract/general_settings.h"
#include "contract/patch_limits.h"
#include "contract/profiles.h"

namespace kora4::tools {
namespace {

// ---- What the tables of the store do not say ----------------------------------------------

struct MethodNames {
    ApiMethods methods;
    const char* reader;
    const char* writer;
    std::string_view setting = {};  // the general setting that they serve
};

constexpr MethodNames cMethodNames[] = {
    {ApiMethods::eNone, "", ""},
    {ApiMethods::eActiveProfile, "GetActiveProfile", "SetActiveProfile", "profile"},
    {ApiMethods::eEnable, "GetVeltoEnable", "SetVeltoEnable", "enable"},
    {ApiMethods::eSamplingPeriod, "GetVisualizationSamplingPeriod",
     "SetVisualizationSamplingPeriod", "sampling-period"},
    {ApiMethods::eEngineMask, "GetTechnologyMasterEnables", "", "engine-mask"},
    {ApiMethods::eEditorCommand, "GetVeltoProfileEditorCommand", "", "profile-editor-command"},
    {ApiMethods::eSelectorCommand, "GetVeltoProfileSelectorCommand", "",
     "profile-selector-command"},
    {ApiMethods::eDemoCommand, "GetVeltoDemoAppCommand", "", "demo-app-command"},
    {ApiMethods::eVersion, "GetVeltoKORA4Version", ""},
    {ApiMethods::eProfileName, "GetProfileTable", "SetCustomProfileName"},
    {ApiMethods::eSwitch, "GetTechnologyOnElseOff", "SetTechnologyOnElseOff"},
    {ApiMethods::ePatchValue, "GetSimplePatchValue", "SetSimplePatchValue"},
    {ApiMethods::eFrequencies, "GetGraphicEQData", "SetGraphicEQData"},
    {ApiMethods::eGains, "GetGraphicEQData", "SetGraphicEQData"},
    {ApiMethods::eBands, "GetGraphicEQData", ""},
};

constexpr const MethodNames& NamesOf(ApiMethods methods) {
    return cMethodNames[static_cast<std::size_t>(methods)];
}

static_assert(std::ranges::is_sorted(cMethodNames, {}, &MethodNames::methods) &&
              std::size(cMethodNames) == static_cast<std::size_t>(ApiMethods::eBands) + 1);

void SetMethods(Setting& setting, ApiMethods methods) {
    setting.methods = methods;
    setting.access = methods == ApiMethods::eNone    ? Access::eStoreOnly
                     : *NamesOf(methods).writer == 0 ? Access::eReadOnly
                                                     : Access::eReadWrite;
}

// A field that has a name of its own; the others are called by their property ids.
struct FieldName {
    const char* technology;
    std::uint32_t pid;
    const char* suffix;  // empty: the technology's value itself
    const char* summary;
    const char* unit;
    std::optional<double> lowest;
    std::optional<double> highest;
    ApiMethods methods;
};

// The one value of a technology of the API.
constexpr FieldName Simple(const char* technology, std::uint32_t pid, const char* summary,
                           double lowest, double highest) {
    return {technology, pid, "", summary, "", lowest, highest, ApiMethods::ePatchValue};
}

constexpr FieldName StoreOnly(const char* technology, std::uint32_t pid, const char* suffix,
                              const char* summary, const char* unit = "") {
    return {technology, pid, suffix, summary, unit, {}, {}, ApiMethods::eNone};
}

constexpr FieldName cFieldNames[] = {
    Simple("volume-leveler", pkey::cVolumeAmountPid, "volume leveler amount", 0,
           cVeltoVolumeLevelerAmountMax),
    {"graphic-eq", pkey::cStandardEQFreqPid, ".frequencies",
     "frequencies of the graphic equalizer's bands", "Hz", std::nullopt, std::nullopt,
     ApiMethods::eFrequencies},
    {"graphic-eq", pkey::cStandardEQGainPid, ".gains", "gains of the graphic equalizer's bands",
     "dB", cGraphicEQGainMin, cGraphicEQGainMax, ApiMethods::eGains},
    Simple("intelligent-eq", pkey::cDynamicEQCurvePid, "curve of the intelligent equalizer", 0,
           eNumberIEQPatches - 1),
    StoreOnly("intelligent-eq", pkey::cDynamicEQLevelPid, ".level",
              "how much of the curve is applied"),
    StoreOnly("intelligent-eq", pkey::cDynamicEQFreqPid, ".frequencies",
              "frequencies of the curve's bands", "Hz"),
    Simple("dialog-enhancer", pkey::cEnhancementAmountPid, "dialog enhancer amount",
           cDialogEnhancerAmountMin, cDialogEnhancerAmountMax),
    Simple("headphone-virtualizer", pkey::cHeadphoneSurroundBoostPid,
           "headphone virtualizer boost", cSurroundCompBoostMin, cSurroundCompBoostMax),
    Simple("speaker-virtualizer", pkey::cVirtualSurroundBoostPid, "speaker virtualizer boost",
           cSurroundCompBoostMin, cSurroundCompBoostMax),
    StoreOnly("audio-regulator", pkey::cRegulatorFreqPid, ".frequencies",
              "frequencies of the regulator's bands", "Hz"),
    StoreOnly("audio-regulator", pkey::cRegulatorThresholdPid, ".thresholds-1",
              "first thresholds of the regulator", "dB"),
    StoreOnly("audio-regulator", pkey::cRegulatorThresholdPid + 1, ".thresholds-2",
              "second thresholds of the regulator", "dB"),
    StoreOnly("audio-regulator", pkey::cRegulatorIsolatePid, ".isolated",
              "which of the regulator's bands are isolated"),
    StoreOnly("audio-optimizer", pkey::cOptimizerFreqPid, ".frequencies",
              "frequencies of the optimizer's bands", "Hz"),
};

struct Alias {
    const char* alias;
    const char* name;
};

constexpr Alias cAliases[] = {
    {"active-profile", "profile"},
    {"master-enable", "enable"},
    {"period", "sampling-period"},
    {"mask", "engine-mask"},
    {"trace", "trace-flags"},
    {"volume", "volume-leveler"},
    {"leveler", "volume-leveler"},
    {"dialog", "dialog-enhancer"},
    {"dialogue-enhancer", "dialog-enhancer"},
    {"geq", "graphic-eq"},
    {"equalizer", "graphic-eq"},
    {"ieq", "intelligent-eq"},
    {"headphone", "headphone-virtualizer"},
    {"headphones", "headphone-virtualizer"},
    {"speaker", "speaker-virtualizer"},
    {"speakers", "speaker-virtualizer"},
    {"surround", "speaker-virtualizer"},
};

// ---- The rows ---------------------------------------------------------------------------

Setting RowOf(const SchemaValue& value, std::string name, std::string summary,
              ApiMethods methods = ApiMethods::eNone) {
    Setting setting{value};
    setting.perProfile = value.profile.has_value();
    setting.name = std::move(name);
    setting.summary = std::move(summary);
    SetMethods(setting, methods);
    return setting;
}

Setting GeneralRow(const contract::GeneralSetting& general) {
    Setting setting = RowOf(SettingValue(general.key), general.name, general.meaning);
    for (const MethodNames& names : cMethodNames)
        if (setting.name == names.setting)
            SetMethods(setting, names.methods);
    if (setting.role == Role::eActiveProfile) {
        for (const ProfileWord& profile : Profiles())
            setting.words.push_back({profile.word, profile.number});
        setting.lowest = cMovieProfile;
        setting.highest = cSelectableProfileBound - 1;
    }
    if (setting.name == "sampling-period")
        setting.unit = "ms";
    setting.isCarried = std::string_view(general.writtenBy) == contract::detail::cNobody;
    return setting;
}

Setting VersionRow() {
    Setting setting = RowOf({}, "version", "the version of the library's settings model",
                            ApiMethods::eVersion);
    setting.kind = Kind::eText;
    setting.isStored = false;
    return setting;
}

// Both arrays in one: what `eq` shows and changes.
Setting GraphicRow(const TechnologyWord& technology) {
    Setting setting =
        RowOf({}, technology.word, "the bands of the graphic equalizer; change them with 'eq'",
              ApiMethods::eBands);
    setting.kind = Kind::eNumericArray;
    setting.unit = "dB";
    setting.perProfile = true;
    setting.isStored = false;
    setting.technology = technology.technology;
    return setting;
}

Setting NameRow() {
    return RowOf(NameValue(cFirstCustomProfile), "name",
                 "the name of a custom profile; without one the profile does not exist",
                 ApiMethods::eProfileName);
}

Setting SwitchRow(const TechnologyWord& technology) {
    return RowOf(SwitchValue(technology.technology, cMovieProfile),
                 std::string(technology.word) + ".on",
                 std::string("switches the ") + technology.title,
                 technology.apiNumber ? ApiMethods::eSwitch : ApiMethods::eNone);
}

Setting FieldRow(const TechnologyWord& technology, const SchemaValue& value) {
    const std::string id = std::to_string(value.key.pid);
    const std::string channel = std::to_string(value.Array() + 1);
    if (value.technology == Global(eAudioOptimizerTech) &&
        value.field->pid == pkey::cOptimizerGainPid) {
        Setting setting = RowOf(value, technology.word + (".gains-" + channel),
                                "gains of the optimizer's channel " + channel);
        setting.unit = "dB";
        return setting;
    }
    const std::string word = technology.word;
    for (const FieldName& name : cFieldNames) {
        if (word != name.technology || value.key.pid != name.pid)
            continue;
        Setting setting = RowOf(value, word + name.suffix, name.summary, name.methods);
        setting.unit = name.unit;
        setting.lowest = name.lowest;
        setting.highest = name.highest;
        for (std::uint32_t i = 0; value.kind == Kind::eCurveIndex && i < CurveNames().size();
             ++i)
            setting.words.push_back({CurveNames()[i], i});
        return setting;
    }
    Setting setting =
        RowOf(value, word + ".field-" + id,
              "field " + id + " of the " + technology.title + ", carried for the engine");
    setting.isCarried = true;
    return setting;
}

// One row for each field, whatever profile the walk begins with.
void AddTechnologyRows(std::vector<Setting>& rows, const TechnologyWord& technology) {
    rows.push_back(SwitchRow(technology));
    std::vector<Setting> fields;
    for (const SchemaValue& value : FieldValues(technology.technology, cMovieProfile))
        fields.push_back(FieldRow(technology, value));
    const auto further = std::ranges::stable_partition(
        fields, [&](const Setting& field) { return field.name == technology.word; });
    if (technology.apiNumber && further.size() == fields.size())
        rows.push_back(GraphicRow(technology));
    std::ranges::move(fields, std::back_inserter(rows));
}

std::vector<Setting> MakeTable() {
    std::vector<Setting> rows;
    const auto addGeneral = [&rows](contract::SettingRole role) {
        for (const contract::GeneralSetting& general : contract::cGeneralSettings)
            if (general.role == role)
                rows.push_back(GeneralRow(general));
    };
    addGeneral(contract::SettingRole::eUser);
    // What users ask for most comes first.
    std::stable_partition(rows.begin(), rows.end(), [](const Setting& setting) {
        return setting.role == Role::eActiveProfile;
    });
    rows.push_back(NameRow());
    for (const TechnologyWord& technology : AllTechnologies())
        AddTechnologyRows(rows, technology);
    rows.push_back(VersionRow());
    addGeneral(contract::SettingRole::eMachine);
    return rows;
}

}  // namespace

SchemaValue Setting::Stored(std::uint32_t number) const {
    if (!isStored)
        throw Failure(ExitCode::eFailed, "'" + name + "' is not a single stored value.");
    return InProfile(number);
}

bool Setting::TakesRelative() const {
    if (IsArray() || role == Role::eActiveProfile)
        return false;
    return (lowest && *lowest >= 0 && highest) || unit == "ms";
}

const char* ReaderName(ApiMethods methods) {
    return NamesOf(methods).reader;
}

const char* WriterName(ApiMethods methods) {
    return NamesOf(methods).writer;
}

const std::vector<Setting>& SettingsTable() {
    static const std::vector<Setting> table = MakeTable();
    return table;
}

const Setting* FindSetting(std::string_view name) {
    std::string wanted = Lower(name);
    const std::string switchSuffix = ".switch";
    if (wanted.ends_with(switchSuffix))
        wanted.replace(wanted.size() - switchSuffix.size(), switchSuffix.size(), ".on");
    const std::size_t dot = wanted.find('.');
    const std::string head = wanted.substr(0, dot);
    std::string full = head;
    for (const Alias& alias : cAliases)
        if (head == alias.alias)
            full = alias.name;
    if (const TechnologyWord* const technology = FindTechnology(head))
        full = technology->word;
    if (dot != std::string::npos)
        full += wanted.substr(dot);
    for (const Setting& setting : SettingsTable())
        if (setting.name == full)
            return &setting;
    return nullptr;
}

const Setting& SettingNamed(std::string_view name) {
    if (const Setting* const setting = FindSetting(name))
        return *setting;
    if (const Setting* const setting = FindSetting(std::string(name) + ".on"))
        return *setting;
    throw Failure(ExitCode::eBadInput, "Unknown setting '" + std::string(name) + "'.",
                  Suggestion(name, SettingNames()));
}

const Setting* SwitchOf(const Setting& setting) {
    if (setting.IsSwitch())
        return &setting;
    if (setting.technology.family == Family::eNone)
        return nullptr;
    const std::string word = WordOf(setting.technology).word;
    return setting.name == word ? FindSetting(word + ".on") : nullptr;
}

const Setting* SettingOf(const SchemaValue& value) {
    for (const Setting& setting : SettingsTable()) {
        if (!setting.isStored || setting.role != value.role)
            continue;
        const bool isOne = setting.role == Role::eName || setting.role == Role::eSwitch;
        if (setting.technology == value.technology &&
            (isOne || setting.key.pid == value.key.pid))
            return &setting;
    }
    return nullptr;
}

std::string NameOf(const SchemaValue& value) {
    if (const Setting* const setting = SettingOf(value))
        return setting->name;
    if (value.role == Role::eTrigger)
        return std::string(WordOf(value.technology).word) + " trigger";
    const contract::GeneralSetting* const general = contract::FindGeneralSetting(value.key);
    return general ? general->name : value.Name();
}

std::string PlaceOf(const SchemaValue& value) {
    return (value.profile ? ProfileName(*value.profile) + ": " : std::string()) + NameOf(value);
}

std::vector<std::string> SettingNames() {
    std::vector<std::string> names;
    for (const Setting& setting : SettingsTable())
        names.push_back(setting.name);
    return names;
}

std::vector<std::string> CompletionWords(const Setting& setting) {
    if (setting.IsSwitch())
        return {"on", "off"};
    std::vector<std::string> words;
    for (const ValueWord& word : setting.words)
        if (!setting.highest || word.number <= *setting.highest)
            words.push_back(word.word);
    return words;
}

}  // namespace kora4::tools
