// SPDX-License-Identifier: MIT
// A pass never tells a state that the object itself has replaced since it looked at the store,
// and serves only a registration that was there before it looked.
#include <functional>
#include <thread>

#include "contract/api_fixture.h"
#include "support/counted.h"

namespace kora4::test {
namespace {

constexpr char cBarrier[] = "OnCustomProfileTableChange()";

HRESULT SetLeveler(IVeltoKORA4API* pApi, ULONG value) {
    KORA4PatchValueUnion record{};
    record.m_technology = eVolumeLeveler;
    record.m_values.m_volumeSlider = value;
    return pApi->SetSimplePatchValue(&record);
}

// Another program changes the enable, and with it whatever else, in one go.
void ChangeEnableAnd(const std::function<void()>& change) {
    const RawTransaction transaction;
    RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
    change();
}

void ChangeLeveler(DWORD value) {
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, 0, 3), value);
    RawStore::Bump(TriggerName(RawTechnology::eVolume));
}

void ChangeLevelerSwitch() {
    RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eVolume, 0, 0), 0);
}

// The parameter: COINIT_APARTMENTTHREADED or COINIT_MULTITHREADED.
class ApiOvertaken : public ApiTest, public testing::WithParamInterface<DWORD> {
  protected:
    ApiOvertaken() : ApiTest(GetParam()) {}

    void SetUp() override {
        ApiTest::SetUp();
        m_spApi = Initialized();
        ASSERT_EQ(S_OK, m_spApi->RegisterChangeNotifications(m_spRecorder.Get()));
    }

    // What is told when the client makes `ownCall` in the call about the enable.
    Lines ToldWith(std::function<HRESULT()> ownCall,
                   const std::function<void()>& foreignChange) {
        m_spRecorder->React("OnEnableStateChange", std::move(ownCall));
        ChangeEnableAnd(foreignChange);
        EXPECT_TRUE(m_spRecorder->WaitForLine("OnEnableStateChange(0)"));
        return LogAfterBarrier();
    }

    Lines LogAfterBarrier() {
        RawStore::Bump(SettingName(cTablePid));
        EXPECT_TRUE(m_spRecorder->WaitForLine(cBarrier));
        Lines log = m_spRecorder->Log();
        m_spRecorder->ClearLog();
        return log;
    }

    ComPtr<CallbackRecorder> m_spRecorder = CallbackRecorder::Create();
    ComPtr<IVeltoKORA4API> m_spApi;
};

TEST_P(ApiOvertaken, AValueThatTheClientSetMeanwhileIsNotTold) {
    const Lines told =
        ToldWith([&] { return SetLeveler(m_spApi.Get(), 7); }, [] { ChangeLeveler(3); });
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", cBarrier}), told);
    EXPECT_EQ(7u, RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, 0, 3)));
}

TEST_P(ApiOvertaken, ASwitchThatTheClientSetMeanwhileIsNotTold) {
    const Lines told =
        ToldWith([&] { return m_spApi->SetTechnologyOnElseOff(eVolumeLeveler, TRUE); },
                 ChangeLevelerSwitch);
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", cBarrier}), told);
}

TEST_P(ApiOvertaken, ASwitchIsNotOvertakenByAValue) {
    const Lines told =
        ToldWith([&] { return SetLeveler(m_spApi.Get(), 7); }, ChangeLevelerSwitch);
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnTechnologyOnElseOffChange(eVolumeLeveler, 0)",
                     cBarrier}),
              told);
}

TEST_P(ApiOvertaken, AProfileThatTheClientLeftMeanwhileIsNotTold) {
    const Lines told =
        ToldWith([&] { return m_spApi->SetActiveProfile(2); },
                 [] { RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1); });
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", cBarrier}), told);
}

TEST_P(ApiOvertaken, TheProfileThatTheClientChoseAnewIsTold) {
    const Lines told =
        ToldWith([&] { return m_spApi->SetActiveProfile(1); },
                 [] { RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1); });
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnActiveProfileChange(1)", cBarrier}), told);
}

TEST_P(ApiOvertaken, NoTechnologyIsToldOfAProfileThatTheClientLeft) {
    const Lines told = ToldWith([&] { return m_spApi->SetActiveProfile(2); },
                                [] {
                                    ChangeLeveler(3);
                                    ChangeLevelerSwitch();
                                });
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", cBarrier}), told);
}

TEST_P(ApiOvertaken, ARefusedCallOvertakesNothing) {
    const Lines told = ToldWith(
        [&] {
            EXPECT_EQ(E_INVALIDARG, SetLeveler(m_spApi.Get(), 11));
            EXPECT_EQ(KORA4_S_NO_SUCH_CUSTOM_PROFILE, m_spApi->SetActiveProfile(3));
            return S_OK;
        },
        [] { ChangeLeveler(3); });
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", "OnSimplePatchValueChange(eVolumeLeveler, 3)",
                     cBarrier}),
              told);
}

TEST_P(ApiOvertaken, AHandlerThatSetsItsOwnSliderIsNotCalledInACircle) {
    m_spRecorder->React("OnSimplePatchValueChange",
                        [&] { return SetLeveler(m_spApi.Get(), 7); });
    {
        const RawTransaction transaction;
        ChangeLeveler(3);
    }
    ASSERT_TRUE(m_spRecorder->WaitForLine("OnSimplePatchValueChange(eVolumeLeveler, 3)"));
    EXPECT_EQ((Lines{"OnSimplePatchValueChange(eVolumeLeveler, 3)", cBarrier}),
              LogAfterBarrier());
    EXPECT_EQ(7u, RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, 0, 3)));
}

INSTANTIATE_TEST_SUITE_P(Apartments, ApiOvertaken,
                         testing::Values(COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED),
                         [](const testing::TestParamInfo<DWORD>& kind) {
                             return kind.param == COINIT_MULTITHREADED ? "Mta" : "Sta";
                         });

class ApiMtaOvertaken : public ApiMtaTest {};

TEST_F(ApiMtaOvertaken, AWriteOfAnotherThreadOvertakesToo) {
    const ComPtr<IVeltoKORA4API> spApi = Initialized();
    const ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
    ASSERT_EQ(S_OK, spApi->RegisterChangeNotifications(spRecorder.Get()));
    spRecorder->React("OnEnableStateChange", [&] {
        std::jthread([&] {
            const Apartment apartment(COINIT_MULTITHREADED);
            EXPECT_EQ(S_OK, SetLeveler(spApi.Get(), 7));
        }).join();
        return S_OK;
    });
    ChangeEnableAnd([] {
        ChangeLeveler(3);
        RawStore::Bump(SettingName(cTablePid));
    });
    ASSERT_TRUE(spRecorder->WaitForLine(cBarrier));
    EXPECT_EQ((Lines{"OnEnableStateChange(0)", cBarrier}), spRecorder->Log());
}

// A callback that is told nothing and does something when it goes.
class LastWords final : public Counted<IVeltoKORA4APICallback> {
  public:
    explicit LastWords(std::function<void()> words) : Counted(0), m_words(std::move(words)) {}

    STDMETHODIMP OnActiveProfileChange(LONG) override { return E_UNEXPECTED; }
    STDMETHODIMP OnEnableStateChange(BOOL) override { return E_UNEXPECTED; }
    STDMETHODIMP OnCustomProfileTableChange() override { return E_UNEXPECTED; }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology, BOOL) override {
        return E_UNEXPECTED;
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion*) override {
        return E_UNEXPECTED;
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData*) override { return E_UNEXPECTED; }

  private:
    ~LastWords() override { m_words(); }

    std::function<void()> m_words;
};

class ApiMtaRegistration : public ApiTraceTest {
  protected:
    void SetUp() override {
        ApiTraceTest::SetUp();
        CoUninitialize();
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        m_spApi = Initialized();
    }

    // Another program switches to Music, and the analysis finds it.
    void ChangeProfileAndAwaitAnalysis() {
        const std::size_t before = Analyses();
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
        EXPECT_TRUE(PumpUntil([&] { return Analyses() > before; }));
    }

    std::size_t Analyses() {
        std::size_t count = 0;
        for (const std::string& line : LinesOf("OnKeyChangeNotify"))
            count += line.starts_with("Done  OnKeyChangeNotify") ? 1u : 0u;
        return count;
    }

    Lines LogAfterBarrier() {
        RawStore::Bump(SettingName(cTablePid));
        EXPECT_TRUE(m_spRecorder->WaitForLine(cBarrier));
        return m_spRecorder->Log();
    }

    ComPtr<CallbackRecorder> m_spRecorder = CallbackRecorder::Create();
    ComPtr<IVeltoKORA4API> m_spApi;
};

// Whoever gives its callback back holds the callback lock meanwhile: the pass waits.
TEST_F(ApiMtaRegistration, MadeBetweenAnalysisAndCallsHearsLaterPassesOnly) {
    m_spApi->RegisterChangeNotifications(new LastWords([&] {
        ChangeProfileAndAwaitAnalysis();
        m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
    }));
    m_spApi->UnregisterChangeNotifications();
    EXPECT_EQ(Lines{cBarrier}, LogAfterBarrier());
}

TEST_F(ApiMtaRegistration, MadeBeforeTheAnalysisHearsIt) {
    m_spApi->RegisterChangeNotifications(new LastWords([&] {
        m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
        ChangeProfileAndAwaitAnalysis();
    }));
    m_spApi->UnregisterChangeNotifications();
    EXPECT_EQ((Lines{"OnActiveProfileChange(1)", cBarrier}), LogAfterBarrier());
}

TEST_F(ApiMtaRegistration, OfTheSamePointerAgainKeepsItsPlace) {
    m_spApi->RegisterChangeNotifications(new LastWords([&] {
        m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
        ChangeProfileAndAwaitAnalysis();
        m_spApi->RegisterChangeNotifications(m_spRecorder.Get());
    }));
    m_spApi->UnregisterChangeNotifications();
    EXPECT_EQ((Lines{"OnActiveProfileChange(1)", cBarrier}), LogAfterBarrier());
}

class ApiLastReference : public ApiTraceTest {
  protected:
    // The object belongs to its callback from now on.
    IVeltoKORA4API* OwnedByItsCallback() {
        ComPtr<IVeltoKORA4API> spApi = Initialized();
        IVeltoKORA4API* const pApi = spApi.Get();
        pApi->RegisterChangeNotifications(
            new LastWords([spOwned = std::move(spApi)]() mutable { spOwned.Reset(); }));
        m_log.Clear();
        return pApi;
    }

    // The functions in the order of their last lines.
    void ExpectDestroyedAfter(const std::string& method) {
        std::vector<std::string> ends;
        for (const TraceLine& line : m_log.Read("KORA4ASL")) {
            if (line.message.starts_with("<<"))
                ends.push_back(line.function);
        }
        EXPECT_EQ((Lines{"CKORA4ASL::" + method, "CKORA4ASL::UnregisterChangeNotifications",
                         "CKORA4ASL::~CKORA4ASL"}),
                  ends);
    }
};

TEST_F(ApiLastReference, HeldByTheCallbackThatIsUnregistered) {
    OwnedByItsCallback()->UnregisterChangeNotifications();
    ExpectDestroyedAfter("UnregisterChangeNotifications");
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ApiLastReference, HeldByTheCallbackThatIsReplaced) {
    const ComPtr<CallbackRecorder> spNext = CallbackRecorder::Create();
    OwnedByItsCallback()->RegisterChangeNotifications(spNext.Get());
    ExpectDestroyedAfter("RegisterChangeNotifications");
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
    EXPECT_EQ(1u, spNext->References());
}

}  // namespace
}  // namespace kora4::test
