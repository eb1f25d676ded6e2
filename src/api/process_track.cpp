// SPDX-License-Identifier: MIT
// The trace lines about the process and about the threads that take the callback lock.
#include "api/process_track.h"

#include "api/method_frame.h"
#include "trace/trace.h"

namespace kora4 {
namespace {

void TraceThread(const trace::Site& site) {
    KALTRACE(trace::eProcessTracking, site,
             "processID: 0x%08x threadID: 0x%08x threadProcID: 0x%08x\n",
             static_cast<unsigned>(GetCurrentProcessId()),
             static_cast<unsigned>(GetCurrentThreadId()),
             static_cast<unsigned>(GetProcessIdOfThread(GetCurrentThread())));
}

}  // namespace

ProcessTrack::ProcessTrack() {
    static constexpr trace::Site cSite{cApiTag, "ProcessTrack::ProcessTrack"};
    KALTRACE(trace::eTrackerEntry, cSite, ">>\n");
    const DWORD processID = GetCurrentProcessId();
    KALTRACE(trace::eTrackerStartUp, cSite, "Process ID: %d\n\n", static_cast<int>(processID));
    DWORD handleCount = 0;
    if (!GetProcessHandleCount(GetCurrentProcess(), &handleCount)) {
        handleCount = 0;
        KALTRACE(trace::eTrackerStartUp, cSite, "Error obtaining handle count\n\n");
    }
    STARTUPINFOW startup{};
    GetStartupInfoW(&startup);
    KALTRACE(trace::eTrackerStartUp, cSite,
             "Process startup info:\n"
             "       processID: 0x%08x\n"
             "    handle count: %d\n"
             "       lpDesktop: %S\n"
             "         lpTitle: %S\n",
             static_cast<unsigned>(processID), static_cast<int>(handleCount),
             startup.lpDesktop ? startup.lpDesktop : L"No DT",
             startup.lpTitle ? startup.lpTitle : L"No Title");
}

void ProcessTrack::Enter() {
    static constexpr trace::Site cSite{cApiTag, "ProcessTrack::Enter"};
    TraceThread(cSite);
}

void ProcessTrack::Leave() {
    static constexpr trace::Site cSite{cApiTag, "ProcessTrack::Leave"};
    TraceThread(cSite);
}

}  // namespace kora4
