// SPDX-License-Identifier: MIT
// Makes the events of a recording again, one kind after the other.
#include "kora4ctl/recording/replayer.h"

#include <algorithm>

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

// Results of methods do not matter: what a method refuses is written to the store afterwards.
void Ignore(const Status&) {}

}  // namespace

Replayer::Replayer() : m_store(OpenStore(OpenMode::eReadWrite)) {}

void Replayer::Restore(const Json& settings) {
    Ignore(m_api->ForceRevertFromDemoMode());
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
        if (m_api->CreateCustomProfile(profile, wide).HasFailed() &&
            NameOf(profile) != name.get<std::string>())
            Ignore(m_api->SetCustomProfileName(profile, wide));
    }
}

// Empty when it, or another one, cannot be read.
std::string Replayer::NameOf(LONG profile) {
    const Result<kora4::ProfileTable> names = m_api->GetProfileTable();
    return names ? Narrow((*names)[static_cast<std::size_t>(profile)].value_or(L"")) : "";
}

void Replayer::Delete(const Json& table) {
    for (const auto& [word, name] : table.items()) {
        if (name.is_null())
            Ignore(m_api->DeleteCustomProfile(static_cast<LONG>(ParseProfile(word))));
    }
}

void Replayer::GoTo(const Json& value, bool isEnabled) {
    const std::uint32_t profile = ProfileOf(value);
    if (IsDemoProfile(profile)) {
        Ignore(m_api->SetDemoProfileAndEnable(static_cast<LONG>(profile), isEnabled));
        return;
    }
    // Does nothing outside a demo.
    Ignore(m_api->ForceRevertFromDemoMode());
    Ignore(m_api->SetActiveProfile(static_cast<LONG>(profile)));
}

void Replayer::Change(const Json& event) {
    const Json& value = event["value"];
    const Setting* const setting = FindSetting(event["name"].get<std::string>());
    if (event["event"] == "enable") {
        Ignore(m_api->SetVeltoEnable(value.get<bool>()));
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
        WriteThroughApi(setting, {}, value, *m_api);
    } catch (const Failure&) {
        // The store takes it afterwards.
    }
}

void Replayer::SetBands(const Json& told) {
    Bands bands(told["gains"].size());
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i] = {told["frequencies"][i].get<float>(), told["gains"][i].get<float>()};
    Ignore(m_api->SetGraphicEQData(bands));
}

bool Replayer::IsEnabled() {
    return m_api->GetVeltoEnable().ValueOr(true);
}

Json Replayer::Stored() {
    const StoreLock lock(cLockPatience);
    return Dump(*m_store, Scope::eUser, InDemo::eStored);
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
