// SPDX-License-Identifier: MIT
// The scenes of kora4sim, seen through the library by a client of its own.
#include "tools/kora4sim/sim_fixture.h"

namespace kora4::test {
namespace {

struct SceneCase {
    const char* scene;
    ULONG mask;
    unsigned bands;  // that the loudest of its processing objects has
    bool hasDemoApp;
};
void PrintTo(const SceneCase& scene, std::ostream* stream) {
    *stream << scene.scene;
}

constexpr SceneCase cScenes[] = {
    {"music", KORA4_ENGINE_FULL, 20, true},
    {"speech", KORA4_ENGINE_FULL, 20, true},
    {"silence", KORA4_ENGINE_FULL, 20, true},
    {"sweep", KORA4_ENGINE_FULL, 20, true},
    {"engine-full", KORA4_ENGINE_FULL, 20, true},
    {"engine-standard", KORA4_ENGINE_STANDARD, 20, false},
    {"engine-basic", KORA4_ENGINE_BASIC, 10, false},
};

class SimScenes : public SimTest, public testing::WithParamInterface<SceneCase> {};

TEST_P(SimScenes, ShowLevelsToADisplay) {
    RunningSim sim({GetParam().scene});
    EXPECT_EQ(GetParam().scene, sim.Ready()["scene"]);
    const ComPtr<IVeltoKORA4API> api = Client();
    ShownLevels levels;
    const bool isSilent = std::string(GetParam().scene) == "silence";
    ASSERT_TRUE(PumpUntil([&] {
        levels = Shown(api.Get());
        return levels.result == S_OK &&
               (isSilent || levels.excitations[levels.LoudestBand()] > -60);
    }));
    for (unsigned band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
        const bool isThere = band < GetParam().bands;
        EXPECT_EQ(isThere, levels.gains[band] != KORA4_SILENT_GAIN) << band;
        EXPECT_GE(levels.gains[band], isThere ? -60 : KORA4_SILENT_GAIN) << band;
        EXPECT_GE(36, levels.gains[band]) << band;
        EXPECT_GE(36, levels.excitations[band]) << band;
        if (!isThere || isSilent) {
            EXPECT_EQ(KORA4_SILENT_EXCITATION, levels.excitations[band]) << band;
        }
    }
    sim.End();
}

TEST_P(SimScenes, FillTheEngineMaskAndTheCompanionCommands) {
    RawStore::SetText(cApp, SettingName(63), L"of an older engine");
    const ToolResult result = RunSim({GetParam().scene, "--for", "0"});
    EXPECT_EQ(0u, result.exitCode) << result;
    const ComPtr<IVeltoKORA4API> api = Client();
    ULONG mask = 0;
    EXPECT_EQ(S_OK, api->GetTechnologyMasterEnables(&mask));
    EXPECT_EQ(GetParam().mask, mask);
    LPWSTR command = nullptr;
    EXPECT_EQ(S_OK, api->GetVeltoProfileSelectorCommand(&command));
    ASSERT_NE(nullptr, command);
    EXPECT_STREQ(L"\"C:\\Program Files\\KORA4\\ProfileSelector.exe\"", command);
    CoTaskMemFree(command);
    command = nullptr;
    api->GetVeltoDemoAppCommand(&command);
    EXPECT_EQ(GetParam().hasDemoApp, command != nullptr);
    CoTaskMemFree(command);
}

INSTANTIATE_TEST_SUITE_P(All, SimScenes, testing::ValuesIn(cScenes));

class SimLevels : public SimTest {};

TEST_F(SimLevels, OfASweepRunOverAllBands) {
    RunningSim sim({"sweep"});
    const ComPtr<IVeltoKORA4API> api = Client();
    for (const std::size_t band : {4u, 9u, 15u})
        EXPECT_TRUE(ShowsSoon(api.Get(), [&](const ShownLevels& levels) {
            return levels.result == S_OK && levels.LoudestBand() == band;
        })) << band;
    sim.End();
}

TEST_F(SimLevels, OfSpeechAreSyllablesAndPauses) {
    RunningSim sim({"speech"});
    const ComPtr<IVeltoKORA4API> api = Client();
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const ShownLevels& levels) {
        return levels.excitations[levels.LoudestBand()] > -10;
    }));
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const ShownLevels& levels) {
        return levels.excitations[levels.LoudestBand()] == KORA4_SILENT_EXCITATION;
    }));
    sim.End();
}

// Music, with everything off that shapes levels, but for the graphic EQ.
void LeaveOnlyTheGraphicEQ(IVeltoKORA4API* api) {
    for (const KORA4APITechnology technology :
         {eVolumeLeveler, eIntelligentEQ, eDialogEnhancer})
        EXPECT_EQ(S_OK, api->SetTechnologyOnElseOff(technology, FALSE));
    EXPECT_EQ(S_OK, api->SetTechnologyOnElseOff(eGraphicEQ, TRUE));
}

void SetFlatGain(IVeltoKORA4API* api, float gain) {
    GraphicEQData data = {};
    EXPECT_EQ(S_OK, api->GetGraphicEQData(&data));
    EXPECT_EQ(10u, data.m_bands);
    std::fill_n(data.m_gain, data.m_bands, gain);
    EXPECT_EQ(S_OK, api->SetGraphicEQData(&data));
}

bool HasGain(const ShownLevels& levels, float gain) {
    return levels.result == S_OK &&
           std::all_of(std::begin(levels.gains), std::end(levels.gains),
                       [gain](float level) { return level == gain; });
}

TEST_F(SimLevels, ShowTheGraphicEqAndTheMasterEnable) {
    RunningSim sim({"music"});
    const ComPtr<IVeltoKORA4API> api = Client();
    LeaveOnlyTheGraphicEQ(api.Get());
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return HasGain(levels, 0); }));
    SetFlatGain(api.Get(), 6);
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return HasGain(levels, 6); }));
    EXPECT_EQ(S_OK, api->SetVeltoEnable(FALSE));
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) {
        return HasGain(levels, 0) && levels.excitations[0] > -60;
    }));
    EXPECT_EQ(S_OK, api->SetVeltoEnable(TRUE));
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return HasGain(levels, 6); }));
    EXPECT_EQ(S_OK, api->SetTechnologyOnElseOff(eGraphicEQ, FALSE));
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return HasGain(levels, 0); }));
    sim.End();
}

TEST_F(SimLevels, RiseWithTheVolumeLeveler) {
    RunningSim sim({"music"});
    const ComPtr<IVeltoKORA4API> api = Client();
    LeaveOnlyTheGraphicEQ(api.Get());
    EXPECT_EQ(S_OK, api->SetTechnologyOnElseOff(eVolumeLeveler, TRUE));
    SetValue(api.Get(), eVolumeLeveler, 0);
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return HasGain(levels, 0); }));
    SetValue(api.Get(), eVolumeLeveler, 10);
    // The highest band of the scene is about 36 dB below the target.
    EXPECT_TRUE(ShowsSoon(api.Get(), [](const auto& levels) { return levels.gains[19] > 6; }));
    sim.End();
}

TEST_F(SimLevels, ComeAtTheStoredSamplingPeriod) {
    RunningSim sim({"silence", "--for", "600"});
    const ComPtr<IVeltoKORA4API> api = Client();
    EXPECT_EQ(50, sim.Ready()["period"]);
    EXPECT_EQ(S_OK, api->SetVisualizationSamplingPeriod(20));
    const Json changed = sim.Next("period");
    EXPECT_TRUE(HasShape(changed, R"({"time": "string", "event": "=period",
        "cause": "=sampling period 50 -> 20", "picture": "integer", "from": "integer",
        "to": "integer"})"));
    EXPECT_EQ(20, changed["to"]);
    EXPECT_EQ(S_OK, api->SetVisualizationSamplingPeriod(0));
    EXPECT_EQ(10, sim.Next("period")["to"]);
    EXPECT_EQ(S_OK, api->SetVisualizationSamplingPeriod(0xFFFFFFFF));
    EXPECT_EQ(10000, sim.Next("period")["to"]);
    sim.End();
}

}  // namespace
}  // namespace kora4::test
