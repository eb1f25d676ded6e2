// The end of a monitor thread by force. A program of its own: a thread that is ended so
// never leaves the multithreaded apartment, which then stays for the life of the process.
#include <gmock/gmock.h>
#include <objbase.h>

#include <cstdio>
#include <string>

#include "support/trace_capture.h"
#include "support/trace_flags.h"
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

// The thread's id, its handle and that of the event that it sets at its end.
std::string ZombieLine(OpenMonitor& monitor) {
    const MonitorSessionPtr spSession = monitor.Session();
    char text[64];
    snprintf(text, sizeof text, "Zombie thread 0x%08lx 0x%08lx 0x%08lx",
             GetThreadId(spSession->Thread()), HandleToULong(spSession->Thread()),
             HandleToULong(spSession->ExitedEvent()));
    return text;
}

// Nothing but force ends a thread that is suspended.
TEST(MonitorStopByForce, EndsAThreadThatCannotEndByItself) {
    TraceLog log;
    RunIn(Apartment::eMulti, [&log] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(monitor.Spawn(key, client), S_OK);
        const UniqueHandle thread = monitor->DuplicateThread();
        ASSERT_NE(SuspendThread(thread.Get()), static_cast<DWORD>(-1));
        const std::string zombie = ZombieLine(*monitor.Get());
        const TraceFlags traced(trace::eSecurity | trace::eLogFiles);
        log.Clear();
        const double time = Measure([&] { monitor->TerminateRegMonitor(); });
        EXPECT_THAT(MessagesOf(log.Read("RegKeyMonitor"), "RegKeyMonitor::HaltMonitorThread"),
                    testing::ElementsAre(">>", zombie, "<<"));
        EXPECT_LT(time, RegKeyMonitor::cGraceMilliseconds + 1000.0);
        DWORD exitCode = 0;
        GetExitCodeThread(thread.Get(), &exitCode);
        EXPECT_EQ(exitCode, static_cast<DWORD>(WAIT_TIMEOUT));
        EXPECT_FALSE(monitor->IsMonitoring());
        // The terminated thread held one reference to the gate and cannot give it back.
        EXPECT_EQ(monitor.References(), 2u);
        monitor->Release();
        // Its share in the factory has gone with it: no class is registered here any more.
        monitor.TearDown();
        GateFactoryRegistration registration;
        ASSERT_EQ(registration.Register(), S_OK);
        registration.Revoke();
        Microsoft::WRL::ComPtr<IUnknown> spFactory;
        EXPECT_EQ(
            CoGetClassObject(__uuidof(ICOMCallbackGate), CLSCTX_INPROC_SERVER, nullptr,
                             __uuidof(IUnknown),
                             reinterpret_cast<void**>(spFactory.ReleaseAndGetAddressOf())),
            REGDB_E_CLASSNOTREG);
    });
    EXPECT_FALSE(Module::IsLocked());
}

}  // namespace
}  // namespace kora4::test
