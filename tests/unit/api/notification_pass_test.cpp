// SPDX-License-Identifier: MIT
// One pass of notifications: its order, its early end, and what is left out because it was
// overtaken.
#include "api/notification_pass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "api/method_frame.h"
#include "support/com_client.h"
#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NotificationPassTest : public testing::Test {
  protected:
    HRESULT Notify() {
        return CallbackNotifications(m_spRecorder.Get(), m_changes, m_registration,
                                     m_overtaken);
    }
    void ChangeSlider(KORA4PresetTechnology technology, ApiTechnology apiTechnology) {
        m_changes.patchChanged[technology] = true;
        m_changes.presetPatchValues[technology].m_technology = apiTechnology;
    }
    // All that a pass can be about, but for the profile.
    void ChangeEverything() {
        m_changes.enableChanged = true;
        m_changes.tableChanged = true;
        for (bool& changed : m_changes.onElseOffChanged)
            changed = true;
        ChangeSlider(eVolumeTech, ApiTechnology::eVolumeLeveler);
        ChangeSlider(eEnhancementTech, ApiTechnology::eDialogEnhancer);
        ChangeSlider(eDynamicEQTech, ApiTechnology::eIntelligentEQ);
        ChangeSlider(eHeadphoneTech, ApiTechnology::eVirtualizerHP);
        ChangeSlider(eVirtualSurroundTech, ApiTechnology::eVirtualizerSpkr);
        m_changes.patchChanged[eStandardEQTech] = true;
        m_changes.patchChanged[eNGSurroundTech] = true;
    }

    Microsoft::WRL::ComPtr<CallbackRecorder> m_spRecorder = CallbackRecorder::Create();
    ChangeSet m_changes;
    std::uint32_t m_registration = 5;
    OvertakenItems m_overtaken;
};

TEST_F(NotificationPassTest, NothingChangedMeansNoCall) {
    EXPECT_EQ(S_OK, Notify());
    EXPECT_THAT(m_spRecorder->Log(), IsEmpty());
}

TEST_F(NotificationPassTest, APassHasOneOrder) {
    ChangeEverything();
    EXPECT_EQ(S_OK, Notify());
    EXPECT_THAT(
        m_spRecorder->Log(),
        ElementsAre("OnEnableStateChange(0)", "OnTechnologyOnElseOffChange(eVolumeLeveler, 0)",
                    "OnSimplePatchValueChange(eVolumeLeveler, 0)",
                    "OnTechnologyOnElseOffChange(eDialogEnhancer, 0)",
                    "OnSimplePatchValueChange(eDialogEnhancer, 0)",
                    "OnTechnologyOnElseOffChange(eIntelligentEQ, 0)",
                    "OnSimplePatchValueChange(eIntelligentEQ, 0)",
                    "OnTechnologyOnElseOffChange(eGraphicEQ, 0)",
                    "OnGraphicEQChange(0 bands, first gain 0)",
                    "OnTechnologyOnElseOffChange(eVirtualizerHP, 0)",
                    "OnSimplePatchValueChange(eVirtualizerHP, 0)",
                    "OnTechnologyOnElseOffChange(eVirtualizerSpkr, 0)",
                    "OnSimplePatchValueChange(eVirtualizerSpkr, 0)",
                    "OnCustomProfileTableChange()"));
}

TEST_F(NotificationPassTest, AProfileSwitchReplacesTheTechnologies) {
    ChangeEverything();
    m_changes.enable = true;
    m_changes.profileChanged = true;
    m_changes.profile = cDemoMusicProfile;
    EXPECT_EQ(S_OK, Notify());
    EXPECT_THAT(m_spRecorder->Log(),
                ElementsAre("OnEnableStateChange(1)", "OnActiveProfileChange(241)",
                            "OnCustomProfileTableChange()"));
}

TEST_F(NotificationPassTest, TheFirstFailureEndsThePassAndIsItsResult) {
    ChangeEverything();
    m_spRecorder->React("OnSimplePatchValueChange", [] { return E_ACCESSDENIED; });
    EXPECT_EQ(E_ACCESSDENIED, Notify());
    EXPECT_THAT(
        m_spRecorder->Log(),
        ElementsAre("OnEnableStateChange(0)", "OnTechnologyOnElseOffChange(eVolumeLeveler, 0)",
                    "OnSimplePatchValueChange(eVolumeLeveler, 0)"));
}

TEST_F(NotificationPassTest, AFailingEnableSuppressesEverythingElse) {
    ChangeEverything();
    m_changes.profileChanged = true;
    m_spRecorder->React("OnEnableStateChange", [] { return E_FAIL; });
    EXPECT_EQ(E_FAIL, Notify());
    EXPECT_THAT(m_spRecorder->Log(), ElementsAre("OnEnableStateChange(0)"));
}

TEST_F(NotificationPassTest, ThePassReturnsTheLastResult) {
    m_changes.enableChanged = true;
    m_changes.tableChanged = true;
    m_spRecorder->React("OnEnableStateChange", [] { return HRESULT{7}; });
    m_spRecorder->React("OnCustomProfileTableChange", [] { return S_FALSE; });
    EXPECT_EQ(S_FALSE, Notify());
}

TEST_F(NotificationPassTest, AChangedRegistrationEndsThePass) {
    ChangeEverything();
    m_spRecorder->React("OnTechnologyOnElseOffChange", [&] {
        ++m_registration;
        return S_FALSE;
    });
    EXPECT_EQ(S_FALSE, Notify());
    EXPECT_THAT(m_spRecorder->Log(),
                ElementsAre("OnEnableStateChange(0)",
                            "OnTechnologyOnElseOffChange(eVolumeLeveler, 0)"));
}

TEST_F(NotificationPassTest, WhatIsOvertakenIsLeftOut) {
    ChangeEverything();
    m_overtaken.Add(OvertakenItems::cEnable | OvertakenItems::Switch(eVolumeTech) |
                    OvertakenItems::Value(eEnhancementTech) |
                    OvertakenItems::Value(eStandardEQTech));
    EXPECT_EQ(S_OK, Notify());
    EXPECT_THAT(m_spRecorder->Log(),
                ElementsAre("OnSimplePatchValueChange(eVolumeLeveler, 0)",
                            "OnTechnologyOnElseOffChange(eDialogEnhancer, 0)",
                            "OnTechnologyOnElseOffChange(eIntelligentEQ, 0)",
                            "OnSimplePatchValueChange(eIntelligentEQ, 0)",
                            "OnTechnologyOnElseOffChange(eGraphicEQ, 0)",
                            "OnTechnologyOnElseOffChange(eVirtualizerHP, 0)",
                            "OnSimplePatchValueChange(eVirtualizerHP, 0)",
                            "OnTechnologyOnElseOffChange(eVirtualizerSpkr, 0)",
                            "OnSimplePatchValueChange(eVirtualizerSpkr, 0)",
                            "OnCustomProfileTableChange()"));
}

TEST_F(NotificationPassTest, WhatIsOvertakenDuringThePassIsLeftOutFromThereOn) {
    ChangeEverything();
    m_spRecorder->React("OnEnableStateChange", [&] {
        m_overtaken.Add(OvertakenItems::cProfile | OvertakenItems::cTechnologies);
        return S_OK;
    });
    EXPECT_EQ(S_OK, Notify());
    EXPECT_THAT(m_spRecorder->Log(),
                ElementsAre("OnEnableStateChange(0)", "OnCustomProfileTableChange()"));
}

TEST_F(NotificationPassTest, AnOvertakenProfileIsNotReplacedByItsTechnologies) {
    ChangeEverything();
    m_changes.profileChanged = true;
    m_overtaken.Add(OvertakenItems::cProfile);
    EXPECT_EQ(S_OK, Notify());
    EXPECT_THAT(m_spRecorder->Log(),
                ElementsAre("OnEnableStateChange(0)", "OnCustomProfileTableChange()"));
}

TEST_F(NotificationPassTest, AWrongTechnologyFailsAnAssertionAndIsToldAllTheSame) {
    const TraceFlags flags(trace::eAssertions | trace::eLogFiles);
    const TraceLog log;
    ChangeSlider(eVolumeTech, ApiTechnology::eNumberKORA4APITechnologies);
    EXPECT_EQ(S_OK, Notify());
    EXPECT_EQ(1u, m_spRecorder->Log().size());
    EXPECT_THAT(
        MessagesOf(log.Read(contract::tag::cApi), "CKORA4ASL::CallbackNotifications"),
        ElementsAre(
            "KALASSERT failed: IsValidASLTechnology( presetPatchValues[ (UINT) presetTech "
            "].m_technology )",
            "KALASSERT failed: APITech == presetPatchValues[ (UINT) presetTech "
            "].m_technology"));
}

TEST_F(NotificationPassTest, WhatIsWrongIsToldInSilenceWhileAssertionsAreNotTraced) {
    const TraceFlags flags(trace::eMessages | trace::eLogFiles);
    const TraceLog log;
    ChangeSlider(eVolumeTech, ApiTechnology::eNumberKORA4APITechnologies);
    EXPECT_EQ(S_OK, Notify());
    EXPECT_EQ(1u, m_spRecorder->Log().size());
    EXPECT_EQ(S_OK, CallbackNotifications(nullptr, m_changes, m_registration, m_overtaken));
    EXPECT_TRUE(log.Read(contract::tag::cApi).empty());
}

TEST_F(NotificationPassTest, WithoutACallbackAnAssertionFails) {
    const TraceFlags flags(trace::eAssertions | trace::eLogFiles);
    const TraceLog log;
    ChangeEverything();
    EXPECT_EQ(S_OK, CallbackNotifications(nullptr, m_changes, m_registration, m_overtaken));
    EXPECT_THAT(Messages(log.Read(contract::tag::cApi)),
                ElementsAre("KALASSERT failed: pICallback != NULL"));
}

}  // namespace
}  // namespace kora4::test
