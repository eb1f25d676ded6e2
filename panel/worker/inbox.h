// SPDX-License-Identifier: MIT
// What the worker has to do next. Every thread may put something in, and nobody waits but the
// worker.
#ifndef KORA4_PANEL_WORKER_INBOX_H
#define KORA4_PANEL_WORKER_INBOX_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

#include "panel/worker/command.h"

namespace panel {

// What others have changed and the worker has not read yet. It grows no longer than this,
// however many changes there are.
struct Announced {
    bool isAll = false;
    bool isTable = false;
    bool isEnable = false;
    bool isBands = false;
    std::array<bool, KORA4_TECHNOLOGIES> switches{};
    std::array<bool, KORA4_TECHNOLOGIES> values{};
    friend bool operator==(const Announced&, const Announced&) = default;
};

// What the worker takes out at a time. What others have changed is read first; but a command
// does not wait until they have done with changing.
struct Work {
    Announced announced;
    std::optional<Command> command;
    bool isEnd = false;
};

class Inbox {
  public:
    using Time = std::chrono::steady_clock::time_point;

    // Is told when there begins and ends to be something to do, and of each thing anew.
    explicit Inbox(HWND window) : m_window(window) {}

    // One that sets what the last one sets, which still waits, takes its place.
    void Push(Command command);
    // `how` marks what was announced.
    template <typename How>
    void Announce(How how) {
        {
            const std::lock_guard<std::mutex> hold(m_mutex);
            how(m_announced);
            SetBusy(true);
        }
        m_wake.notify_one();
    }
    void ShowLevels(bool isShown);
    // What is in it by now is still done.
    void End();

    // What there is to do; waits for it, until that time if one is given.
    Work Take(std::optional<Time> until);
    // What was taken is done.
    void Done();
    // Something is done that nobody asked for.
    void Begin();
    // What is done until Begin makes no call of the library: it waits for nobody.
    void Pause();
    bool ShowsLevels() const;

  private:
    bool HasWork() const;
    void SetBusy(bool isBusy);

    const HWND m_window;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Command> m_commands;
    Announced m_announced;
    bool m_isEnd = false;
    bool m_isBusy = false;
    bool m_showsLevels = false;
    bool m_levelsChanged = false;
};

}  // namespace panel

#endif  // KORA4_PANEL_WORKER_INBOX_H
