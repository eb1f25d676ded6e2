// SPDX-License-Identifier: MIT
// The active profile, demo mode and the custom profiles, as a client and another program
// see them.
#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

constexpr DWORD cNone = 0xDEAD;

DWORD StoredProfile() {
    return RawStore::Number(cDynamic, SettingName(cProfilePid)).value_or(cNone);
}
DWORD StoredEnable() {
    return RawStore::Number(cDynamic, SettingName(cEnablePid)).value_or(cNone);
}
DWORD StoredTable() {
    return RawStore::Number(cDynamic, SettingName(cTablePid)).value_or(0);
}

struct ProfileTable {
    explicit ProfileTable(IVeltoKORA4API* pApi) : hr(pApi->GetProfileTable(names)) {}
    ~ProfileTable() {
        for (LPWSTR name : names)
            CoTaskMemFree(name);
    }
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    HRESULT hr;
};

class ApiProfiles : public ApiTest {
  protected:
    void SetUp() override {
        ApiTest::SetUp();
        m_spApi = Initialized();
    }
    LONG ActiveProfile() {
        LONG profile = -1;
        EXPECT_EQ(S_OK, m_spApi->GetActiveProfile(&profile));
        return profile;
    }
    ComPtr<IVeltoKORA4API> m_spApi;
};

TEST_F(ApiProfiles, AnEmptyStoreMeansMovie) {
    EXPECT_EQ(0, ActiveProfile());
}

TEST_F(ApiProfiles, TheActiveProfileIsTheStoredOne) {
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 2);
    EXPECT_EQ(2, ActiveProfile());
}

TEST_F(ApiProfiles, SettingAPresetStoresIt) {
    EXPECT_EQ(S_OK, m_spApi->SetActiveProfile(1));
    EXPECT_EQ(1u, StoredProfile());
    EXPECT_EQ(1, ActiveProfile());
}

TEST_F(ApiProfiles, OnlySelectableNumbersAreAccepted) {
    for (LONG profile : {-1, KORA4_PROFILE_TABLE_ENTRIES, KORA4_PROFILE_DEMO_MOVIE - 1,
                         KORA4_PROFILE_DEMO_MOVIE, KORA4_PROFILE_DEMO_MUSIC,
                         KORA4_PROFILE_DEMO_GAMES, KORA4_PROFILE_DEMO_GAMES + 1, 0x7FFFFFFF})
        EXPECT_EQ(E_INVALIDARG, m_spApi->SetActiveProfile(profile)) << profile;
    EXPECT_EQ(cNone, StoredProfile());
}

TEST_F(ApiProfiles, ACustomProfileThatWasNeverCreatedIsNotChosen) {
    EXPECT_EQ(S_OK, m_spApi->SetActiveProfile(2));
    EXPECT_EQ(KORA4_S_NO_SUCH_CUSTOM_PROFILE, m_spApi->SetActiveProfile(5));
    EXPECT_EQ(2u, StoredProfile());
}

TEST_F(ApiProfiles, DuringADemoNoProfileCanBeChosen) {
    EXPECT_EQ(S_OK, m_spApi->SetActiveProfile(2));
    EXPECT_EQ(S_OK, m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_spApi->SetActiveProfile(1));
    EXPECT_EQ(KORA4_PROFILE_DEMO_MOVIE, ActiveProfile());
    EXPECT_EQ(S_OK, m_spApi->RevertFromDemoMode());
    EXPECT_EQ(2, ActiveProfile());
}

TEST_F(ApiProfiles, OnlyDemoNumbersEnterADemo) {
    for (LONG profile : {KORA4_PROFILE_MOVIE, KORA4_PROFILE_LAST_CUSTOM,
                         KORA4_PROFILE_DEMO_MOVIE - 1, KORA4_PROFILE_DEMO_GAMES + 1, -16})
        EXPECT_EQ(E_INVALIDARG, m_spApi->SetDemoProfileAndEnable(profile, TRUE)) << profile;
    EXPECT_EQ(cNone, StoredProfile());
}

TEST_F(ApiProfiles, LeavingTwoDemosRestoresWhatWasBeforeTheFirst) {
    m_spApi->SetActiveProfile(1);
    m_spApi->SetVeltoEnable(FALSE);
    EXPECT_EQ(S_OK, m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, 5));
    EXPECT_EQ(1u, StoredEnable());
    EXPECT_EQ(S_OK, m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, TRUE));
    EXPECT_EQ(S_OK, m_spApi->RevertFromDemoMode());
    EXPECT_EQ(1u, StoredProfile());
    EXPECT_EQ(0u, StoredEnable());
}

TEST_F(ApiProfiles, ADemoOfAnotherClientIsNotLeftByTheOrdinaryWay) {
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), KORA4_PROFILE_DEMO_MUSIC);
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE, m_spApi->RevertFromDemoMode());
    EXPECT_EQ(KORA4_S_DEMO_MODE_ACTIVE,
              m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE));
    EXPECT_EQ(KORA4_PROFILE_DEMO_MUSIC, StoredProfile());
    EXPECT_EQ(S_OK, m_spApi->ForceRevertFromDemoMode());
    EXPECT_EQ(0u, StoredProfile());
}

TEST_F(ApiProfiles, AForcedRevertOutsideADemoDoesNothing) {
    m_spApi->SetActiveProfile(2);
    EXPECT_EQ(S_OK, m_spApi->ForceRevertFromDemoMode());
    EXPECT_EQ(2u, StoredProfile());
}

TEST_F(ApiProfiles, ADemoThatAnotherProgramEndedIsToldApart) {
    m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, TRUE);
    {
        // Unseen by a pass: the notification comes in only when this thread lets it in.
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 1);
    }
    EXPECT_EQ(KORA4_S_NOT_IN_DEMO_PROFILE, m_spApi->RevertFromDemoMode());
    EXPECT_EQ(1u, StoredProfile());
}

TEST_F(ApiProfiles, OnlyAPresetCanBeReverted) {
    m_spApi->CreateCustomProfile(3, L"mine");
    EXPECT_EQ(S_OK, m_spApi->SetActiveProfile(3));
    EXPECT_EQ(KORA4_S_NOT_A_PRESET_PROFILE, m_spApi->RevertActiveProfile());
}

TEST_F(ApiProfiles, RevertingAPresetRestoresItsFactoryValues) {
    m_spApi->SetActiveProfile(1);
    KORA4PatchValueUnion value{};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = 9;
    EXPECT_EQ(S_OK, m_spApi->SetSimplePatchValue(&value));
    EXPECT_EQ(S_OK, m_spApi->RevertActiveProfile());
    EXPECT_EQ(S_OK, m_spApi->GetSimplePatchValue(&value));
    EXPECT_EQ(0u, value.m_values.m_volumeSlider);
}

TEST_F(ApiProfiles, WithoutCustomProfilesTheTableIsEmpty) {
    ProfileTable table(m_spApi.Get());
    EXPECT_EQ(S_OK, table.hr);
    EXPECT_THAT(table.names, testing::Each(nullptr));
}

TEST_F(ApiProfiles, TheTableHasTheNamesAtTheNumbersOfTheProfiles) {
    EXPECT_EQ(S_OK, m_spApi->CreateCustomProfile(3, L"first"));
    EXPECT_EQ(S_OK, m_spApi->CreateCustomProfile(8, L"\x017Elast"));
    ProfileTable table(m_spApi.Get());
    EXPECT_EQ(S_OK, table.hr);
    for (int slot : {0, 1, 2, 4, 5, 6, 7})
        EXPECT_EQ(nullptr, table.names[slot]) << slot;
    EXPECT_STREQ(L"first", table.names[3]);
    EXPECT_STREQ(L"\x017Elast", table.names[8]);
}

TEST_F(ApiProfiles, OnlyCustomNumbersAreCreatedNamedAndDeleted) {
    for (LONG profile : {KORA4_PROFILE_MOVIE, KORA4_PROFILE_GAMES, KORA4_PROFILE_TABLE_ENTRIES,
                         KORA4_PROFILE_DEMO_MOVIE, -1}) {
        EXPECT_EQ(E_INVALIDARG, m_spApi->CreateCustomProfile(profile, L"n")) << profile;
        EXPECT_EQ(E_INVALIDARG, m_spApi->SetCustomProfileName(profile, L"n")) << profile;
        EXPECT_EQ(E_INVALIDARG, m_spApi->DeleteCustomProfile(profile)) << profile;
    }
    EXPECT_EQ(0u, StoredTable());
}

TEST_F(ApiProfiles, CreatingNamingAndDeletingAreAnnounced) {
    EXPECT_EQ(S_OK, m_spApi->CreateCustomProfile(4, L"one"));
    EXPECT_EQ(1u, StoredTable());
    EXPECT_EQ(S_OK, m_spApi->SetCustomProfileName(4, L"two"));
    EXPECT_EQ(2u, StoredTable());
    EXPECT_EQ(L"two", RawStore::Text(cStatic, ProfileNameName(4)));
    EXPECT_EQ(S_OK, m_spApi->DeleteCustomProfile(4));
    EXPECT_EQ(3u, StoredTable());
    EXPECT_EQ(std::nullopt, RawStore::Text(cStatic, ProfileNameName(4)));
}

TEST_F(ApiProfiles, ACustomProfileIsCreatedOnceAndRenamedOnlyWhenItExists) {
    EXPECT_EQ(E_FAIL, m_spApi->SetCustomProfileName(5, L"n"));
    EXPECT_EQ(S_OK, m_spApi->CreateCustomProfile(5, L"n"));
    EXPECT_EQ(E_FAIL, m_spApi->CreateCustomProfile(5, L"again"));
    EXPECT_EQ(1u, StoredTable());
    EXPECT_EQ(L"n", RawStore::Text(cStatic, ProfileNameName(5)));
}

TEST_F(ApiProfiles, DeletingAProfileThatDoesNotExistAnnouncesNothing) {
    EXPECT_EQ(S_FALSE, m_spApi->DeleteCustomProfile(6));
    EXPECT_EQ(0u, StoredTable());
}

TEST_F(ApiProfiles, TheActiveCustomProfileCannotBeDeleted) {
    m_spApi->CreateCustomProfile(3, L"mine");
    m_spApi->SetActiveProfile(3);
    EXPECT_EQ(E_FAIL, m_spApi->DeleteCustomProfile(3));
    EXPECT_EQ(L"mine", RawStore::Text(cStatic, ProfileNameName(3)));
}

TEST_F(ApiProfiles, ANewCustomProfileHasTheActiveProfilesValues) {
    m_spApi->SetActiveProfile(2);
    KORA4PatchValueUnion value{};
    value.m_technology = eVolumeLeveler;
    value.m_values.m_volumeSlider = 8;
    m_spApi->SetSimplePatchValue(&value);
    m_spApi->CreateCustomProfile(7, L"copy");
    EXPECT_EQ(8u, RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, 7, 3)));
}

class ApiProfilesTrace : public ApiObjectTraceTest {};

TEST_F(ApiProfilesTrace, ReadingNamesTheProfile) {
    const std::pair<DWORD, const char*> profiles[] = {
        {0, "Movie\t(0)\tProfile"},
        {1, "Music\t(1)\tProfile"},
        {2, "Games\t(2)\tProfile"},
        {3, "P1: Custom Profile"},
        {8, "P6: Custom Profile"},
        {9, "KORA4APITechnology bad index"},
        {KORA4_PROFILE_DEMO_MOVIE, "KORA4APITechnology bad index"}};
    for (const auto& [profile, name] : profiles) {
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), profile);
        m_log.Clear();
        LONG read = -1;
        m_spApi->GetActiveProfile(&read);
        EXPECT_EQ((Lines{">>", " is " + std::string(name), "<< hr: 0x00000000"}),
                  LinesOf("GetActiveProfile"));
    }
}

TEST_F(ApiProfilesTrace, ChoosingNamesTheProfileWhateverTheResult) {
    m_spApi->SetActiveProfile(0);
    m_spApi->SetActiveProfile(4);
    m_spApi->SetActiveProfile(KORA4_PROFILE_DEMO_MOVIE);
    EXPECT_EQ((Lines{">> profile: 0", " to Movie (0) Profile", "<< hr: 0x00000000",
                     ">> profile: 4", " to P2:   (4) ", "<< hr: 0x00040202", ">> profile: 240",
                     " to bad Profile index", "<< hr: 0x80070057"}),
              LinesOf("SetActiveProfile"));
}

TEST_F(ApiProfilesTrace, AFailedRevertTellsOfSuccessAllTheSame) {
    m_spApi->CreateCustomProfile(3, L"c");
    m_spApi->SetActiveProfile(3);
    m_spApi->RevertActiveProfile();
    EXPECT_EQ((Lines{">>", " Successfully Reverted Active Profile", "<< hr: 0x00040203"}),
              LinesOf("RevertActiveProfile"));
    m_spApi->RevertFromDemoMode();
    EXPECT_EQ((Lines{">>", " Successfully Reverted from Demo Mode", "<< hr: 0x00040200"}),
              LinesOf("RevertFromDemoMode"));
    m_spApi->ForceRevertFromDemoMode();
    EXPECT_EQ((Lines{">>", "<< hr: 0x00000000"}), LinesOf("ForceRevertFromDemoMode"));
}

TEST_F(ApiProfilesTrace, DemosAreNamed) {
    m_spApi->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, 7);
    m_spApi->SetDemoProfileAndEnable(1, FALSE);
    EXPECT_EQ(
        (Lines{">> demoProfileID: 242 demoVeltoEnable: 7", " to Demo Games (0xF2) Profile",
               "<< hr: 0x00000000", ">> demoProfileID: 1 demoVeltoEnable: 0",
               " to bad Demo Profile index", "<< hr: 0x80070057"}),
        LinesOf("SetDemoProfileAndEnable"));
}

TEST_F(ApiProfilesTrace, CustomProfilesAreToldByNumberAndName) {
    m_spApi->CreateCustomProfile(3, L"a name");
    m_spApi->SetCustomProfileName(3, L"other");
    m_spApi->DeleteCustomProfile(3);
    ProfileTable table(m_spApi.Get());
    const std::string ok = "<< hr: 0x00000000";
    EXPECT_EQ((Lines{">>", "(3)", ok}), LinesOf("CreateCustomProfile"));
    EXPECT_EQ((Lines{">>", "(3, other)", ok}), LinesOf("SetCustomProfileName"));
    EXPECT_EQ((Lines{">>", "(3)", ok}), LinesOf("DeleteCustomProfile"));
    EXPECT_EQ((Lines{">>", "() completed", ok}), LinesOf("GetProfileTable"));
}

}  // namespace
}  // namespace kora4::test
