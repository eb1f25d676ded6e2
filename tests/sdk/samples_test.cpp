// SPDX-License-Identifier: MIT
// The samples that follow the active profile, as programs of their own.
#include <gtest/gtest.h>
#include <kora4.hpp>

#include "support/raw_store.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

class SdkFollow : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Samples, SdkFollow,
                         testing::Values("kora4_follow", "kora4_follow_raw", "kora4_follow_c"));

TEST_P(SdkFollow, ShowsTheActiveProfileAndFollowsItUntilEnter) {
    const RawStore store;
    const RegisteredLibrary registered;
    const ApartmentGuard apartment(ApartmentKind::eMultithreaded);
    Result<Api> api = Api::Open();
    ASSERT_TRUE(api) << api.Text();
    EXPECT_TRUE(api->SetActiveProfile(KORA4_PROFILE_GAMES));

    RunningTool sample(GetParam(), {});
    EXPECT_EQ("profile 2", sample.NextLine());
    EXPECT_TRUE(api->SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_EQ("profile 1", sample.NextLine());
    // What it does not show keeps it going.
    EXPECT_TRUE(api->SetVeltoEnable(false));
    EXPECT_TRUE(api->SetVolumeLeveler(3));
    EXPECT_TRUE(api->SetActiveProfile(KORA4_PROFILE_MOVIE));
    EXPECT_EQ("profile 0", sample.NextLine());
    sample.Send("\n");
    const ToolResult result = sample.WaitForEnd();
    EXPECT_EQ(0u, result.exitCode) << result;
}

TEST_P(SdkFollow, SaysWhyItCannotBegin) {
    const RawStore store;
    const ToolResult result = RunTool(GetParam(), {});
    EXPECT_EQ(1u, result.exitCode);
    EXPECT_NE(std::string::npos, result.err.find("0x80040154")) << result;
    EXPECT_EQ("", result.out);
}

}  // namespace
}  // namespace kora4::test
