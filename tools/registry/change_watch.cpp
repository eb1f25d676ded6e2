// SPDX-License-Identifier: MIT
// The registry notification behind the watch, armed again before anything is read.
#include "registry/change_watch.h"

#include "contract/registry_paths.h"
#include "process/win32_failure.h"

namespace kora4::tools {
namespace {

[[noreturn]] void Refuse(const char* doing, LSTATUS status) {
    const bool isMissing = status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND ||
                           status == ERROR_KEY_DELETED;
    throw Win32Failure(static_cast<DWORD>(status), doing,
                       isMissing ? "Run 'kora4ctl register' as an administrator."
                                 : "Run 'kora4ctl doctor' to find out why.",
                       isMissing ? ExitCode::eNotReady : ExitCode::eFailed);
}

}  // namespace

ChangeWatch::ChangeWatch() : m_event(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, cDynamicKeysPath, 0,
                                         KEY_NOTIFY | KEY_WOW64_64KEY, m_key.Put());
    if (status != ERROR_SUCCESS)
        Refuse("Opening the dynamic keys", status);
    Rearm();
}

void ChangeWatch::Rearm() {
    constexpr DWORD cEvents = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;
    const LSTATUS status =
        RegNotifyChangeKeyValue(m_key.Get(), TRUE, cEvents, m_event.Get(), TRUE);
    if (status != ERROR_SUCCESS)
        Refuse("Watching the dynamic keys", status);
}

ChangeWatch::Wake ChangeWatch::Wait(DWORD milliseconds, HANDLE interrupt) {
    const HANDLE handles[] = {m_event.Get(), interrupt};
    switch (WaitForMultipleObjects(interrupt ? 2 : 1, handles, FALSE, milliseconds)) {
        case WAIT_OBJECT_0:
            Rearm();
            return Wake::eChanged;
        case WAIT_OBJECT_0 + 1:
            return Wake::eInterrupted;
        case WAIT_TIMEOUT:
            return Wake::eTimedOut;
        default:
            throw Win32Failure(GetLastError(), "Waiting for a change of the store failed");
    }
}

}  // namespace kora4::tools
