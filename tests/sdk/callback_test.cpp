// SPDX-License-Identifier: MIT
// The base class of callbacks, and its guard against echo.
#include <atomic>
#include <stdexcept>
#include <thread>

#include "sdk/sdk_fixture.h"

namespace kora4::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

// ---- What is told, in both kinds of apartment -----------------------------------------------

class SdkCallback : public SdkTest, public testing::WithParamInterface<ApartmentKind> {
  protected:
    SdkCallback() : SdkTest(GetParam()) {}

    ComPtr<Recorder> m_recorder = MakeCallback<Recorder>();
    Api m_listening = Opened();
    Api m_other = Opened();
};

INSTANTIATE_TEST_SUITE_P(Apartments, SdkCallback,
                         testing::Values(ApartmentKind::eSingleThreaded,
                                         ApartmentKind::eMultithreaded),
                         [](const auto& kind) {
                             return kind.param == ApartmentKind::eSingleThreaded
                                        ? "SingleThreaded"
                                        : "Multithreaded";
                         });

TEST_P(SdkCallback, EveryHandlerIsCalledOnTheRightThread) {
    EXPECT_TRUE(m_listening.RegisterChangeNotifications(m_recorder.Get()));
    EXPECT_TRUE(m_other.SetVeltoEnable(false));
    EXPECT_TRUE(m_recorder->WaitForLine("enable off"));
    EXPECT_TRUE(m_other.SetTechnologyOnElseOff(eDialogEnhancer, false));
    EXPECT_TRUE(m_recorder->WaitForLine("switch 3 off"));
    EXPECT_TRUE(m_other.SetVolumeLeveler(4));
    EXPECT_TRUE(m_recorder->WaitForLine("value 0 4"));
    EXPECT_TRUE(m_other.SetDialogEnhancer(0.5f));
    EXPECT_TRUE(m_recorder->WaitForLine("value 3 0.5"));
    EXPECT_TRUE(m_other.SetGraphicEQData({{100, 1}, {200, -2}}));
    EXPECT_TRUE(m_recorder->WaitForLine("GraphicEQ: 100 1; 200 -2"));
    EXPECT_TRUE(m_other.CreateCustomProfile(KORA4_PROFILE_P1, L"P"));
    EXPECT_TRUE(m_recorder->WaitForLine("table"));
    EXPECT_TRUE(m_other.SetActiveProfile(KORA4_PROFILE_P1));
    EXPECT_TRUE(m_recorder->WaitForLine("profile 3"));
    EXPECT_EQ(GetParam() == ApartmentKind::eSingleThreaded,
              m_recorder->thread == GetCurrentThreadId());
}

TEST_P(SdkCallback, EmptyHandlersKeepTheNotificationsGoing) {
    class Silent final : public Callback {};
    const ComPtr<Silent> silent = MakeCallback<Silent>();
    EXPECT_TRUE(m_listening.RegisterChangeNotifications(silent.Get()));
    EXPECT_TRUE(m_other.SetVeltoEnable(false));
    EXPECT_TRUE(m_other.SetVolumeLeveler(4));
    // The pass that told them is over when the next one tells the recorder.
    PumpUntil([] { return false; }, nullptr, 200);
    EXPECT_TRUE(m_listening.RegisterChangeNotifications(m_recorder.Get()));
    EXPECT_TRUE(m_other.SetVolumeLeveler(5));
    EXPECT_TRUE(m_recorder->WaitForLine("value 0 5"));
}

TEST_P(SdkCallback, ExceptionStopsAtTheBorderAndTheNextChangeIsTold) {
    m_recorder->reaction = [](const std::string& line) {
        if (line == "enable off")
            throw std::runtime_error("a handler's own trouble");
        if (line == "value 0 4")
            throw 4;
    };
    EXPECT_TRUE(m_listening.RegisterChangeNotifications(m_recorder.Get()));
    EXPECT_TRUE(m_other.SetVeltoEnable(false));
    EXPECT_TRUE(m_recorder->WaitForLine("enable off"));
    EXPECT_TRUE(m_other.SetVolumeLeveler(4));
    EXPECT_TRUE(m_recorder->WaitForLine("value 0 4"));
    EXPECT_TRUE(m_other.SetVolumeLeveler(5));
    EXPECT_TRUE(m_recorder->WaitForLine("value 0 5"));
    EXPECT_EQ(2, m_recorder->exceptions);
}

TEST_P(SdkCallback, IsNotToldAfterItIsUnregistered) {
    EXPECT_TRUE(m_listening.RegisterChangeNotifications(m_recorder.Get()));
    EXPECT_TRUE(m_listening.UnregisterChangeNotifications());
    EXPECT_TRUE(m_other.SetVeltoEnable(false));
    EXPECT_FALSE(m_recorder->WaitForLine("enable off", 300));
}

TEST_P(SdkCallback, LivesAsLongAsSomebodyHoldsIt) {
    bool isDestroyed = false;
    m_recorder->pDestroyed = &isDestroyed;
    EXPECT_TRUE(m_listening.RegisterGuarded(m_recorder.Get()));
    m_recorder.Reset();
    EXPECT_FALSE(isDestroyed);
    EXPECT_TRUE(m_listening.UnregisterChangeNotifications());
    EXPECT_TRUE(PumpUntil([&] { return isDestroyed; }));
}

TEST_P(SdkCallback, AnswersForItsInterfaceAndForNoOther) {
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, m_recorder.As(&unknown));
    ComPtr<IVeltoKORA4APICallback> callback;
    EXPECT_EQ(S_OK, unknown.As(&callback));
    ComPtr<IStream> stream;
    EXPECT_EQ(E_NOINTERFACE, unknown.As(&stream));
    EXPECT_EQ(E_POINTER, m_recorder->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_P(SdkCallback, NullIsRefusedAndTheRegisteredOneStays) {
    EXPECT_TRUE(m_listening.RegisterChangeNotifications(m_recorder.Get()));
    EXPECT_EQ(E_INVALIDARG, m_listening.RegisterChangeNotifications(nullptr).Code());
    EXPECT_EQ(E_INVALIDARG, m_listening.RegisterGuarded(nullptr).Code());
    EXPECT_TRUE(m_other.SetVeltoEnable(false));
    EXPECT_TRUE(m_recorder->WaitForLine("enable off"));
}

// ---- Echo -----------------------------------------------------------------------------------

// A panel that sets what it is told, as one does whose slider tells its own moves.
struct Panel {
    Api api;
    ComPtr<Recorder> recorder = MakeCallback<Recorder>();

    explicit Panel(Api own) : api(std::move(own)) {
        recorder->reaction = [this](const std::string& line) {
            if (line.rfind("value ", 0) == 0)
                (void)api.SetVolumeLeveler(api.GetVolumeLeveler().ValueOr(0));
            else
                (void)api.SetGraphicEQData(api.GetGraphicEQData().ValueOr({}));
        };
    }
    std::size_t Calls() const { return recorder->Log().size(); }
};

TEST_P(SdkCallback, PanelsWithoutAGuardAnswerEachOtherForEver) {
    Panel one(Opened()), two(Opened());
    EXPECT_TRUE(one.api.RegisterChangeNotifications(one.recorder.Get()));
    EXPECT_TRUE(two.api.RegisterChangeNotifications(two.recorder.Get()));
    EXPECT_TRUE(m_other.SetVolumeLeveler(6));
    EXPECT_TRUE(PumpUntil([&] { return one.Calls() + two.Calls() > 20; }));
    EXPECT_TRUE(one.api.UnregisterChangeNotifications());
    EXPECT_TRUE(two.api.UnregisterChangeNotifications());
}

TEST_P(SdkCallback, PanelsWithAGuardAreToldOnceAndThenAreStill) {
    Panel one(Opened()), two(Opened());
    EXPECT_TRUE(one.api.RegisterGuarded(one.recorder.Get()));
    EXPECT_TRUE(two.api.RegisterGuarded(two.recorder.Get()));
    EXPECT_TRUE(m_other.SetVolumeLeveler(6));
    EXPECT_TRUE(PumpUntil([&] { return one.Calls() > 0 && two.Calls() > 0; }));
    EXPECT_TRUE(m_other.SetGraphicEQData({{100, 2.5f}, {300, -7.75f}}));
    EXPECT_TRUE(PumpUntil([&] { return one.Calls() > 1 && two.Calls() > 1; }));
    PumpUntil([] { return false; }, nullptr, 300);
    const Lines expected = {"value 0 6", "GraphicEQ: 100 2.5; 300 -7.75"};
    EXPECT_EQ(expected, one.recorder->Log());
    EXPECT_EQ(expected, two.recorder->Log());
    EXPECT_TRUE(one.api.UnregisterChangeNotifications());
    EXPECT_TRUE(two.api.UnregisterChangeNotifications());
}

// The trigger word of the volume leveler counts the sets that arrived.
DWORD Sets() {
    return RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)).value_or(0);
}

TEST_P(SdkCallback, GuardKeepsBackOnlyWhatIsStored) {
    EXPECT_TRUE(m_listening.RegisterGuarded(m_recorder.Get()));
    EXPECT_TRUE(m_listening.SetVolumeLeveler(5));
    const DWORD sets = Sets();
    EXPECT_EQ(S_OK, m_listening.SetVolumeLeveler(5).Code());
    EXPECT_EQ(sets, Sets()) << "set already";
    EXPECT_TRUE(m_other.SetVolumeLeveler(7));
    EXPECT_TRUE(m_recorder->WaitForLine("value 0 7"));
    EXPECT_TRUE(m_listening.SetVolumeLeveler(7));
    EXPECT_EQ(sets + 1, Sets()) << "told already";
    EXPECT_TRUE(m_listening.SetVolumeLeveler(5));
    EXPECT_EQ(5u, m_other.GetVolumeLeveler().ValueOr(0)) << "what was set before it was told";
}

TEST_P(SdkCallback, GuardForgetsWithTheProfileAndWithTheRegistration) {
    const auto isSet = [&](ULONG amount) {
        const DWORD before = Sets();
        EXPECT_TRUE(m_listening.SetVolumeLeveler(amount));
        return Sets() != before;
    };
    EXPECT_TRUE(m_listening.RegisterGuarded(m_recorder.Get()));
    EXPECT_TRUE(isSet(5));
    EXPECT_FALSE(isSet(5));
    EXPECT_TRUE(m_listening.SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_TRUE(isSet(5)) << "own switch of the profile";
    EXPECT_TRUE(m_other.SetActiveProfile(KORA4_PROFILE_GAMES));
    EXPECT_TRUE(m_recorder->WaitForLine("profile 2"));
    EXPECT_TRUE(isSet(5)) << "foreign switch of the profile";
    EXPECT_TRUE(m_listening.RevertActiveProfile());
    EXPECT_TRUE(isSet(5)) << "reverted";
    EXPECT_FALSE(isSet(5));
    EXPECT_TRUE(m_listening.UnregisterChangeNotifications());
    EXPECT_TRUE(isSet(5)) << "unregistered";
    EXPECT_TRUE(m_listening.RegisterGuarded(m_recorder.Get()));
    EXPECT_TRUE(isSet(5)) << "registered again";
}

// ---- The guard alone ------------------------------------------------------------------------

class SdkEchoGuard : public testing::Test {
  protected:
    // Whether a set of the amount makes the call, which runs `meanwhile` and answers `hr`.
    bool Calls(ULONG amount, HRESULT hr = S_OK, const std::function<void()>& meanwhile = {}) {
        bool isCalled = false;
        m_result = m_guard.Set(Amount(amount), [&] {
            isCalled = true;
            if (meanwhile)
                meanwhile();
            return hr;
        });
        return isCalled;
    }
    static KORA4PatchValueUnion Amount(ULONG amount) {
        return Value(eVolumeLeveler, amount).Raw();
    }

    EchoGuard m_guard;
    HRESULT m_result = S_OK;
};

TEST_F(SdkEchoGuard, LetsTheFirstSetThrough) {
    EXPECT_TRUE(Calls(0));
    EXPECT_FALSE(Calls(0));
}

TEST_F(SdkEchoGuard, KnowsNothingAfterASetThatDidNothing) {
    for (const HRESULT hr : {E_FAIL, E_INVALIDARG, HRESULT{KORA4_S_DEMO_MODE_ACTIVE}}) {
        EXPECT_TRUE(Calls(5, hr));
        EXPECT_EQ(hr, m_result);
        EXPECT_TRUE(Calls(5, hr));
    }
}

TEST_F(SdkEchoGuard, KnowsNothingAfterASetThatANotificationOvertook) {
    EXPECT_TRUE(Calls(5, S_OK, [&] { m_guard.Told(Amount(7)); }));
    EXPECT_TRUE(Calls(5, E_FAIL));
    m_guard.Told(Amount(7));
    EXPECT_FALSE(Calls(7));
}

TEST_F(SdkEchoGuard, KnowsNothingAfterTwoSetsAtATime) {
    EXPECT_TRUE(Calls(5, S_OK, [&] { EXPECT_TRUE(Calls(7)); }));
    EXPECT_TRUE(Calls(7, E_FAIL));
    EXPECT_TRUE(Calls(5, E_FAIL));
}

TEST_F(SdkEchoGuard, TellsTechnologiesApart) {
    m_guard.Told(Amount(1));
    EXPECT_EQ(E_FAIL, m_guard.Set(Value(eIntelligentEQ, 1).Raw(), [] { return E_FAIL; }));
    KORA4PatchValueUnion none = Amount(1);
    none.m_technology = eNumberKORA4APITechnologies;
    m_guard.Told(none);
    EXPECT_EQ(E_INVALIDARG, m_guard.Set(none, [] { return E_INVALIDARG; }));
}

TEST_F(SdkEchoGuard, ComparesTheBandsInUse) {
    GraphicEQData told = ToGraphicEQ({{100, 1}, {200, 2}});
    m_guard.Told(told);
    told.m_gain[2] = 99;
    EXPECT_EQ(S_OK, m_guard.Set(told, [] { return E_FAIL; }));
    told.m_gain[1] = 3;
    EXPECT_EQ(E_FAIL, m_guard.Set(told, [] { return E_FAIL; }));
}

// Whatever came last, a set of another value than the stored one makes its call.
TEST_F(SdkEchoGuard, NeverKeepsBackASetAfterSeveralThreadsHaveSet) {
    constexpr ULONG cAmounts = 5;
    for (ULONG round = 0; round < 200; ++round) {
        std::atomic<ULONG> stored{0};
        const auto set = [&](ULONG amount) {
            return m_guard.Set(Amount(amount), [&] {
                stored = amount;
                return S_OK;
            });
        };
        std::vector<std::thread> threads;
        for (ULONG seed = 1; seed <= 3; ++seed)
            threads.emplace_back([&, seed] {
                for (ULONG i = 0; i < 50; ++i)
                    EXPECT_EQ(S_OK, set((i * seed) % cAmounts));
            });
        for (std::thread& thread : threads)
            thread.join();
        const ULONG other = (stored + 1 + round % (cAmounts - 1)) % cAmounts;
        EXPECT_EQ(S_OK, set(other));
        EXPECT_EQ(other, stored.load());
    }
}

}  // namespace
}  // namespace kora4::test
