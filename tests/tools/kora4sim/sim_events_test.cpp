// SPDX-License-Identifier: MIT
// What kora4sim says of the changes that a client makes through the library.
#include "tools/kora4sim/sim_fixture.h"

namespace kora4::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class SimEvents : public SimTest {
  protected:
    // In the Music profile, whose values are small numbers.
    void SetUp() override {
        SimTest::SetUp();
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
        m_api = Client();
    }

    ComPtr<IVeltoKORA4API> m_api;
};

constexpr char cReloadShape[] = R"({"time": "string", "event": "=reload", "cause": "string",
    "picture": "integer", "technology": "string",
    "changes": [{"name": "string", "from": "any", "to": "any"}]})";

TEST_F(SimEvents, ReadySaysWhatIsThere) {
    RunningSim sim({"speech", "--seed", "42"});
    const Json& ready = sim.Ready();
    EXPECT_TRUE(HasShape(ready, R"({"time": "string", "event": "=ready", "cause": "=start",
        "picture": "integer", "scene": "=speech", "seed": "integer", "mask": "=0x03ff",
        "engine": "=full engine", "pid": "integer", "profile": "=music", "enable": "boolean",
        "period": "integer", "settings": {"volume-leveler": "integer", "*": "any"}})"));
    EXPECT_EQ(42, ready["seed"]);
    EXPECT_EQ(sim.Tool().ProcessId(), ready["pid"]);
    EXPECT_EQ(0, ready["settings"]["volume-leveler"]);
    EXPECT_EQ(true, ready["settings"]["intelligent-eq.on"]);
    sim.End();
}

TEST_F(SimEvents, ReloadNamesTriggerAndValues) {
    RunningSim sim;
    SetValue(m_api.Get(), eVolumeLeveler, 7);
    const Json reload = sim.Next("reload");
    EXPECT_TRUE(HasShape(reload, cReloadShape));
    EXPECT_EQ("trigger 0 -> 1", reload["cause"]);
    EXPECT_EQ("volume-leveler", reload["technology"]);
    EXPECT_EQ(Json::parse(R"([{"name": "volume-leveler", "from": 0, "to": 7}])"),
              reload["changes"]);
    EXPECT_EQ(1, sim.End()["reloads"]);
}

TEST_F(SimEvents, ReloadOfEachSliderIsTold) {
    struct Slider {
        KORA4APITechnology technology;
        const char* name;
        float amount;
    };
    RunningSim sim;
    for (const Slider& slider : {Slider{eDialogEnhancer, "dialog-enhancer", 0.5f},
                                 Slider{eVirtualizerHP, "headphone-virtualizer", 4.5f},
                                 Slider{eVirtualizerSpkr, "speaker-virtualizer", 2.0f}}) {
        KORA4PatchValueUnion value = {};
        value.m_technology = slider.technology;
        value.m_values.m_enhancementSlider = slider.amount;
        EXPECT_EQ(S_OK, m_api->SetSimplePatchValue(&value));
        const Json reload = sim.Next("reload");
        EXPECT_EQ(slider.name, reload["technology"]);
        ASSERT_EQ(1u, reload["changes"].size()) << reload;
        EXPECT_EQ(slider.name, reload["changes"][0]["name"]);
        EXPECT_FLOAT_EQ(slider.amount, reload["changes"][0]["to"].get<float>());
    }
    SetValue(m_api.Get(), eIntelligentEQ, 4);
    const Json reload = sim.Next("reload");
    EXPECT_EQ("intelligent-eq", reload["technology"]);
    EXPECT_EQ(Json::parse(R"([{"name": "intelligent-eq", "from": "open", "to": "rich"}])"),
              reload["changes"]);
    sim.End();
}

TEST_F(SimEvents, ReloadOfTheGraphicEqShowsItsGains) {
    RunningSim sim;
    GraphicEQData data = {};
    EXPECT_EQ(S_OK, m_api->GetGraphicEQData(&data));
    data.m_gain[2] = -3.5f;
    EXPECT_EQ(S_OK, m_api->SetGraphicEQData(&data));
    const Json reload = sim.Next("reload");
    EXPECT_EQ("graphic-eq", reload["technology"]);
    ASSERT_EQ(1u, reload["changes"].size());
    EXPECT_EQ("graphic-eq.gains", reload["changes"][0]["name"]);
    EXPECT_EQ(-3.5, reload["changes"][0]["to"][2]);
    sim.End();
}

TEST_F(SimEvents, ReloadWithoutAnotherValueIsToldToo) {
    RunningSim sim;
    SetValue(m_api.Get(), eVolumeLeveler, 0);
    const Json reload = sim.Next("reload");
    EXPECT_EQ("trigger 0 -> 1", reload["cause"]);
    EXPECT_TRUE(reload["changes"].empty());
    sim.End();
}

TEST_F(SimEvents, ProfileIsAReloadOfEverything) {
    RunningSim sim;
    EXPECT_EQ(S_OK, m_api->SetActiveProfile(2));
    const Json profile = sim.Next("profile");
    EXPECT_TRUE(HasShape(profile, R"({"time": "string", "event": "=profile",
        "cause": "=active profile music -> games", "picture": "integer", "from": "=music",
        "to": "=games", "changes": [{"name": "string", "from": "any", "to": "any"}]})"));
    const auto has = [&](const char* change) {
        const Json wanted = Json::parse(change);
        return std::find(profile["changes"].begin(), profile["changes"].end(), wanted) !=
               profile["changes"].end();
    };
    EXPECT_TRUE(has(R"({"name": "intelligent-eq.on", "from": true, "to": false})"));
    EXPECT_TRUE(has(R"({"name": "headphone-virtualizer", "from": 3.0, "to": 0.0})"));
    EXPECT_EQ(1, sim.End()["reloads"]);
}

TEST_F(SimEvents, DemoHoldsTheBuiltInValues) {
    // The factory value of the demo, which the library does not read there either.
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, KORA4_PROFILE_DEMO_MOVIE, 3),
                        5);
    RunningSim sim;
    EXPECT_EQ(S_OK, m_api->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    const Json profile = sim.Next("profile");
    EXPECT_EQ("demo-movie", profile["to"]);
    bool hasLeveler = false;
    for (const Json& change : profile["changes"]) {
        if (change["name"] != "volume-leveler")
            continue;
        hasLeveler = true;
        EXPECT_EQ(cMovieVolume, change["to"]);
    }
    EXPECT_TRUE(hasLeveler) << profile;
    sim.End();
}

TEST_F(SimEvents, EnableAndSwitchesAreTold) {
    RunningSim sim;
    EXPECT_EQ(S_OK, m_api->SetVeltoEnable(FALSE));
    const Json enable = sim.Next("enable");
    EXPECT_TRUE(HasShape(enable, R"({"time": "string", "event": "=enable",
        "cause": "=master enable on -> off", "picture": "integer", "name": "=enable",
        "from": "boolean", "to": "boolean"})"));
    EXPECT_EQ(S_OK, m_api->SetTechnologyOnElseOff(eDialogEnhancer, TRUE));
    const Json flag = sim.Next("switch");
    EXPECT_TRUE(HasShape(flag, R"({"time": "string", "event": "=switch",
        "cause": "=switch off -> on", "picture": "integer", "name": "=dialog-enhancer.on",
        "from": "boolean", "to": "boolean", "technology": "=dialog-enhancer"})"));
    EXPECT_EQ(true, flag["to"]);
    RawStore::SetNumber(cDynamic, SettingName(6), 0);
    const Json setting = sim.Next("setting");
    EXPECT_EQ("dynamic-switch", setting["name"]);
    EXPECT_EQ(false, setting["to"]);
    EXPECT_EQ(0, sim.End()["reloads"]) << "switches reload nothing";
}

TEST_F(SimEvents, TableOfCustomProfilesIsTold) {
    RunningSim sim;
    EXPECT_EQ(S_OK, m_api->CreateCustomProfile(4, L"Späte Stunde"));
    const Json table = sim.Next("table");
    EXPECT_TRUE(HasShape(table, R"({"time": "string", "event": "=table",
        "cause": "=table counter 0 -> 1", "picture": "integer", "names": {"*": "string"}})"));
    EXPECT_EQ(Json::parse(R"({"p2": "Späte Stunde"})"), table["names"]);
    EXPECT_EQ(S_OK, m_api->DeleteCustomProfile(4));
    EXPECT_TRUE(sim.Next("table")["names"].empty());
    sim.End();
}

TEST_F(SimEvents, GlobalTechnologiesAreReloadedByTheirTriggers) {
    RunningSim sim;
    {
        const RawTransaction transaction;
        RawStore::SetText(cStatic, GlobalPatchName(2, 3), L"4.500000");
        RawStore::Bump(GlobalTriggerName(2));
    }
    const Json reload = sim.Next("reload");
    EXPECT_EQ("peak-limiter", reload["technology"]);
    ASSERT_EQ(1u, reload["changes"].size());
    EXPECT_EQ(4.5, reload["changes"][0]["to"]);
    RawStore::SetNumber(cDynamic, GlobalPatchName(2, 0), 0);
    EXPECT_EQ("peak-limiter.on", sim.Next("switch")["name"]);
    sim.End();
}

TEST_F(SimEvents, ValueThatNobodyAnnouncesIsNotSeen) {
    RunningSim sim;
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, 1, 3), 9);
    // Somebody else's announcement does not bring it in.
    SetValue(m_api.Get(), eIntelligentEQ, 2);
    EXPECT_EQ("intelligent-eq", sim.Next()["technology"]);
    RawStore::Bump(TriggerName(RawTechnology::eVolume));
    const Json reload = sim.Next();
    EXPECT_EQ("volume-leveler", reload["technology"]);
    EXPECT_EQ(9, reload["changes"][0]["to"]);
    EXPECT_EQ(2, sim.End()["reloads"]);
}

TEST_F(SimEvents, ChangesOfOneStepAreToldInTheOrderOfClients) {
    RunningSim sim;
    {
        const RawTransaction transaction;
        RawStore::Bump(SettingName(cTablePid));
        RawStore::Bump(TriggerName(RawTechnology::eVolume));
        RawStore::SetNumber(cDynamic, PatchName(RawTechnology::eVolume, 2, 0), 0);
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 2);
        RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0);
    }
    Texts events;
    while (events.empty() || events.back() != "table")
        events.push_back(sim.Next()["event"]);
    EXPECT_EQ((Texts{"enable", "profile", "reload", "table"}), events);
    sim.End();
}

TEST_F(SimEvents, InWordsAreOneLineEach) {
    RunningTool sim("kora4sim", {"silence"});
    EXPECT_THAT(sim.NextLine(), HasSubstr(" ready: scene silence, seed 1, engine mask 0x03ff "
                                          "(full engine), profile music, on, one frame every "
                                          "50 ms, process "));
    SetValue(m_api.Get(), eVolumeLeveler, 3);
    EXPECT_THAT(sim.NextLine(),
                EndsWith(" reload volume-leveler: trigger 0 -> 1: volume-leveler 0 -> 3"));
    SetValue(m_api.Get(), eVolumeLeveler, 3);
    EXPECT_THAT(sim.NextLine(),
                EndsWith(" reload volume-leveler: trigger 1 -> 2: no value changed"));
    EXPECT_EQ(S_OK, m_api->SetVeltoEnable(FALSE));
    EXPECT_THAT(sim.NextLine(), EndsWith(" enable on -> off"));
    EXPECT_EQ(S_OK, m_api->SetTechnologyOnElseOff(eGraphicEQ, FALSE));
    EXPECT_THAT(sim.NextLine(), EndsWith(" graphic-eq.on on -> off"));
    EXPECT_EQ(S_OK, m_api->CreateCustomProfile(3, L"Late"));
    EXPECT_THAT(sim.NextLine(), EndsWith(" table counter 0 -> 1: p1 'Late'"));
    EXPECT_EQ(S_OK, m_api->SetActiveProfile(0));
    EXPECT_THAT(sim.NextLine(), HasSubstr(" profile music -> movie: reload of everything: "));
    EXPECT_EQ(S_OK, m_api->SetVisualizationSamplingPeriod(25));
    EXPECT_THAT(sim.NextLine(), EndsWith(" sampling period 50 -> 25 ms"));
    sim.PressCtrlC();
    EXPECT_THAT(sim.NextLine(), HasSubstr(" reloads, 0 faults, digest "));
    EXPECT_EQ(0u, sim.WaitForEnd().exitCode);
}

}  // namespace
}  // namespace kora4::test
