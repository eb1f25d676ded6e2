// SPDX-License-Identifier: MIT
// The frame of the API object: identity, version, and what each method checks in which order.
#include <array>
#include <functional>

#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

using ApiCore = ApiTest;
using ApiCoreTrace = ApiTraceTest;

TEST_F(ApiCore, AnswersForItsInterfaceAndForIUnknownOnly) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    ComPtr<IUnknown> spUnknown;
    EXPECT_EQ(S_OK, spApi->QueryInterface(IID_PPV_ARGS(&spUnknown)));
    ComPtr<IVeltoKORA4API> spAgain;
    EXPECT_EQ(S_OK, spUnknown->QueryInterface(IID_PPV_ARGS(&spAgain)));
    EXPECT_EQ(spApi.Get(), spAgain.Get());
    void* pOther = this;
    EXPECT_EQ(E_NOINTERFACE, spApi->QueryInterface(__uuidof(IVeltoKORA4APICallback), &pOther));
    EXPECT_EQ(nullptr, pOther);
    EXPECT_EQ(E_POINTER, spApi->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_F(ApiCore, TellsItsVersionBeforeInitialize) {
    ULONG version[4] = {};
    EXPECT_EQ(S_OK, Created()->GetVeltoKORA4Version(&version[0], &version[1], &version[2],
                                                    &version[3]));
    EXPECT_THAT(version, testing::ElementsAre(7u, 2u, 7000u, 4u));
}

TEST_F(ApiCore, WritesNoVersionWhenAnyPointerIsNull) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    for (int missing = 0; missing < 4; ++missing) {
        ULONG version[4] = {99, 99, 99, 99};
        ULONG* p[4] = {&version[0], &version[1], &version[2], &version[3]};
        p[missing] = nullptr;
        EXPECT_EQ(E_INVALIDARG, spApi->GetVeltoKORA4Version(p[0], p[1], p[2], p[3]));
        EXPECT_THAT(version, testing::Each(99u));
    }
}

TEST_F(ApiCore, KeepsTheLibraryLoadedWhileItLives) {
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
    ComPtr<IVeltoKORA4API> spApi = Created();
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    spApi.Reset();
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

TEST_F(ApiCore, ItsMonitorKeepsTheLibraryNoLongerThanTheObject) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    EXPECT_EQ(S_FALSE, m_library.CanUnloadNow());
    spApi.Reset();
    EXPECT_EQ(S_OK, m_library.CanUnloadNow());
}

// A call with good arguments and, for those that have one to check, a call with a bad one.
struct Call {
    const char* name;
    std::function<HRESULT(IVeltoKORA4API*)> good;
    std::function<HRESULT(IVeltoKORA4API*)> bad;
    HRESULT badUninitialized = E_INVALIDARG;
};

struct Outs {
    LONG profile = -77;
    BOOL flag = -77;
    ULONG number = 77;
    LPWSTR text = nullptr;
    LPWSTR table[KORA4_PROFILE_TABLE_ENTRIES] = {};
    float gain[KORA4_VISUALIZATION_BANDS] = {};
    float excitation[KORA4_VISUALIZATION_BANDS] = {};
    KORA4PatchValueUnion value{eVolumeLeveler, {}};
    GraphicEQData graphicEQ{};
};

const auto cUnknownTechnology = static_cast<KORA4APITechnology>(6);

std::vector<Call> AllSettingsCalls(Outs& outs) {
    using Api = IVeltoKORA4API*;
    return {
        {"UnregisterChangeNotifications",
         [](Api p) { return p->UnregisterChangeNotifications(); },
         {}},
        {"GetActiveProfile", [&](Api p) { return p->GetActiveProfile(&outs.profile); },
         [](Api p) { return p->GetActiveProfile(nullptr); }},
        {"SetActiveProfile", [](Api p) { return p->SetActiveProfile(1); }, {}},
        {"RevertActiveProfile", [](Api p) { return p->RevertActiveProfile(); }, {}},
        {"SetDemoProfileAndEnable",
         [](Api p) { return p->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE); },
         {}},
        {"RevertFromDemoMode", [](Api p) { return p->RevertFromDemoMode(); }, {}},
        {"ForceRevertFromDemoMode", [](Api p) { return p->ForceRevertFromDemoMode(); }, {}},
        {"GetVisualizationSamplingPeriod",
         [&](Api p) { return p->GetVisualizationSamplingPeriod(&outs.number); },
         [](Api p) { return p->GetVisualizationSamplingPeriod(nullptr); }},
        {"SetVisualizationSamplingPeriod",
         [](Api p) { return p->SetVisualizationSamplingPeriod(10); },
         {}},
        {"GetVisualizationData",
         [&](Api p) { return p->GetVisualizationData(outs.gain, outs.excitation); },
         {}},
        {"GetVeltoProfileEditorCommand",
         [&](Api p) { return p->GetVeltoProfileEditorCommand(&outs.text); },
         [](Api p) { return p->GetVeltoProfileEditorCommand(nullptr); },
         APOERR_NOT_INITIALIZED},
        {"GetVeltoProfileSelectorCommand",
         [&](Api p) { return p->GetVeltoProfileSelectorCommand(&outs.text); },
         [](Api p) { return p->GetVeltoProfileSelectorCommand(nullptr); },
         APOERR_NOT_INITIALIZED},
        {"GetVeltoDemoAppCommand", [&](Api p) { return p->GetVeltoDemoAppCommand(&outs.text); },
         [](Api p) { return p->GetVeltoDemoAppCommand(nullptr); }, APOERR_NOT_INITIALIZED},
        {"GetVeltoEnable", [&](Api p) { return p->GetVeltoEnable(&outs.flag); },
         [](Api p) { return p->GetVeltoEnable(nullptr); }},
        {"SetVeltoEnable", [](Api p) { return p->SetVeltoEnable(FALSE); }, {}},
        {"ToggleVeltoEnable", [&](Api p) { return p->ToggleVeltoEnable(&outs.flag); },
         [](Api p) { return p->ToggleVeltoEnable(nullptr); }},
        {"GetProfileTable", [&](Api p) { return p->GetProfileTable(outs.table); },
         [](Api p) { return p->GetProfileTable(nullptr); }},
        {"SetCustomProfileName", [](Api p) { return p->SetCustomProfileName(3, L"n"); },
         [](Api p) { return p->SetCustomProfileName(3, nullptr); }},
        {"CreateCustomProfile", [](Api p) { return p->CreateCustomProfile(3, L"n"); },
         [](Api p) { return p->CreateCustomProfile(3, nullptr); }},
        {"DeleteCustomProfile", [](Api p) { return p->DeleteCustomProfile(3); }, {}},
        {"GetTechnologyMasterEnables",
         [&](Api p) { return p->GetTechnologyMasterEnables(&outs.number); },
         [](Api p) { return p->GetTechnologyMasterEnables(nullptr); }},
        {"GetTechnologyOnElseOff",
         [&](Api p) { return p->GetTechnologyOnElseOff(eGraphicEQ, &outs.flag); },
         [](Api p) { return p->GetTechnologyOnElseOff(eVolumeLeveler, nullptr); }},
        {"GetTechnologyOnElseOff",
         [&](Api p) { return p->GetTechnologyOnElseOff(eVirtualizerSpkr, &outs.flag); },
         [&](Api p) { return p->GetTechnologyOnElseOff(cUnknownTechnology, &outs.flag); }},
        {"SetTechnologyOnElseOff",
         [](Api p) { return p->SetTechnologyOnElseOff(eGraphicEQ, TRUE); },
         [](Api p) { return p->SetTechnologyOnElseOff(cUnknownTechnology, TRUE); }},
        {"GetSimplePatchValue", [&](Api p) { return p->GetSimplePatchValue(&outs.value); },
         [](Api p) { return p->GetSimplePatchValue(nullptr); }},
        {"SetSimplePatchValue", [&](Api p) { return p->SetSimplePatchValue(&outs.value); },
         [](Api p) { return p->SetSimplePatchValue(nullptr); }},
        {"SetGraphicEQData", [&](Api p) { return p->SetGraphicEQData(&outs.graphicEQ); },
         [](Api p) { return p->SetGraphicEQData(nullptr); }},
        {"GetGraphicEQData", [&](Api p) { return p->GetGraphicEQData(&outs.graphicEQ); },
         [](Api p) { return p->GetGraphicEQData(nullptr); }},
    };
}

// The technology of a value is looked at by the work itself, that of a switch before it.
TEST_F(ApiCore, ATechnologyWithoutAValueIsRefusedAfterTheInitialisation) {
    for (const KORA4APITechnology technology : {eGraphicEQ, cUnknownTechnology}) {
        KORA4PatchValueUnion value{technology, {}};
        EXPECT_EQ(APOERR_NOT_INITIALIZED, Created()->GetSimplePatchValue(&value));
        EXPECT_EQ(APOERR_NOT_INITIALIZED, Created()->SetSimplePatchValue(&value));
        EXPECT_EQ(E_INVALIDARG, Initialized()->GetSimplePatchValue(&value));
        EXPECT_EQ(E_INVALIDARG, Initialized()->SetSimplePatchValue(&value));
    }
}

TEST_F(ApiCore, RefusesEverySettingsCallBeforeInitialize) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    Outs outs;
    for (const Call& call : AllSettingsCalls(outs))
        EXPECT_EQ(APOERR_NOT_INITIALIZED, call.good(spApi.Get())) << call.name;
}

TEST_F(ApiCore, ChecksArgumentsBeforeTheInitializationExceptForTheCommands) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    Outs outs;
    for (const Call& call : AllSettingsCalls(outs)) {
        if (call.bad) {
            EXPECT_EQ(call.badUninitialized, call.bad(spApi.Get())) << call.name;
        }
    }
}

TEST_F(ApiCore, RefusesBadArgumentsWhenInitialized) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    Outs outs;
    for (const Call& call : AllSettingsCalls(outs)) {
        if (call.bad) {
            EXPECT_EQ(E_INVALIDARG, call.bad(spApi.Get())) << call.name;
        }
    }
}

TEST_F(ApiCore, RefusedCallsLeaveWhatTheyWouldFill) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    Outs outs;
    outs.text = outs.table[4] = const_cast<LPWSTR>(L"mine");
    outs.gain[7] = outs.excitation[19] = 3.5f;
    outs.value.m_values.m_volumeSlider = 1234;
    outs.graphicEQ.m_bands = 5;
    for (const Call& call : AllSettingsCalls(outs)) {
        call.good(spApi.Get());
        if (call.bad)
            call.bad(spApi.Get());
    }
    EXPECT_EQ(-77, outs.profile);
    EXPECT_EQ(-77, outs.flag);
    EXPECT_EQ(77u, outs.number);
    EXPECT_STREQ(L"mine", outs.text);
    EXPECT_STREQ(L"mine", outs.table[4]);
    EXPECT_EQ(3.5f, outs.gain[7]);
    EXPECT_EQ(3.5f, outs.excitation[19]);
    EXPECT_EQ(1234u, outs.value.m_values.m_volumeSlider);
    EXPECT_EQ(5u, outs.graphicEQ.m_bands);
}

TEST_F(ApiCore, RefusedCallsStoreNothing) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    Outs outs;
    for (const Call& call : AllSettingsCalls(outs))
        call.good(spApi.Get());
    EXPECT_EQ(std::nullopt, RawStore::Number(cDynamic, SettingName(cProfilePid)));
    EXPECT_EQ(std::nullopt, RawStore::Number(cDynamic, SettingName(cEnablePid)));
    EXPECT_EQ(std::nullopt, RawStore::Number(cStatic, SettingName(cPeriodPid)));
    EXPECT_EQ(std::nullopt, RawStore::Text(cStatic, ProfileNameName(3)));
}

constexpr char cEntry[] = ">>";
constexpr char cRefusedState[] = "**** Error: APOERR_NOT_INITIALIZED";
constexpr char cExitState[] = "<< hr: 0x887d0002";
constexpr char cExitArgument[] = "<< hr: 0x80070057";

TEST_F(ApiCoreTrace, ARefusedStateIsToldBetweenEntryAndExitLine) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    Outs outs;
    for (const Call& call : AllSettingsCalls(outs)) {
        m_log.Clear();
        call.good(spApi.Get());
        const std::string name = call.name;
        const Lines lines = LinesOf(name);
        ASSERT_FALSE(lines.empty()) << name;
        const std::string entry = name == "SetActiveProfile" ? ">> profile: 1"
                                  : name == "SetDemoProfileAndEnable"
                                      ? ">> demoProfileID: 240 demoVeltoEnable: 1"
                                      : cEntry;
        if (name == "ToggleVeltoEnable" || name == "GetTechnologyMasterEnables")
            EXPECT_EQ((Lines{entry, cExitState}), lines) << name;
        else
            EXPECT_EQ((Lines{entry, cRefusedState, cExitState}), lines) << name;
    }
}

TEST_F(ApiCoreTrace, ARefusedArgumentIsToldInTheMethodsOwnWords) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    const std::map<std::string, Lines> expected = {
        {"GetActiveProfile", {"**** Error: NULL == pProfile"}},
        {"GetVisualizationSamplingPeriod", {"**** Error: NULL == pSamplingPeriod"}},
        {"GetVeltoProfileEditorCommand", {"**** Error: E_INVALIDARG"}},
        {"GetVeltoProfileSelectorCommand", {"**** Error: E_INVALIDARG"}},
        {"GetVeltoDemoAppCommand", {"**** Error: E_INVALIDARG"}},
        {"GetVeltoEnable", {"**** Error: pVeltoEnable is Null"}},
        {"ToggleVeltoEnable", {}},
        {"GetProfileTable", {"**** Error: pwPresetNames is Null"}},
        {"SetCustomProfileName", {"**** Error: pwCustomPresetName is Null"}},
        {"CreateCustomProfile", {"**** Error: pwName is Null"}},
        {"GetTechnologyMasterEnables", {}},
        {"GetTechnologyOnElseOff", {"**** Error: pOnElseOff is Null or invalid technology ID"}},
        {"SetTechnologyOnElseOff", {"**** Error: IsValidASLTechnology failed"}},
        {"GetSimplePatchValue", {}},
        {"SetSimplePatchValue", {}},
        {"SetGraphicEQData", {}},
        {"GetGraphicEQData", {}},
    };
    Outs outs;
    for (const Call& call : AllSettingsCalls(outs)) {
        if (!call.bad)
            continue;
        m_log.Clear();
        call.bad(spApi.Get());
        Lines lines = expected.at(call.name);
        lines.insert(lines.begin(), cEntry);
        lines.push_back(cExitArgument);
        EXPECT_EQ(lines, LinesOf(call.name)) << call.name;
    }
}

TEST_F(ApiCoreTrace, TheVersionIsTold) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    ULONG v[4];
    spApi->GetVeltoKORA4Version(&v[0], &v[1], &v[2], &v[3]);
    EXPECT_EQ((Lines{">>", "7.2.7000.4", "<< hr: 0x00000000"}),
              LinesOf("GetVeltoKORA4Version"));
    m_log.Clear();
    spApi->GetVeltoKORA4Version(&v[0], &v[1], nullptr, &v[3]);
    EXPECT_EQ((Lines{">>", "**** Error: called with a null pointer", "<< hr: 0x80070057"}),
              LinesOf("GetVeltoKORA4Version"));
}

TEST_F(ApiCoreTrace, ConstructionAndDestructionAreTold) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    EXPECT_EQ((Lines{">>", "<<"}), LinesOf("CKORA4ASL"));
    m_log.Clear();
    spApi.Reset();
    const std::vector<TraceLine> lines = m_log.Read("KORA4ASL");
    ASSERT_EQ(5u, lines.size());
    EXPECT_EQ("CKORA4ASL::~CKORA4ASL", lines.front().function);
    EXPECT_EQ("CKORA4ASL::~CKORA4ASL", lines.back().function);
    EXPECT_EQ((Lines{">>", ">>", cRefusedState, cExitState, "<<"}), Messages(lines));
}

TEST_F(ApiCoreTrace, TheProcessTrackerTellsWhatTheProcessLooksLike) {
    Created();
    const Lines lines = MessagesOf(m_log.Read("KORA4ASL"), "ProcessTrack::ProcessTrack");
    const std::string process = std::to_string(GetCurrentProcessId());
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ(">>", lines[0]);
    EXPECT_EQ("Process ID: " + process + "\n", lines[1]);
    char id[16];
    std::snprintf(id, sizeof id, "0x%08x", static_cast<unsigned>(GetCurrentProcessId()));
    EXPECT_THAT(lines[2], testing::StartsWith(std::string("Process startup info:\n"
                                                          "       processID: ") +
                                              id + "\n    handle count: "));
    EXPECT_THAT(lines[2], testing::HasSubstr("\n       lpDesktop: "));
    EXPECT_THAT(lines[2], testing::HasSubstr("\n         lpTitle: "));
}

TEST_F(ApiCoreTrace, EnteringAndLeavingTheCallbackLockIsTold) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    m_log.Clear();
    spApi->UnregisterChangeNotifications();
    char text[80];
    std::snprintf(text, sizeof text, "processID: 0x%08x threadID: 0x%08x threadProcID: 0x%08x",
                  static_cast<unsigned>(GetCurrentProcessId()),
                  static_cast<unsigned>(GetCurrentThreadId()),
                  static_cast<unsigned>(GetCurrentProcessId()));
    const std::vector<TraceLine> lines = m_log.Read("KORA4ASL");
    EXPECT_EQ(Lines{text}, MessagesOf(lines, "ProcessTrack::Enter"));
    EXPECT_EQ(Lines{text}, MessagesOf(lines, "ProcessTrack::Leave"));
}

TEST_F(ApiCoreTrace, WithTheDefaultWordOnlyMessagesAreToldAndNoFileIsWritten) {
    RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), 0x00000400);
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    m_log.Clear();
    spApi->SetActiveProfile(1);
    EXPECT_TRUE(m_log.ReadShared().empty());
    RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), 0x01000400);
    spApi = Initialized();
    m_log.Clear();
    spApi->SetActiveProfile(2);
    EXPECT_EQ((Lines{" to Games (2) Profile"}), Messages(m_log.ReadShared()));
}

}  // namespace
}  // namespace kora4::test
