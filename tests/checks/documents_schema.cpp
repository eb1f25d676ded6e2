// SPDX-License-Identifier: MIT
// docs/store-schema.md: keys, names, settings, profiles, technologies and fields.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "checks/documents_schema_texts.h"
#include "checks/documents_sources.h"
#include "checks/documents_store_use.h"
#include "contract/codec/array_text.h"
#include "contract/field_tables.h"
#include "contract/general_settings.h"
#include "contract/messages/log_texts.h"
#include "contract/messages/trace_categories.h"
#include "contract/registry_paths.h"
#include "contract/store_mutex.h"
#include "contract/trace_flags.h"
#include "store/clients/ui_keys_client.h"
#include "support/memory_key_access.h"

namespace kora4::test {

namespace {

constexpr char cTechnologies[] = "src/contract/technologies.h";

std::string PathText(const wchar_t* pPath) {
    std::string text;
    for (; *pPath; ++pPath)
        text += static_cast<char>(*pPath);
    return text;
}

std::string NameOfKeySet(std::uint32_t keySet) {
    return keySet == eKeySetStatic    ? "static"
           : keySet == eKeySetDynamic ? "dynamic"
           : keySet == eKeySetApp     ? "app"
                                      : "key set " + Text(keySet);
}

std::vector<Row> KeySets(const Document&) {
    const std::map<std::string, std::string> paths = {
        {"static", PathText(cStaticKeysPath)},
        {"dynamic", PathText(cDynamicKeysPath)},
        {"app", PathText(cAppKeysPath)},
    };
    std::vector<Row> rows;
    for (const auto& [name, number] :
         EnumeratorsOf("src/contract/property_key.h", "KORA4KeySet")) {
        if (number == eKeySetPropertyStore)
            continue;  // not in the registry
        const std::string keySet = NameOfKeySet(number);
        rows.push_back({keySet, Text(number), paths.contains(keySet) ? paths.at(keySet) : "?"});
    }
    return rows;
}

// --- families and value names -----------------------------------------------------------

std::string ValueName(const PropertyKey& key) {
    char16_t name[cValueNameCapacity];
    return Narrow(std::u16string(name, FormatValueName(key, name)));
}

// The key of a family as the library builds it. Technologies of the other family of
// technologies, and profiles where there are none, do not matter.
PropertyKey KeyOf(const std::string& family, std::uint32_t technology, std::uint32_t profile,
                  std::uint32_t pid) {
    const auto preset = static_cast<KORA4PresetTechnology>(technology);
    const auto global = static_cast<KORA4GlobalTechnology>(technology);
    if (family == "settings")
        return pkey::Setting(pid);
    if (family == "engine mask")
        return {pkey::cMasterEnablesGuid, pkey::cMasterEnablesPid};
    if (family == "switches" || family == "fields")
        return pkey::PresetPatch(preset, profile,
                                 family == "switches" ? pkey::cSwitchPid : pid);
    if (family == "triggers")
        return PresetTriggerKey(preset);
    if (family == "global switches" || family == "global fields")
        return GlobalPatchKey(global, family == "global switches" ? pkey::cSwitchPid : pid);
    if (family == "global triggers")
        return GlobalTriggerKey(global);
    return family == "names" ? pkey::ProfileName(profile) : PropertyKey{};
}

// "offset" when another technology gives other bits, "fixed" when none does.
const char* BitsOf(const std::string& family, std::uint32_t mask, const char* name) {
    const std::uint32_t base = KeyOf(family, eVolumeTech, 0, 1).fmtid.data1;
    for (const std::uint32_t technology : {1u, 2u, 3u})
        for (const std::uint32_t profile : {cMovieProfile, 5u, cDemoGamesProfile})
            if ((KeyOf(family, technology, profile, 1).fmtid.data1 & mask) != (base & mask))
                return name;
    return "fixed";
}

std::string Only(const std::set<std::string>& texts) {
    return texts.size() == 1 ? *texts.begin() : "several";
}

std::vector<Row> Families(const Document&) {
    std::vector<Row> rows;
    std::map<std::string, std::vector<const Access*>> seen;
    for (const Access& access : EveryAccess())
        seen[access.family].push_back(&access);
    for (const auto& [name, accesses] : seen) {
        const auto family = std::ranges::find(
            cFamilies, name, [](const Family& f) { return std::string(f.name); });
        if (family == cFamilies.end()) {
            rows.push_back({name, "of no family", "", "", "", "", ""});
            continue;
        }
        std::set<std::string> keySets, types;
        for (const Access* pAccess : accesses) {
            keySets.insert(NameOfKeySet(pAccess->keySet));
            if (!pAccess->type.empty())
                types.insert(pAccess->type);
        }
        const char* const own = name == "settings"                      ? "of the setting"
                                : family->pids == Family::Pids::eOthers ? "of the field"
                                                                        : nullptr;
        rows.push_back({name, ValueName({family->base, 0}).substr(1, 36),
                        BitsOf(name, 0xFF, "offset"), BitsOf(name, 0xFF00, "profile"),
                        own ? own : "0", name == "settings" ? own : Only(keySets),
                        own ? own : Only(types)});
    }
    return rows;
}

std::uint32_t TechnologyOf(const std::string& name) {
    for (const char* pEnum : {"KORA4PresetTechnology", "KORA4GlobalTechnology"})
        for (const NamedNumber& technology : EnumeratorsOf(cTechnologies, pEnum))
            if (technology.name == name)
                return technology.number;
    return 0;
}

std::uint32_t NumberIn(const std::string& cell) {
    return cell.empty() ? 0 : static_cast<std::uint32_t>(std::stoul(cell));
}

std::vector<Row> ValueNames(const Document& document) {
    std::vector<Row> rows = RowsOf(document, "value names");
    for (Row& row : rows)
        row[4] =
            ValueName(KeyOf(row[0], TechnologyOf(row[1]), NumberIn(row[2]), NumberIn(row[3])));
    return rows;
}

// --- settings -----------------------------------------------------------------------------

class OpenClient : public KORA4UIKeysClient {
  public:
    using KORA4UIKeysClient::KORA4UIKeysClient;
    const StoreSettings& Settings() const { return m_settings; }
    const Baseline& Known() const { return m_baseline; }
};

// What leaving a demo restores under `pid`.
std::uint32_t Restored(OpenClient& client, MemoryKeyAccess& store, std::uint32_t pid) {
    store.Put(eKeySetDynamic, pkey::Setting(pkey::cActivePresetPid), cDemoMovieProfile);
    store.Put(eKeySetDynamic, pkey::Setting(pkey::cMasterEnablePid), 0u);
    client.ForceRevertFromDemoMode();
    return store.NumberAt(eKeySetDynamic, pkey::Setting(pid)).value_or(cNoProfile);
}

// What the library takes a setting for, given what the store holds.
std::uint32_t Observed(std::uint32_t pid, OpenClient& client, MemoryKeyAccess& store) {
    std::uint32_t period = 0;
    switch (pid) {
        case pkey::cMasterEnablePid:
            return client.Known().enable;
        case pkey::cActivePresetPid:
            return client.Known().profile;
        case pkey::cSamplingPeriodPid:
            client.GetSamplingPeriod(&period);
            return period;
        case pkey::cProfileTableCounterPid:
            return client.Known().tableCounter;
        case pkey::cDynamicSwitchPid:
            return client.Settings().dynamicSwitch;
        case pkey::cSavedEnablePid:
            return Restored(client, store, pkey::cMasterEnablePid);
        case pkey::cSavedProfilePid:
            return Restored(client, store, pkey::cActivePresetPid);
        default:
            break;
    }
    const auto* const pRow = std::ranges::find(cStaticSettings, pid, &StaticSetting::pid);
    if (pRow == std::end(cStaticSettings)) {
        ADD_FAILURE() << "a setting that nobody knows: " << pid;
        return cNoProfile;
    }
    return client.Settings().staticSettings[pRow - std::begin(cStaticSettings)];
}

// With 7 stored a switch is 1 and a number is 7; without a value both are their default.
Row DescribeNumber(std::uint32_t pid, KORA4KeySet keySet) {
    if (pid == pkey::cTraceFlagsPid)
        return {Text(pid), NameOfKeySet(keySet), "number", Text(trace::cDefaultFlags)};
    std::uint32_t observed[2];
    for (const bool stored : {false, true}) {
        MemoryKeyAccess store;
        if (stored)
            store.Put(keySet, pkey::Setting(pid), 7u);
        OpenClient client(&store);
        client.ObjInitialize();
        client.InitialKeysLoad();
        observed[stored] = Observed(pid, client, store);
    }
    return {Text(pid), NameOfKeySet(keySet),
            observed[1] == 7   ? "number"
            : observed[1] == 1 ? "switch"
                               : "?",
            Text(observed[0])};
}

// What is seen of the settings while the library runs.
std::vector<Row> ObservedSettings() {
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::string> seen;
    for (const Access& access : EveryAccess())
        if (access.family == "settings")
            seen[{access.pid, access.keySet}] = access.type;
    std::vector<Row> rows;
    for (const auto& [address, type] : seen) {
        const auto [pid, number] = address;
        if (type == "DWORD")
            rows.push_back(DescribeNumber(pid, static_cast<KORA4KeySet>(number)));
        else
            rows.push_back({Text(pid), NameOfKeySet(number), type, "none"});
    }
    std::ranges::sort(rows);
    return rows;
}

// The published ones, in the columns that can be observed.
std::vector<Row> PublishedSettings() {
    std::vector<Row> rows;
    for (const contract::GeneralSetting& setting : contract::cGeneralSettings)
        if (setting.key.fmtid == pkey::cSettingsGuid)
            rows.push_back({Text(setting.key.pid), NameOfKeySet(setting.keySet),
                            NameOf(setting.kind),
                            setting.HasDefault() ? Text(setting.defaultNumber) : "none"});
    std::ranges::sort(rows);
    return rows;
}

std::vector<Row> Settings(const Document&) {
    static const std::vector<Row> observed = ObservedSettings();
    std::vector<Row> rows = PublishedSettings();
    EXPECT_EQ(observed, rows) << "the published settings are not those of the library";
    for (Row& row : rows) {
        const contract::GeneralSetting& setting =
            *contract::FindGeneralSetting(pkey::Setting(NumberIn(row[0])));
        row.insert(row.end(), {setting.meaning, setting.writtenBy, setting.readBy});
    }
    return rows;
}

// --- profiles and technologies ---------------------------------------------------------------

std::string ProfileName(std::uint32_t profile) {
    const std::string text =
        IsDemoProfile(profile) ? text::OfDemoProfile(profile) : text::OfProfile(profile).read;
    return text.substr(0, std::min({text.find('\t'), text.find(':'), text.find(" (")}));
}

bool FlagOf(std::uint32_t technology, std::uint32_t profile) {
    return KORA4ManagedPatchSet::GetDefaultOnElseOff(
        static_cast<KORA4PresetTechnology>(technology), profile);
}

// The preset profile whose switches these are, or "on" for all set.
std::string FlagsRow(std::uint32_t profile) {
    const auto isLike = [&](auto flagOf) {
        for (std::uint32_t t = eVolumeTech; t < eNumberKORA4PresetTechnologies; ++t)
            if (FlagOf(t, profile) != flagOf(t))
                return false;
        return true;
    };
    if (isLike([](std::uint32_t) { return true; }))
        return "on";
    for (std::uint32_t row = 0; row < cDefaultedProfileBound; ++row)
        if (isLike([&](std::uint32_t t) {
                return defaults::sm_presetOnElseOffDefaults[t][row] != 0;
            }))
            return ProfileName(row);
    return "?";
}

std::vector<Row> Profiles(const Document&) {
    std::vector<Row> rows;
    for (std::uint32_t profile = 0; profile < 1000; ++profile) {
        if (!IsAllowableProfile(profile))
            continue;
        const char* const kind = IsPresetProfile(profile)   ? "preset"
                                 : IsCustomProfile(profile) ? "custom"
                                 : IsDemoProfile(profile)   ? "demo"
                                                            : "?";
        rows.push_back({Text(profile), ProfileName(profile), kind,
                        ProfileName(KORA4ManagedPatchSet::DefaultsIndexForProfile(profile)),
                        FlagsRow(profile)});
    }
    return rows;
}

std::vector<Row> PresetTechnologies(const Document&) {
    std::vector<Row> rows;
    for (const auto& [name, t] : EnumeratorsOf(cTechnologies, "KORA4PresetTechnology")) {
        if (t == ePresetNoTech || t == eNumberKORA4PresetTechnologies)
            continue;
        Row row = {Text(t), name, Text(sm_presetTechGUIDOffset[t]),
                   Text(fields::cPresetRecords[t].numberFields)};
        for (const std::uint32_t profile :
             {cMovieProfile, cMusicProfile, cGamesProfile, cFirstCustomProfile})
            row.push_back(FlagOf(t, profile) ? "1" : "0");
        rows.push_back(row);
    }
    return rows;
}

std::vector<Row> GlobalTechnologies(const Document&) {
    std::vector<Row> rows;
    for (const auto& [name, t] : EnumeratorsOf(cTechnologies, "KORA4GlobalTechnology")) {
        if (t == eGlobalNoTech || t == eNumberKORA4GlobalTechnologies)
            continue;
        const auto technology = static_cast<KORA4GlobalTechnology>(t);
        rows.push_back({Text(t), name, Text(sm_globalTechGUIDOffset[t]),
                        Text(fields::cGlobalRecords[t].numberFields),
                        KORA4ManagedPatchSet::GetDefaultOnElseOff(technology) ? "1" : "0"});
    }
    return rows;
}

// --- fields
// -------------------------------------------------------------------------------------

// Visits every field: its technology, the number of its defaults rows, the field.
template <typename Visit>
void ForEachField(Visit&& visit) {
    const auto walk = [&](const char* pEnum, const auto& records, std::size_t rows) {
        for (const NamedNumber& technology : EnumeratorsOf(cTechnologies, pEnum)) {
            if (technology.number >= std::size(records))
                continue;
            const fields::RecordDef& record = records[technology.number];
            for (std::uint32_t i = 0; i < record.numberFields; ++i)
                visit(technology.name, rows, record.pFields[i]);
        }
    };
    walk("KORA4PresetTechnology", fields::cPresetRecords, cDefaultedProfileBound);
    walk("KORA4GlobalTechnology", fields::cGlobalRecords, 1);
}

std::string DefaultOf(const KORA4FieldDef& field, std::size_t row) {
    switch (field.typeCode) {
        case cUnsignedField:
        case cBooleanField:
            return Text(static_cast<const std::uint32_t*>(field.pDefaults)[row]);
        case cFloatField:
            return FloatText(static_cast<const float*>(field.pDefaults)[row]);
        case cSelectedArrayField:
            return Text(std::uint64_t{
                static_cast<const EnumFieldDef*>(field.pDefaults)->pEnumDefaults[row]});
        default:
            return "text";
    }
}

std::vector<Row> Fields(const Document&) {
    std::vector<Row> rows;
    ForEachField(
        [&](const std::string& technology, std::size_t numberRows, const KORA4FieldDef& field) {
            Row row = {technology, Text(field.pid),
                       std::string(1, static_cast<char>(field.typeCode)),
                       Text(field.m_numArrays), Text(field.scale)};
            for (std::size_t i = 0; i < cDefaultedProfileBound; ++i)
                row.push_back(i < numberRows ? DefaultOf(field, i) : "");
            rows.push_back(row);
        });
    return rows;
}

std::string WithVisibleTabs(const std::u16string& text) {
    std::string visible;
    for (const char c : Narrow(text))
        visible += c == '\t' ? std::string("\\t") : std::string(1, c);
    return visible;
}

// Equal neighbours of the same technology stand in one row, as in "5 to 12".
std::vector<Row> ArrayDefaults(const Document&) {
    std::vector<Row> rows;
    std::vector<std::uint32_t> pids;
    ForEachField(
        [&](const std::string& technology, std::size_t numberRows, const KORA4FieldDef& field) {
            if (field.typeCode != cFloatArraysField && field.typeCode != cFlagArrayField)
                return;
            const auto* const pRows = static_cast<const defaults::TextList*>(field.pDefaults);
            for (std::uint32_t i = 0; i < field.m_numArrays; ++i) {
                const std::u16string text = pRows[0][i];
                for (std::size_t row = 1; row < numberRows; ++row)
                    EXPECT_EQ(text, pRows[row][i]) << technology << " has texts for each row";
                const bool flags = field.typeCode == cFlagArrayField;
                const Row row = {technology, "", WithVisibleTabs(text),
                                 flags ? DecodedFlags(text) : DecodedArray(text, field.scale)};
                const std::uint32_t pid = field.pid + i;
                if (i == 0 || rows.back()[2] != row[2]) {
                    rows.push_back(row);
                    pids.clear();
                }
                pids.push_back(pid);
                rows.back()[1] = Numbers(pids);
            }
        });
    return rows;
}

std::vector<Row> Curves(const Document&) {
    std::vector<Row> rows;
    for (std::uint32_t i = 0; i < defaults::cDynamicEQCurve.enumLimit; ++i) {
        const std::u16string text = defaults::cDynamicEQCurve.pEnumValues[i];
        rows.push_back({Text(i),
                        text::Pick(text::cIntelligentEQNames, i, text::cBadTechnologyName),
                        WithVisibleTabs(text), DecodedArray(text, fields::cQ8)});
    }
    return rows;
}

// --- trace word and mutex
// -----------------------------------------------------------------------

// The lines of each enumerator; the field of two bits is no category.
std::string LinesOf(std::uint32_t bits) {
    if (bits == trace::eMasterSwitch)
        return "two bits; with the value below nothing is traced, with any other the bits "
               "above "
               "decide";
    if (bits == trace::eMasterSwitchOff)
        return "that value";
    const auto* const pCategory =
        std::ranges::find(contract::cTraceCategories, bits, &contract::TraceBits::bits);
    return pCategory != std::end(contract::cTraceCategories) ? pCategory->lines : "no category";
}

std::vector<Row> TraceBits(const Document&) {
    std::vector<Row> rows;
    for (const auto& [name, number] : EnumeratorsOf("src/contract/trace_flags.h", "Flag :")) {
        char text[16];
        std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(number));
        rows.push_back({text, name, LinesOf(number)});
    }
    EXPECT_EQ(std::size(contract::cTraceCategories) + 2, rows.size());
    return rows;
}

std::vector<Row> Mutex(const Document&) {
    return {{"mutex", Narrow(cStoreMutexName)}};
}

}  // namespace

const std::vector<Comparison> cSchemaComparisons = {
    {"key sets", 3, &KeySets},
    {"families", 7, &Families},
    {"value names", 5, &ValueNames, 4},
    {"settings", 7, &Settings},
    {"profiles", 5, &Profiles},
    {"preset technologies", 8, &PresetTechnologies},
    {"global technologies", 5, &GlobalTechnologies},
    {"fields", 8, &Fields},
    {"array defaults", 4, &ArrayDefaults},
    {"curves", 4, &Curves},
    {"written texts", 5, &WrittenTexts, 3},
    {"read texts", 3, &ReadTexts, 2},
    {"bounds", 2, &Bounds},
    {"blob head", 3, &BlobHead},
    {"blob record", 3, &BlobRecord},
    {"blob example values", 4, &BlobValues},
    {"display example", 3, &DisplayLevels},
    {"trace bits", 3, &TraceBits},
    {"mutex", 2, &Mutex},
};

}  // namespace kora4::test
