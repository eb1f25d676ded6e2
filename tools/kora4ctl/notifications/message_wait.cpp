// SPDX-License-Identifier: MIT
// The message loop behind every wait of a verb that listens.
#include "kora4ctl/notifications/message_wait.h"

#include <algorithm>
#include <cmath>

namespace kora4::tools {

namespace {

// Longer waits are made of several.
constexpr ULONGLONG cLongestWait = 24ULL * 60 * 60 * 1000;

void TakeMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

Deadline::Deadline(double seconds) {
    // A century is as good as never, and fits.
    constexpr double cLongest = 100.0 * 365 * 24 * 60 * 60;
    m_end = GetTickCount64() +
            static_cast<ULONGLONG>(std::ceil(std::clamp(seconds, 0.0, cLongest) * 1000));
}

DWORD Deadline::Left() const {
    if (!IsLimited())
        return INFINITE;
    const ULONGLONG now = GetTickCount64();
    return now >= m_end ? 0 : static_cast<DWORD>(std::min(m_end - now, cLongestWait));
}

Wake WaitWithMessages(HANDLE interrupt, const Deadline& deadline,
                      const std::function<bool()>& isDone, HANDLE awaited) {
    const HANDLE handles[] = {interrupt, awaited};
    for (;;) {
        TakeMessages();
        if (isDone())
            return Wake::eDone;
        if (WaitForSingleObject(interrupt, 0) == WAIT_OBJECT_0)
            return Wake::eInterrupted;
        if (deadline.IsOver())
            return Wake::eTimedOut;
        MsgWaitForMultipleObjectsEx(awaited != nullptr ? 2 : 1, handles, deadline.Left(),
                                    QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

}  // namespace kora4::tools
