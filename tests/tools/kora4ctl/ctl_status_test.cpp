// SPDX-License-Identifier: MIT
// kora4ctl status.
#include <sstream>

#include "contract/defaults.h"
#include "contract/profiles.h"
#include "settings/schema.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

constexpr char cShape[] =
    R"({"profile": "string", "enable": "boolean", "demo": "boolean",
        "technologies": [{"technology": "string", "on": "boolean", "effective": "boolean",
                          "value": "any", "unit": "string|null", "inRange": "boolean"}],
        "customProfiles": "any",
        "engine": {"mask": "integer", "name": "string|null"},
        "samplingPeriod": "integer", "levels": "string",
        "unreadable": "integer", "interrupted": "boolean",
        "library": {"version": "string", "path": "string", "fileVersion": "string"},
        "tool": {"version": "string"}})";

class CtlStatus : public CtlTest {};

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(CtlStatus, OfAFreshStore) {
    const Json status = DoneJson({"status"});
    EXPECT_TRUE(HasShape(status, cShape));
    EXPECT_EQ("movie", status["profile"]);
    EXPECT_EQ(6u, status["technologies"].size());
    EXPECT_EQ(defaults::cVolumeAmount[cMovieProfile], status["technologies"][0]["value"]);
    EXPECT_EQ(false, status["technologies"][0]["inRange"]);
    EXPECT_EQ(10u, status["technologies"][1]["value"].size());
    EXPECT_EQ(false, status["technologies"][2]["effective"]);
    EXPECT_EQ(Json::array(), status["customProfiles"]);
    EXPECT_EQ(nullptr, status["engine"]["name"]);
    EXPECT_EQ("none", status["levels"]);
    EXPECT_EQ("7.2.7000.4", status["library"]["version"]);
    EXPECT_TRUE(Has(status["library"]["path"], "QXA64T.dll"));
}

TEST_F(CtlStatus, TellsWhatWasChanged) {
    ASSERT_EQ(S_OK, Client().CreateCustomProfile(3, L"Late evening"));
    ASSERT_EQ(S_OK, Client().SetActiveProfile(3));
    ASSERT_EQ(S_OK, Client().SetVeltoEnable(FALSE));
    ASSERT_EQ(S_OK, Client().SetVisualizationSamplingPeriod(20));
    const tools::SchemaValue mask = tools::EngineMaskValue();
    WriteStoredUINT(mask.keySet, mask.key, KORA4_ENGINE_STANDARD);
    const tools::SchemaValue levels = tools::SettingValue(pkey::cVisualizationDataPid);
    WriteStoredBlob(levels.keySet, levels.key, std::vector<std::uint8_t>(8));
    const Json status = DoneJson({"status"});
    EXPECT_EQ("p1", status["profile"]);
    EXPECT_EQ(false, status["enable"]);
    EXPECT_EQ(true, status["technologies"][0]["on"]);
    EXPECT_EQ(false, status["technologies"][0]["effective"]);
    EXPECT_EQ(Json::array({{{"profile", "p1"}, {"name", "Late evening"}}}),
              status["customProfiles"]);
    EXPECT_EQ(Json({{"mask", 0x021F}, {"name", "standard engine"}}), status["engine"]);
    EXPECT_EQ(20, status["samplingPeriod"]);
    EXPECT_EQ("published", status["levels"]);
    const std::string text = Done({"status"});
    for (const char* const part :
         {"p1 'Late evening'", "master enable is off", "0x021f, standard engine",
          "published; read every 20 ms", "262151 !", "7.2.7000.4"})
        EXPECT_TRUE(Has(text, part)) << part << "\n" << text;
}

TEST_F(CtlStatus, TellsADemo) {
    ASSERT_EQ(S_OK, Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, TRUE));
    EXPECT_EQ(true, DoneJson({"status"})["demo"]);
    const std::string text = Done({"status"});
    EXPECT_TRUE(Has(text, "demo-games")) << text;
    EXPECT_TRUE(Has(text, "cannot be changed")) << text;
}

TEST_F(CtlStatus, UnreadableThingsDoNotKeepItFromTellingTheRest) {
    WriteStoredUINT(eKeySetStatic, pkey::ProfileName(5), 1);
    const tools::SchemaValue levels = tools::SettingValue(pkey::cVisualizationDataPid);
    WriteStoredUINT(levels.keySet, levels.key, 1);
    const Json status = DoneJson({"status"});
    EXPECT_EQ(nullptr, status["customProfiles"]);
    EXPECT_EQ("unreadable", status["levels"]);
    EXPECT_TRUE(Has(Done({"status"}), "lint"));
}

TEST_F(CtlStatus, PipedItIsPlainAndNarrow) {
    const std::string text = Done({"status"});
    EXPECT_FALSE(Has(text, "\x1b"));
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("library")) {
            EXPECT_GE(80u, tools::ToUtf16(line).size()) << line;
        }
    }
}

TEST_F(CtlStatus, FortyBandsFit) {
    std::string bands = "GraphicEQ: ";
    for (int i = 0; i < 40; ++i)
        bands += std::to_string(20 + 100 * i) + (i == 17 ? " -12;" : " 11.25;");
    Done({"eq", "import", "-", "--bands", "file"}, bands);
    const std::string text = Done({"status"});
    // Bands share columns, and the one that is farthest from 0 dB stands for them.
    EXPECT_TRUE(Has(text, "\xE2\x96\x88\xE2\x96\x81\xE2\x96\x88")) << text;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("library")) {
            EXPECT_GE(80u, tools::ToUtf16(line).size()) << line;
        }
    }
    EXPECT_EQ(40u, DoneJson({"status"})["technologies"][1]["value"].size());
}

TEST_F(CtlStatus, NamesCannotMoveTheCursor) {
    ASSERT_EQ(S_OK, Client().CreateCustomProfile(3, L"a\x1b[2Jb\nc"));
    const std::string text = Done({"status"});
    EXPECT_FALSE(Has(text, "\x1b"));
    EXPECT_TRUE(Has(text, "a\\u001b[2Jb\\u000ac")) << text;
}

TEST_F(CtlStatus, WithoutTheLibraryOneSentenceSaysWhatToDo) {
    Unregister();
    Refused({"status"}, cNotReady, "kora4ctl register");
    Refused({"status", "--json"}, cNotReady, "not registered");
    RemoveStore();
}

}  // namespace
}  // namespace kora4::test
