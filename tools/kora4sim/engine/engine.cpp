// SPDX-License-Identifier: MIT
// The engine's loop: prepares the store, publishes a picture per period, looks at what was
// announced, and sums up at the end.
#include "kora4sim/engine/engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/failure.h"
#include "base/text.h"
#include "contract/engine_masks.h"
#include "contract/field_ids.h"
#include "contract/patch_limits.h"
#include "contract/property_key.h"
#include "kora4sim/engine/wrong_values.h"
#include "registry/store_lock.h"
#include "settings/setting_values.h"

namespace kora4::tools::sim {

namespace {

const PropertyKey cLevelsKey = pkey::Setting(pkey::cVisualizationDataPid);

// Faults of the command line and of the scene, earliest first; of the same moment those of
// the scene come first.
std::deque<Fault> InOrder(const Scene& scene, const EngineOptions& options) {
    std::deque<Fault> faults(scene.timeline.begin(), scene.timeline.end());
    faults.insert(faults.end(), options.faults.begin(), options.faults.end());
    std::stable_sort(faults.begin(), faults.end(), [](const Fault& a, const Fault& b) {
        return a.atMilliseconds < b.atMilliseconds;
    });
    return faults;
}

std::uint32_t Bounded(std::uint32_t period) {
    return std::clamp(period, cShortestPeriod, cLongestPeriod);
}

constexpr Technology cLeveler = Preset(eVolumeTech);
constexpr Technology cEnhancer = Preset(eEnhancementTech);
constexpr std::uint32_t cLevelerSteps = cVeltoVolumeLevelerAmountMax + 1;
constexpr std::uint32_t cEnhancerSteps = 101;  // amounts 0.00 to 1.00

// Of a name that the table of faults has taken.
const Spoiling* Find(std::span<const Spoiling> spoilings, const std::string& name) {
    return &*std::ranges::find(spoilings, name, &Spoiling::name);
}

// The amount that a writer in a hurry sets next, never the one before.
std::uint32_t Step(const SchemaValue& value, StoreAccess& store, std::uint64_t chance,
                   std::uint32_t steps) {
    const Value now = Effective(value, store).value_or(std::uint32_t{0});
    std::uint32_t before = 0;
    if (const auto* const number = std::get_if<std::uint32_t>(&now))
        before = *number;
    else if (const auto* const amount = std::get_if<float>(&now))
        before = static_cast<std::uint32_t>(std::lround(*amount * 100));
    const auto more = static_cast<std::uint32_t>(chance % (steps - 1)) + 1;
    return (before % steps + more) % steps;
}

}  // namespace

Engine::Engine(const Scene& scene, EngineOptions options, StoreAccess& store,
               Reporter& reporter, const Interrupt& interrupt)
    : m_scene(scene),
      m_options(std::move(options)),
      m_store(store),
      m_reporter(reporter),
      m_interrupt(interrupt),
      m_noise(m_options.seed),
      m_signal(scene.spectrum, m_noise),
      m_mutex(OpenStoreMutex()),
      m_faults(InOrder(scene, m_options)),
      m_spoilt(store) {}

ExitCode Engine::Run() {
    try {
        PrepareStore();
        TellReady("start");
    } catch (const Failure&) {
        // Ctrl-C during a wait for the mutex ends the run in the ordinary way.
        if (!m_interrupt.IsRequested())
            throw;
    }
    m_start = Clock::now();
    while (!IsOver()) {
        m_reporter.SetPicture(m_picture);
        Attempt([this] {
            ApplyDueFaults();
            BeginAnewIfLost();
            LookAtPeriod();
            Publish();
        });
        m_milliseconds += m_period;
        ++m_picture;
        m_reporter.SetPicture(m_picture);
        WaitForNextPicture();
    }
    // What was announced since the last picture.
    if (!m_interrupt.IsRequested() && !m_isLost)
        Attempt([this] { LookAtStore(); });
    return Finish();
}

// ---- The store --------------------------------------------------------------------------

// Reports are written without the mutex: their reader may pause, and the other programs must
// not wait for that.
void Engine::PrepareStore() {
    std::size_t written = 0;
    std::string problem;
    {
        const StoreLock lock(INFINITE, m_interrupt.Event());
        if (m_options.writesDefaults)
            written = WriteDefaults();
        m_store.WriteNumber(eKeySetStatic, EngineMaskValue().key, m_scene.mask);
        if (m_scene.commands)
            problem = WriteCommands(*m_scene.commands);
        m_settings.Load(m_store);
        m_period = m_options.period ? *m_options.period : StoredPeriod();
    }
    if (m_options.writesDefaults)
        m_reporter.Tell("defaults", "--write-defaults",
                        "defaults: " + Counted(written, "value", "values") + " written",
                        {{"values", written}});
    if (!problem.empty())
        m_reporter.Tell("problem", "companion commands",
                        "problem: the companion commands are not written: " + problem,
                        {{"problem", problem}}, Weight::eMilestone);
}

template <typename Step>
void Engine::Attempt(Step step) {
    try {
        step();
    } catch (const Failure& failure) {
        // Ctrl-C during a wait for the mutex.
        if (m_interrupt.IsRequested())
            return;
        ++m_failures;
        if (std::exchange(m_isLost, true))
            return;
        m_reporter.Tell(
            "problem", "settings store",
            std::string("problem: the settings store cannot be used: ") + failure.what(),
            {{"problem", failure.what()}}, Weight::eMilestone);
    }
}

// The library may be registered anew while the engine runs.
void Engine::BeginAnewIfLost() {
    if (!m_isLost)
        return;
    m_store.Reopen();
    m_watch = ChangeWatch();
    PrepareStore();
    m_isLost = false;
    TellReady("the settings store is back");
}

// Values, what announces itself, then the triggers.
std::size_t Engine::WriteDefaults() {
    std::size_t written = 0;
    for (const KORA4KeySet keySet : {eKeySetStatic, eKeySetDynamic}) {
        for (const SchemaValue& value : Schema()) {
            const bool isSetting = value.role == Role::eSetting ||
                                   value.role == Role::eActiveProfile ||
                                   value.role == Role::eSwitch || value.role == Role::eField;
            const std::optional<StoredValue> builtIn = value.Default();
            if (value.keySet != keySet || !isSetting || !builtIn)
                continue;
            m_store.Write(keySet, value.key, *builtIn);
            ++written;
        }
    }
    for (const TechnologyWord& word : AllTechnologies())
        m_store.Bump(TriggerValue(word.technology).key);
    return written;
}

// The engine runs without companion applications.
std::string Engine::WriteCommands(const Commands& commands) {
    try {
        for (const CommandDef& known : cCommands) {
            const auto command = commands.find(known.name);
            std::optional<StoredValue> stored;
            if (command != commands.end())
                stored = StoredValue::FromText(ToUtf16(command->second));
            m_store.Put(eKeySetApp, pkey::Setting(known.pid), stored);
        }
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

// If another program holds the mutex, the engine looks later: it must not stop playing.
void Engine::LookAtStore() {
    std::vector<Seen> seen;
    bool wasAbandoned = false;
    try {
        const StoreLock lock(0);
        m_hasToLook = false;
        wasAbandoned = lock.WasAbandoned();
        seen = m_settings.Look(m_store);
    } catch (const Failure& failure) {
        if (failure.Code() != ExitCode::eTimedOut)
            throw;
        m_hasToLook = true;
    }
    if (wasAbandoned)
        m_reporter.Tell("abandoned", "a program died while it held the store's mutex",
                        "abandoned: a program died while it held the store's mutex");
    for (const Seen& one : seen) {
        if (one.event == "reload" || one.event == "profile")
            ++m_reloads;
        m_reporter.Tell(one.event, one.cause, one.words, one.details);
    }
}

std::uint32_t Engine::StoredPeriod() {
    return Bounded(m_store.Number(eKeySetStatic, pkey::Setting(pkey::cSamplingPeriodPid),
                                  defaults::cSamplingPeriod));
}

// Read although the command line has another one: that shows whether the store is there.
void Engine::LookAtPeriod() {
    const std::uint32_t stored = StoredPeriod();
    const std::uint32_t now = m_options.period.value_or(stored);
    if (now == m_period)
        return;
    const std::string cause =
        "sampling period " + std::to_string(m_period) + " -> " + std::to_string(now);
    m_reporter.Tell("period", cause, cause + " ms", {{"from", m_period}, {"to", now}});
    m_period = now;
}

// ---- Time -------------------------------------------------------------------------------

bool Engine::IsOver() const {
    return m_interrupt.IsRequested() || m_reporter.IsBroken() ||
           (m_options.runMilliseconds && m_milliseconds >= *m_options.runMilliseconds);
}

void Engine::WaitForNextPicture() {
    // A writer that still holds the mutex when its change is told holds it for a moment only.
    constexpr DWORD cUntilFree = 2;  // milliseconds
    const Clock::time_point due = m_start + std::chrono::milliseconds(m_milliseconds);
    do {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
        const auto patience = static_cast<DWORD>(std::max<long long>(left, 0));
        if (m_isLost) {
            WaitForSingleObject(m_interrupt.Event(), patience);
            return;
        }
        auto wake = ChangeWatch::Wake::eChanged;
        Attempt([&] {
            if (m_hasToLook)
                LookAtStore();
            wake = m_watch.Wait(m_hasToLook ? std::min(patience, cUntilFree) : patience,
                                m_interrupt.Event());
            if (wake == ChangeWatch::Wake::eChanged)
                LookAtStore();
        });
        if (wake == ChangeWatch::Wake::eInterrupted ||
            (wake == ChangeWatch::Wake::eTimedOut && !m_hasToLook))
            return;
        // A program that writes without pause must not delay the pictures.
    } while (Clock::now() < due);
}

// ---- Levels -----------------------------------------------------------------------------

StoredValue Engine::MakeValue() {
    const Processing processing =
        m_scene.followsSettings ? m_settings.MakeProcessing() : Processing();
    const Picture picture = MakePicture(m_signal, m_milliseconds, m_scene.records, processing);
    return m_spoiling != nullptr ? m_spoiling->make({picture, m_noise, m_picture})
                                 : Published(picture);
}

void Engine::Publish() {
    if (!m_options.publishes || m_isStopped)
        return;
    const StoredValue value = MakeValue();
    m_store.Write(eKeySetStatic, cLevelsKey, value);
    m_digest.Add(value);
    ++m_published;
}

// ---- Faults -----------------------------------------------------------------------------

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
            return TellFault(fault, "publishing stops");
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
            const std::size_t restored = RestoreValues();
            return TellFault(
                fault, "back to normal, " + Counted(restored, "value", "values") + " restored",
                {{"restored", restored}});
        }
    }
}

void Engine::TellFault(const Fault& fault, const std::string& effect, const Json& details) {
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

// Another program's user who plays with two sliders.
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

void Engine::SpoilFields(const Fault& fault) {
    std::vector<SpoiltValues::Wrong> wrong;
    const std::string profile = ProfileName(m_settings.Profile());
    {
        const StoreLock lock(INFINITE, m_interrupt.Event());
        for (const TechnologyWord& word : AllTechnologies()) {
            if (word.technology.family != Family::ePreset)
                continue;
            for (const SchemaValue& value : FieldValues(word.technology, m_settings.Profile()))
                if (const std::optional<Value> now = Effective(value, m_store))
                    if (std::optional<StoredValue> stored =
                            WrongField(value, fault.argument, Encode(value, *now), m_noise))
                        wrong.push_back({value, std::move(*stored)});
        }
        m_spoilt.Spoil(wrong);
    }
    TellFault(
        fault,
        Counted(wrong.size(), "value", "values") + " of profile " + profile + " corrupted",
        {{"values", wrong.size()}, {"profile", profile}});
}

void Engine::SpoilProfile(const Fault& fault) {
    const WrongProfileValue wrong = WrongProfile(fault.argument);
    {
        const StoreLock lock(INFINITE, m_interrupt.Event());
        m_spoilt.Spoil({{wrong.value, wrong.wrong}});
    }
    TellFault(fault, NameOf(wrong.value) + " is " + Describe(wrong.wrong),
              {{"name", NameOf(wrong.value)}, {"stored", Describe(wrong.wrong)}});
}

std::size_t Engine::RestoreValues() {
    if (m_spoilt.IsEmpty())
        return 0;
    const StoreLock lock(INFINITE, m_interrupt.Event());
    return m_spoilt.Restore();
}

// ---- Beginning and end ------------------------------------------------------------------

void Engine::TellReady(const std::string& cause) {
    const std::string profile = ProfileName(m_settings.Profile());
    const std::string mask = Hex(m_scene.mask, 4);
    const char* engine = NameOfEngine(m_scene.mask);
    const DWORD pid = GetCurrentProcessId();
    m_reporter.Tell("ready", cause,
                    "ready: scene " + m_scene.name + ", seed " +
                        std::to_string(m_options.seed) + ", engine mask " + mask +
                        (engine != nullptr ? " (" + std::string(engine) + ")" : "") +
                        ", profile " + profile + ", " +
                        (m_settings.IsEnabled() ? "on" : "off") + ", one frame every " +
                        std::to_string(m_period) + " ms, process " + std::to_string(pid),
                    {{"scene", m_scene.name},
                     {"seed", m_options.seed},
                     {"mask", mask},
                     {"engine", engine != nullptr ? Json(engine) : Json()},
                     {"pid", pid},
                     {"profile", profile},
                     {"enable", m_settings.IsEnabled()},
                     {"period", m_period},
                     {"settings", m_settings.Document()}},
                    Weight::eMilestone);
}

ExitCode Engine::Finish() {
    m_hold.reset();
    if (m_options.removesLevels)
        Attempt([this] { m_store.Delete(eKeySetStatic, cLevelsKey); });
    const std::string cause = m_interrupt.IsRequested() ? "interrupted" : "--for";
    m_reporter.Tell("summary", cause,
                    "summary: " + Counted(m_published, "frame", "frames") + " published, " +
                        Counted(m_reloads, "reload", "reloads") + ", " +
                        Counted(m_faultsApplied, "fault", "faults") + ", digest " +
                        m_digest.Text(),
                    {{"pictures", m_published},
                     {"failures", m_failures},
                     {"reloads", m_reloads},
                     {"faults", m_faultsApplied},
                     {"digest", m_digest.Text()}},
                    Weight::eMilestone);
    return m_isLost ? ExitCode::eFailed : ExitCode::eDone;
}

}  // namespace kora4::tools::sim
