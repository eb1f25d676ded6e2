// SPDX-License-Identifier: MIT
// The thread that makes every call of the library. The window only posts to it and is posted
// to, so it never waits, however long a call takes.
#ifndef KORA4_PANEL_WORKER_WORKER_H
#define KORA4_PANEL_WORKER_WORKER_H

#include <atomic>
#include <memory>
#include <thread>

#include "panel/worker/connection.h"
#include "panel/worker/inbox.h"

namespace panel {

class Worker {
  public:
    explicit Worker(HWND window);
    // Waits for the thread, a second at most: one that waits for another program's mutex ends
    // with the process.
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Ask(Command command) { m_inbox->Push(std::move(command)); }
    void ShowLevels(bool isShown) { m_inbox->ShowLevels(isShown); }

  private:
    // Lives as long as the thread, which may outlive the Worker.
    std::shared_ptr<Inbox> m_inbox;
    std::thread m_thread;
    std::shared_ptr<std::atomic<bool>> m_hasEnded;
};

}  // namespace panel

#endif  // KORA4_PANEL_WORKER_WORKER_H
