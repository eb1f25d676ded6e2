// SPDX-License-Identifier: MIT
// The trace lines about the process and about the threads that take the callback lock.
#include "api/process_track.h"

#include <windows.h>

#include "contract/messages/trace_messages_api.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

template <const contract::TraceMessage& message>
void TraceThread() {
    KALTRACE(message, GetCurrentProcessId(), GetCurrentThreadId(),
             GetProcessIdOfThread(GetCurrentThread()));
}

}  // namespace

ProcessTrack::ProcessTrack() {
    trace::Enter(trace::cSiteOf<msg::cProcessId>, __LINE__);
    const DWORD processID = GetCurrentProcessId();
    KALTRACE(msg::cProcessId, processID);
    DWORD handleCount = 0;
    if (!GetProcessHandleCount(GetCurrentProcess(), &handleCount)) {
        handleCount = 0;
        KALTRACE(msg::cNoHandleCount);
    }
    STARTUPINFOW startup{};
    GetStartupInfoW(&startup);
    KALTRACE(msg::cProcessStart, processID, handleCount,
             startup.lpDesktop ? startup.lpDesktop : L"No DT",
             startup.lpTitle ? startup.lpTitle : L"No Title");
}

void ProcessTrack::Enter() {
    TraceThread<msg::cLockTaken>();
}

void ProcessTrack::Leave() {
    TraceThread<msg::cLockGivenUp>();
}

}  // namespace kora4
