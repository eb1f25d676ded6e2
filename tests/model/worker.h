// SPDX-License-Identifier: MIT
// One of several processes that use the store at the same time: two threads that make all
// kinds of changes, and an object that only watches.
#ifndef KORA4_TESTS_MODEL_WORKER_H
#define KORA4_TESTS_MODEL_WORKER_H

#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "model/shared_memory.h"
#include "veltokora4api.h"

namespace kora4::test {

inline constexpr std::size_t cWorkers = 4;
inline constexpr std::size_t cThreadsPerWorker = 2;
inline constexpr std::size_t cRawTechnologies = 7;
inline constexpr std::uint32_t cUsedProfiles = 4;  // the presets and a custom one

// What one process has done and seen.
struct WorkerReport {
    std::atomic<std::uint32_t> calls;
    std::atomic<std::uint32_t> announced[cRawTechnologies];  // changes of values
    std::atomic<std::uint32_t> tableChanges;
    std::atomic<std::uint32_t> told;
    std::atomic<std::uint32_t> toldToObserver;  // by the comparison
    std::atomic<std::uint32_t> equalizersSeen;
    std::atomic<std::uint32_t> itemsCompared;  // of the last state
    std::atomic<std::uint32_t> failures;
    char firstFailure[400];
};

// The memory that the workers share.
struct WorkersState {
    WorkerReport reports[cWorkers];
};

// The memory, and the events by which the driver leads all workers: go, stop, compare; and
// those by which each says that it has got there.
class Workshop {
  public:
    explicit Workshop(const std::wstring& name);

    WorkerReport& Report(std::size_t worker) { return m_state->reports[worker]; }
    HANDLE Go() const { return m_go.Get(); }
    HANDLE Stop() const { return m_stop.Get(); }
    HANDLE Compare() const { return m_compare.Get(); }
    HANDLE Ready(std::size_t worker) const { return m_ready[worker].Get(); }
    // Its observer has been told a first change.
    HANDLE Watching(std::size_t worker) const { return m_watching[worker].Get(); }
    HANDLE Stopped(std::size_t worker) const { return m_stopped[worker].Get(); }

  private:
    SharedMemory<WorkersState> m_state;
    UniqueHandle m_go;
    UniqueHandle m_stop;
    UniqueHandle m_compare;
    UniqueHandle m_ready[cWorkers];
    UniqueHandle m_watching[cWorkers];
    UniqueHandle m_stopped[cWorkers];
};

inline constexpr char cWorkerArgument[] = "--worker=";

// When the program was started as a worker: its work and its exit code; else -1.
int WorkIfAsked(int argc, char** argv);

// An equalizer all of whose elements come from one number, so that two mixed ones show.
GraphicEQData StampedEQ(std::uint32_t stamp);
// That, or the built-in one.
bool IsWholeEQ(const GraphicEQData& eq);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_WORKER_H
