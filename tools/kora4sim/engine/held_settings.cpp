// SPDX-License-Identifier: MIT
// Loads settings and finds what was announced, as the store's contract asks of an engine:
// values are read again only when their trigger has moved.
#include "kora4sim/engine/held_settings.h"

#include <algorithm>

#include "base/text.h"
#include "contract/field_ids.h"
#include "contract/profiles.h"
#include "contract/technologies.h"
#include "settings/settings_table.h"

namespace kora4::tools::sim {

namespace {

constexpr Technology Preset(KORA4PresetTechnology number) {
    return {Family::ePreset, number};
}

const char* OnOff(bool isOn) {
    return isOn ? "on" : "off";
}

std::string Arrow(const std::string& from, const std::string& to) {
    return from + " -> " + to;
}

std::string Counted(const char* counter, std::uint32_t from, std::uint32_t to) {
    return counter + (" " + Arrow(std::to_string(from), std::to_string(to)));
}

Json JsonOf(const SchemaValue& value, const Value& content) {
    const Setting* setting = SettingOf(value);
    return setting != nullptr ? ToJson(*setting, content) : Json();
}

std::string TextOf(const SchemaValue& value, const Value& content) {
    const Setting* setting = SettingOf(value);
    return setting != nullptr ? FormatValue(*setting, content) : std::string("?");
}

bool ReadSwitch(const SchemaValue& value, StoreAccess& store) {
    const std::optional<Value> content = Effective(value, store);
    const bool* isOn = content ? std::get_if<bool>(&*content) : nullptr;
    return isOn != nullptr && *isOn;
}

std::uint32_t ReadNumber(std::uint32_t pid, StoreAccess& store) {
    return store.Number(eKeySetDynamic, pkey::Setting(pid), 0);
}

std::string Listed(const std::vector<Change>& changes) {
    std::vector<std::string> words;
    for (const Change& change : changes)
        words.push_back(change.name + " " + Arrow(change.fromText, change.toText));
    return words.empty() ? "no value changed" : Join(words, ", ");
}

Json ToDocument(const std::vector<Change>& changes) {
    Json documents = Json::array();
    for (const Change& change : changes)
        documents.push_back({{"name", change.name}, {"from", change.from}, {"to", change.to}});
    return documents;
}

Seen SwitchSeen(const std::string& event, const std::string& name, const std::string& what,
                bool from, bool to) {
    Seen seen;
    seen.event = event;
    seen.cause = what + " " + Arrow(OnOff(from), OnOff(to));
    seen.words = name + " " + Arrow(OnOff(from), OnOff(to));
    seen.details = {{"name", name}, {"from", from}, {"to", to}};
    return seen;
}

}  // namespace

HeldSettings::Dynamic HeldSettings::ReadDynamic(StoreAccess& store) {
    Dynamic now;
    now.profile = ReadNumber(pkey::cActivePresetPid, store);
    now.isEnabled = ReadSwitch(SettingValue(pkey::cMasterEnablePid), store);
    now.isSwitchOn = ReadSwitch(SettingValue(pkey::cDynamicSwitchPid), store);
    now.tableCounter = ReadNumber(pkey::cProfileTableCounterPid, store);
    for (const TechnologyWord& word : AllTechnologies()) {
        now.flags.push_back(ReadSwitch(FlagValue(word.technology, now.profile), store));
        now.triggers.push_back(
            store.Number(eKeySetDynamic, TriggerValue(word.technology).key, 0));
    }
    return now;
}

// The values stored under a demo profile are the factory values of the profile that it shows;
// the demo itself uses the built-in ones.
std::vector<HeldSettings::Field> HeldSettings::ReadFields(Technology technology,
                                                          std::uint32_t profile,
                                                          StoreAccess& store) {
    const bool isBuiltIn = technology.family == Family::ePreset && IsDemoProfile(profile);
    std::vector<Field> fields;
    for (const SchemaValue& row : Schema()) {
        if (row.role != Role::eField || !(row.technology == technology) ||
            row.profile.value_or(0) != 0)
            continue;
        const SchemaValue value = FieldValue(technology, profile, row.key.pid);
        const std::optional<StoredValue> builtIn = value.Default();
        const std::optional<Value> content =
            isBuiltIn && builtIn ? Decode(value, *builtIn) : Effective(value, store);
        if (content)
            fields.push_back({value, *content});
    }
    return fields;
}

void HeldSettings::Load(StoreAccess& store) {
    m_dynamic = ReadDynamic(store);
    m_fields.clear();
    for (const TechnologyWord& word : AllTechnologies())
        m_fields.push_back(ReadFields(word.technology, m_dynamic.profile, store));
}

std::vector<Change> HeldSettings::Reload(std::size_t technology, StoreAccess& store) {
    std::vector<Field> fields =
        ReadFields(AllTechnologies()[technology].technology, m_dynamic.profile, store);
    std::vector<Change> changes;
    for (const Field& field : fields) {
        const auto before = std::find_if(
            m_fields[technology].begin(), m_fields[technology].end(),
            [&](const Field& held) { return held.value.key.pid == field.value.key.pid; });
        if (before == m_fields[technology].end() || before->content == field.content)
            continue;
        changes.push_back({NameOf(field.value), JsonOf(before->value, before->content),
                           JsonOf(field.value, field.content),
                           TextOf(before->value, before->content),
                           TextOf(field.value, field.content)});
    }
    m_fields[technology] = std::move(fields);
    return changes;
}

void HeldSettings::SeeProfile(const Dynamic& now, StoreAccess& store, std::vector<Seen>& seen) {
    const std::string from = ProfileName(m_dynamic.profile);
    const std::string to = ProfileName(now.profile);
    m_dynamic.profile = now.profile;
    std::vector<Change> changes;
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const TechnologyWord& word = AllTechnologies()[i];
        if (word.technology.family != Family::ePreset)
            continue;
        if (m_dynamic.flags[i] != now.flags[i])
            changes.push_back({NameOf(FlagValue(word.technology, now.profile)),
                               bool(m_dynamic.flags[i]), bool(now.flags[i]),
                               OnOff(m_dynamic.flags[i]), OnOff(now.flags[i])});
        m_dynamic.flags[i] = now.flags[i];
        for (Change& change : Reload(i, store))
            changes.push_back(std::move(change));
    }
    Seen profile;
    profile.event = "profile";
    profile.cause = "active profile " + Arrow(from, to);
    profile.words = "profile " + Arrow(from, to) + ": reload of everything: " + Listed(changes);
    profile.details = {{"from", from}, {"to", to}, {"changes", ToDocument(changes)}};
    seen.push_back(std::move(profile));
}

void HeldSettings::SeeSwitches(const Dynamic& now, std::vector<Seen>& seen) const {
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (m_dynamic.flags[i] == now.flags[i])
            continue;
        const TechnologyWord& word = AllTechnologies()[i];
        Seen flag = SwitchSeen("switch", NameOf(FlagValue(word.technology, now.profile)),
                               "switch", m_dynamic.flags[i], now.flags[i]);
        flag.details["technology"] = word.word;
        seen.push_back(std::move(flag));
    }
    if (m_dynamic.isSwitchOn != now.isSwitchOn)
        seen.push_back(SwitchSeen("setting", NameOf(SettingValue(pkey::cDynamicSwitchPid)),
                                  "setting", m_dynamic.isSwitchOn, now.isSwitchOn));
}

void HeldSettings::SeeTriggers(const Dynamic& now, StoreAccess& store,
                               std::vector<Seen>& seen) {
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (m_dynamic.triggers[i] == now.triggers[i])
            continue;
        const std::string technology = AllTechnologies()[i].word;
        const std::vector<Change> changes = Reload(i, store);
        Seen reload;
        reload.event = "reload";
        reload.cause = Counted("trigger", m_dynamic.triggers[i], now.triggers[i]);
        reload.words = "reload " + technology + ": " + reload.cause + ": " + Listed(changes);
        reload.details = {{"technology", technology}, {"changes", ToDocument(changes)}};
        seen.push_back(std::move(reload));
    }
}

void HeldSettings::SeeTable(const Dynamic& now, StoreAccess& store,
                            std::vector<Seen>& seen) const {
    if (m_dynamic.tableCounter == now.tableCounter)
        return;
    Seen table;
    table.event = "table";
    table.cause = Counted("table counter", m_dynamic.tableCounter, now.tableCounter);
    table.details["names"] = Json::object();
    std::vector<std::string> words;
    for (std::uint32_t p = cFirstCustomProfile; p < cSelectableProfileBound; ++p) {
        const std::optional<Value> name = Effective(NameValue(p), store);
        const std::string* text = name ? std::get_if<std::string>(&*name) : nullptr;
        if (text == nullptr)
            continue;
        table.details["names"][ProfileName(p)] = *text;
        words.push_back(ProfileName(p) + " '" + *text + "'");
    }
    table.words =
        table.cause + ": " + (words.empty() ? "no custom profiles" : Join(words, ", "));
    seen.push_back(std::move(table));
}

std::vector<Seen> HeldSettings::Look(StoreAccess& store) {
    const Dynamic now = ReadDynamic(store);
    std::vector<Seen> seen;
    if (m_dynamic.isEnabled != now.isEnabled) {
        seen.push_back(SwitchSeen("enable", NameOf(SettingValue(pkey::cMasterEnablePid)),
                                  "master enable", m_dynamic.isEnabled, now.isEnabled));
        m_dynamic.isEnabled = now.isEnabled;
    }
    if (m_dynamic.profile != now.profile)
        SeeProfile(now, store, seen);
    SeeSwitches(now, seen);
    SeeTriggers(now, store, seen);
    SeeTable(now, store, seen);
    m_dynamic = now;
    return seen;
}

const Value* HeldSettings::Find(Technology technology, std::uint32_t pid) const {
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (!(AllTechnologies()[i].technology == technology) || !m_dynamic.flags[i])
            continue;
        for (const Field& field : m_fields[i]) {
            if (field.value.key.pid == pid)
                return &field.content;
        }
    }
    return nullptr;
}

Processing HeldSettings::MakeProcessing() const {
    Processing processing;
    if (!m_dynamic.isEnabled)
        return processing;
    const auto number = [this](KORA4PresetTechnology technology, std::uint32_t pid) {
        const Value* value = Find(Preset(technology), pid);
        const auto* content = value != nullptr ? std::get_if<std::uint32_t>(value) : nullptr;
        return content != nullptr ? *content : 0;
    };
    const auto level = [this](KORA4PresetTechnology technology, std::uint32_t pid) {
        const Value* value = Find(Preset(technology), pid);
        const auto* content = value != nullptr ? std::get_if<float>(value) : nullptr;
        return content != nullptr ? *content : 0.0f;
    };
    const auto array = [this](KORA4PresetTechnology technology, std::uint32_t pid) {
        const Value* value = Find(Preset(technology), pid);
        const auto* content =
            value != nullptr ? std::get_if<std::vector<float>>(value) : nullptr;
        return content != nullptr ? *content : std::vector<float>();
    };
    processing.leveler = number(eVolumeTech, pkey::cVolumeAmountPid);
    processing.enhancement = level(eEnhancementTech, pkey::cEnhancementAmountPid);
    processing.intelligentEQ = level(eDynamicEQTech, pkey::cDynamicEQLevelPid);
    if (Find(Preset(eDynamicEQTech), pkey::cDynamicEQCurvePid) != nullptr)
        processing.intelligentCurve = {
            array(eDynamicEQTech, pkey::cDynamicEQFreqPid),
            BuiltInCurve(number(eDynamicEQTech, pkey::cDynamicEQCurvePid))};
    processing.graphicEQ = {array(eStandardEQTech, pkey::cStandardEQFreqPid),
                            array(eStandardEQTech, pkey::cStandardEQGainPid)};
    return processing;
}

Json HeldSettings::Document() const {
    Json document = Json::object();
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const Technology technology = AllTechnologies()[i].technology;
        document[NameOf(FlagValue(technology, m_dynamic.profile))] = bool(m_dynamic.flags[i]);
        for (const Field& field : m_fields[i])
            document[NameOf(field.value)] = JsonOf(field.value, field.content);
    }
    return document;
}

}  // namespace kora4::tools::sim
