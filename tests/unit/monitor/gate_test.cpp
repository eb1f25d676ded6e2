// SPDX-License-Identifier: MIT
// The gate's way from one apartment to another, and the registration that it needs.
#include <objbase.h>

#include <functional>
#include <vector>

#include "proxy/proxy_factory.h"
#include "support/import_redirection.h"
#include "unit/monitor/monitor_fixture.h"

namespace kora4::test {
namespace {

using Gate = Microsoft::WRL::ComPtr<ICOMCallbackGate>;
const IID& cGateIid = __uuidof(ICOMCallbackGate);

HRESULT TakeFrom(GateStreamHolder& holder, GateFactoryRegistration& registration,
                 Gate& spGate) {
    return holder.Unmarshal(cGateIid, reinterpret_cast<void**>(spGate.ReleaseAndGetAddressOf()),
                            registration);
}

bool IsFactoryFound() {
    Microsoft::WRL::ComPtr<IUnknown> spFactory;
    return SUCCEEDED(
        CoGetClassObject(cGateIid, CLSCTX_INPROC_SERVER, nullptr, __uuidof(IUnknown),
                         reinterpret_cast<void**>(spFactory.ReleaseAndGetAddressOf())));
}

class GateInApartment : public InApartment {};

TEST_P(GateInApartment, MarshallingNothingRegistersNothing) {
    Run([] {
        GateStreamHolder holder;
        GateFactoryRegistration registration;
        EXPECT_EQ(E_INVALIDARG, holder.Marshal(cGateIid, nullptr, registration));
        EXPECT_FALSE(registration.IsRegistered());
        Gate spGate;
        EXPECT_EQ(E_FAIL, TakeFrom(holder, registration, spGate));
        EXPECT_FALSE(IsFactoryFound());
    });
}

TEST_P(GateInApartment, UnmarshallingTwiceFindsNoStream) {
    Run([] {
        MonitorOwner object;
        GateStreamHolder holder;
        GateFactoryRegistration marshalled;
        GateFactoryRegistration registration;
        Gate spGate;
        ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), marshalled));
        EXPECT_EQ(E_INVALIDARG, holder.Unmarshal(cGateIid, nullptr, registration));
        EXPECT_EQ(S_OK, TakeFrom(holder, registration, spGate));
        EXPECT_EQ(E_FAIL, TakeFrom(holder, registration, spGate));
        spGate.Reset();
        EXPECT_EQ(1u, object.References());
    });
}

TEST_P(GateInApartment, TheSameApartmentGetsTheObjectItselfAndOneReference) {
    Run([] {
        MonitorOwner object;
        GateStreamHolder holder;
        GateFactoryRegistration marshalled;
        GateFactoryRegistration registration;
        Gate spGate;
        ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), marshalled));
        ASSERT_EQ(S_OK, TakeFrom(holder, registration, spGate));
        EXPECT_EQ(static_cast<ICOMCallbackGate*>(object.Get()), spGate.Get());
        EXPECT_EQ(2u, object.References());
    });
}

TEST_P(GateInApartment, AStreamThatNobodyTookGivesItsReferencesBack) {
    Run([] {
        MonitorOwner object;
        GateFactoryRegistration registration;
        {
            GateStreamHolder holder;
            ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), registration));
            EXPECT_LT(1u, object.References());
            // Marshalled again, the first stream goes.
            ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), registration));
        }
        EXPECT_EQ(1u, object.References());
    });
}

TEST_P(GateInApartment, TheRegistrationLastsAsLongAsItsLastShare) {
    Run([] {
        GateFactoryRegistration first;
        GateFactoryRegistration second;
        GateFactoryRegistration third;
        ASSERT_EQ(S_OK, first.Register());
        ASSERT_EQ(S_OK, second.Register());
        first.Revoke();
        EXPECT_TRUE(IsFactoryFound());
        ASSERT_EQ(S_OK, third.Register());
        ASSERT_EQ(S_OK, third.Register());
        second.Revoke();
        second.Revoke();
        EXPECT_TRUE(IsFactoryFound());
        third.Revoke();
        EXPECT_FALSE(IsFactoryFound());
    });
}

// A platform that keeps several registrations of one class, as Windows does: each has a cookie
// of its own. Of the tests' platforms none does.
struct SeveralRegistrations {
    std::vector<DWORD> revoked;
    DWORD lastCookie = 0;
    HRESULT revokeResult = S_OK;
    const ImportRedirection registering{GetModuleHandleW(nullptr), "CoRegisterClassObject",
                                        &Register};
    const ImportRedirection revoking{GetModuleHandleW(nullptr), "CoRevokeClassObject", &Revoke};

    SeveralRegistrations() { s_pThis = this; }

    static HRESULT WINAPI Register(REFCLSID, IUnknown*, DWORD, DWORD, DWORD* pCookie) {
        *pCookie = ++s_pThis->lastCookie;
        return S_OK;
    }
    static HRESULT WINAPI Revoke(DWORD cookie) {
        s_pThis->revoked.push_back(cookie);
        return s_pThis->revokeResult;
    }

    static inline SeveralRegistrations* s_pThis = nullptr;
};

TEST_P(GateInApartment, TheNewestRegistrationServesAllSharesWhereThePlatformKeepsSeveral) {
    Run([] {
        SeveralRegistrations platform;
        ASSERT_TRUE(platform.registering.IsInPlace() && platform.revoking.IsInPlace());
        GateFactoryRegistration first;
        GateFactoryRegistration second;
        ASSERT_EQ(S_OK, first.Register());
        ASSERT_EQ(S_OK, second.Register());
        EXPECT_EQ(std::vector<DWORD>{1}, platform.revoked);
        first.Revoke();
        EXPECT_EQ(std::vector<DWORD>{1}, platform.revoked);
        second.Revoke();
        EXPECT_EQ((std::vector<DWORD>{1, 2}), platform.revoked);
    });
}

// The host has left the apartment and entered it again: COM has forgotten the registration.
TEST_P(GateInApartment, SharesOfARegistrationThatIsGoneCountNoMore) {
    Run([] {
        SeveralRegistrations platform;
        GateFactoryRegistration first;
        GateFactoryRegistration second;
        ASSERT_EQ(S_OK, first.Register());
        platform.revokeResult = E_INVALIDARG;
        ASSERT_EQ(S_OK, second.Register());
        platform.revoked.clear();
        second.Revoke();
        EXPECT_EQ(std::vector<DWORD>{2}, platform.revoked);
        first.Revoke();
        EXPECT_EQ(std::vector<DWORD>{2}, platform.revoked);
    });
}

HRESULT WINAPI IsRegisteredAlready(REFCLSID, IUnknown*, DWORD, DWORD, DWORD*) {
    return CO_E_OBJISREG;
}

TEST_P(GateInApartment, ARegistrationThatThePlatformHasAlreadyIsShared) {
    Run([] {
        GateFactoryRegistration first;
        GateFactoryRegistration second;
        ASSERT_EQ(S_OK, first.Register());
        {
            const ImportRedirection registering(GetModuleHandleW(nullptr),
                                                "CoRegisterClassObject", &IsRegisteredAlready);
            ASSERT_TRUE(registering.IsInPlace());
            ASSERT_EQ(S_OK, second.Register());
        }
        first.Revoke();
        EXPECT_TRUE(IsFactoryFound());
        second.Revoke();
        EXPECT_FALSE(IsFactoryFound());
    });
}

// The host may have made the same class known here, and may take it away at any time.
TEST_P(GateInApartment, WorksBesideTheHostsOwnRegistration) {
    Run([] {
        Microsoft::WRL::ComPtr<IUnknown> spFactory;
        ASSERT_EQ(S_OK, PrxDllGetClassObject(
                            cGateIid, __uuidof(IUnknown),
                            reinterpret_cast<void**>(spFactory.ReleaseAndGetAddressOf())));
        DWORD cookie = 0;
        ASSERT_EQ(S_OK, CoRegisterClassObject(cGateIid, spFactory.Get(), CLSCTX_INPROC_SERVER,
                                              REGCLS_MULTIPLEUSE, &cookie));
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        ASSERT_EQ(S_OK, CoRevokeClassObject(cookie));
        key.Write();
        EXPECT_TRUE(client.AwaitCall(GetParam()));
        RecordingClient other;
        MonitorOwner second;
        ASSERT_EQ(S_OK, second.Spawn(key, other));
        monitor.TearDown();
        key.Write();
        EXPECT_TRUE(other.AwaitCall(GetParam()));
    });
}

KORA4_IN_APARTMENTS(GateInApartment, Apartment::eSingle, Apartment::eMulti);

// What is registered points into the module.
TEST(GateLeftInItsApartment, LocksTheModuleUntilTheNextOneThere) {
    RunIn(Apartment::eMulti, [] {
        GateFactoryRegistration left;
        ASSERT_EQ(S_OK, left.Register());
        EXPECT_FALSE(Module::IsLocked());
        RunInNewThread(Apartment::eSingle, [&left] { left.Revoke(); });
        EXPECT_TRUE(IsFactoryFound());
        EXPECT_TRUE(Module::IsLocked());
        GateFactoryRegistration next;
        ASSERT_EQ(S_OK, next.Register());
        EXPECT_FALSE(Module::IsLocked());
        next.Revoke();
        EXPECT_FALSE(IsFactoryFound());
    });
}

TEST(GateLeftInItsApartment, LocksTheModuleUntilTheApartmentEnds) {
    RunInNewThread(Apartment::eSingle, [] {
        TestKey key;
        RecordingClient client;
        MonitorOwner monitor;
        ASSERT_EQ(S_OK, monitor.Spawn(key, client));
        const UniqueHandle done = MakeManualEvent();
        ApartmentThread other(Apartment::eMulti);
        other.Begin([&] {
            monitor.TearDown();
            SetEvent(done.Get());
        });
        EXPECT_TRUE(PumpUntilSignalled(done.Get()));
        other.Await();
        EXPECT_TRUE(IsFactoryFound());
        EXPECT_TRUE(Module::IsLocked());
    });
    EXPECT_FALSE(Module::IsLocked());
}

TEST(Gate, CarriesResultsBetweenApartments) {
    RunIn(Apartment::eSingle, [] {
        TestKey key;
        RecordingClient client;
        client.result = E_ACCESSDENIED;
        MonitorOwner object;
        ASSERT_EQ(S_OK, object.Spawn(key, client));
        GateStreamHolder holder;
        GateFactoryRegistration registration;
        ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), registration));
        std::function<void()> call = [&holder] {
            RunIn(Apartment::eMulti, [&holder] {
                GateFactoryRegistration other;
                Gate spGate;
                ASSERT_EQ(S_OK, TakeFrom(holder, other, spGate));
                EXPECT_EQ(E_ACCESSDENIED, spGate->Callback(0));
            });
        };
        const UniqueHandle thread(CreateThread(
            nullptr, 0,
            [](void* pBody) -> DWORD {
                (*static_cast<std::function<void()>*>(pBody))();
                return 0;
            },
            &call, 0, nullptr));
        EXPECT_TRUE(PumpUntilSignalled(thread.Get()));
        EXPECT_EQ(GetCurrentThreadId(), client.threadId);
        object->TerminateRegMonitor();
        EXPECT_EQ(1u, object.References());
    });
}

TEST(Gate, NeedsAnApartmentToBeMarshalledIn) {
    RunIn(Apartment::eNone, [] {
        MonitorOwner object;
        GateStreamHolder holder;
        GateFactoryRegistration registration;
        EXPECT_EQ(CO_E_NOTINITIALIZED, holder.Marshal(cGateIid, object.Get(), registration));
        EXPECT_FALSE(registration.IsRegistered());
        Gate spGate;
        EXPECT_EQ(E_FAIL, TakeFrom(holder, registration, spGate));
    });
}

// Call cancellation, as a platform that has it would be asked.
class Cancellation final : public ICancelMethodCalls {
  public:
    Cancellation() {
        s_pInstance = this;
        GateStreamHolder::SetCancelObjectSource(&Source);
    }
    ~Cancellation() { GateStreamHolder::SetCancelObjectSource(nullptr); }

    static HRESULT WINAPI Source(DWORD id, REFIID iid, void** ppv) {
        s_pInstance->threadId = id;
        ++s_pInstance->asked;
        if (FAILED(s_pInstance->result))
            return s_pInstance->result;
        EXPECT_TRUE(iid == __uuidof(ICancelMethodCalls));
        s_pInstance->AddRef();
        *ppv = static_cast<ICancelMethodCalls*>(s_pInstance);
        return S_OK;
    }

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
    STDMETHODIMP Cancel(ULONG seconds) override {
        ++cancelled;
        timeout = seconds;
        return E_FAIL;
    }
    STDMETHODIMP TestCancel() override { return S_OK; }

    HRESULT result = S_OK;
    DWORD threadId = 0;
    int asked = 0;
    int cancelled = 0;
    ULONG timeout = 17;
    int references = 0;

  private:
    static inline Cancellation* s_pInstance = nullptr;
};

// The thread whose outstanding call would be cancelled; 0 when there is none.
DWORD ThreadToCancel(GateStreamHolder& holder) {
    Cancellation cancellation;
    cancellation.result = E_NOINTERFACE;
    holder.CancelOutstandingCall();
    return cancellation.threadId;
}

TEST_P(GateInApartment, RevokingForgetsTheThreadAndTheRegistration) {
    Run([] {
        MonitorOwner object;
        GateStreamHolder holder;
        GateFactoryRegistration marshalled;
        GateFactoryRegistration registration;
        Gate spGate;
        ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), marshalled));
        EXPECT_EQ(0u, ThreadToCancel(holder));
        ASSERT_EQ(S_OK, TakeFrom(holder, registration, spGate));
        EXPECT_EQ(GetCurrentThreadId(), ThreadToCancel(holder));
        holder.Revoke(registration);
        EXPECT_EQ(0u, ThreadToCancel(holder));
        EXPECT_FALSE(registration.IsRegistered());
        EXPECT_TRUE(IsFactoryFound());
        holder.Revoke(marshalled);
        EXPECT_FALSE(IsFactoryFound());
    });
}

TEST(CallCancellation, IsAskedForTheMonitorThreadWithoutDelay) {
    for (const HRESULT result : {S_OK, E_NOINTERFACE}) {
        RunIn(Apartment::eSingle, [result] {
            Cancellation cancellation;
            cancellation.result = result;
            TestKey key;
            RecordingClient client;
            MonitorOwner monitor;
            ASSERT_EQ(S_OK, monitor.Spawn(key, client));
            const UniqueHandle thread = monitor->DuplicateThread();
            key.Write();
            ASSERT_TRUE(AwaitPendingCall());
            EXPECT_GT(cStopLimit, Measure([&] { monitor->TerminateRegMonitor(); }));
            EXPECT_EQ(1, cancellation.asked);
            EXPECT_EQ(GetThreadId(thread.Get()), cancellation.threadId);
            EXPECT_EQ(SUCCEEDED(result) ? 1 : 0, cancellation.cancelled);
            EXPECT_EQ(SUCCEEDED(result) ? 0u : 17u, cancellation.timeout);
            EXPECT_EQ(0, cancellation.references);
            EXPECT_EQ(0, client.calls);
        });
    }
}

// A gate in the thread's own apartment, which notes how it is called and given up.
class NotingGate final : public ICOMCallbackGate {
  public:
    explicit NotingGate(MonitorSession& session) : m_session(session) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        const bool known = iid == __uuidof(IUnknown) || iid == cGateIid;
        *ppv = known ? this : nullptr;
        if (known)
            AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override {
        if (called) {
            idAtRelease = ThreadToCancel(m_session.Holder());
            canBeCancelledAtRelease = CoDisableCallCancellation(nullptr) == S_OK;
        }
        return static_cast<ULONG>(--references);
    }
    STDMETHODIMP Callback(ULONG) override {
        called = true;
        idAtCall = ThreadToCancel(m_session.Holder());
        canBeCancelledAtCall = CoDisableCallCancellation(nullptr) == S_OK;
        CoEnableCallCancellation(nullptr);
        SetEvent(m_session.StopEvent());
        return S_OK;
    }

    bool called = false;
    bool canBeCancelledAtCall = false;
    bool canBeCancelledAtRelease = true;
    DWORD idAtCall = 0;
    DWORD idAtRelease = 17;
    std::atomic<int> references{1};

  private:
    MonitorSession& m_session;
};

TEST(CallCancellation, ReachesTheNotificationButNotTheReleaseOfTheGate) {
    RunIn(Apartment::eMulti, [] {
        TestKey key;
        MonitorSessionPtr spSession;
        *spSession.GetAddressOf() = new MonitorSession(HKEY_CURRENT_USER, key.Path());
        ASSERT_EQ(S_OK, spSession->MakeControls());
        NotingGate gate(*spSession.Get());
        GateFactoryRegistration marshalled;
        ASSERT_EQ(S_OK, spSession->Holder().Marshal(cGateIid, &gate, marshalled));
        ApartmentThread writer(Apartment::eSingle);
        writer.Begin([&] {
            if (IsSignalledWithin(spSession->ReadyEvent()))
                key.Write();
        });
        EXPECT_EQ(S_OK, OpenMonitor::RunRegMonitor(spSession.Get()));
        writer.Await();
        EXPECT_TRUE(gate.called);
        EXPECT_TRUE(gate.canBeCancelledAtCall);
        EXPECT_EQ(GetCurrentThreadId(), gate.idAtCall);
        EXPECT_FALSE(gate.canBeCancelledAtRelease);
        EXPECT_EQ(0u, gate.idAtRelease);
        EXPECT_EQ(1, gate.references);
        EXPECT_EQ(CO_E_CANCEL_DISABLED, CoDisableCallCancellation(nullptr));
    });
}

TEST(CallCancellation, IsOverWhenTheGateCannotBeTakenOut) {
    RunIn(Apartment::eMulti, [] {
        MonitorOwner object;
        GateStreamHolder holder;
        GateFactoryRegistration marshalled;
        GateFactoryRegistration registration;
        Microsoft::WRL::ComPtr<IUnknown> spOther;
        ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), marshalled));
        EXPECT_EQ(E_NOINTERFACE,
                  holder.Unmarshal(__uuidof(IDispatch),
                                   reinterpret_cast<void**>(spOther.ReleaseAndGetAddressOf()),
                                   registration));
        EXPECT_EQ(0u, ThreadToCancel(holder));
        EXPECT_EQ(CO_E_CANCEL_DISABLED, CoDisableCallCancellation(nullptr));
    });
}

TEST(CallCancellation, IsNotAskedForWhenTheThreadHasEndedIt) {
    RunIn(Apartment::eMulti, [] {
        Cancellation cancellation;
        MonitorOwner object;
        GateStreamHolder holder;
        GateFactoryRegistration marshalled;
        GateFactoryRegistration registration;
        Gate spGate;
        ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), marshalled));
        ASSERT_EQ(S_OK, TakeFrom(holder, registration, spGate));
        holder.EndCancellation();
        holder.EndCancellation();
        EXPECT_EQ(CO_E_CANCEL_DISABLED, CoDisableCallCancellation(nullptr));
        holder.CancelOutstandingCall();
        EXPECT_EQ(0, cancellation.asked);
    });
}

TEST(CallCancellation, IsNotAskedForWithoutAThread) {
    Cancellation cancellation;
    GateStreamHolder holder;
    holder.CancelOutstandingCall();
    EXPECT_EQ(0, cancellation.asked);
}

TEST(CallCancellation, IsDoneWithoutWhereThePlatformHasNone) {
    RunIn(Apartment::eMulti, [] {
        MonitorOwner object;
        GateStreamHolder holder;
        GateFactoryRegistration marshalled;
        GateFactoryRegistration registration;
        Gate spGate;
        ASSERT_EQ(S_OK, holder.Marshal(cGateIid, object.Get(), marshalled));
        ASSERT_EQ(S_OK, TakeFrom(holder, registration, spGate));
        holder.CancelOutstandingCall();
        EXPECT_EQ(GetCurrentThreadId(), ThreadToCancel(holder));
    });
}

}  // namespace
}  // namespace kora4::test
