// SPDX-License-Identifier: MIT
// Every fault of kora4sim, by what a client of the library notices of it.
#include <cmath>

#include "support/foreign_mutex.h"
#include "tools/kora4sim/sim_fixture.h"

namespace kora4::test {
namespace {

using testing::HasSubstr;

class SimFaults : public SimTest {
  protected:
    // What a display sees while the scene goes wrong in that way all the time.
    ShownLevels ShownWith(const std::string& fault) {
        const ToolResult result = RunSim({"engine-full", "--for", "0.2", "--fault", fault});
        EXPECT_EQ(0u, result.exitCode) << result;
        return Shown(Client().Get());
    }
    // The same scene when all is well.
    ShownLevels ShownRight() {
        EXPECT_EQ(0u, RunSim({"engine-full", "--for", "0.2"}).exitCode);
        return Shown(Client().Get());
    }
};

void ExpectSame(const ShownLevels& expected, const ShownLevels& levels) {
    EXPECT_EQ(expected.result, levels.result);
    for (unsigned band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        EXPECT_EQ(expected.gains[band], levels.gains[band]) << band;
        EXPECT_EQ(expected.excitations[band], levels.excitations[band]) << band;
    }
}

TEST_F(SimFaults, StopPublishesNothingAndResumeGoesOn) {
    RunningSim sim({"--fault", "stop", "--fault", "resume@1"});
    const Json stop = sim.Next("fault");
    EXPECT_TRUE(HasShape(stop, R"({"time": "string", "event": "=fault",
        "cause": "=the command line", "picture": "integer", "fault": "=stop",
        "argument": "null"})"));
    EXPECT_EQ(0, stop["picture"]);
    const ComPtr<IVeltoKORA4API> api = Client();
    EXPECT_EQ(S_FALSE, Shown(api.Get()).result);
    const Json resume = sim.Next("fault");
    EXPECT_EQ("resume", resume["fault"]);
    EXPECT_EQ(20, resume["picture"]);
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return levels.result == S_OK; }));
    sim.End();
}

TEST_F(SimFaults, GarbageOfAnotherTypeIsNotReadable) {
    for (const char* kind : {"garbage=text", "garbage=dword"})
        EXPECT_NE(S_OK, ShownWith(kind).result) << kind;
}

TEST_F(SimFaults, GarbageWithoutRecordsShowsNothing) {
    for (const char* kind : {"garbage=short-head", "garbage=nan", "counts=records-none",
                             "counts=bands-more", "counts=bands-max", "counts=bands-none"}) {
        const ShownLevels levels = ShownWith(kind);
        EXPECT_EQ(S_OK, levels.result) << kind;
        EXPECT_TRUE(levels.IsFloor()) << kind;
    }
}

TEST_F(SimFaults, EmptyGarbageShowsNothing) {
    const ShownLevels levels = ShownWith("garbage=empty");
    EXPECT_EQ(S_OK, levels.result);
    EXPECT_TRUE(levels.IsFloor());
}

TEST_F(SimFaults, RandomGarbageHarmsNobody) {
    const ComPtr<IVeltoKORA4API> api = Client();
    RunningSim sim({"--period", "10", "--fault", "garbage=random"});
    ASSERT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return levels.result == S_OK; }));
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(S_OK, Shown(api.Get()).result);
    EXPECT_LT(0, sim.End()["pictures"]);
}

TEST_F(SimFaults, InfiniteGarbageIsShownAsItIs) {
    const ShownLevels levels = ShownWith("garbage=infinite");
    EXPECT_EQ(S_OK, levels.result);
    EXPECT_TRUE(std::isinf(levels.gains[0]));
    EXPECT_EQ(KORA4_SILENT_GAIN, levels.gains[1]) << "minus infinity is never the loudest";
}

TEST_F(SimFaults, LevelsThatAreThereAreShownWhateverIsStated) {
    const ShownLevels right = ShownRight();
    EXPECT_LT(-40, right.excitations[0]);
    for (const char* kind : {"garbage=huge", "counts=records-more", "counts=records-max"}) {
        SCOPED_TRACE(kind);
        ExpectSame(right, ShownWith(kind));
    }
}

TEST_F(SimFaults, MissingRecordsTakeOnlyTheirOwnLevels) {
    // The last record of the scene is the quietest: the others are shown as before.
    const ShownLevels right = ShownRight();
    for (const char* kind : {"garbage=truncated", "counts=records-fewer"}) {
        SCOPED_TRACE(kind);
        const ShownLevels levels = ShownWith(kind);
        EXPECT_EQ(S_OK, levels.result);
        EXPECT_EQ(right.excitations[0], levels.excitations[0]);
        EXPECT_EQ(right.excitations[19], levels.excitations[19]);
    }
}

TEST_F(SimFaults, MoreBandsThanADisplayHasAreReadWhereItHasThem) {
    const ShownLevels right = ShownRight();
    const ShownLevels levels = ShownWith("counts=bands-41");
    EXPECT_EQ(S_OK, levels.result);
    EXPECT_EQ(right.excitations[5], levels.excitations[5]);
}

// A handle of the mutex that stays open, and how a wait for it ends.
class StoreMutex {
  public:
    StoreMutex()
        : m_mutex(
              CreateMutexW(nullptr, FALSE, L"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}")) {}
    DWORD Take(DWORD milliseconds) {
        const DWORD result = WaitForSingleObject(m_mutex.Get(), milliseconds);
        if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED)
            ReleaseMutex(m_mutex.Get());
        return result;
    }

  private:
    UniqueHandle m_mutex;
};

TEST_F(SimFaults, DyingLeavesTheMutexAbandonedAndClientsGoOn) {
    StoreMutex mutex;
    const ComPtr<IVeltoKORA4API> api = Client();
    const ToolResult result = RunSim({"--fault", "die@0.2", "--json"});
    EXPECT_EQ(1u, result.exitCode);
    EXPECT_EQ("die", EventOf(result, "fault")["fault"]);
    EXPECT_EQ(std::string::npos, result.out.find("summary"));
    EXPECT_EQ(WAIT_ABANDONED, mutex.Take(cBoundedWait));
    SetValue(api.Get(), eVolumeLeveler, 4);
    EXPECT_EQ(4u, GetValue(api.Get(), eVolumeLeveler).m_values.m_volumeSlider);
}

// Held by the engine alone, a mutex would go with its holder, and nobody would notice.
TEST_F(SimFaults, DyingLeavesTheMutexOfAnotherTokenAbandoned) {
    auto foreign = std::make_unique<ForeignMutex>();
    RunningSim survivor;
    foreign.reset();
    EXPECT_EQ(1u, RunSim({"--fault", "die"}).exitCode);
    // Without the mutex, so that the engine is the first to take it.
    RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
    survivor.Next("abandoned");
    survivor.End();
}

TEST_F(SimFaults, ClientGetsTheMutexOfADeadEngine) {
    const ComPtr<IVeltoKORA4API> api = Client();
    EXPECT_EQ(1u, RunSim({"--fault", "die"}).exitCode);
    LONG profile = -1;
    EXPECT_EQ(S_OK, api->GetActiveProfile(&profile));
    EXPECT_EQ(0, profile);
}

TEST_F(SimFaults, DyingHalfWayLeavesAValueThatNobodyAnnounced) {
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, 0, 3), 5);
    RawStore::SetNumber(cDynamic, TriggerName(RawTechnology::eVolume), 8);
    const ToolResult result = RunSim({"--fault", "die=half-way", "--json"});
    EXPECT_EQ(1u, result.exitCode);
    const Json fault = EventOf(result, "fault");
    EXPECT_EQ("volume-leveler", fault["name"]);
    const auto stored = RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, 0, 3));
    ASSERT_TRUE(stored);
    EXPECT_NE(5u, *stored);
    EXPECT_EQ(fault["to"].get<DWORD>(), *stored);
    EXPECT_EQ(8u, RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)));
}

TEST_F(SimFaults, AnotherEngineNoticesTheDeath) {
    RunningSim sim;
    EXPECT_EQ(1u, RunSim({"--fault", "die"}).exitCode);
    // Without the mutex, so that the engine is the first to take it.
    RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
    EXPECT_TRUE(HasShape(sim.Next("abandoned"), R"({"time": "string", "event": "=abandoned",
        "cause": "string", "picture": "integer"})"));
    EXPECT_EQ(false, sim.Next("enable")["to"]);
    sim.End();
}

// An engine whose output nobody takes: its first line fills the pipe, and waits in it.
class UnreadSim {
  public:
    explicit UnreadSim(const std::string& argument) {
        SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        EXPECT_TRUE(CreatePipe(&readEnd, &writeEnd, &inheritable, cPipeSize));
        m_readEnd.Reset(readEnd);
        const UniqueHandle childEnd(writeEnd);
        SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, path, MAX_PATH);
        std::wstring program = path;
        program = program.substr(0, program.find_last_of(L'\\') + 1) + L"kora4sim.exe";
        std::wstring command = CommandLineOf(program, {argument});
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = writeEnd;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE,
                                   CREATE_NO_WINDOW, nullptr, nullptr, &startup, &process));
        CloseHandle(process.hThread);
        m_process.Reset(process.hProcess);
    }
    ~UnreadSim() {
        TerminateProcess(m_process.Get(), 1);
        WaitForSingleObject(m_process.Get(), cBoundedWait);
    }

    // Whether it begins to tell something in a bounded time.
    bool Tells() const {
        return PumpUntil([this] {
            DWORD bytes = 0;
            return PeekNamedPipe(m_readEnd.Get(), nullptr, 0, nullptr, &bytes, nullptr) &&
                   bytes > 0;
        });
    }
    // Takes one line, and no more.
    std::string Line() const {
        std::string line;
        for (char c = 0; c != '\n'; line += c) {
            DWORD bytes = 0;
            if (!Tells() || !ReadFile(m_readEnd.Get(), &c, 1, &bytes, nullptr))
                return line;
        }
        return line;
    }

  private:
    static constexpr DWORD cPipeSize = 16;

    UniqueHandle m_readEnd;
    UniqueHandle m_process;
};

TEST_F(SimFaults, WhoReadsNothingKeepsNobodyFromTheStore) {
    StoreMutex mutex;
    const UnreadSim sim("--write-defaults");
    EXPECT_TRUE(sim.Tells());
    EXPECT_EQ(WAIT_OBJECT_0, mutex.Take(cBoundedWait));
    EXPECT_THAT(sim.Line(), HasSubstr("defaults: "));
}

TEST_F(SimFaults, WhoReadsNothingOfADeathKeepsNobodyFromTheStore) {
    StoreMutex mutex;
    const UnreadSim sim("--no-publish");
    EXPECT_THAT(sim.Line(), HasSubstr("ready: "));
    EXPECT_EQ(1u, RunSim({"--fault", "die"}).exitCode);
    // Without the mutex, so that the engine is the first to take it.
    RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
    EXPECT_TRUE(sim.Tells());
    EXPECT_EQ(WAIT_OBJECT_0, mutex.Take(cBoundedWait));
    EXPECT_THAT(sim.Line(), HasSubstr("abandoned: "));
}

TEST_F(SimFaults, HoldingKeepsClientsOutForThatLong) {
    StoreMutex mutex;
    RunningSim sim({"--fault", "hold=1.5"});
    EXPECT_EQ(1.5, sim.Next("fault")["seconds"]);
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, mutex.Take(0));
    EXPECT_EQ(30, sim.Next("released")["picture"]);
    EXPECT_EQ(WAIT_OBJECT_0, mutex.Take(cBoundedWait));
    sim.End();
}

TEST_F(SimFaults, ResumeAndTheEndLetTheMutexGo) {
    StoreMutex mutex;
    {
        RunningSim sim({"--fault", "hold=600", "--fault", "resume@0.3"});
        EXPECT_EQ("hold", sim.Next("fault")["fault"]);
        EXPECT_EQ("resume", sim.Next("fault")["fault"]);
        EXPECT_EQ(WAIT_OBJECT_0, mutex.Take(cBoundedWait));
        sim.End();
    }
    EXPECT_EQ(0u, RunSim({"--fault", "hold=600", "--for", "0.1"}).exitCode);
    EXPECT_EQ(WAIT_OBJECT_0, mutex.Take(cBoundedWait));
}

TEST_F(SimFaults, BurstIsAnnouncedAndTheLastStateIsTold) {
    const ComPtr<IVeltoKORA4API> api = Client();
    const ComPtr<CallbackRecorder> callback = CallbackRecorder::Create();
    EXPECT_EQ(S_OK, api->RegisterChangeNotifications(callback.Get()));
    RunningSim sim({"--fault", "burst=200"});
    const Json burst = sim.Next("burst");
    EXPECT_EQ(200, burst["writes"]);
    const DWORD leveler = burst["settings"]["volume-leveler"];
    const float enhancer = burst["settings"]["dialog-enhancer"];
    EXPECT_EQ(leveler, GetValue(api.Get(), eVolumeLeveler).m_values.m_volumeSlider);
    EXPECT_FLOAT_EQ(enhancer,
                    GetValue(api.Get(), eDialogEnhancer).m_values.m_enhancementSlider);
    EXPECT_EQ(100u, RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)));
    EXPECT_EQ(100u, RawStore::Number(cDynamic, TriggerName(RawTechnology::eEnhancement)));
    EXPECT_THAT(std::string(sim.Next("reload")["cause"]), HasSubstr(" -> 100"));
    EXPECT_TRUE(PumpUntil([&] {
        const Texts log = callback->Log();
        return std::any_of(log.begin(), log.end(), [](const std::string& line) {
            return line.find("OnSimplePatchValueChange") == 0;
        });
    }));
    EXPECT_EQ(S_OK, api->UnregisterChangeNotifications());
    sim.End();
}

// Music with values of its own.
void Personalise(IVeltoKORA4API* api) {
    EXPECT_EQ(S_OK, api->SetActiveProfile(1));
    KORA4PatchValueUnion value = {};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = 6;
    EXPECT_EQ(S_OK, api->SetSimplePatchValue(&value));
    value.m_technology = eDialogEnhancer;
    value.m_values.m_enhancementSlider = 0.75f;
    EXPECT_EQ(S_OK, api->SetSimplePatchValue(&value));
}

TEST_F(SimFaults, WrongTypesReadAsDefaultsUntilResumePutsThemBack) {
    for (const char* kind : {"wrong-types", "wrong-types=type", "wrong-types=malformed",
                             "wrong-types=oversized"}) {
        SCOPED_TRACE(kind);
        const ComPtr<IVeltoKORA4API> api = Client();
        Personalise(api.Get());
        RunningSim sim({"--fault", kind, "--fault", "resume@2"});
        const Json fault = sim.Next("fault");
        EXPECT_EQ("music", fault["profile"]);
        EXPECT_LE(17, fault["values"]);
        EXPECT_EQ(0u, GetValue(api.Get(), eVolumeLeveler).m_values.m_volumeSlider);
        EXPECT_FLOAT_EQ(0.33f,
                        GetValue(api.Get(), eDialogEnhancer).m_values.m_enhancementSlider);
        GraphicEQData data = {};
        EXPECT_EQ(S_OK, api->GetGraphicEQData(&data));
        EXPECT_EQ(10u, data.m_bands);
        EXPECT_EQ("reload", sim.Next("reload")["event"]);
        EXPECT_EQ(fault["values"], sim.Next("fault")["restored"]);
        EXPECT_EQ(6u, GetValue(api.Get(), eVolumeLeveler).m_values.m_volumeSlider);
        EXPECT_FLOAT_EQ(0.75f,
                        GetValue(api.Get(), eDialogEnhancer).m_values.m_enhancementSlider);
        sim.End();
    }
}

TEST_F(SimFaults, UnterminatedTextsReadAsBefore) {
    const ComPtr<IVeltoKORA4API> api = Client();
    Personalise(api.Get());
    const ToolResult result =
        RunSim({"--for", "0.1", "--fault", "wrong-types=unterminated", "--json"});
    EXPECT_LE(10, EventOf(result, "fault")["values"]);
    EXPECT_FLOAT_EQ(0.75f, GetValue(api.Get(), eDialogEnhancer).m_values.m_enhancementSlider);
    EXPECT_EQ(6u, GetValue(api.Get(), eVolumeLeveler).m_values.m_volumeSlider);
}

TEST_F(SimFaults, ResumeLeavesWhatAClientHasSetMeanwhile) {
    const ComPtr<IVeltoKORA4API> api = Client();
    Personalise(api.Get());
    RunningSim sim({"--fault", "wrong-types", "--fault", "resume@3"});
    EXPECT_EQ("wrong-types", sim.Next("fault")["fault"]);
    SetValue(api.Get(), eVolumeLeveler, 2);
    EXPECT_EQ("resume", sim.Next("fault")["fault"]);
    EXPECT_EQ(2u, GetValue(api.Get(), eVolumeLeveler).m_values.m_volumeSlider);
    EXPECT_FLOAT_EQ(0.75f, GetValue(api.Get(), eDialogEnhancer).m_values.m_enhancementSlider);
    sim.End();
}

TEST_F(SimFaults, ProfileGarbageIsToldAsItIsOrReadsAsMovie) {
    const ComPtr<IVeltoKORA4API> api = Client();
    const std::pair<const char*, LONG> kinds[] = {{"profile-garbage", 99},
                                                  {"profile-garbage=number", 99},
                                                  {"profile-garbage=type", 0},
                                                  {"profile-garbage=short", 0}};
    for (const auto& [kind, expected] : kinds) {
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
        EXPECT_EQ(0u, RunSim({"--for", "0.1", "--fault", kind}).exitCode);
        LONG profile = -1;
        EXPECT_EQ(S_OK, api->GetActiveProfile(&profile));
        EXPECT_EQ(expected, profile) << kind;
    }
}

TEST_F(SimFaults, UnreadableNameBreaksTheTableUntilResume) {
    const ComPtr<IVeltoKORA4API> api = Client();
    EXPECT_EQ(S_OK, api->CreateCustomProfile(3, L"Late evening"));
    RunningSim sim({"--fault", "profile-garbage=name", "--fault", "resume@2"});
    sim.Next("fault");
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    EXPECT_EQ(E_FAIL, api->GetProfileTable(names));
    EXPECT_EQ(1, sim.Next("fault")["restored"]);
    EXPECT_EQ(S_OK, api->GetProfileTable(names));
    EXPECT_STREQ(L"Late evening", names[3]);
    for (LPWSTR name : names)
        CoTaskMemFree(name);
    sim.End();
}

}  // namespace
}  // namespace kora4::test
