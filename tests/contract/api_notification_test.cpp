// SPDX-License-Identifier: MIT
// What a registered callback is told, in which order, and what it may do meanwhile.
#include <algorithm>
#include <thread>

#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

constexpr char cBarrier[] = "OnCustomProfileTableChange()";

// What the tests below need of a fixture that has an apartment.
template <typename Base>
class Notified : public Base {
  protected:
    void SetUp() override {
        Base::SetUp();
        m_spApi = Base::Initialized();
        m_spRecorder = CallbackRecorder::Create();
        ASSERT_EQ(S_OK, m_spApi->RegisterChangeNotifications(m_spRecorder.Get()));
    }

    // A change that is always told: what was told before it is in the log then.
    static Lines LogAfterBarrier(CallbackRecorder& recorder) {
        RawStore::Bump(SettingName(cTablePid));
        EXPECT_TRUE(recorder.WaitForLine(cBarrier));
        Lines log = recorder.Log();
        recorder.ClearLog();
        return log;
    }

    // Another program changes the enable and the profile in one go.
    static void ChangeEnableAndProfile() {
        const RawTransaction transaction;
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
    }

    ComPtr<CallbackRecorder> m_spRecorder;
    ComPtr<IVeltoKORA4API> m_spApi;
};

using ApiNotifications = Notified<ApiTest>;
using ApiMtaNotifications = Notified<ApiMtaTest>;
using ApiNotificationsTrace = Notified<ApiTraceTest>;

TEST_F(ApiNotifications, TheEnableIsToldBeforeTheProfile) {
    ChangeEnableAndProfile();
    ASSERT_TRUE(m_spRecorder->WaitForLines(2));
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnActiveProfileChange(1)"}),
              m_spRecorder->Log());
    EXPECT_EQ(GetCurrentThreadId(), m_spRecorder->CallThread());
}

TEST_F(ApiMtaNotifications, TheEnableIsToldBeforeTheProfile) {
    ChangeEnableAndProfile();
    ASSERT_TRUE(m_spRecorder->WaitForLines(2));
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnActiveProfileChange(1)"}),
              m_spRecorder->Log());
}

TEST_F(ApiNotifications, AProfileSwitchIsNotFollowedBySingleTechnologies) {
    {
        const RawTransaction transaction;
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 2);
        RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eVolume, 2, 0), 0);
        RawStore::Bump(TriggerName(RawTechnology::eVolume));
        RawStore::Bump(SettingName(cTablePid));
    }
    ASSERT_TRUE(m_spRecorder->WaitForLines(2));
    EXPECT_EQ((Lines{"OnActiveProfileChange(2)", cBarrier}), m_spRecorder->Log());
}

TEST_F(ApiNotifications, ATechnologysSwitchIsToldBeforeItsValue) {
    {
        const RawTransaction transaction;
        RawStore::SetText(cStatic, PatchName(RawTechnology::eEnhancement, 0, 3), L"0.500000");
        RawStore::Bump(TriggerName(RawTechnology::eEnhancement));
        RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eEnhancement, 0, 0), 0);
    }
    ASSERT_TRUE(m_spRecorder->WaitForLines(2));
    EXPECT_EQ((Lines{"OnTechnologyOnElseOffChange(eDialogEnhancer, 0)",
                     "OnSimplePatchValueChange(eDialogEnhancer, 0.5)"}),
              m_spRecorder->Log());
}

TEST_F(ApiNotifications, TechnologiesAreToldInTheOrderOfTheStore) {
    {
        const RawTransaction transaction;
        RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, 0, 3), 4);
        RawStore::SetNumber(cStatic, PatchName(RawTechnology::eDynamicEQ, 0, 5), 3);
        RawStore::SetText(cStatic, PatchName(RawTechnology::eStandardEQ, 0, 3),
                          L"0001,0001,0064");
        RawStore::SetText(cStatic, PatchName(RawTechnology::eStandardEQ, 0, 4),
                          L"0100,0001,0180");
        for (std::uint32_t technology = 0; technology < 7; ++technology)
            RawStore::Bump(TriggerName(static_cast<RawTechnology>(technology)));
        RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eNGSurround, 0, 0), 0);
        RawStore::Bump(SettingName(cTablePid));
    }
    ASSERT_TRUE(m_spRecorder->WaitForLine(cBarrier));
    EXPECT_EQ((Lines{"OnSimplePatchValueChange(eVolumeLeveler, 4)",
                     "OnSimplePatchValueChange(eDialogEnhancer, 0.33)",
                     "OnSimplePatchValueChange(eIntelligentEQ, 3)",
                     "OnGraphicEQChange(1 bands, first gain 1.5)",
                     "OnSimplePatchValueChange(eVirtualizerHP, 6)",
                     "OnSimplePatchValueChange(eVirtualizerSpkr, 10)", cBarrier}),
              m_spRecorder->Log());
}

TEST_F(ApiNotifications, WhatDidNotChangeIsNotTold) {
    {
        const RawTransaction transaction;
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 1);
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 0);
        RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eVolume, 0, 0), 1);
        RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, 0, 3), 1);
    }
    EXPECT_EQ(Lines{cBarrier}, LogAfterBarrier(*m_spRecorder.Get()));
}

TEST_F(ApiNotifications, AnObjectIsNotToldOfItsOwnChanges) {
    KORA4PatchValueUnion value{};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = 3;
    GraphicEQData graphicEQ{};
    graphicEQ.m_bands = 2;
    BOOL enable = FALSE;
    m_spApi->SetActiveProfile(1);
    m_spApi->SetVeltoEnable(FALSE);
    m_spApi->ToggleVeltoEnable(&enable);
    m_spApi->SetTechnologyOnElseOff(eGraphicEQ, FALSE);
    m_spApi->SetSimplePatchValue(&value);
    m_spApi->SetGraphicEQData(&graphicEQ);
    m_spApi->CreateCustomProfile(3, L"own");
    m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, FALSE);
    m_spApi->RevertFromDemoMode();
    m_spApi->RevertActiveProfile();
    EXPECT_EQ(Lines{cBarrier}, LogAfterBarrier(*m_spRecorder.Get()));
}

TEST_F(ApiNotifications, AnotherObjectOfTheSameClientIsTold) {
    ComPtr<IVeltoKORA4API> spOther = Initialized();
    spOther->SetActiveProfile(2);
    EXPECT_TRUE(m_spRecorder->WaitForLine("OnActiveProfileChange(2)"));
}

TEST_F(ApiNotifications, AFailingCallEndsThePass) {
    m_spRecorder->React("OnEnableStateChange", [] { return E_FAIL; });
    ChangeEnableAndProfile();
    ASSERT_TRUE(m_spRecorder->WaitForLines(1));
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_spRecorder->Log());
}

TEST_F(ApiNotifications, APositiveResultLetsThePassGoOn) {
    m_spRecorder->React("OnEnableStateChange", [] { return S_FALSE; });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_spRecorder->WaitForLine("OnActiveProfileChange(1)"));
}

TEST_F(ApiNotifications, ACallbackThatUnregistersItselfEndsThePass) {
    m_spRecorder->React("OnEnableStateChange",
                        [&] { return m_spApi->UnregisterChangeNotifications(); });
    ChangeEnableAndProfile();
    ASSERT_TRUE(m_spRecorder->WaitForLines(1));
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_spRecorder->Log());
    EXPECT_EQ(1u, m_spRecorder->References());
}

TEST_F(ApiNotifications, ACallbackThatDropsItsLastReferencesLivesUntilItsCallReturns) {
    std::atomic<bool> destroyed = false;
    bool livesInTheCall = false;
    m_spRecorder->TellDestruction(&destroyed);
    m_spRecorder->React("OnEnableStateChange", [&] {
        m_spApi->UnregisterChangeNotifications();
        m_spRecorder.Reset();
        livesInTheCall = !destroyed;
        return S_OK;
    });
    ChangeEnableAndProfile();
    EXPECT_TRUE(PumpUntil([&] { return destroyed.load(); }));
    EXPECT_TRUE(livesInTheCall);
}

TEST_F(ApiNotifications, RegisteringTheSamePointerAgainDoesNotEndThePass) {
    m_spRecorder->React("OnEnableStateChange", [&] {
        return m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
    });
    ChangeEnableAndProfile();
    EXPECT_TRUE(m_spRecorder->WaitForLine("OnActiveProfileChange(1)"));
    EXPECT_EQ(2u, m_spRecorder->References());
}

TEST_F(ApiNotifications, ACallbackThatLeavesAndComesBackHearsLaterPassesOnly) {
    m_spRecorder->React("OnEnableStateChange", [&] {
        m_spApi->UnregisterChangeNotifications();
        return m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
    });
    ChangeEnableAndProfile();
    ASSERT_TRUE(m_spRecorder->WaitForLines(1));
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", cBarrier}),
              LogAfterBarrier(*m_spRecorder.Get()));
}

TEST_F(ApiNotifications, AReplacementHearsLaterPassesOnly) {
    ComPtr<CallbackRecorder> spNext = CallbackRecorder::Create();
    m_spRecorder->React("OnEnableStateChange",
                        [&] { return m_spApi->RegisterChangeNotifications(spNext.Get()); });
    ChangeEnableAndProfile();
    ASSERT_TRUE(m_spRecorder->WaitForLines(1));
    EXPECT_EQ(Lines{cBarrier}, LogAfterBarrier(*spNext.Get()));
    EXPECT_EQ(Lines{"OnEnableStateChange(0)"}, m_spRecorder->Log());
    EXPECT_EQ(1u, m_spRecorder->References());
}

// Also the library can be unloaded within a second of the callback's return.
void ReleaseInACallback(ComPtr<IVeltoKORA4API>& spApi, CallbackRecorder& recorder,
                        const ApiLibrary& library) {
    recorder.React("OnEnableStateChange", [&] {
        spApi.Reset();
        return S_OK;
    });
    {
        const RawTransaction transaction;
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
    }
    ASSERT_TRUE(recorder.WaitForLines(2));
    EXPECT_TRUE(PumpUntil([&] { return library.CanUnloadNow() == S_OK; }, nullptr, 1000));
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnActiveProfileChange(1)"}), recorder.Log());
    EXPECT_EQ(1, recorder.References());
}

TEST_F(ApiNotifications, ALastReleaseInACallbackDestroysTheObjectAfterThePass) {
    ReleaseInACallback(m_spApi, *m_spRecorder.Get(), m_library);
}

TEST_F(ApiMtaNotifications, ALastReleaseInACallbackDestroysTheObjectAfterThePass) {
    ReleaseInACallback(m_spApi, *m_spRecorder.Get(), m_library);
}

TEST_F(ApiMtaNotifications, AReleaseByAnotherThreadDuringAPassDoesNotWaitForIt) {
    const UniqueHandle inside(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle goOn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_spRecorder->React("OnEnableStateChange", [&] {
        SetEvent(inside.Get());
        WaitForSingleObject(goOn.Get(), cBoundedWait);
        return S_OK;
    });
    ChangeEnableAndProfile();
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(inside.Get(), cBoundedWait));
    const ULONGLONG start = GetTickCount64();
    m_spApi.Reset();
    EXPECT_GT(1000u, GetTickCount64() - start);
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    SetEvent(goOn.Get());
    EXPECT_TRUE(PumpUntil([&] { return m_library.CanUnloadNow() == S_OK; }, nullptr, 1000));
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnActiveProfileChange(1)"}),
              m_spRecorder->Log());
}

TEST_F(ApiMtaNotifications, UnregisteringFromAnotherThreadWaitsForThePass) {
    std::atomic<bool> returned = false;
    bool returnedDuringThePass = true;
    std::jthread other;
    m_spRecorder->React("OnEnableStateChange", [&] {
        const UniqueHandle started(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        other = std::jthread([&, event = started.Get()] {
            const Apartment apartment(COINIT_MULTITHREADED);
            SetEvent(event);
            m_spApi->UnregisterChangeNotifications();
            returned = true;
        });
        WaitForSingleObject(started.Get(), cBoundedWait);
        returnedDuringThePass = PumpUntil([&] { return returned.load(); }, nullptr, 200);
        return S_OK;
    });
    ChangeEnableAndProfile();
    EXPECT_TRUE(PumpUntil([&] { return returned.load(); }));
    other.join();
    EXPECT_FALSE(returnedDuringThePass);
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnActiveProfileChange(1)"}),
              m_spRecorder->Log());
    EXPECT_EQ(1u, m_spRecorder->References());
}

TEST_F(ApiMtaNotifications, ManyObjectsComeAndGoWhileAnotherProgramWrites) {
    std::atomic<bool> stop = false;
    std::jthread writer([&] {
        for (DWORD i = 0; !stop; ++i)
            RawStore::SetNumber(cDynamic, SettingName(cProfilePid), i % 3);
    });
    for (int round = 0; round < 30; ++round) {
        ComPtr<IVeltoKORA4API> spApi = Initialized();
        ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
        EXPECT_EQ(S_OK, spApi->RegisterChangeNotifications(spRecorder.Get()));
        EXPECT_TRUE(spRecorder->WaitForLines(1));
        spApi.Reset();
        EXPECT_TRUE(PumpUntil([&] { return spRecorder->References() == 1; }, nullptr, 1000));
    }
    stop = true;
    writer.join();
    m_spApi.Reset();
    EXPECT_TRUE(PumpUntil([&] { return m_library.CanUnloadNow() == S_OK; }, nullptr, 1000));
}

// Each notification that comes in before the object is ready asks for an analysis.
TEST_F(ApiMtaNotifications, AnObjectBecomesReadyWhileAnotherProgramWritesWithoutPause) {
    std::atomic<bool> stop = false;
    const auto write = [&](std::uint32_t pid) {
        for (DWORD i = 0; !stop; ++i)
            RawStore::SetNumber(cDynamic, SettingName(pid), i % 3);
    };
    std::jthread writers[] = {std::jthread(write, cProfilePid), std::jthread(write, cEnablePid),
                              std::jthread(write, cTablePid)};
    ULONGLONG longest = 0;
    for (int round = 0; round < 20; ++round) {
        const ULONGLONG start = GetTickCount64();
        Initialized();
        longest = std::max(longest, GetTickCount64() - start);
    }
    stop = true;
    EXPECT_GT(10000u, longest) << "milliseconds";
}

TEST_F(ApiNotifications, ACallbackMayUseTheObject) {
    LONG profile = -1;
    HRESULT hr = E_UNEXPECTED;
    m_spRecorder->React("OnActiveProfileChange", [&] {
        hr = m_spApi->SetVeltoEnable(TRUE);
        return m_spApi->GetActiveProfile(&profile);
    });
    ChangeEnableAndProfile();
    ASSERT_TRUE(m_spRecorder->WaitForLine("OnActiveProfileChange(1)"));
    EXPECT_EQ(S_OK, hr);
    EXPECT_EQ(1, profile);
}

TEST_F(ApiNotifications, TheStoreIsFreeWhileACallbackRuns) {
    bool free = false;
    m_spRecorder->React("OnActiveProfileChange", [&] {
        std::thread other([&] {
            const RawTransaction transaction;
            free = true;
        });
        other.join();
        return S_OK;
    });
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
    ASSERT_TRUE(m_spRecorder->WaitForLine("OnActiveProfileChange(1)"));
    EXPECT_TRUE(free);
}

TEST_F(ApiNotifications, EveryOneOfManyChangesIsFollowedByACallWithTheLastState) {
    for (DWORD profile : {1u, 2u, 0u, 2u, 1u, 0u, 1u})
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), profile);
    const Lines log = LogAfterBarrier(*m_spRecorder.Get());
    Lines profiles;
    for (const std::string& line : log) {
        if (line != cBarrier)
            profiles.push_back(line);
    }
    ASSERT_FALSE(profiles.empty());
    EXPECT_EQ("OnActiveProfileChange(1)", profiles.back());
}

TEST_F(ApiNotificationsTrace, APassTellsItsThreadAndItsResult) {
    m_log.Clear();
    m_spRecorder->React("OnActiveProfileChange", [] { return S_FALSE; });
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
    ASSERT_TRUE(m_spRecorder->WaitForLines(1));
    char tid[32];
    std::snprintf(tid, sizeof tid, "TID: 0x%08x", static_cast<unsigned>(GetCurrentThreadId()));
    const std::string thread = tid;
    const IVeltoKORA4APICallback* const pCallback = m_spRecorder.Get();
    EXPECT_EQ(
        (Lines{">>", "Into  OnKeyChangeNotify " + thread, "Done  OnKeyChangeNotify " + thread,
               "pICallback: " + PointerText(pCallback) + " " + thread,
               "CallbackNotifications " + thread,
               "CallbackNotifications hr: 0x00000001 " + thread, "<< hr: 0x00000001"}),
        LinesOf("OnKeyChangeNotify"));
}

TEST_F(ApiNotificationsTrace, WithoutACallbackAChangeIsTakenInSilently) {
    m_spApi->UnregisterChangeNotifications();
    m_log.Clear();
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
    ASSERT_TRUE(PumpUntil([&] {
        const Lines lines = LinesOf("OnKeyChangeNotify");
        return !lines.empty() && lines.back() == "<< hr: 0x00000000";
    }));
    m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
    EXPECT_EQ(Lines{cBarrier}, LogAfterBarrier(*m_spRecorder.Get()));
}

TEST_F(ApiNotificationsTrace, AFailingCallbackEndsTheNotifications) {
    m_spRecorder->React("OnActiveProfileChange", [] { return E_FAIL; });
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
    ASSERT_TRUE(m_spRecorder->WaitForLines(1));
    ASSERT_TRUE(PumpUntil([&] {
        const Lines lines =
            MessagesOf(m_log.Read("RegKeyMonitor"), "RegKeyMonitor::RegMonitorEntry");
        return !lines.empty() && lines.back().starts_with("<<");
    }));
    ComPtr<IVeltoKORA4API> spOther = Initialized();
    ComPtr<CallbackRecorder> spOtherRecorder = CallbackRecorder::Create();
    spOther->RegisterChangeNotifications(spOtherRecorder.Get());
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 2);
    ASSERT_TRUE(spOtherRecorder->WaitForLine("OnActiveProfileChange(2)"));
    EXPECT_EQ(Lines{"OnActiveProfileChange(1)"}, m_spRecorder->Log());
}

}  // namespace
}  // namespace kora4::test
