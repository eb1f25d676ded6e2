// SPDX-License-Identifier: MIT
// What the tests of the registry key monitor share: a key of their own, a client that
// records, threads in each kind of apartment, and counts of what could leak.
#ifndef KORA4_TESTS_UNIT_MONITOR_MONITOR_FIXTURE_H
#define KORA4_TESTS_UNIT_MONITOR_MONITOR_FIXTURE_H

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <functional>
#include <string>

#include "monitor/reg_key_monitor.h"
#include "platform/com_object.h"
#include "platform/handles.h"

namespace kora4::test {

// Long enough for a loaded machine; a wait that takes this long has failed.
inline constexpr DWORD cPatience = 20'000;
// No stop may take longer.
inline constexpr double cStopLimit = 1000;

// eNone: a thread that has not entered any apartment.
enum class Apartment { eSingle, eMulti, eNone };
std::string NameOf(Apartment kind);

// Runs the body on a new thread in that kind of apartment, to its end. The thread of a
// single-threaded apartment does not pump unless the body does.
void RunInNewThread(Apartment kind, const std::function<void()>& body);

UniqueHandle MakeManualEvent();

// A thread in an apartment that lasts, for one body after the other. The RPC server of
// Wine 8 waits for one handle per apartment that has ever marshalled anything, and stops
// for good at the 64th: tests have to be sparing with apartments.
class ApartmentThread {
  public:
    explicit ApartmentThread(Apartment kind);
    ~ApartmentThread();
    ApartmentThread(const ApartmentThread&) = delete;
    ApartmentThread& operator=(const ApartmentThread&) = delete;

    // Run is Begin and Await in one.
    void Run(std::function<void()> body);
    void Begin(std::function<void()> body);
    void Await();

  private:
    void Serve();

    std::function<void()> m_body;
    UniqueHandle m_begin;
    UniqueHandle m_done;
    UniqueHandle m_thread;
    const Apartment m_kind;
};

// Runs the body on the program's thread for that kind of apartment. eNone: on a new
// thread, with no multithreaded apartment in the process that it would be part of.
void RunIn(Apartment kind, const std::function<void()>& body);

// Waits for the handle and dispatches messages, COM calls among them, meanwhile.
bool PumpUntilSignalled(HANDLE handle, DWORD milliseconds = cPatience);
// The plain wait: lets nothing in.
bool IsSignalledWithin(HANDLE handle, DWORD milliseconds = cPatience);
// True when a COM call stands at the door of this thread's single-threaded apartment. It
// is not let in.
bool AwaitPendingCall();

// Milliseconds that the body took.
double Measure(const std::function<void()>& body);

// Grows with every handle that is not closed. Take it while nothing else runs.
ULONG_PTR NextHandleValue();
inline constexpr ULONG_PTR cHandleStep = 4;

// A registry key that goes, with everything below it, when the test ends.
class TestKey {
  public:
    TestKey();
    ~TestKey();
    TestKey(const TestKey&) = delete;
    TestKey& operator=(const TestKey&) = delete;

    const wchar_t* Path() const { return m_path.c_str(); }
    // Every write changes the value, since an unchanged one need not be reported.
    DWORD Write();
    DWORD WriteBelow(const wchar_t* subkey);
    void CreateBelow(const wchar_t* subkey);
    DWORD Read() const;

  private:
    DWORD WriteTo(const std::wstring& path);

    std::wstring m_path;
    std::atomic<DWORD> m_last{0};
};

// Counts its calls and signals each; runs `hook`, if there is one, and returns `result`.
class RecordingClient final : public RegKeyMonitorClient {
  public:
    RecordingClient();
    HRESULT OnKeyChangeNotify() override;

    // Pumps, or waits plainly, for one call after the last that was awaited.
    bool AwaitCall(bool pump);
    bool AwaitCall(Apartment owner) { return AwaitCall(owner == Apartment::eSingle); }

    std::function<void()> hook;
    std::atomic<HRESULT> result{S_OK};
    std::atomic<int> calls{0};
    std::atomic<DWORD> threadId{0};
    std::atomic<bool> inMultithreadedApartment{false};

  private:
    UniqueHandle m_called;
};

// The monitor with its inner steps open to tests.
class OpenMonitor : public RegKeyMonitor {
  public:
    using RegKeyMonitor::ArmNotification;
    using RegKeyMonitor::ReasonOfArmingError;
    using RegKeyMonitor::RegMonitorEntry;
    using RegKeyMonitor::RegMonitorLoop;
    using RegKeyMonitor::RunRegMonitor;
    using RegKeyMonitor::Session;

    // A handle of the test's own; none when idle.
    UniqueHandle DuplicateThread();
};

// The owner's reference to a monitor.
class MonitorOwner {
  public:
    MonitorOwner();
    ~MonitorOwner();
    MonitorOwner(const MonitorOwner&) = delete;
    MonitorOwner& operator=(const MonitorOwner&) = delete;

    ComObject<OpenMonitor>* operator->() const { return m_pMonitor; }
    ComObject<OpenMonitor>* Get() const { return m_pMonitor; }
    HRESULT Spawn(const TestKey& key, RegKeyMonitorClient& client) {
        return m_pMonitor->SpawnRegMonitor(HKEY_CURRENT_USER, key.Path(), &client);
    }
    // As an owner has to: stops the monitor, then drops it.
    void TearDown();
    ULONG References() const;

  private:
    ComObject<OpenMonitor>* m_pMonitor = nullptr;
};

// Tests that hold in each kind of apartment of the owner.
class InApartment : public testing::TestWithParam<Apartment> {
  protected:
    void Run(const std::function<void()>& body) { RunIn(GetParam(), body); }
};

#define KORA4_IN_APARTMENTS(Suite, ...)                               \
    INSTANTIATE_TEST_SUITE_P(Of, Suite, testing::Values(__VA_ARGS__), \
                             [](const auto& kind) { return NameOf(kind.param); })

}  // namespace kora4::test

#endif  // KORA4_TESTS_UNIT_MONITOR_MONITOR_FIXTURE_H
