// SPDX-License-Identifier: MIT
// Makes the events of a recording again, one kind after the other.
#include "kora4ctl/recording/replayer.h"

#include <algorithm>
#include <iterator>

#include "base/failure.h"
#include "base/text.h"
#include "contract/profiles.h"
#include "kora4ctl/access/api_settings.h"
#include "kora4ctl/access/profile_names.h"
#include "kora4ctl/access/setting_access.h"
#include "registry/journal.h"
#include "registry/registry_store.h"
#include "settings/names.h"
#include "settings/settings_table.h"
#include "settings/transaction.h"

namespace kora4::tools {

namespace {

// The event of that kind in a group, or null.
const Json* Find(const RecordedGroup& group, const char* event) {
    const auto found = std::find_if(group.events.begin(), group.events.end(),
                                    [event](const Json& one) { return one["event"] == event; });
    return found == group.events.end() ? nullptr : &(*found)["value"];
}

std::uint32_t ProfileOf(const Json& value) {
    return value.is_string() ? ParseProfile(value.get<std::string>())
                             : value.get<std::uint32_t>();
}

Value ValueOf(const Setting& setting, const Json& value) {
    if (value.is_string())
        return ParseValue(setting, value.get<std::string>(), {}, Limits::eStore);
    return setting.kind == Kind::eFloat ? Value(value.get<float>())
                                        : Value(value.get<std::uint32_t>());
}

}  // namespace

// Results of methods are ignored throughout: what a method refuses is written to the store
// afterwards.

Replayer::Replayer() : m_store(OpenStore(OpenMode::eReadWrite)) {}

void Replayer::Restore(const Json& settings) {
    m_api->ForceRevertFromDemoMode();
    Store(settings);
}

void Replayer::Make(const RecordedGroup& group) {
    const Json wanted = WithChanges(Stored(), group.changes);
    const Json* const table = Find(group, "table");
    const Json* const profile = Find(group, "profile");
    const Json* const enable = Find(group, "enable");
    // A new profile can become the active one, and the active one cannot be deleted.
    if (table != nullptr && table->is_object())
        Create(*table);
    if (profile != nullptr)
        GoTo(*profile, enable != nullptr ? enable->get<bool>() : IsEnabled());
    if (table != nullptr && table->is_object())
        Delete(*table);
    for (const Json& event : group.events)
        Change(event);
    Store(wanted);
}

void Replayer::Create(const Json& table) {
    for (const auto& [word, name] : table.items()) {
        if (name.is_null())
            continue;
        const LONG profile = static_cast<LONG>(ParseProfile(word));
        const std::wstring wide = Widen(name.get<std::string>());
        // One that exists is renamed, if it has another name.
        if (FAILED(m_api->CreateCustomProfile(profile, wide.c_str())) &&
            NameOf(profile) != name.get<std::string>())
            m_api->SetCustomProfileName(profile, wide.c_str());
    }
}

// Empty when the name, or one before it, cannot be read.
std::string Replayer::NameOf(LONG profile) {
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    std::string wanted;
    m_api->GetProfileTable(names);
    for (LONG i = 0; i < KORA4_PROFILE_TABLE_ENTRIES; ++i) {
        const std::optional<std::string> name = TakeText(names[i]);
        if (i == profile)
            wanted = name.value_or("");
    }
    return wanted;
}

void Replayer::Delete(const Json& table) {
    for (const auto& [word, name] : table.items()) {
        if (name.is_null())
            m_api->DeleteCustomProfile(static_cast<LONG>(ParseProfile(word)));
    }
}

void Replayer::GoTo(const Json& value, bool isEnabled) {
    const std::uint32_t profile = ProfileOf(value);
    if (IsDemoProfile(profile)) {
        m_api->SetDemoProfileAndEnable(static_cast<LONG>(profile), isEnabled);
        return;
    }
    // Does nothing outside a demo.
    m_api->ForceRevertFromDemoMode();
    m_api->SetActiveProfile(static_cast<LONG>(profile));
}

void Replayer::Change(const Json& event) {
    const Json& value = event["value"];
    const Setting* const setting = FindSetting(event["name"].get<std::string>());
    if (event["event"] == "enable") {
        m_api->SetVeltoEnable(value.get<bool>());
    } else if (event["event"] == "graphic-eq") {
        SetBands(value);
    } else if (event["event"] == "switch") {
        Set(*setting, value.get<bool>());
    } else if (event["event"] == "value" && !value.is_null()) {
        Set(*setting, ValueOf(*setting, value));
    }
}

void Replayer::Set(const Setting& setting, const Value& value) {
    try {
        WriteThroughApi(setting, {}, value, m_api);
    } catch (const Failure&) {
        // The store takes it afterwards.
    }
}

void Replayer::SetBands(const Json& bands) {
    GraphicEQData eq{};
    eq.m_bands = static_cast<ULONG>(std::min(bands["gains"].size(), std::size(eq.m_gain)));
    for (ULONG i = 0; i < eq.m_bands; ++i) {
        eq.m_freq[i] = bands["frequencies"][i].get<float>();
        eq.m_gain[i] = bands["gains"][i].get<float>();
    }
    m_api->SetGraphicEQData(&eq);
}

bool Replayer::IsEnabled() {
    BOOL isOn = TRUE;
    m_api->GetVeltoEnable(&isOn);
    return isOn != FALSE;
}

Json Replayer::Stored() {
    const StoreLock lock(cLockPatience);
    return Dump(*m_store, Scope::eUser);
}

void Replayer::Store(const Json& settings) {
    const Plan plan = CheckDocument(settings);
    const StoreLock lock(cLockPatience);
    Apply(plan, *m_store, lock, JournalFile(DefaultJournalPath()));
}

std::vector<Difference> Replayer::DifferencesFrom(const Plan& settings) {
    const StoreLock lock(cLockPatience);
    return Compare(settings, *m_store);
}

}  // namespace kora4::tools
