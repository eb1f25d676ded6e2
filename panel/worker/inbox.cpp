// SPDX-License-Identifier: MIT
// The list of what the worker has to do.
#include "panel/worker/inbox.h"

#include <utility>

namespace panel {

void Inbox::Push(Command command) {
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        if (command.action == Action::eSet && !m_commands.empty() &&
            Covers(command, m_commands.back()))
            m_commands.back() = std::move(command);
        else
            m_commands.push_back(std::move(command));
        SetBusy(true);
    }
    m_wake.notify_one();
}

void Inbox::ShowLevels(bool isShown) {
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_levelsChanged = m_levelsChanged || m_showsLevels != isShown;
        m_showsLevels = isShown;
    }
    m_wake.notify_one();
}

void Inbox::End() {
    {
        const std::lock_guard<std::mutex> hold(m_mutex);
        m_isEnd = true;
    }
    m_wake.notify_one();
}

bool Inbox::HasWork() const {
    return m_isEnd || m_levelsChanged || !m_commands.empty() || m_announced != Announced{};
}

Work Inbox::Take(std::optional<Time> until) {
    std::unique_lock<std::mutex> hold(m_mutex);
    const auto hasWork = [this] { return HasWork(); };
    if (until)
        m_wake.wait_until(hold, *until, hasWork);
    else
        m_wake.wait(hold, hasWork);
    Work work;
    // What its user wanted before the end is done.
    work.isEnd = m_isEnd && m_commands.empty();
    if (m_isBusy)
        PostMessageW(m_window, cBusyMessage, TRUE, 0);
    m_levelsChanged = false;
    work.announced = std::exchange(m_announced, {});
    if (!m_commands.empty()) {
        work.command = std::move(m_commands.front());
        m_commands.pop_front();
    }
    return work;
}

void Inbox::Done() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    if (!HasWork())
        SetBusy(false);
}

void Inbox::Begin() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    SetBusy(true);
}

void Inbox::Pause() {
    const std::lock_guard<std::mutex> hold(m_mutex);
    SetBusy(false);
}

bool Inbox::ShowsLevels() const {
    const std::lock_guard<std::mutex> hold(m_mutex);
    return m_showsLevels;
}

void Inbox::SetBusy(bool isBusy) {
    if (m_isBusy != isBusy)
        PostMessageW(m_window, cBusyMessage, isBusy, 0);
    m_isBusy = isBusy;
}

}  // namespace panel
