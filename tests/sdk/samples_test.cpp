// SPDX-License-Identifier: MIT
// The samples as programs of their own. This program is put beside those that a client has
// built from the installed SDK, and registers the library that is there: tests/package runs it.
#include <gtest/gtest.h>
#include <kora4.hpp>

#include "support/raw_store.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

// The object of another client, on the library beside this program.
class Samples : public testing::Test {
  protected:
    static Api Opened() {
        Result<Api> api = Api::Open(LibraryPath().c_str());
        EXPECT_TRUE(api) << api.Text();
        return *std::move(api);
    }

    // The store alone: nothing of the library is registered.
    RawStore m_store;
    ApartmentGuard m_apartment{ApartmentKind::eMultithreaded};
};

void ExpectToFollow(const char* program, Api& api) {
    EXPECT_TRUE(api.SetActiveProfile(KORA4_PROFILE_GAMES));
    RunningTool sample(program, {});
    EXPECT_EQ("profile 2", sample.NextLine());
    EXPECT_TRUE(api.SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_EQ("profile 1", sample.NextLine());
    // What it does not show keeps it going.
    EXPECT_TRUE(api.SetVeltoEnable(false));
    EXPECT_TRUE(api.SetVolumeLeveler(3));
    EXPECT_TRUE(api.SetActiveProfile(KORA4_PROFILE_MOVIE));
    EXPECT_EQ("profile 0", sample.NextLine());
    sample.Send("\n");
    const ToolResult result = sample.WaitForEnd();
    EXPECT_EQ(0u, result.exitCode) << result;
    EXPECT_EQ("", result.err);
}

class SamplesThatFollow : public Samples, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(All, SamplesThatFollow,
                         testing::Values("kora4_follow", "kora4_follow_raw", "kora4_follow_c",
                                         "kora4_follow_sta", "kora4_follow_mta",
                                         "kora4_two_apartments", "kora4_follow_rs"));

TEST_P(SamplesThatFollow, ShowTheActiveProfileAndFollowItUntilEnter) {
    const RegisteredLibrary registered;
    Api api = Opened();
    ExpectToFollow(GetParam(), api);
}

TEST_P(SamplesThatFollow, SayWhyTheyCannotBegin) {
    const ToolResult result = RunTool(GetParam(), {});
    EXPECT_EQ(1u, result.exitCode);
    EXPECT_NE(std::string::npos, result.err.find("0x80040154")) << result;
    EXPECT_EQ("", result.out);
}

TEST_F(Samples, WithAManifestOneFollowsWithoutAnythingRegistered) {
    EXPECT_FALSE(
        KeyExists(HKEY_CLASSES_ROOT, L"CLSID\\{16CC6CDB-872A-4099-95B1-25BEBF71B0D9}"));
    EXPECT_FALSE(
        KeyExists(HKEY_CLASSES_ROOT, L"Interface\\{23F52F2F-4FB0-4DDB-97DF-159CB756B797}"));
    Api api = Opened();
    ExpectToFollow("kora4_registration_free", api);
}

TEST_F(Samples, WithAManifestOneSaysThatTheSettingsAreMissing) {
    RawStore::DeleteKeys();
    const ToolResult result = RunTool("kora4_registration_free", {});
    EXPECT_EQ(1u, result.exitCode);
    EXPECT_NE(std::string::npos, result.err.find("E_FAIL")) << result;
}

TEST_F(Samples, TheFirstClientMakesMusicTheActiveProfile) {
    const RegisteredLibrary registered;
    Api api = Opened();
    const ToolResult result = RunTool("kora4_first_client", {});
    EXPECT_EQ(0u, result.exitCode) << result;
    EXPECT_EQ("The active profile is 0.", result.Lines().at(0));
    EXPECT_EQ(KORA4_PROFILE_MUSIC, *api.GetActiveProfile());
}

TEST_F(Samples, TheEngineThatPublishesLevelsIsSeenByDisplays) {
    Api api = Opened();
    EXPECT_EQ(S_FALSE, api.GetVisualizationData().Code());
    RunningTool engine("kora4_publish_levels", {});
    Result<Levels> levels = api.GetVisualizationData();
    for (int i = 0; i < 500 && !levels; ++i, levels = api.GetVisualizationData())
        Sleep(20);
    ASSERT_TRUE(levels);
    for (std::size_t band = 0; band < levels->gains.size(); ++band) {
        EXPECT_LE(-60.0f, levels->gains[band]);
        EXPECT_GE(-6.0f, levels->gains[band]);
        EXPECT_NEAR(levels->gains[band] - 20 + KORA4_EXCITATION_OFFSET,
                    levels->excitations[band], 0.001);
    }
    const auto first = levels->gains;
    for (int i = 0; i < 500 && levels->gains == first; ++i, levels = api.GetVisualizationData())
        Sleep(20);
    EXPECT_NE(first, levels->gains);
    engine.Send("\n");
    const ToolResult result = engine.WaitForEnd();
    EXPECT_EQ(0u, result.exitCode) << result;
    EXPECT_EQ(S_FALSE, api.GetVisualizationData().Code());
}

TEST_F(Samples, TheWatcherIsToldWhatTheChangerChangesAndShowsWhatTheEnginePublishes) {
    const RegisteredLibrary registered;
    RunningTool watcher("kora4_watcher", {});
    watcher.LineWith("|ready|");
    const ToolResult changer =
        RunTool("kora4_changer", {}, "value volume leveler: 4\nswitch volume leveler: off\n");
    EXPECT_EQ(0u, changer.exitCode) << changer;
    watcher.LineWith("|told|volume leveler|off");
    const ToolResult engine = RunTool(
        "kora4_engine",
        {"SOFTWARE\\Velto\\KORA4\\StaticKeys", "{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},4"},
        "levels 3\n");
    EXPECT_EQ(0u, engine.exitCode) << engine;
    watcher.LineWith("|levels|");
    watcher.EndInput();
    EXPECT_EQ(0u, watcher.WaitForEnd().exitCode);
}

}  // namespace
}  // namespace kora4::test
