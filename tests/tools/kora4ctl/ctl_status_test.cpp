// SPDX-License-Identifier: MIT
// kora4ctl status.
#include <sstream>

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
        "library": {"version": "string", "path": "string", "fileVersion": "string"},
        "tool": {"version": "string"}})";

class CtlStatus : public CtlTest {};

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(CtlStatus, OfAFreshStore) {
    const Json status = DoneJson({"status"});
    EXPECT_TRUE(HasShape(status, cShape));
    EXPECT_EQ(status["profile"], "movie");
    EXPECT_EQ(status["technologies"].size(), 6u);
    EXPECT_EQ(status["technologies"][0]["value"], 262151);
    EXPECT_EQ(status["technologies"][0]["inRange"], false);
    EXPECT_EQ(status["technologies"][1]["value"].size(), 10u);
    EXPECT_EQ(status["technologies"][2]["effective"], false);
    EXPECT_EQ(status["customProfiles"], Json::array());
    EXPECT_EQ(status["engine"]["name"], nullptr);
    EXPECT_EQ(status["levels"], "none");
    EXPECT_EQ(status["library"]["version"], "7.2.7000.4");
    EXPECT_TRUE(Has(status["library"]["path"], "QXA64T.dll"));
}

TEST_F(CtlStatus, TellsWhatWasChanged) {
    ASSERT_EQ(Client().CreateCustomProfile(3, L"Late evening"), S_OK);
    ASSERT_EQ(Client().SetActiveProfile(3), S_OK);
    ASSERT_EQ(Client().SetVeltoEnable(FALSE), S_OK);
    ASSERT_EQ(Client().SetVisualizationSamplingPeriod(20), S_OK);
    const tools::SchemaValue mask = tools::EngineMaskValue();
    WriteStoredUINT(mask.keySet, mask.key, 0x021F);
    const tools::SchemaValue levels = tools::SettingValue(pkey::cVisualizationDataPid);
    WriteStoredBlob(levels.keySet, levels.key, std::vector<std::uint8_t>(8));
    const Json status = DoneJson({"status"});
    EXPECT_EQ(status["profile"], "p1");
    EXPECT_EQ(status["enable"], false);
    EXPECT_EQ(status["technologies"][0]["on"], true);
    EXPECT_EQ(status["technologies"][0]["effective"], false);
    EXPECT_EQ(status["customProfiles"],
              Json::array({{{"profile", "p1"}, {"name", "Late evening"}}}));
    EXPECT_EQ(status["engine"], Json({{"mask", 0x021F}, {"name", "standard engine"}}));
    EXPECT_EQ(status["samplingPeriod"], 20);
    EXPECT_EQ(status["levels"], "published");
    const std::string text = Done({"status"});
    for (const char* const part :
         {"p1 'Late evening'", "master enable is off", "0x021f, standard engine",
          "published, to be read every 20 ms", "262151 !", "7.2.7000.4"})
        EXPECT_TRUE(Has(text, part)) << part << "\n" << text;
}

TEST_F(CtlStatus, TellsADemo) {
    ASSERT_EQ(Client().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, TRUE), S_OK);
    EXPECT_EQ(DoneJson({"status"})["demo"], true);
    const std::string text = Done({"status"});
    EXPECT_TRUE(Has(text, "demo-games")) << text;
    EXPECT_TRUE(Has(text, "nothing is set")) << text;
}

TEST_F(CtlStatus, UnreadableThingsDoNotKeepItFromTellingTheRest) {
    WriteStoredUINT(eKeySetStatic, pkey::ProfileName(5), 1);
    const tools::SchemaValue levels = tools::SettingValue(pkey::cVisualizationDataPid);
    WriteStoredUINT(levels.keySet, levels.key, 1);
    const Json status = DoneJson({"status"});
    EXPECT_EQ(status["customProfiles"], nullptr);
    EXPECT_EQ(status["levels"], "unreadable");
    EXPECT_TRUE(Has(Done({"status"}), "lint"));
}

TEST_F(CtlStatus, PipedItIsPlainAndNarrow) {
    const std::string text = Done({"status"});
    EXPECT_FALSE(Has(text, "\x1b"));
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("library")) {
            EXPECT_LE(tools::ToUtf16(line).size(), 80u) << line;
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
            EXPECT_LE(tools::ToUtf16(line).size(), 80u) << line;
        }
    }
    EXPECT_EQ(DoneJson({"status"})["technologies"][1]["value"].size(), 40u);
}

TEST_F(CtlStatus, NamesCannotMoveTheCursor) {
    ASSERT_EQ(Client().CreateCustomProfile(3, L"a\x1b[2Jb\nc"), S_OK);
    const std::string text = Done({"status"});
    EXPECT_FALSE(Has(text, "\x1b"));
    EXPECT_TRUE(Has(text,
                    "a\xEF\xBF\xBD[2Jb\xEF\xBF\xBD"
                    "c"))
        << text;
}

TEST_F(CtlStatus, WithoutTheLibraryOneSentenceSaysWhatToDo) {
    Unregister();
    Refused({"status"}, cNotReady, "kora4ctl register");
    Refused({"status", "--json"}, cNotReady, "not registered");
    RemoveStore();
}

}  // namespace
}  // namespace kora4::test
