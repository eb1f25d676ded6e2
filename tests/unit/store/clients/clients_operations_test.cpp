// SPDX-License-Identifier: MIT
// Each operation of the clients on the store in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "contract/defaults.h"
#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

constexpr std::uint32_t cVolumeField = 3;  // the property id of the leveler's amount

class ClientOperations : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(result::cOk, m_client.Start()); }

    std::uint32_t Volume() {
        std::uint32_t value = 0xDEAD;
        EXPECT_EQ(result::cOk,
                  m_client->GetPatchValue(ApiTechnology::eVolumeLeveler, 4, &value));
        return value;
    }
    HRESULT SetVolume(std::uint32_t value) {
        return m_client->SetPatchValue(ApiTechnology::eVolumeLeveler, 4, &value);
    }
    bool IsOn(KORA4PresetTechnology technology) {
        bool on = false;
        EXPECT_EQ(result::cOk, m_client->GetTechnologyOnElseOff(technology, &on));
        return on;
    }
    std::optional<std::uint32_t> StoredVolume(std::uint32_t profile) const {
        return m_store.m_access.NumberAt(eKeySetStatic,
                                         pkey::PresetPatch(eVolumeTech, profile, cVolumeField));
    }
    std::uint32_t Trigger(KORA4PresetTechnology technology) const {
        return m_store.m_access.NumberAt(eKeySetDynamic, PresetTriggerKey(technology))
            .value_or(0);
    }
    bool Exists(std::uint32_t profile) const {
        return m_store.m_access.Has(eKeySetStatic, pkey::ProfileName(profile));
    }

    TestStore m_store;
    TestClient m_client{m_store};
};

TEST_F(ClientOperations, AnEmptyStoreIsMovieAndEnabled) {
    std::uint32_t profile = 99;
    bool enable = false;
    EXPECT_EQ(result::cOk, m_client->GetActiveProfile(&profile));
    EXPECT_EQ(result::cOk, m_client->GetVeltoEnable(&enable));
    EXPECT_EQ(0u, profile);
    EXPECT_TRUE(enable);
    EXPECT_EQ(defaults::cVolumeAmount[cMovieProfile], Volume());
}

TEST_F(ClientOperations, SelectsPresetProfilesOnly) {
    for (const std::uint32_t refused :
         {9u, cDemoMovieProfile, cDemoGamesProfile, 255u, 0xFFFFFFFFu})
        EXPECT_EQ(result::cInvalidArg, m_client->SetActiveProfile(refused)) << refused;
    EXPECT_EQ(KORA4_S_NO_SUCH_CUSTOM_PROFILE, m_client->SetActiveProfile(3));
    EXPECT_EQ(0u, m_store.m_access.Writes());
    EXPECT_EQ(result::cOk, m_client->SetActiveProfile(2));
    EXPECT_EQ(2u, m_store.Profile());
}

TEST_F(ClientOperations, SelectsACustomProfileThatExists) {
    m_store.PutText(eKeySetStatic, pkey::ProfileName(3), u"");
    EXPECT_EQ(result::cOk, m_client->SetActiveProfile(3));
    EXPECT_EQ(3u, m_store.Profile());
}

TEST_F(ClientOperations, ACustomProfileWithAnUnreadableNameCannotBeSelected) {
    m_store.m_access.Put(eKeySetStatic, pkey::ProfileName(3), test::Unreadable{});
    EXPECT_EQ(KORA4_S_NO_SUCH_CUSTOM_PROFILE, m_client->SetActiveProfile(3));
}

TEST_F(ClientOperations, LeavesAnActiveProfileThatIsNoProfileAtAll) {
    m_store.PutSetting(pkey::cActivePresetPid, 999);
    std::uint32_t profile = 0;
    EXPECT_EQ(result::cOk, m_client->GetActiveProfile(&profile));
    EXPECT_EQ(999u, profile);
    EXPECT_EQ(result::cOk, SetVolume(4));
    EXPECT_EQ(0u, m_store.m_access.Writes());
    EXPECT_EQ(KORA4_S_NOT_A_PRESET_PROFILE, m_client->RevertActiveProfile());
    EXPECT_EQ(result::cOk, m_client->SetActiveProfile(0));
    EXPECT_EQ(0u, m_store.Profile());
}

TEST_F(ClientOperations, DemoModeSavesAndRestoresProfileAndEnable) {
    ASSERT_EQ(result::cOk, m_client->SetActiveProfile(2));
    EXPECT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, false));
    EXPECT_EQ(cDemoMovieProfile, m_store.Profile());
    EXPECT_EQ(0u, m_store.Enable());
    EXPECT_EQ(2u, m_store.StaticSetting(pkey::cSavedProfilePid));
    EXPECT_EQ(1u, m_store.StaticSetting(pkey::cSavedEnablePid));
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_client->SetActiveProfile(1));
    EXPECT_EQ(cDemoMovieProfile, m_store.Profile());

    EXPECT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMusicProfile, true));
    EXPECT_EQ(2u, m_store.StaticSetting(pkey::cSavedProfilePid)) << "the first saved state";
    EXPECT_EQ(result::cOk, m_client->RevertFromDemoMode());
    EXPECT_EQ(2u, m_store.Profile());
    EXPECT_EQ(1u, m_store.Enable());
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_client->RevertFromDemoMode());
}

TEST_F(ClientOperations, DemoModeTakesDemoProfilesOnly) {
    for (const std::uint32_t refused : {0u, 8u, 239u, 243u})
        EXPECT_EQ(result::cInvalidArg, m_client->SetDemoProfileAndEnable(refused, true));
    EXPECT_EQ(0u, m_store.m_access.Writes());
}

TEST_F(ClientOperations, SomebodyElsesDemoIsLeftAloneButCanBeForcedBack) {
    m_store.PutSetting(pkey::cActivePresetPid, cDemoMusicProfile);
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE,
              m_client->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_client->RevertFromDemoMode());
    EXPECT_EQ(cDemoMusicProfile, m_store.Profile());
    EXPECT_EQ(result::cOk, m_client->ForceRevertFromDemoMode());
    EXPECT_EQ(0u, m_store.Profile());
    EXPECT_EQ(1u, m_store.Enable());
}

TEST_F(ClientOperations, ForceRevertOutsideADemoDoesNothing) {
    EXPECT_EQ(result::cOk, m_client->ForceRevertFromDemoMode());
    EXPECT_EQ(0u, m_store.m_access.Writes());
}

TEST_F(ClientOperations, ADemoThatSomebodyElseLeftIsNotReverted) {
    ASSERT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    m_store.PutSetting(pkey::cActivePresetPid, 1);
    EXPECT_EQ(KORA4_S_NOT_IN_DEMO_PROFILE, m_client->RevertFromDemoMode());
    EXPECT_EQ(1u, m_store.Profile());
    EXPECT_EQ("profile=1;", m_client.Pass());
    // The notification ended the demo for this client.
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_client->RevertFromDemoMode());
}

// The profile that the client knows of is active again at the pass: nothing to tell, and the
// demo is over all the same.
TEST_F(ClientOperations, ADemoThatSomebodyElseLeftForTheKnownProfileIsOver) {
    m_store.PutSetting(pkey::cActivePresetPid, cGamesProfile);
    ASSERT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    m_store.PutSetting(pkey::cActivePresetPid, cGamesProfile);
    m_store.PutSetting(pkey::cActivePresetPid, cMovieProfile);
    EXPECT_EQ("", m_client.Pass());
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_client->RevertFromDemoMode());
}

TEST_F(ClientOperations, AForeignSwitchBetweenDemosKeepsTheDemo) {
    ASSERT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    m_store.PutSetting(pkey::cActivePresetPid, cDemoGamesProfile);
    EXPECT_EQ("profile=" + std::to_string(cDemoGamesProfile) + ";", m_client.Pass());
    EXPECT_EQ(result::cOk, m_client->RevertFromDemoMode());
    EXPECT_EQ(0u, m_store.Profile());
}

TEST_F(ClientOperations, ASavedProfileThatIsNoneLeavesTheDemoForMovie) {
    for (const std::uint32_t saved : {cDemoMusicProfile, 999u}) {
        m_store.PutSetting(pkey::cActivePresetPid, cDemoMovieProfile);
        m_store.PutUINT(eKeySetStatic, pkey::Setting(pkey::cSavedProfilePid), saved);
        EXPECT_EQ(result::cOk, m_client->ForceRevertFromDemoMode());
        EXPECT_EQ(0u, m_store.Profile()) << saved;
    }
}

TEST_F(ClientOperations, ADemoIsEnteredEvenWhenTheStateCannotBeSaved) {
    m_store.m_access.StopWritingAfter(2);
    EXPECT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    m_store.m_access.HealAll();
    EXPECT_EQ(cDemoMovieProfile, m_store.Profile());
    EXPECT_EQ(result::cOk, m_client->RevertFromDemoMode());
}

TEST_F(ClientOperations, LeavingADemoEndsItEvenWhenRestoringFails) {
    ASSERT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    m_store.m_access.FailWrite(1);
    EXPECT_EQ(result::cFail, m_client->RevertFromDemoMode());
    m_store.m_access.HealAll();
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_client->RevertFromDemoMode());
    EXPECT_EQ(result::cOk, m_client->ForceRevertFromDemoMode());
    EXPECT_EQ(0u, m_store.Profile());
}

TEST_F(ClientOperations, ValuesInADemoAreBuiltInAndFlagsAreStored) {
    m_store.PutUINT(eKeySetStatic,
                    pkey::PresetPatch(eVolumeTech, cDemoMusicProfile, cVolumeField), 5);
    m_store.PutUINT(eKeySetDynamic,
                    pkey::PresetPatch(eVirtualSurroundTech, cDemoMusicProfile, 0), 1);
    ASSERT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMusicProfile, true));
    EXPECT_EQ(0u, Volume());
    EXPECT_TRUE(IsOn(eVirtualSurroundTech)) << "stored on, built-in off";
    EXPECT_FALSE(IsOn(eEnhancementTech)) << "not stored, built-in off";
}

TEST_F(ClientOperations, WritesInADemoStoreNothing) {
    ASSERT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMusicProfile, true));
    m_store.m_access.ClearLog();
    EXPECT_EQ(result::cOk, SetVolume(5));
    EXPECT_EQ(result::cOk, m_client->SetTechnologyOnElseOff(eVolumeTech, false));
    EXPECT_EQ(0u, m_store.m_access.Writes());
    EXPECT_EQ(0u, Volume());
    EXPECT_TRUE(IsOn(eVolumeTech));
}

TEST_F(ClientOperations, RevertTakesWhatIsStoredUnderThePairedDemoProfile) {
    m_store.PutUINT(eKeySetStatic,
                    pkey::PresetPatch(eVolumeTech, cDemoMusicProfile, cVolumeField), 5);
    m_store.PutUINT(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, cDemoMusicProfile, 0), 0);
    ASSERT_EQ(result::cOk, m_client->SetActiveProfile(1));
    ASSERT_EQ(result::cOk, SetVolume(9));
    const std::uint32_t trigger = Trigger(eVolumeTech);
    EXPECT_EQ(result::cOk, m_client->RevertActiveProfile());
    EXPECT_EQ(5u, StoredVolume(1));
    EXPECT_FALSE(IsOn(eVolumeTech));
    EXPECT_EQ(Trigger(eVolumeTech), trigger + 1);
    EXPECT_EQ(1u, Trigger(eNGSurroundTech));
}

TEST_F(ClientOperations, OnlyPresetProfilesRevert) {
    m_store.PutText(eKeySetStatic, pkey::ProfileName(3), u"mine");
    ASSERT_EQ(result::cOk, m_client->SetActiveProfile(3));
    m_store.m_access.ClearLog();
    EXPECT_EQ(KORA4_S_NOT_A_PRESET_PROFILE, m_client->RevertActiveProfile());
    EXPECT_EQ(0u, m_store.m_access.Writes());
}

TEST_F(ClientOperations, CreateCopiesTheStoredActiveProfileThenNamesAndAnnounces) {
    ASSERT_EQ(result::cOk, m_client->SetActiveProfile(1));
    ASSERT_EQ(result::cOk, SetVolume(9));
    // Changed by somebody else, and never loaded by this client.
    m_store.PutUINT(eKeySetStatic, pkey::PresetPatch(eVolumeTech, 1, cVolumeField), 8);
    m_store.PutUINT(eKeySetDynamic, pkey::PresetPatch(eHeadphoneTech, 1, 0), 0);
    const std::uint32_t trigger = Trigger(eVolumeTech);
    EXPECT_EQ(result::cOk, m_client->CreateCustomProfile(5, u"Night"));
    EXPECT_EQ(8u, StoredVolume(5));
    EXPECT_EQ(
        0u, m_store.m_access.NumberAt(eKeySetDynamic, pkey::PresetPatch(eHeadphoneTech, 5, 0)));
    EXPECT_EQ(u"Night", m_store.m_access.TextAt(eKeySetStatic, pkey::ProfileName(5)));
    EXPECT_EQ(1u, m_store.Setting(pkey::cProfileTableCounterPid));
    EXPECT_EQ(trigger, Trigger(eVolumeTech)) << "a copy bumps no trigger";
}

TEST_F(ClientOperations, CreateInADemoCopiesWhatIsStoredUnderIt) {
    m_store.PutUINT(eKeySetStatic,
                    pkey::PresetPatch(eVolumeTech, cDemoMovieProfile, cVolumeField), 6);
    ASSERT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    EXPECT_EQ(result::cOk, m_client->CreateCustomProfile(3, u"Demo copy"));
    EXPECT_EQ(6u, StoredVolume(3));
}

TEST_F(ClientOperations, CreateRefusesWhatExistsAndWhatIsNoCustomProfile) {
    EXPECT_EQ(result::cOk, m_client->CreateCustomProfile(3, u"one"));
    m_store.m_access.ClearLog();
    EXPECT_EQ(result::cFail, m_client->CreateCustomProfile(3, u"two"));
    EXPECT_EQ(result::cInvalidArg, m_client->CreateCustomProfile(2, u"two"));
    EXPECT_EQ(result::cInvalidArg, m_client->CreateCustomProfile(9, u"two"));
    EXPECT_EQ(result::cInvalidArg, m_client->CreateCustomProfile(4, nullptr));
    EXPECT_EQ(0u, m_store.m_access.Writes());
}

TEST_F(ClientOperations, AFailingCopyStillCreatesTheProfile) {
    m_store.m_access.FailWrite(3);
    EXPECT_EQ(result::cOk, m_client->CreateCustomProfile(3, u"half"));
    EXPECT_TRUE(Exists(3));
}

TEST_F(ClientOperations, RenameNeedsAnExistingProfile) {
    EXPECT_EQ(result::cFail, m_client->SetCustomProfileName(3, u"x"));
    EXPECT_EQ(result::cInvalidArg, m_client->SetCustomProfileName(1, u"x"));
    EXPECT_EQ(result::cInvalidArg, m_client->SetCustomProfileName(3, nullptr));
    ASSERT_EQ(result::cOk, m_client->CreateCustomProfile(3, u"one"));
    EXPECT_EQ(result::cOk, m_client->SetCustomProfileName(3, u"two"));
    EXPECT_EQ(u"two", m_store.m_access.TextAt(eKeySetStatic, pkey::ProfileName(3)));
    EXPECT_EQ(2u, m_store.Setting(pkey::cProfileTableCounterPid));
}

TEST_F(ClientOperations, DeleteSparesTheActiveProfileAndToleratesAnAbsentOne) {
    ASSERT_EQ(result::cOk, m_client->CreateCustomProfile(3, u"one"));
    ASSERT_EQ(result::cOk, m_client->SetActiveProfile(3));
    EXPECT_EQ(result::cFail, m_client->DeleteCustomProfile(3));
    EXPECT_EQ(result::cInvalidArg, m_client->DeleteCustomProfile(2));
    EXPECT_EQ(result::cFalse, m_client->DeleteCustomProfile(4));
    EXPECT_EQ(1u, m_store.Setting(pkey::cProfileTableCounterPid)) << "nothing announced";
    ASSERT_EQ(result::cOk, m_client->SetActiveProfile(0));
    EXPECT_EQ(result::cOk, m_client->DeleteCustomProfile(3));
    EXPECT_FALSE(Exists(3));
    EXPECT_EQ(2u, m_store.Setting(pkey::cProfileTableCounterPid));
}

TEST_F(ClientOperations, AnUnreadableNameFailsButCanBeDeleted) {
    m_store.m_access.Put(eKeySetStatic, pkey::ProfileName(4), test::Unreadable{});
    char16_t* names[9];
    EXPECT_EQ(result::cFail, m_client->GetProfileTable(names));
    EXPECT_EQ(result::cFail, m_client->CreateCustomProfile(4, u"x"));
    EXPECT_EQ(result::cFail, m_client->SetCustomProfileName(4, u"x"));
    EXPECT_EQ(result::cOk, m_client->DeleteCustomProfile(4));
    EXPECT_EQ(result::cOk, m_client->CreateCustomProfile(4, u"x"));
}

TEST_F(ClientOperations, TheProfileTableNamesTheCustomProfiles) {
    ASSERT_EQ(result::cOk, m_client->CreateCustomProfile(3, u"one"));
    ASSERT_EQ(result::cOk, m_client->CreateCustomProfile(8, u""));
    char16_t junk = 0;
    char16_t* names[9];
    std::fill(std::begin(names), std::end(names), &junk);
    ASSERT_EQ(result::cOk, m_client->GetProfileTable(names));
    for (const int empty : {0, 1, 2, 4, 5, 6, 7})
        EXPECT_EQ(nullptr, names[empty]) << empty;
    const TaskPtr<char16_t> one(names[3]);
    const TaskPtr<char16_t> eight(names[8]);
    EXPECT_EQ(u"one", std::u16string(one.Get()));
    EXPECT_EQ(u"", std::u16string(eight.Get()));
}

TEST_F(ClientOperations, AFailedTableReadHandsOutTheNamesBeforeIt) {
    ASSERT_EQ(result::cOk, m_client->CreateCustomProfile(3, u"one"));
    ASSERT_EQ(result::cOk, m_client->CreateCustomProfile(5, u"three"));
    m_store.m_access.Put(eKeySetStatic, pkey::ProfileName(4), test::Unreadable{});
    char16_t junk = 0;
    char16_t* names[9];
    std::fill(std::begin(names), std::end(names), &junk);
    EXPECT_EQ(result::cFail, m_client->GetProfileTable(names));
    const TaskPtr<char16_t> one(names[3]);
    EXPECT_EQ(u"one", std::u16string(one.Get()));
    for (const int empty : {0, 1, 2, 4, 5, 6, 7, 8})
        EXPECT_EQ(nullptr, names[empty]) << empty;
}

TEST_F(ClientOperations, EnableReadsAnyNonZeroNumberAsOn) {
    m_store.PutSetting(pkey::cMasterEnablePid, 7);
    bool enable = false;
    EXPECT_EQ(result::cOk, m_client->GetVeltoEnable(&enable));
    EXPECT_TRUE(enable);
    EXPECT_EQ(result::cOk, m_client->ToggleVeltoEnable(&enable));
    EXPECT_FALSE(enable);
    EXPECT_EQ(result::cOk, m_client->ToggleVeltoEnable(&enable));
    EXPECT_TRUE(enable);
    EXPECT_EQ(1u, m_store.Enable());
}

// Other writers may store any number; one that is not zero is on, and no change from one.
TEST_F(ClientOperations, EveryStoredSwitchAboveOneIsOn) {
    for (const std::uint32_t stored : {2u, 0x80000000u}) {
        m_store.PutSetting(pkey::cMasterEnablePid, stored);
        m_store.PutUINT(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, 0, pkey::cSwitchPid),
                        stored);
        EXPECT_EQ("", m_client.Pass());
        bool enable = false;
        EXPECT_EQ(result::cOk, m_client->GetVeltoEnable(&enable));
        EXPECT_TRUE(enable);
        EXPECT_TRUE(IsOn(eVolumeTech));

        EXPECT_EQ(result::cOk, m_client->SetDemoProfileAndEnable(cDemoMovieProfile, false));
        EXPECT_EQ(1u, m_store.StaticSetting(pkey::cSavedEnablePid));
        m_store.PutUINT(eKeySetStatic, pkey::Setting(pkey::cSavedEnablePid), stored);
        EXPECT_EQ(result::cOk, m_client->RevertFromDemoMode());
        EXPECT_EQ(1u, m_store.Enable());
    }
}

TEST_F(ClientOperations, AFailedToggleHandsOutTheOppositeAllTheSame) {
    m_store.m_access.FailWrite(1);
    bool enable = true;
    EXPECT_EQ(result::cFail, m_client->ToggleVeltoEnable(&enable));
    EXPECT_FALSE(enable);
}

TEST_F(ClientOperations, SwitchesTakeStoreTechnologiesOneToSeven) {
    bool on = false;
    for (const std::uint32_t refused : {0u, 8u, 100u}) {
        const auto technology = static_cast<KORA4PresetTechnology>(refused);
        EXPECT_EQ(result::cInvalidArg, m_client->GetTechnologyOnElseOff(technology, &on));
        EXPECT_EQ(result::cInvalidArg, m_client->SetTechnologyOnElseOff(technology, true));
    }
    EXPECT_EQ(result::cOk, m_client->SetTechnologyOnElseOff(eNGSurroundTech, false));
    EXPECT_FALSE(IsOn(eNGSurroundTech));
}

TEST_F(ClientOperations, SwitchesBelongToTheStoredActiveProfile) {
    m_store.PutSetting(pkey::cActivePresetPid, 2);  // this client was not told yet
    EXPECT_EQ(result::cOk, m_client->SetTechnologyOnElseOff(eVolumeTech, false));
    EXPECT_EQ(0u,
              m_store.m_access.NumberAt(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, 2, 0)));
    EXPECT_FALSE(m_store.m_access.Has(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, 0, 0)));
}

TEST_F(ClientOperations, ValuesNeedATechnologyABufferAndRoom) {
    std::uint32_t value = 0;
    ApiGraphicEQ eq{};
    const auto none = static_cast<ApiTechnology>(6);
    EXPECT_EQ(result::cInvalidArg, m_client->GetPatchValue(none, 4, &value));
    EXPECT_EQ(result::cInvalidArg,
              m_client->GetPatchValue(ApiTechnology::eVolumeLeveler, 4, nullptr));
    EXPECT_EQ(result::cInvalidArg,
              m_client->GetPatchValue(ApiTechnology::eVolumeLeveler, 0, &value));
    EXPECT_EQ(result::cInvalidArg,
              m_client->GetPatchValue(ApiTechnology::eGraphicEQ, 323, &eq));
    EXPECT_EQ(result::cInvalidArg, m_client->SetPatchValue(none, 4, &value));
    EXPECT_EQ(result::cInvalidArg,
              m_client->SetPatchValue(ApiTechnology::eVolumeLeveler, 3, &value));
    EXPECT_EQ(result::cInvalidArg,
              m_client->SetPatchValue(ApiTechnology::eGraphicEQ, 323, &eq));
    EXPECT_EQ(0u, m_store.m_access.Writes());
}

TEST_F(ClientOperations, AValueKeepsTheOtherStoredFields) {
    const PropertyKey other = pkey::PresetPatch(eVolumeTech, 0, 4);
    m_store.PutUINT(eKeySetStatic, other, 0);  // by somebody else, built-in 1
    EXPECT_EQ(result::cOk, SetVolume(5));
    EXPECT_EQ(0u, m_store.m_access.NumberAt(eKeySetStatic, other));
    EXPECT_EQ(5u, StoredVolume(0));
    EXPECT_EQ(1u, Trigger(eVolumeTech));
    EXPECT_EQ(5u, Volume());
}

TEST_F(ClientOperations, TheGraphicEQKeepsFortyBandsAtMost) {
    ApiGraphicEQ in{};
    in.m_bands = 1000;
    for (std::uint32_t i = 0; i < cMaxArrayElements; ++i) {
        in.m_freq[i] = static_cast<float>(100 * i);
        in.m_gain[i] = static_cast<float>(i) / 4;
    }
    ASSERT_EQ(result::cOk, m_client->SetPatchValue(ApiTechnology::eGraphicEQ, sizeof in, &in));
    ApiGraphicEQ out;
    ASSERT_EQ(result::cOk,
              m_client->GetPatchValue(ApiTechnology::eGraphicEQ, sizeof out, &out));
    in.m_bands = cMaxArrayElements;
    EXPECT_EQ(0, std::memcmp(&in, &out, sizeof in));
}

TEST_F(ClientOperations, UnusedBandsReadAsZero) {
    ApiGraphicEQ in{};
    in.m_bands = 2;
    in.m_freq[0] = 100;
    in.m_freq[1] = 200;
    in.m_gain[1] = -3.5f;
    in.m_gain[2] = 12;
    ASSERT_EQ(result::cOk, m_client->SetPatchValue(ApiTechnology::eGraphicEQ, sizeof in, &in));
    ApiGraphicEQ out;
    std::memset(&out, 0xAA, sizeof out);
    ASSERT_EQ(result::cOk,
              m_client->GetPatchValue(ApiTechnology::eGraphicEQ, sizeof out, &out));
    in.m_gain[2] = 0;
    EXPECT_EQ(0, std::memcmp(&in, &out, sizeof in));
}

TEST_F(ClientOperations, TheSamplingPeriodIsFiftyUntilItIsSet) {
    std::uint32_t period = 0;
    EXPECT_EQ(result::cOk, m_client->GetSamplingPeriod(&period));
    EXPECT_EQ(50u, period);
    EXPECT_EQ(result::cOk, m_client->SetSamplingPeriod(0));
    EXPECT_EQ(result::cOk, m_client->GetSamplingPeriod(&period));
    EXPECT_EQ(0u, period);
}

TEST_F(ClientOperations, TheVisualizationBlobIsHandedOutAsItIs) {
    std::uint32_t size = 1;
    std::uint8_t* pData = nullptr;
    EXPECT_EQ(result::cFalse, m_client->GetVisualizationBlob(&size, &pData));
    const test::Blob blob = {1, 2, 3};
    m_store.m_access.Put(eKeySetStatic, pkey::Setting(pkey::cVisualizationDataPid), blob);
    ASSERT_EQ(result::cOk, m_client->GetVisualizationBlob(&size, &pData));
    const TaskPtr<std::uint8_t> owner(pData);
    EXPECT_EQ(blob, test::Blob(pData, pData + size));
}

// What is read before a value is written: the profile, the flag, the fields that are not set,
// and at the end the trigger word.
TEST_F(ClientOperations, ASetReadsNothingThatItReplaces) {
    const struct {
        ApiTechnology technology;
        unsigned fields;
    } cases[] = {
        {ApiTechnology::eVolumeLeveler, 5}, {ApiTechnology::eGraphicEQ, 0},
        {ApiTechnology::eIntelligentEQ, 2}, {ApiTechnology::eDialogEnhancer, 1},
        {ApiTechnology::eVirtualizerHP, 1}, {ApiTechnology::eVirtualizerSpkr, 1},
    };
    const ApiGraphicEQ zero{};
    for (const auto& [technology, fields] : cases) {
        m_store.m_access.ClearLog();
        ASSERT_EQ(result::cOk, m_client->SetPatchValue(technology, sizeof zero, &zero));
        EXPECT_EQ(3 + fields, m_store.m_access.Reads()) << static_cast<int>(technology);
    }
}

TEST_F(ClientOperations, ATableCounterAloneReportsTheTableAndReloadsNoPatch) {
    m_store.PutSetting(pkey::cProfileTableCounterPid, 77);
    m_store.m_access.ClearLog();
    EXPECT_EQ("table;", m_client.Pass());
    EXPECT_EQ(0u, m_store.m_access.Count(test::Operation::eReadText));
    EXPECT_EQ(0u, m_store.m_access.Writes());
}

TEST_F(ClientOperations, ATechnologyThatBecomesEffectiveIsReloaded) {
    const PropertyKey field = pkey::PresetPatch(eVolumeTech, 0, cVolumeField);
    const auto reloads = [&] {
        const std::string entry = test::ReadEntry(eKeySetStatic, field);
        const auto& log = m_store.m_access.Log();
        return std::count(log.begin(), log.end(), entry);
    };
    m_store.PutUINT(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, 0, 0), 0);
    m_store.m_access.ClearLog();
    EXPECT_EQ("flag1=0;", m_client.Pass());
    EXPECT_EQ(0, reloads()) << "set to clear";
    m_store.PutUINT(eKeySetDynamic, pkey::PresetPatch(eVolumeTech, 0, 0), 1);
    EXPECT_EQ("flag1=1;", m_client.Pass());
    EXPECT_EQ(1, reloads()) << "clear to set";
}

TEST_F(ClientOperations, AChangeOfTheNextGenerationSurroundTellsNothing) {
    m_store.PutUINT(eKeySetDynamic, PresetTriggerKey(eNGSurroundTech), 5);
    EXPECT_EQ("", m_client.Pass());
}

TEST_F(ClientOperations, APassThatFindsNothingReadsTheWatchedWordsOnly) {
    m_store.m_access.ClearLog();
    EXPECT_EQ("", m_client.Pass());
    // Profile, enable, counter; 7 and 3 trigger words; 7 and 3 flags.
    EXPECT_EQ(3u + 7 + 3 + 7 + 3, m_store.m_access.Count(test::Operation::eReadUINT));
    EXPECT_EQ(23u, m_store.m_access.Operations());
}

}  // namespace
}  // namespace kora4
