// SPDX-License-Identifier: MIT
// The limits of values: sizes, unknown technologies, and gains that are moved into their
// range.
#include "api/patch_limits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "api/method_frame.h"
#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(PatchLimits, AFieldThatIsTooSmallIsRefusedBeforeItIsRead) {
    for (std::uint32_t technology = 0; technology < 6; ++technology)
        EXPECT_EQ(E_INVALIDARG,
                  ValidatePatchField(static_cast<ApiTechnology>(technology), 3, nullptr));
    EXPECT_EQ(E_INVALIDARG, ValidatePatchField(ApiTechnology::eGraphicEQ, 323, nullptr));
}

TEST(PatchLimits, TheGraphicEQPassesUnchecked) {
    EXPECT_EQ(S_OK, ValidatePatchField(ApiTechnology::eGraphicEQ, 324, nullptr));
}

TEST(PatchLimits, WhatIsNoTechnologyFailsAnAssertion) {
    const TraceFlags flags(trace::eAssertions | trace::eLogFiles);
    const TraceLog log;
    std::uint32_t value = 0;
    EXPECT_EQ(E_INVALIDARG, ValidatePatchField(ApiTechnology::eNumberKORA4APITechnologies,
                                               sizeof value, &value));
    EXPECT_EQ(E_INVALIDARG,
              ValidatePatchField(static_cast<ApiTechnology>(0xFFFFFFFF), sizeof value, &value));
    EXPECT_THAT(MessagesOf(log.Read(cApiTag), "CKORA4ASL::ValidatePatchField"),
                ElementsAre("KALASSERT failed: !\"Invalid ASL patch field.\"",
                            "KALASSERT failed: !\"Invalid ASL patch field.\""));
}

TEST(PatchLimits, WhatIsNoTechnologyIsRefusedInSilenceWhileAssertionsAreNotTraced) {
    const TraceFlags flags(trace::eMessages | trace::eLogFiles);
    const TraceLog log;
    std::uint32_t value = 0;
    EXPECT_EQ(E_INVALIDARG, ValidatePatchField(ApiTechnology::eNumberKORA4APITechnologies,
                                               sizeof value, &value));
    EXPECT_THAT(log.Read(cApiTag), IsEmpty());
}

TEST(PatchLimits, GainsInsideTheLimitsStay) {
    const TraceFlags flags(trace::eMessages | trace::eLogFiles);
    const TraceLog log;
    ApiGraphicEQ graphicEQ{};
    graphicEQ.m_bands = 3;
    graphicEQ.m_gain[0] = 12.0f;
    graphicEQ.m_gain[1] = -12.0f;
    EXPECT_EQ(S_OK, ValidateAndLimitGraphicEQ(&graphicEQ));
    EXPECT_EQ(12.0f, graphicEQ.m_gain[0]);
    EXPECT_EQ(-12.0f, graphicEQ.m_gain[1]);
    EXPECT_THAT(log.Read(cApiTag), IsEmpty());
}

TEST(PatchLimits, OnlyTheBandsInUseAreLimitedAndAtMostForty) {
    struct {
        ApiGraphicEQ graphicEQ;
        float behind;
    } record{};
    record.behind = 99.0f;
    for (float& gain : record.graphicEQ.m_gain)
        gain = 99.0f;
    record.graphicEQ.m_bands = 39;
    EXPECT_EQ(S_OK, ValidateAndLimitGraphicEQ(&record.graphicEQ));
    EXPECT_EQ(12.0f, record.graphicEQ.m_gain[38]);
    EXPECT_EQ(99.0f, record.graphicEQ.m_gain[39]);
    record.graphicEQ.m_bands = 0xFFFFFFFF;
    EXPECT_EQ(S_OK, ValidateAndLimitGraphicEQ(&record.graphicEQ));
    EXPECT_EQ(12.0f, record.graphicEQ.m_gain[39]);
    EXPECT_EQ(99.0f, record.behind);
    EXPECT_EQ(0xFFFFFFFFu, record.graphicEQ.m_bands);
}

TEST(PatchLimits, InfiniteAndUndefinedGainsAreLimited) {
    ApiGraphicEQ graphicEQ{};
    graphicEQ.m_bands = 3;
    graphicEQ.m_gain[0] = std::numeric_limits<float>::infinity();
    graphicEQ.m_gain[1] = -std::numeric_limits<float>::infinity();
    graphicEQ.m_gain[2] = std::numeric_limits<float>::quiet_NaN();
    ValidateAndLimitGraphicEQ(&graphicEQ);
    EXPECT_EQ(12.0f, graphicEQ.m_gain[0]);
    EXPECT_EQ(-12.0f, graphicEQ.m_gain[1]);
    EXPECT_EQ(-12.0f, graphicEQ.m_gain[2]);
}

}  // namespace
}  // namespace kora4::test
