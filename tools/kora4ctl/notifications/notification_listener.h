// SPDX-License-Identifier: MIT
// What the library tells its clients, one after the other.
#pragma once

#include <kora4.hpp>

#include <optional>
#include <string>
#include <vector>

#include "base/output.h"
#include "base/utc_time.h"
#include "kora4ctl/notifications/message_wait.h"
#include "kora4ctl/notifications/watched_keys.h"

namespace kora4::tools {

// One call of the library.
struct Notification {
    UtcTime time;
    ULONGLONG tick = 0;  // milliseconds of the machine's uptime
    std::string event;   // "enable", "profile", "switch", "value", "graphic-eq", "table"
    std::string name;    // of the setting; of a table "custom-profiles"
    // As in a settings document; of the graphic equalizer {"frequencies", "gains"}, of a table
    // {"p1": "...", ...} with null for profiles that do not exist. Null: it could not be read.
    Json value;
    std::string text;  // the value for people

    // "14:03:22.123Z  volume-leveler  7"
    std::string Line() const;
    // {"time", "event", "name", "value"}
    Json Document() const;
};

// The values and switches of the active profile, as if each of them had been told now; the
// event is "snapshot". Failure when one cannot be read.
std::vector<Notification> SnapshotOf(Api& api);

// Registered with the object for as long as it lives. Belongs to the thread of the object's
// apartment, which hears notifications while it is in Wait.
class NotificationListener {
  public:
    // Failure when the library refuses.
    NotificationListener(Api& api, HANDLE interrupt);
    ~NotificationListener();
    NotificationListener(const NotificationListener&) = delete;
    NotificationListener& operator=(const NotificationListener&) = delete;

    // Failure with eNotReady when the store's keys are deleted: the library hears nothing then.
    // eDone: `told` has everything that came together, in its order; one element at least.
    Wake Wait(const Deadline& deadline, std::vector<Notification>& told);

  private:
    class Collector;

    WatchedKeys m_keys;

    Api& m_api;
    const HANDLE m_interrupt;
    Microsoft::WRL::ComPtr<Collector> m_collector;
};

}  // namespace kora4::tools
