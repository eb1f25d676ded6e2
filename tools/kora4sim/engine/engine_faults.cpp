// SPDX-License-Identifier: MIT
// What the engine does when it shall go wrong.
#include <algorithm>
#include <cmath>

#include "api/patch_limits.h"
#include "base/failure.h"
#include "base/text.h"
#include "contract/field_ids.h"
#include "contract/profiles.h"
#include "contract/technologies.h"
#include "kora4sim/engine/engine.h"
#include "kora4sim/engine/wrong_values.h"
#include "settings/settings_table.h"

namespace kora4::tools::sim {

namespace {

constexpr Technology cLeveler{Family::ePreset, eVolumeTech};
constexpr Technology cEnhancer{Family::ePreset, eEnhancementTech};
constexpr std::uint32_t cLevelerSteps = cVeltoVolumeLevelerAmountMax + 1;
constexpr std::uint32_t cEnhancerSteps = 101;  // amounts 0.00 to 1.00

const Spoiling* Find(std::span<const Spoiling> spoilings, const std::string& name) {
    const auto found = std::find_if(spoilings.begin(), spoilings.end(),
                                    [&](const Spoiling& one) { return name == one.name; });
    return found != spoilings.end() ? &*found : nullptr;
}

// The amount that a writer in a hurry sets next, never the one before.
std::uint32_t Step(const SchemaValue& value, StoreAccess& store, std::uint64_t chance,
                   std::uint32_t steps) {
    const std::optional<Value> now = Effective(value, store);
    std::uint32_t before = 0;
    if (now && std::holds_alternative<std::uint32_t>(*now))
        before = std::get<std::uint32_t>(*now);
    else if (now && std::holds_alternative<float>(*now))
        before = static_cast<std::uint32_t>(std::lround(std::get<float>(*now) * 100));
    const auto more = static_cast<std::uint32_t>(chance % (steps - 1)) + 1;
    return (before % steps + more) % steps;
}

}  // namespace

void Engine::ApplyDueFaults() {
    if (m_hold && m_milliseconds >= m_holdEnd) {
        m_hold.reset();
        m_reporter.Tell("released", "the time of hold is over",
                        "released: the store's mutex is free again");
    }
    while (!m_faults.empty() && m_faults.front().atMilliseconds <= m_milliseconds) {
        const Fault fault = m_faults.front();
        m_faults.pop_front();
        ++m_faultsApplied;
        Apply(fault);
    }
}

void Engine::Apply(const Fault& fault) {
    switch (fault.kind) {
        case FaultKind::eStop:
            m_isStopped = true;
            return TellFault(fault, "nothing is published any more");
        case FaultKind::eGarbage:
            m_spoiling = Find(Garbage(), fault.argument);
            return TellFault(fault, m_spoiling->meaning);
        case FaultKind::eCounts:
            m_spoiling = Find(WrongCounts(), fault.argument);
            return TellFault(fault, m_spoiling->meaning);
        case FaultKind::eDie:
            return Die(fault);
        case FaultKind::eHold:
            return Hold(fault);
        case FaultKind::eBurst:
            return Burst(fault);
        case FaultKind::eWrongTypes:
            return SpoilFields(fault);
        case FaultKind::eProfileGarbage:
            return SpoilProfile(fault);
        case FaultKind::eResume: {
            m_isStopped = false;
            m_spoiling = nullptr;
            m_hold.reset();
            const std::size_t mended = Mend();
            return TellFault(
                fault, "all is well again, " + std::to_string(mended) + " values put back",
                {{"restored", mended}});
        }
    }
}

void Engine::TellFault(const Fault& fault, const std::string& effect, Json details) {
    Json document = {{"fault", DefOf(fault.kind).name},
                     {"argument", fault.argument.empty() ? Json() : Json(fault.argument)}};
    document.update(details);
    m_reporter.Tell(
        "fault",
        fault.cause == FaultCause::eTimeline ? "the scene's timeline" : "the command line",
        "fault " + fault.Text() + ": " + effect, document);
}

// The process ends here, as one that crashes does: nothing is released and nothing unwound.
void Engine::Die(const Fault& fault) {
    const StoreLock lock(INFINITE, m_interrupt.Event());
    Json details = Json::object();
    if (fault.argument == cHalfWay) {
        const SchemaValue amount =
            FieldValue(cLeveler, m_settings.Profile(), pkey::cVolumeAmountPid);
        const std::uint32_t next =
            Step(amount, m_store, m_noise.Word(m_picture), cLevelerSteps);
        m_store.WriteNumber(amount.keySet, amount.key, next);
        details = {{"name", NameOf(amount)}, {"to", next}};
    }
    TellFault(fault, "ends while it holds the store's mutex", details);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(ExitCode::eFailed));
}

void Engine::Hold(const Fault& fault) {
    if (!m_hold)
        m_hold = std::make_unique<StoreLock>(INFINITE, m_interrupt.Event());
    m_holdEnd = m_milliseconds + static_cast<std::uint64_t>(std::llround(fault.number * 1000));
    TellFault(fault, "the store's mutex is held", {{"seconds", fault.number}});
}

// Imitates a user who moves two sliders in another program.
void Engine::Burst(const Fault& fault) {
    const auto writes = static_cast<std::uint64_t>(fault.number);
    const SchemaValue leveler =
        FieldValue(cLeveler, m_settings.Profile(), pkey::cVolumeAmountPid);
    const SchemaValue enhancer =
        FieldValue(cEnhancer, m_settings.Profile(), pkey::cEnhancementAmountPid);
    TellFault(fault, "settings are written as fast as possible", {{"writes", writes}});
    Json last = Json::object();
    for (std::uint64_t i = 0; i < writes && !m_interrupt.IsRequested(); ++i) {
        const StoreLock lock(INFINITE, m_interrupt.Event());
        const std::uint64_t chance = m_noise.Word(m_picture, i);
        const SchemaValue& value = i % 2 == 0 ? leveler : enhancer;
        Value content;
        if (i % 2 == 0)
            content = Step(value, m_store, chance, cLevelerSteps);
        else
            content = static_cast<float>(Step(value, m_store, chance, cEnhancerSteps)) / 100;
        m_store.Write(value.keySet, value.key, Encode(value, content));
        m_store.Bump(TriggerValue(value.technology).key);
        const Setting* setting = SettingOf(value);
        last[NameOf(value)] = setting != nullptr ? ToJson(*setting, content) : Json();
    }
    m_reporter.Tell("burst", "fault " + fault.Text(),
                    "burst: " + std::to_string(writes) + " writes done",
                    {{"writes", writes}, {"settings", last}});
}

void Engine::WriteWrong(const SchemaValue& value, const StoredValue& wrong) {
    m_spoilt.push_back({value, m_store.Read(value.keySet, value.key), wrong});
    m_store.Write(value.keySet, value.key, wrong);
}

// One step of each counter that announces one of the values.
void Engine::Announce(const std::vector<SchemaValue>& values) {
    std::vector<PropertyKey> counters;
    for (const SchemaValue& value : values) {
        const std::optional<PropertyKey> counter = value.Announcement();
        if (counter && std::find(counters.begin(), counters.end(), *counter) == counters.end())
            counters.push_back(*counter);
    }
    for (const PropertyKey& counter : counters)
        m_store.Bump(counter);
}

void Engine::SpoilFields(const Fault& fault) {
    std::vector<SchemaValue> spoilt;
    {
        const StoreLock lock(INFINITE, m_interrupt.Event());
        for (const SchemaValue& row : Schema()) {
            if (row.role != Role::eField || row.technology.family != Family::ePreset ||
                row.profile != 0u)
                continue;
            const SchemaValue value =
                FieldValue(row.technology, m_settings.Profile(), row.key.pid);
            const std::optional<Value> now = Effective(value, m_store);
            if (!now)
                continue;
            const std::optional<StoredValue> wrong =
                WrongField(value, fault.argument, Encode(value, *now), m_noise);
            if (!wrong)
                continue;
            WriteWrong(value, *wrong);
            spoilt.push_back(value);
        }
        Announce(spoilt);
    }
    TellFault(fault,
              std::to_string(spoilt.size()) + " values of profile " +
                  ProfileName(m_settings.Profile()) + " are spoilt",
              {{"values", spoilt.size()}, {"profile", ProfileName(m_settings.Profile())}});
}

void Engine::SpoilProfile(const Fault& fault) {
    const WrongProfileValue wrong = WrongProfile(fault.argument);
    {
        const StoreLock lock(INFINITE, m_interrupt.Event());
        WriteWrong(wrong.value, wrong.wrong);
        Announce({wrong.value});
    }
    TellFault(fault, NameOf(wrong.value) + " is " + Describe(wrong.wrong),
              {{"name", NameOf(wrong.value)}, {"stored", Describe(wrong.wrong)}});
}

// Values that another program has written since stay. The last one spoilt is restored first,
// so that a value spoilt twice returns to its original.
std::size_t Engine::Mend() {
    if (m_spoilt.empty())
        return 0;
    std::vector<SchemaValue> mended;
    const StoreLock lock(INFINITE, m_interrupt.Event());
    for (auto spoilt = m_spoilt.rbegin(); spoilt != m_spoilt.rend(); ++spoilt) {
        const SchemaValue& value = spoilt->value;
        if (m_store.Read(value.keySet, value.key) != spoilt->wrong)
            continue;
        if (spoilt->before)
            m_store.Write(value.keySet, value.key, *spoilt->before);
        else
            m_store.Delete(value.keySet, value.key);
        mended.push_back(value);
    }
    m_spoilt.clear();
    Announce(mended);
    return mended.size();
}

}  // namespace kora4::tools::sim
