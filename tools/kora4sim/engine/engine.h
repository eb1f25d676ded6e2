// SPDX-License-Identifier: MIT
// The engine: publishes pictures, takes over what is announced, and goes wrong on demand.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "contract/defaults.h"
#include "kora4sim/engine/held_settings.h"
#include "kora4sim/engine/reporter.h"
#include "kora4sim/engine/wrong_values.h"
#include "kora4sim/scene/scene.h"
#include "kora4sim/signal/blob.h"
#include "process/interrupt.h"
#include "registry/change_watch.h"
#include "registry/store_access.h"
#include "registry/store_lock.h"

namespace kora4::tools::sim {

// The stored sampling period is clamped to these bounds: 0 would publish without pause, and
// above ten seconds the engine would look dead.
inline constexpr std::uint32_t cShortestPeriod = 10;    // ms
inline constexpr std::uint32_t cLongestPeriod = 10000;  // ms

// What the command line chooses.
struct EngineOptions {
    std::optional<std::uint64_t> runMilliseconds;  // none: until interrupted
    std::uint64_t seed = 1;
    std::optional<std::uint32_t> period;  // ms; none: the stored one
    bool publishes = true;
    bool writesDefaults = false;
    bool removesLevels = false;  // at the end
    std::vector<Fault> faults;
};

// Single-threaded: the thread that makes it runs it, and holds the mutex when a fault says so.
//
// The engine's time is that of its pictures: each takes one period, whatever the clock says.
// A picture that comes late is followed by the next one at once, so the same seed, scene and
// length give the same sequence of values.
class Engine {
  public:
    Engine(const Scene& scene, EngineOptions options, StoreAccess& store, Reporter& reporter,
           const Interrupt& interrupt);

    // eDone, or eFailed when the store could not be used to the end.
    ExitCode Run();

  private:
    using Clock = std::chrono::steady_clock;

    // The beginning: commands, engine mask and, if asked for, defaults; then the engine's own
    // load.
    void PrepareStore();
    // Does the step. If the store refuses it, the engine goes on: that is told once, and
    // every further picture tries to begin anew.
    template <typename Step>
    void Attempt(Step step);
    void BeginAnewIfLost();
    // How many values were written.
    std::size_t WriteDefaults();
    // Why the commands could not be written; empty when they are.
    std::string WriteCommands(const Commands& commands);
    void TellReady(const std::string& cause);

    // The end: releases the mutex, removes the levels if asked to, and reports the sums.
    ExitCode Finish();

    bool IsOver() const;
    void WaitForNextPicture();

    // Takes over what was announced since the last picture, and the period.
    void LookAtStore();
    void LookAtPeriod();
    std::uint32_t StoredPeriod();

    // Writes the picture of this moment, or what a fault makes of it.
    void Publish();
    StoredValue MakeValue();

    // Faults whose moment has come.
    void ApplyDueFaults();
    void Apply(const Fault& fault);
    void TellFault(const Fault& fault, const std::string& effect,
                   const Json& details = Json::object());

    // One function for each kind of fault.
    void Die(const Fault& fault);
    void Hold(const Fault& fault);
    void Burst(const Fault& fault);
    void SpoilFields(const Fault& fault);
    void SpoilProfile(const Fault& fault);

    // Puts back what faults have spoilt; returns how many values that were.
    std::size_t RestoreValues();

    const Scene& m_scene;
    const EngineOptions m_options;
    StoreAccess& m_store;
    Reporter& m_reporter;
    const Interrupt& m_interrupt;
    const Noise m_noise;
    const Signal m_signal;
    ChangeWatch m_watch;
    // An open handle keeps the mutex alive, so that the death of its holder is noticed.
    UniqueHandle m_mutex;
    HeldSettings m_settings;
    std::deque<Fault> m_faults;  // still to come, earliest first

    Clock::time_point m_start;
    std::uint64_t m_milliseconds = 0;  // the engine's time
    std::uint64_t m_picture = 0;
    std::uint32_t m_period = defaults::cSamplingPeriod;
    bool m_hasToLook = false;

    bool m_isStopped = false;
    const Spoiling* m_spoiling = nullptr;
    std::unique_ptr<StoreLock> m_hold;
    std::uint64_t m_holdEnd = 0;
    SpoiltValues m_spoilt;

    Digest m_digest;
    std::uint64_t m_published = 0;
    std::uint64_t m_failures = 0;
    bool m_isLost = false;  // the store refused something since the engine began (anew)
    std::uint64_t m_reloads = 0;
    std::uint64_t m_faultsApplied = 0;
};

}  // namespace kora4::tools::sim
