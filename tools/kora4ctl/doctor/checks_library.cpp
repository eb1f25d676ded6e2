// SPDX-License-Identifier: MIT
// Checks of the library as a client uses it. They run on a thread of their own: a call that
// hangs must not hang the doctor.
#include "kora4ctl/doctor/checks.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "kora4ctl/notifications/notification_listener.h"
#include "platform/handles.h"
#include "process/api_session.h"
#include "settings/schema.h"

namespace kora4::tools {
namespace {

// Below this, in dB, nobody hears anything.
constexpr float cSilence = -100;

// In milliseconds. A call that does not hang has returned by then, and the process can end in
// the ordinary way.
constexpr DWORD cLastChance = 500;

// What a trial finds out. Shared, because its thread may outlive whoever waits for it.
struct Trial {
    UniqueHandle done{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CheckResult result;
    bool isSilent = false;
    std::atomic<const char*> step{"starting"};
};

using TrialBody = std::function<void(Trial&)>;

void Run(const std::shared_ptr<Trial>& trial, const TrialBody& body) {
    try {
        body(*trial);
    } catch (const Failure& failure) {
        trial->result.Error(failure.what(), failure.Next());
    } catch (const std::exception& error) {
        trial->result.Error(std::string("Unexpected error: ") + error.what());
    }
    SetEvent(trial->done.Get());
}

// None when the trial hangs or was interrupted; the result then has a finding that says so.
std::shared_ptr<Trial> Await(Examination& examination, CheckResult& result,
                             const TrialBody& body) {
    auto trial = std::make_shared<Trial>();
    std::thread thread([trial, body] { Run(trial, body); });
    // Allows for the waits of the trial itself.
    const DWORD patience = 3 * examination.patience;
    const HANDLE events[] = {examination.context.interrupt.Event(), trial->done.Get()};
    const DWORD ended = WaitForMultipleObjects(2, events, FALSE, patience);
    if (ended == WAIT_OBJECT_0 + 1) {
        thread.join();
        result = trial->result;
        return trial;
    }
    if (ended == WAIT_OBJECT_0) {
        // Interrupted by the user: that says nothing about the library.
        result.Note("Interrupted.");
        if (WaitForSingleObject(trial->done.Get(), cLastChance) == WAIT_OBJECT_0) {
            thread.join();
            return nullptr;
        }
    }
    thread.detach();
    examination.hasHungThread = true;
    if (ended == WAIT_OBJECT_0)
        return nullptr;
    result.Error(std::string("The library hangs while ") + trial->step.load() + ".",
                 "See what it does: run kora4ctl trace on all --files, then this again, then "
                 "kora4ctl trace show");
    return nullptr;
}

bool AreSilent(const Api& api) {
    const Result<Levels> levels = api.GetVisualizationData();
    return levels &&
           std::ranges::all_of(levels->gains, [](float gain) { return gain <= cSilence; });
}

void UseLibrary(Trial& trial) {
    trial.step = "an object is created and initialised";
    const ULONGLONG begin = GetTickCount64();
    ApiSession api;
    const ULONGLONG ready = GetTickCount64();
    trial.step = "it is asked for the active profile";
    Check(api->GetActiveProfile(), "Reading the active profile");
    trial.step = "it is asked for the levels";
    trial.isSilent = AreSilent(*api);
    trial.step = "the object is released";
    trial.result.summary = "initialised in " + std::to_string(ready - begin) + " ms, answers";
}

// Whether the library tells of a changed value in time.
bool HearsOfValue(NotificationListener& listener, const Deadline& deadline) {
    for (std::vector<Notification> told;;) {
        const Wake wake = listener.Wait(deadline, told);
        for (const Notification& one : told)
            if (one.event == "value")
                return true;
        if (wake != Wake::eDone)
            return false;
    }
}

void BeTold(const Examination& examination, Trial& trial) {
    trial.step = "an object is created and initialised";
    ApiSession api;
    trial.step = "a callback is registered";
    NotificationListener listener(*api, examination.context.interrupt.Event());
    const ULONGLONG begin = GetTickCount64();
    trial.step = "a change is announced";
    {
        const OpenedStore opened(examination, OpenMode::eReadWrite);
        opened->Bump(TriggerValue({Family::ePreset, eEnhancementTech}).key);
    }
    trial.step = "a notification is expected";
    if (HearsOfValue(listener, Deadline(examination.patience / 1000.0)))
        trial.result.summary =
            "a notification arrived after " + std::to_string(GetTickCount64() - begin) + " ms";
    else
        trial.result.Error("A client was not notified of a change within " +
                               Decimal(static_cast<float>(examination.patience) / 1000) + " s.",
                           "See what the library reports: kora4ctl trace on messages "
                           "notification-threads security --files");
    trial.step = "the callback is unregistered";
    Check(api->UnregisterChangeNotifications(), "Ending the notifications");
    trial.step = "the object is released";
}

}  // namespace

CheckResult CheckLibrary(Examination& examination) {
    CheckResult result;
    if (const auto trial = Await(examination, result, UseLibrary))
        examination.isSilent = trial->isSilent;
    return result;
}

CheckResult CheckNotifications(Examination& examination) {
    CheckResult result;
    Await(examination, result, [copy = examination](Trial& trial) { BeTold(copy, trial); });
    return result;
}

}  // namespace kora4::tools
