// SPDX-License-Identifier: MIT
// Loads settings and finds what was announced, as the store's contract asks of an engine:
// values are read again only when their trigger has moved.
#include "kora4sim/engine/held_settings.h"

#include <algorithm>

#include "base/text.h"
#include "contract/field_ids.h"
#include "contract/profiles.h"
#include "contract/technologies.h"
#include "settings/setting_values.h"
#include "settings/settings_table.h"

namespace kora4::tools::sim {

namespace {

const char* OnOff(bool isOn) {
    return isOn ? "on" : "off";
}

std::string Arrow(const std::string& from, const std::string& to) {
    return from + " -> " + to;
}

std::string Counted(const char* counter, std::uint32_t from, std::uint32_t to) {
    return counter + (" " + Arrow(std::to_string(from), std::to_string(to)));
}

// Fields and switches are settings.
Change ChangeOf(const SchemaValue& value, const Value& from, const Value& to) {
    const Setting& setting = *SettingOf(value);
    return {setting.name, ToJson(setting, from), ToJson(setting, to),
            FormatValue(setting, from), FormatValue(setting, to)};
}

bool ReadSwitch(const SchemaValue& value, StoreAccess& store) {
    return std::get<bool>(*Effective(value, store));
}

std::uint32_t ReadCounter(std::uint32_t pid, StoreAccess& store) {
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
    const std::string step = " " + Arrow(OnOff(from), OnOff(to));
    return {event, what + step, name + step, {{"name", name}, {"from", from}, {"to", to}}};
}

}  // namespace

HeldSettings::Dynamic HeldSettings::ReadDynamic(StoreAccess& store) {
    Dynamic now;
    now.profile = ReadCounter(pkey::cActivePresetPid, store);
    now.isEnabled = ReadSwitch(SettingValue(pkey::cMasterEnablePid), store);
    now.isSwitchOn = ReadSwitch(SettingValue(pkey::cDynamicSwitchPid), store);
    now.tableCounter = ReadCounter(pkey::cProfileTableCounterPid, store);
    for (const TechnologyWord& word : AllTechnologies()) {
        now.switches.push_back(ReadSwitch(SwitchValue(word.technology, now.profile), store));
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
    for (const SchemaValue& value : FieldValues(technology, profile)) {
        if (const std::optional<Value> content =
                isBuiltIn ? BuiltIn(value) : Effective(value, store))
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
        changes.push_back(ChangeOf(field.value, before->content, field.content));
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
        if (m_dynamic.switches[i] != now.switches[i])
            changes.push_back(ChangeOf(SwitchValue(word.technology, now.profile),
                                       bool(m_dynamic.switches[i]), bool(now.switches[i])));
        m_dynamic.switches[i] = now.switches[i];
        for (Change& change : Reload(i, store))
            changes.push_back(std::move(change));
    }
    const std::string step = Arrow(from, to);
    seen.push_back({"profile",
                    "active profile " + step,
                    "profile " + step + ": reload of everything: " + Listed(changes),
                    {{"from", from}, {"to", to}, {"changes", ToDocument(changes)}}});
}

void HeldSettings::SeeSwitches(const Dynamic& now, std::vector<Seen>& seen) const {
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        if (m_dynamic.switches[i] == now.switches[i])
            continue;
        const TechnologyWord& word = AllTechnologies()[i];
        Seen one = SwitchSeen("switch", NameOf(SwitchValue(word.technology, now.profile)),
                              "switch", m_dynamic.switches[i], now.switches[i]);
        one.details["technology"] = word.word;
        seen.push_back(std::move(one));
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
        const std::string cause = Counted("trigger", m_dynamic.triggers[i], now.triggers[i]);
        seen.push_back({"reload",
                        cause,
                        "reload " + technology + ": " + cause + ": " + Listed(changes),
                        {{"technology", technology}, {"changes", ToDocument(changes)}}});
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
        if (!(AllTechnologies()[i].technology == technology) || !m_dynamic.switches[i])
            continue;
        for (const Field& field : m_fields[i]) {
            if (field.value.key.pid == pid)
                return &field.content;
        }
    }
    return nullptr;
}

template <typename Content>
Content HeldSettings::Held(KORA4PresetTechnology technology, std::uint32_t pid) const {
    const Value* const value = Find(Preset(technology), pid);
    const auto* const content = value != nullptr ? std::get_if<Content>(value) : nullptr;
    return content != nullptr ? *content : Content();
}

Processing HeldSettings::MakeProcessing() const {
    using Floats = std::vector<float>;
    Processing processing;
    if (!m_dynamic.isEnabled)
        return processing;
    processing.leveler = Held<std::uint32_t>(eVolumeTech, pkey::cVolumeAmountPid);
    processing.enhancement = Held<float>(eEnhancementTech, pkey::cEnhancementAmountPid);
    processing.intelligentEQ = Held<float>(eDynamicEQTech, pkey::cDynamicEQLevelPid);
    if (Find(Preset(eDynamicEQTech), pkey::cDynamicEQCurvePid) != nullptr)
        processing.intelligentCurve = {
            Held<Floats>(eDynamicEQTech, pkey::cDynamicEQFreqPid),
            BuiltInCurve(Held<std::uint32_t>(eDynamicEQTech, pkey::cDynamicEQCurvePid))};
    processing.graphicEQ = {Held<Floats>(eStandardEQTech, pkey::cStandardEQFreqPid),
                            Held<Floats>(eStandardEQTech, pkey::cStandardEQGainPid)};
    return processing;
}

Json HeldSettings::Document() const {
    Json document = Json::object();
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const Technology technology = AllTechnologies()[i].technology;
        document[NameOf(SwitchValue(technology, m_dynamic.profile))] =
            bool(m_dynamic.switches[i]);
        for (const Field& field : m_fields[i])
            document[NameOf(field.value)] = ToJson(*SettingOf(field.value), field.content);
    }
    return document;
}

}  // namespace kora4::tools::sim
