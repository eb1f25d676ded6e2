// SPDX-License-Identifier: MIT
// The changes of a recording, made again.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kora4ctl/recording/recording.h"
#include "process/api_session.h"
#include "process/program.h"
#include "registry/store_access.h"
#include "settings/document.h"
#include "settings/setting_values.h"

namespace kora4::tools {

// What the library has methods for goes through it, so that other clients are told as they
// were then: profiles and demos, the table, switches, values. What the methods refuse, and
// what changed without being told, goes through the store. Belongs to one thread.
class Replayer {
  public:
    // Failure when the library or the store cannot be used.
    explicit Replayer(const Context& context);

    // The settings as they were when the recording began.
    void Restore(const Json& settings);

    // Makes the changes of one group.
    void Make(const RecordedGroup& group);
    // What is stored otherwise than there.
    std::vector<Difference> DifferencesFrom(const Plan& settings);

  private:
    // Each makes one kind of change by the library's methods and ignores their results.
    void Create(const Json& table);
    void Delete(const Json& table);
    void GoTo(const Json& profile, bool isEnabled);
    void Change(const Json& event);
    void Set(const Setting& setting, const Value& value);
    void SetBands(const Json& bands);
    bool IsEnabled();
    std::string NameOf(LONG profile);

    // The settings as stored now; and writing what the library did not take.
    Json Stored();
    void Store(const Json& settings);

    const Context& m_context;
    ApiSession m_api;
    const std::unique_ptr<StoreAccess> m_store;
};

}  // namespace kora4::tools
