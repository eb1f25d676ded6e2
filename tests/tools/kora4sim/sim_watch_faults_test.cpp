// SPDX-License-Identifier: MIT
// Each fault of the engine: what kora4ctl watch is told of it, what kora4ctl levels says, and
// that both go on.
#include <algorithm>
#include <map>

#include "contract/store_mutex.h"
#include "tools/kora4sim/sim_watch_fixture.h"

namespace kora4::test {
namespace {

using testing::HasSubstr;

constexpr char cPicture[] = R"({"time": "string", "frequencies": ["number"],
    "gains": ["number|null"], "excitations": ["number|null"], "still": "boolean",
    "error": "null"})";
constexpr char cNothing[] =
    R"({"time": "string", "frequencies": ["number"], "gains": "null", "excitations": "null",
    "still": "boolean", "error": "null"})";
constexpr char cUnreadable[] =
    R"({"time": "string", "frequencies": ["number"], "gains": "null", "excitations": "null",
    "still": "boolean", "error": "string"})";

// What the technologies of a profile are told to be, in the order of notifications.
struct Sliders {
    Json leveler;
    Json enhancer;
    Json intelligentEq;
    Json gains;
    Json headphone;
    Json speaker;
};

// The checks run on Music, with values of its own.
class SimWatchFaults : public SimWatchTest {
  protected:
    void SetUp() override {
        SimWatchTest::SetUp();
        ASSERT_EQ(S_OK, Client().SetActiveProfile(1));
        SetNumber(eVolumeLeveler, 6);
        SetSlider(eDialogEnhancer, 0.75f);
        SetNumber(eIntelligentEQ, 4);
        GraphicEQData data = {};
        ASSERT_EQ(S_OK, Client().GetGraphicEQData(&data));
        for (ULONG band = 0; band < data.m_bands; ++band) {
            m_frequencies.push_back(data.m_freq[band]);
            m_default.push_back(data.m_gain[band]);
            m_own.push_back(band == 0 ? 3 : data.m_gain[band]);
        }
        data.m_gain[0] = 3;
        ASSERT_EQ(S_OK, Client().SetGraphicEQData(&data));
        SetSlider(eVirtualizerHP, 1.5f);
        SetSlider(eVirtualizerSpkr, 2.5f);
        StartWatch();
    }

    Sliders Own() const { return {6, 0.75, "rich", m_own, 1.5, 2.5}; }
    Sliders MusicDefaults() const { return {0, 0.33, "open", m_default, 3.0, 10.0}; }
    Sliders MovieDefaults() const {
        return {cMovieVolume, 0.33, "balanced", m_default, 6.0, 10.0};
    }
    // Every technology is told; the profile is the one that was active.
    Events AllTold(const Sliders& sliders) const {
        return {ToldValue("volume-leveler", sliders.leveler),
                ToldValue("dialog-enhancer", sliders.enhancer),
                ToldValue("intelligent-eq", sliders.intelligentEq),
                Told("graphic-eq", "graphic-eq",
                     {{"frequencies", m_frequencies}, {"gains", sliders.gains}}),
                ToldValue("headphone-virtualizer", sliders.headphone),
                ToldValue("speaker-virtualizer", sliders.speaker)};
    }
    // Another client's change still gets there.
    void ExpectThatItGoesOn() {
        Done({"set", "dialog-enhancer", "0.5"});
        ExpectTold({ToldValue("dialog-enhancer", 0.5)});
    }

    // The whole run of an engine with these faults, and the picture that it leaves.
    static ToolResult Run(const Words& faults, const char* seconds = "0.1") {
        Words arguments = {"engine-full", "--seed", "7", "--for", seconds};
        for (const std::string& fault : faults)
            arguments.insert(arguments.end(), {"--fault", fault});
        return RunSimToItsEnd(arguments);
    }
    void StartLevels() {
        m_levels =
            std::make_unique<RunningTool>("kora4ctl", Words{"levels", "--json", "--fps", "50"});
        EXPECT_TRUE(HasShape(ParsedJson(m_levels->NextLine()), cNothing));
    }
    // What a display that was there before shows in the end; it has not ended.
    Json Shown(const std::function<bool(const Json&)>& isWanted) {
        Json picture;
        m_levels->LineLike([&](const std::string& line) {
            picture = ParsedJson(line);
            return isWanted(picture);
        });
        EXPECT_TRUE(m_levels->IsRunning());
        return picture;
    }
    static bool IsPicture(const Json& picture) { return !picture["gains"].is_null(); }
    // A look of its own, at what there is now.
    static Json LookNow() {
        const ToolResult result = RunCtl({"levels", "--json", "--timeout", "0"});
        EXPECT_EQ(0u, result.exitCode) << result;
        EXPECT_EQ(1u, result.Lines().size()) << result;
        Json picture = result.Lines().empty() ? Json() : ParsedJson(result.Lines().front());
        if (picture.is_object())
            picture.erase("time");
        return picture;
    }

  public:
    // ---- One for each line of the table -------------------------------------------------

    void LevelsAreTheFloor(const std::string& fault) {
        StartLevels();
        Run({fault});
        const Json picture = Shown(IsPicture);
        EXPECT_TRUE(HasShape(picture, cPicture));
        EXPECT_EQ(Json(Json::array_t(KORA4_VISUALIZATION_BANDS, KORA4_SILENT_GAIN)),
                  picture["gains"]);
        EXPECT_EQ(Json(Json::array_t(KORA4_VISUALIZATION_BANDS, KORA4_SILENT_EXCITATION)),
                  picture["excitations"]);
        ExpectNothingTold();
    }
    void LevelsAreUnreadable(const std::string& fault) {
        StartLevels();
        Run({fault});
        const Json line = Shown([](const Json& one) { return !one["error"].is_null(); });
        EXPECT_TRUE(HasShape(line, cUnreadable));
        EXPECT_THAT(line["error"].get<std::string>(), HasSubstr("the levels cannot be read: "));
        const ToolResult words = RunCtl({"levels", "--count", "1", "--timeout", "0.2"});
        EXPECT_EQ(6u, words.exitCode) << words;
        EXPECT_THAT(words.err, HasSubstr("the levels cannot be read: "));
        Run({});
        EXPECT_TRUE(HasShape(Shown(IsPicture), cPicture));
        ExpectNothingTold();
    }
    void LevelsAreAnything(const std::string& fault) {
        StartLevels();
        Run({fault}, "0.5");
        EXPECT_TRUE(HasShape(Shown(IsPicture), cPicture));
        EXPECT_EQ(nullptr, LookNow()["error"]);
        ExpectNothingTold();
    }
    void LevelsAreInfinite(const std::string& fault) {
        StartLevels();
        Run({fault});
        const Json picture = Shown(IsPicture);
        EXPECT_TRUE(HasShape(picture, cPicture));
        for (std::size_t band = 0; band < KORA4_VISUALIZATION_BANDS; ++band) {
            const bool isPlus = band % 2 == 0;
            EXPECT_EQ(isPlus ? Json() : Json(KORA4_SILENT_GAIN), picture["gains"][band])
                << band;
            EXPECT_EQ(isPlus ? Json() : Json(KORA4_SILENT_EXCITATION),
                      picture["excitations"][band])
                << band;
        }
        ExpectNothingTold();
    }
    void LevelsAreRight(const std::string& fault) {
        Run({});
        const Json right = LookNow();
        EXPECT_TRUE(IsPicture(right));
        Run({"garbage=nan"});
        EXPECT_NE(right, LookNow());
        Run({fault});
        EXPECT_EQ(right, LookNow());
        ExpectNothingTold();
    }
    // The last processing object is the quietest: of the others nothing changes.
    void LevelsLackTheLastRecord(const std::string& fault) {
        Run({});
        const Json right = LookNow();
        Run({"garbage=nan"});
        Run({fault});
        const Json picture = LookNow();
        for (const std::size_t band : {0u, 19u})
            EXPECT_EQ(right["excitations"][band], picture["excitations"][band]) << band;
        EXPECT_EQ(nullptr, picture["error"]);
        ExpectNothingTold();
    }
    void LevelsAreThoseOfTheFirstBands(const std::string& fault) {
        Run({});
        const Json right = LookNow();
        Run({fault});
        EXPECT_EQ(right["excitations"][5], LookNow()["excitations"][5]);
        ExpectNothingTold();
    }
    void LevelsStay(const std::string& fault) {
        StartLevels();
        Run({fault});
        EXPECT_EQ(nullptr, LookNow()["gains"]);
        const ToolResult words = RunCtl({"levels", "--count", "1", "--timeout", "0.2"});
        EXPECT_THAT(words.err, HasSubstr("no levels: no engine has published any"));
        EXPECT_TRUE(m_levels->IsSilentFor(0));
        Run({}, "0.2");
        const Json last = LookNow();
        EXPECT_TRUE(IsPicture(last));
        Run({fault + "@0.2"}, "0.4");
        EXPECT_EQ(last, LookNow());
        EXPECT_TRUE(m_levels->IsRunning());
        ExpectNothingTold();
    }

    void DeathIsSurvived(const std::string& fault) {
        const UniqueHandle mutex(
            CreateMutexW(nullptr, FALSE, reinterpret_cast<const wchar_t*>(cStoreMutexName)));
        const ToolResult dead = RunSimToItsEnd({"--fault", fault + "@0.1"}, cFailed);
        EXPECT_EQ(fault, EventOf(dead, "fault")["fault"]);
        EXPECT_EQ(std::string::npos, dead.out.find("summary"));
        EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(mutex.Get(), cBoundedWait));
        EXPECT_TRUE(ReleaseMutex(mutex.Get()));
        ExpectNothingTold();
        ExpectThatItGoesOn();
    }
    void DeathHalfWayIsNotTold(const std::string& fault) {
        const ToolResult dead = RunSimToItsEnd({"--fault", fault}, cFailed);
        // The first to take the mutex is the command, and then the watcher.
        Done({"set", "dialog-enhancer", "0.25"});
        ExpectTold({ToldValue("dialog-enhancer", 0.25)});
        const Json written = EventOf(dead, "fault")["to"];
        EXPECT_NE(Json(6), written);
        EXPECT_EQ(written, DoneJson({"get", "volume-leveler"})["value"]);
        Done({"set", "volume-leveler", "10"});
        ExpectTold({ToldValue("volume-leveler", 10)});
    }
    void HoldIsWaitedFor(const std::string& fault) {
        StartSim({"silence", "--fault", fault + "=600"});
        NextSeen("fault");
        RunningTool set("kora4ctl", {"set", "volume-leveler", "2"});
        EXPECT_TRUE(set.IsSilentFor(1000)) << "nobody has let the mutex go";
        EXPECT_TRUE(set.IsRunning());
        EXPECT_TRUE(Watch().IsSilentFor(0));
        EndSim();
        EXPECT_EQ(cDone, set.WaitForEnd().exitCode);
        ExpectTold({ToldValue("volume-leveler", 2)});
        // One that ends by itself.
        StartSim({"silence", "--fault", fault + "=1"});
        NextSeen("fault");
        Done({"set", "volume-leveler", "3"});
        NextSeen("released");
        EXPECT_EQ("volume-leveler", NextSeen("reload")["technology"]);
        ExpectTold({ToldValue("volume-leveler", 3)});
        EndSim();
    }
    void BurstEndsInTheLastState(const std::string& fault) {
        for (const std::size_t writes : {1u, 2u, 200u}) {
            SCOPED_TRACE(writes);
            const ToolResult run = Run({fault + "=" + std::to_string(writes)});
            const Json last = EventOf(run, "burst")["settings"];
            EXPECT_EQ(std::min<std::size_t>(writes, 2), last.size());
            std::map<std::string, Events> told;
            for (const Json& event : TakeRest().told) {
                EXPECT_EQ("value", event["event"]);
                told[event["name"]].push_back(event["value"]);
            }
            EXPECT_EQ(last.size(), told.size());
            for (const auto& [name, value] : last.items()) {
                ASSERT_FALSE(told[name].empty()) << name;
                EXPECT_LE(told[name].size(), (writes + 1) / 2) << name;
                EXPECT_EQ(value, told[name].back()) << name;
            }
        }
        ExpectThatItGoesOn();
    }
    void DefaultsAreTold(const std::string& fault) {
        Run({fault});
        ExpectTold(AllTold(MusicDefaults()));
        ExpectThatItGoesOn();
    }
    void OwnValuesAreToldAgain(const std::string& fault) {
        Run({fault});
        ExpectTold(AllTold(Own()));
        ExpectThatItGoesOn();
    }
    void NumberIsToldAsItIs(const std::string& fault) {
        Run({fault});
        ExpectTold({Told("profile", "profile", 99)});
        Done({"profile", "use", "games"});
        ExpectTold({Told("profile", "profile", "games")});
        ExpectThatItGoesOn();
    }
    void MovieIsTold(const std::string& fault) {
        Run({fault});
        ExpectTold({Told("profile", "profile", "movie")});
        EXPECT_EQ("movie", DoneJson({"status"})["profile"]);
        Run({fault});
        ExpectNothingTold();
        ExpectThatItGoesOn();
    }
    void TableCannotBeTold(const std::string& fault) {
        Run({fault});
        ExpectTold({Told("table", "custom-profiles", nullptr)});
        EXPECT_EQ(nullptr, DoneJson({"status"})["customProfiles"]);
        ExpectThatItGoesOn();
    }
    // While the watcher looks at each step, so that none is told together with the next.
    void AllIsPutBack(const std::string& fault) {
        Run({"garbage=text", fault + "@0.2"}, "0.4");
        const Json resumed = LookNow();
        EXPECT_TRUE(IsPicture(resumed));
        Run({}, "0.4");
        EXPECT_EQ(resumed, LookNow());
        Run({"stop", fault + "@0.2"}, "0.4");
        EXPECT_EQ(resumed, LookNow());
        ExpectNothingTold();
        for (const char* spoilt : {"wrong-types", "profile-garbage"}) {
            SCOPED_TRACE(spoilt);
            const bool areFields = std::string(spoilt) == "wrong-types";
            StartSim({"silence", "--fault", spoilt, "--fault", fault + "@4"});
            NextSeen("fault");
            for (const Json& event :
                 areFields ? AllTold(MusicDefaults()) : Events{Told("profile", "profile", 99)})
                EXPECT_EQ(event, NextTold());
            NextSeen("fault");
            ExpectTold(areFields ? AllTold(Own())
                                 : Events{Told("profile", "profile", "music")});
            EndSim();
        }
        ExpectThatItGoesOn();
    }

  protected:
    Json m_frequencies = Json::array();
    Json m_default = Json::array();
    Json m_own = Json::array();
    std::unique_ptr<RunningTool> m_levels;

    void TearDown() override {
        m_levels.reset();
        SimWatchTest::TearDown();
    }
};

using Check = void (SimWatchFaults::*)(const std::string&);
struct FaultExpectation {
    const char* fault;
    Check check;
};
void PrintTo(const FaultExpectation& expectation, std::ostream* stream) {
    *stream << expectation.fault;
}

using F = SimWatchFaults;
constexpr FaultExpectation cFaults[] = {
    {"stop", &F::LevelsStay},
    {"garbage=empty", &F::LevelsAreTheFloor},
    {"garbage=short-head", &F::LevelsAreTheFloor},
    {"garbage=random", &F::LevelsAreAnything},
    {"garbage=text", &F::LevelsAreUnreadable},
    {"garbage=dword", &F::LevelsAreUnreadable},
    {"garbage=nan", &F::LevelsAreTheFloor},
    {"garbage=infinite", &F::LevelsAreInfinite},
    {"garbage=huge", &F::LevelsAreRight},
    {"garbage=truncated", &F::LevelsLackTheLastRecord},
    {"counts=records-more", &F::LevelsAreRight},
    {"counts=records-fewer", &F::LevelsLackTheLastRecord},
    {"counts=records-none", &F::LevelsAreTheFloor},
    {"counts=records-max", &F::LevelsAreRight},
    {"counts=bands-more", &F::LevelsAreTheFloor},
    {"counts=bands-max", &F::LevelsAreTheFloor},
    {"counts=bands-none", &F::LevelsAreTheFloor},
    {"counts=bands-41", &F::LevelsAreThoseOfTheFirstBands},
    {"die", &F::DeathIsSurvived},
    {"die=half-way", &F::DeathHalfWayIsNotTold},
    {"hold", &F::HoldIsWaitedFor},
    {"burst", &F::BurstEndsInTheLastState},
    {"wrong-types", &F::DefaultsAreTold},
    {"wrong-types=type", &F::DefaultsAreTold},
    {"wrong-types=malformed", &F::DefaultsAreTold},
    {"wrong-types=oversized", &F::DefaultsAreTold},
    {"wrong-types=unterminated", &F::OwnValuesAreToldAgain},
    {"wrong-types=mixed", &F::DefaultsAreTold},
    {"profile-garbage", &F::NumberIsToldAsItIs},
    {"profile-garbage=number", &F::NumberIsToldAsItIs},
    {"profile-garbage=type", &F::MovieIsTold},
    {"profile-garbage=short", &F::MovieIsTold},
    {"profile-garbage=name", &F::TableCannotBeTold},
    {"resume", &F::AllIsPutBack},
};

class SimWatchEachFault : public SimWatchFaults,
                          public testing::WithParamInterface<FaultExpectation> {};

TEST_P(SimWatchEachFault, IsToldAsExpected) {
    (this->*GetParam().check)(GetParam().fault);
}

INSTANTIATE_TEST_SUITE_P(Faults, SimWatchEachFault, testing::ValuesIn(cFaults),
                         [](const testing::TestParamInfo<FaultExpectation>& one) {
                             std::string name = one.param.fault;
                             for (char& c : name)
                                 c = c == '=' || c == '-' ? '_' : c;
                             return name;
                         });

TEST(SimWatchAllFaults, HaveAnExpectation) {
    Words expected;
    for (const FaultExpectation& expectation : cFaults)
        expected.push_back(expectation.fault);
    EXPECT_THAT(OfferedFaults(), testing::UnorderedElementsAreArray(expected));
}

TEST_F(SimWatchFaults, DefaultsOfAnotherProfileAreToldByTheProfileAlone) {
    Done({"set", "enable", "off"});
    ExpectTold({Told("enable", "enable", false)});
    RunSimToItsEnd({"--write-defaults", "--for", "0"});
    ExpectTold({Told("enable", "enable", true), Told("profile", "profile", "movie")});
    ExpectThatItGoesOn();
}

TEST_F(SimWatchFaults, DefaultsOfTheActiveProfileAreToldOneByOne) {
    Done({"profile", "use", "movie"});
    ExpectTold({Told("profile", "profile", "movie")});
    Done({"set", "dialog-enhancer", "off"});
    ExpectTold({Told("switch", "dialog-enhancer.on", false)});
    RunSimToItsEnd({"--write-defaults", "--for", "0"});
    Events expected = AllTold(MovieDefaults());
    expected.insert(expected.begin() + 1, Told("switch", "dialog-enhancer.on", true));
    ExpectTold(expected);
    ExpectThatItGoesOn();
}

}  // namespace
}  // namespace kora4::test
