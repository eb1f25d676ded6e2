// SPDX-License-Identifier: MIT
// The engine's loop: prepares the store, publishes a picture per period, looks at what was
// announced, and sums up at the end.
#include "kora4sim/engine/engine.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "contract/engine_masks.h"
#include "contract/property_key.h"
#include "settings/settings_table.h"

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

std::string Counted(std::uint64_t number, const char* one, const char* many) {
    return std::to_string(number) + " " + (number == 1 ? one : many);
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
      m_faults(InOrder(scene, m_options)) {}

ExitCode Engine::Run() {
    try {
        PrepareStore();
        TellReady();
        m_start = Clock::now();
        while (!IsOver()) {
            m_reporter.SetPicture(m_picture);
            ApplyDueFaults();
            LookAtPeriod();
            Publish();
            m_milliseconds += m_period;
            ++m_picture;
            m_reporter.SetPicture(m_picture);
            WaitForNextPicture();
        }
        // What was announced since the last picture.
        if (!m_interrupt.IsRequested())
            LookAtStore();
    } catch (const Failure&) {
        // Ctrl-C during a wait for the mutex ends the run in the ordinary way.
        if (!m_interrupt.IsRequested())
            throw;
    }
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

// Values, what announces itself, then the triggers.
std::size_t Engine::WriteDefaults() {
    std::size_t written = 0;
    for (const KORA4KeySet keySet : {eKeySetStatic, eKeySetDynamic}) {
        for (const SchemaValue& value : Schema()) {
            const bool isSetting = value.role == Role::eSetting ||
                                   value.role == Role::eActiveProfile ||
                                   value.role == Role::eFlag || value.role == Role::eField;
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
    const std::pair<std::uint32_t, const std::optional<std::string>*> rows[] = {
        {pkey::cProfileEditorCommandPid, &commands.profileEditor},
        {pkey::cProfileSelectorCommandPid, &commands.profileSelector},
        {pkey::cDemoAppCommandPid, &commands.demoApp},
    };
    try {
        for (const auto& [pid, command] : rows) {
            if (*command)
                m_store.Write(eKeySetApp, pkey::Setting(pid),
                              StoredValue::FromText(ToUtf16(**command)));
            else
                m_store.Delete(eKeySetApp, pkey::Setting(pid));
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

void Engine::LookAtPeriod() {
    const std::uint32_t now = m_options.period ? *m_options.period : StoredPeriod();
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
    const Clock::time_point due = m_start + std::chrono::milliseconds(m_milliseconds);
    if (m_hasToLook)
        LookAtStore();
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
        const auto wake =
            m_watch.Wait(static_cast<DWORD>(std::max<long long>(left, 0)), m_interrupt.Event());
        if (wake != ChangeWatch::Wake::eChanged)
            return;
        LookAtStore();
        // A program that writes without pause must not delay the pictures.
        if (Clock::now() >= due)
            return;
    }
}

// ---- Levels -----------------------------------------------------------------------------

StoredValue Engine::MakeValue() {
    const Processing processing =
        m_scene.followsSettings ? m_settings.MakeProcessing() : Processing();
    const Picture picture = MakePicture(m_signal, m_milliseconds, m_scene.records, processing);
    return m_spoiling != nullptr ? m_spoiling->make(picture, m_noise, m_picture)
                                 : Published(picture);
}

void Engine::Publish() {
    if (!m_options.publishes || m_isStopped)
        return;
    const StoredValue value = MakeValue();
    try {
        m_store.Write(eKeySetStatic, cLevelsKey, value);
    } catch (const Failure& failure) {
        ++m_failures;
        if (!m_didLastFail)
            m_reporter.Tell(
                "problem", "levels",
                std::string("problem: the levels are not published: ") + failure.what(),
                {{"problem", failure.what()}}, Weight::eMilestone);
        m_didLastFail = true;
        return;
    }
    m_didLastFail = false;
    m_digest.Add(value);
    ++m_published;
}

// ---- Beginning and end ------------------------------------------------------------------

void Engine::TellReady() {
    const std::string profile = ProfileName(m_settings.Profile());
    const std::string mask = Hex(m_scene.mask, 4);
    const char* engine = NameOfEngine(m_scene.mask);
    const DWORD pid = GetCurrentProcessId();
    m_reporter.Tell("ready", "start",
                    "ready: scene " + m_scene.name + ", seed " +
                        std::to_string(m_options.seed) + ", engine mask " + mask +
                        (engine != nullptr ? " (" + std::string(engine) + ")" : "") +
                        ", profile " + profile + ", " +
                        (m_settings.IsEnabled() ? "on" : "off") + ", a picture each " +
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
        m_store.Delete(eKeySetStatic, cLevelsKey);
    const std::string cause = m_interrupt.IsRequested() ? "interrupted" : "--for";
    m_reporter.Tell("summary", cause,
                    "summary: " + Counted(m_published, "picture", "pictures") + " published, " +
                        Counted(m_reloads, "reload", "reloads") + ", " +
                        Counted(m_faultsApplied, "fault", "faults") + ", digest " +
                        m_digest.Text(),
                    {{"pictures", m_published},
                     {"failures", m_failures},
                     {"reloads", m_reloads},
                     {"faults", m_faultsApplied},
                     {"digest", m_digest.Text()}},
                    Weight::eMilestone);
    return m_didLastFail ? ExitCode::eFailed : ExitCode::eDone;
}

}  // namespace kora4::tools::sim
