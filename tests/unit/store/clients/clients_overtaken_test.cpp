// SPDX-License-Identifier: MIT
// Which own writes overtake which items of the last analysis.
#include <gtest/gtest.h>

#include <functional>

#include "unit/store/clients/clients_support.h"

namespace kora4 {
namespace {

using Items = OvertakenItems::Items;

constexpr Items cNothing = 0;

class ClientOvertaken : public ::testing::Test {
  protected:
    void SetUp() override {
        m_store.PutText(eKeySetStatic, ProfileNameKey(3), u"custom");
        ASSERT_EQ(result::cOk, m_own.Start());
        m_own.Pass();
    }

    // The items that can be told, in one set.
    Items Overtaken() {
        Items found = cNothing;
        for (std::uint32_t bit = 0; bit < 32; ++bit) {
            if (m_own->Overtaken().Contains(Items{1} << bit))
                found |= Items{1} << bit;
        }
        return found;
    }

    HRESULT SetVolume(std::uint32_t value) {
        return m_own->SetPatchValue(ApiTechnology::eVolumeLeveler, sizeof value, &value);
    }

    // What other programs do between the analysis and the own call.
    void SwitchBehindItsBack(std::uint32_t profile) {
        m_store.PutSetting(pkey::cActivePresetPid, profile);
    }

    static constexpr Items cProfileAndTechnologies =
        OvertakenItems::cProfile | OvertakenItems::cTechnologies;

    TestStore m_store;
    TestClient m_own{m_store};
};

TEST_F(ClientOvertaken, NothingByReadsAndByTheTable) {
    std::uint32_t number = 0;
    bool flag = false;
    ASSERT_EQ(result::cOk, m_own->GetActiveProfile(&number));
    ASSERT_EQ(result::cOk, m_own->GetVeltoEnable(&flag));
    ASSERT_EQ(result::cOk, m_own->GetTechnologyOnElseOff(eVolumeTech, &flag));
    ASSERT_EQ(result::cOk, m_own->GetPatchValue(ApiTechnology::eVolumeLeveler, 4, &number));
    ASSERT_EQ(result::cOk, m_own->CreateCustomProfile(4, u"new"));
    ASSERT_EQ(result::cOk, m_own->SetCustomProfileName(4, u"name"));
    ASSERT_EQ(result::cOk, m_own->DeleteCustomProfile(4));
    ASSERT_EQ(result::cOk, m_own->SetSamplingPeriod(7));
    EXPECT_EQ(cNothing, Overtaken());
}

TEST_F(ClientOvertaken, AValueByASetOfIt) {
    ASSERT_EQ(result::cOk, SetVolume(7));
    EXPECT_EQ(OvertakenItems::Value(eVolumeTech), Overtaken());
}

TEST_F(ClientOvertaken, ASwitchByASetOfIt) {
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eEnhancementTech, false));
    EXPECT_EQ(OvertakenItems::Switch(eEnhancementTech), Overtaken());
}

TEST_F(ClientOvertaken, TheEnableBySetAndToggle) {
    ASSERT_EQ(result::cOk, m_own->SetVeltoEnable(true));
    EXPECT_EQ(OvertakenItems::cEnable, Overtaken());
    m_own.Pass();
    bool enable = false;
    ASSERT_EQ(result::cOk, m_own->ToggleVeltoEnable(&enable));
    EXPECT_EQ(OvertakenItems::cEnable, Overtaken());
}

TEST_F(ClientOvertaken, EverythingByEnteringAndLeavingADemo) {
    ASSERT_EQ(result::cOk, m_own->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    EXPECT_EQ(OvertakenItems::cEnable | cProfileAndTechnologies, Overtaken());
    m_own.Pass();
    ASSERT_EQ(result::cOk, m_own->RevertFromDemoMode());
    EXPECT_EQ(OvertakenItems::cEnable | cProfileAndTechnologies, Overtaken());
}

TEST_F(ClientOvertaken, SwitchesAndValuesByARevertOfTheProfile) {
    ASSERT_EQ(result::cOk, m_own->RevertActiveProfile());
    EXPECT_EQ(OvertakenItems::cTechnologies, Overtaken());
}

TEST_F(ClientOvertaken, ProfileAndTechnologiesByASwitchToAnotherProfile) {
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(cMusicProfile));
    EXPECT_EQ(cProfileAndTechnologies, Overtaken());
}

TEST_F(ClientOvertaken, NothingByASwitchToTheProfileAnalysed) {
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(cMovieProfile));
    EXPECT_EQ(cNothing, Overtaken());
    SwitchBehindItsBack(cGamesProfile);
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(cMovieProfile));
    EXPECT_EQ(cNothing, Overtaken());
}

TEST_F(ClientOvertaken, NothingByWritesToAProfileThatWasNotAnalysed) {
    SwitchBehindItsBack(cMusicProfile);
    ASSERT_EQ(result::cOk, SetVolume(7));
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    ASSERT_EQ(result::cOk, m_own->RevertActiveProfile());
    EXPECT_EQ(cNothing, Overtaken());
}

TEST_F(ClientOvertaken, NothingByWritesThatStoreNothing) {
    SwitchBehindItsBack(cDemoMusicProfile);
    m_own.Pass();
    ASSERT_EQ(result::cOk, SetVolume(7));
    ASSERT_EQ(result::cOk, m_own->SetTechnologyOnElseOff(eVolumeTech, false));
    EXPECT_EQ(cNothing, Overtaken());
}

TEST_F(ClientOvertaken, NothingByRefusedCalls) {
    std::uint32_t value = 7;
    ASSERT_EQ(result::cInvalidArg,
              m_own->SetPatchValue(ApiTechnology::eVolumeLeveler, 3, &value));
    ASSERT_EQ(result::cInvalidArg, m_own->SetTechnologyOnElseOff(ePresetNoTech, true));
    ASSERT_EQ(KORA4_S_NO_SUCH_CUSTOM_PROFILE, m_own->SetActiveProfile(5));
    ASSERT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_own->RevertFromDemoMode());
    ASSERT_EQ(result::cOk, m_own->ForceRevertFromDemoMode());
    SwitchBehindItsBack(3);
    ASSERT_EQ(KORA4_S_NOT_A_PRESET_PROFILE, m_own->RevertActiveProfile());
    EXPECT_EQ(cNothing, Overtaken());
}

TEST_F(ClientOvertaken, NothingByCallsThatFail) {
    const std::function<HRESULT()> calls[] = {
        [&] { return SetVolume(7); },
        [&] { return m_own->SetTechnologyOnElseOff(eVolumeTech, false); },
        [&] { return m_own->SetVeltoEnable(false); },
        [&] { return m_own->SetActiveProfile(cMusicProfile); },
        [&] { return m_own->RevertActiveProfile(); },
    };
    for (const auto& call : calls) {
        m_store.m_access.FailWrite(1);
        ASSERT_EQ(result::cFail, call());
        m_store.m_access.HealAll();
        EXPECT_EQ(cNothing, Overtaken());
    }
}

TEST_F(ClientOvertaken, NothingByADemoThatIsNotEnteredWhole) {
    m_store.m_access.FailWrite(2);
    ASSERT_EQ(result::cFail, m_own->SetDemoProfileAndEnable(cDemoMovieProfile, true));
    EXPECT_EQ(cNothing, Overtaken());
}

TEST_F(ClientOvertaken, TheNextAnalysisBeginsAnew) {
    ASSERT_EQ(result::cOk, SetVolume(7));
    ASSERT_EQ(result::cOk, m_own->SetActiveProfile(cMusicProfile));
    const std::uint32_t before = m_own->Analyses();
    m_own.Pass();
    EXPECT_EQ(cNothing, Overtaken());
    EXPECT_EQ(before + 1, m_own->Analyses());
    ASSERT_EQ(result::cOk, SetVolume(7));
    EXPECT_EQ(OvertakenItems::Value(eVolumeTech), Overtaken()) << "of Music by now";
}

}  // namespace
}  // namespace kora4
