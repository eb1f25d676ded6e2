// SPDX-License-Identifier: MIT
// Going back across profiles: the list of changes and the two states to compare stay of use
// whatever becomes of a profile, and overwrite nothing for good.
#include "panel/panel_fixture.h"

namespace kora4::test {
namespace {

using namespace ::panel;

class PanelBack : public PanelTest {
  protected:
    static constexpr int cLeveler = IdFor(eSlider, eVolumeLeveler);

    bool ActiveBecomes(long profile) {
        return Becomes([&] { return *Others().GetActiveProfile() == profile; }) &&
               Panel().StatusBecomes(L": done.");
    }
    bool LevelerBecomes(ULONG value) {
        return Becomes([&] { return Others().GetVolumeLeveler().ValueOr(99) == value; });
    }
    void MoveLeveler(WORD key, ULONG value) {
        Panel().TabTo(cLeveler);
        Press(key);
        EXPECT_TRUE(LevelerBecomes(value));
        EXPECT_TRUE(Panel().StatusBecomes(L"Volume leveler: done."));
    }
    void Choose(WORD key, long profile) {
        Panel().TabTo(eProfileList);
        Press(key);
        EXPECT_TRUE(ActiveBecomes(profile));
    }
    void RefuseValues() {
        RemoveKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4\\StaticKeys");
    }
    void TryAgain() {
        EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerButton); }));
        ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
        Panel().TabTo(eBannerButton);
        Press(VK_SPACE);
        EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerText); }));
        m_api = Api::Open();
        ASSERT_TRUE(m_api);
    }
    void MakeProfile() {
        Press('N', {VK_CONTROL});
        ASSERT_NE(nullptr, Panel().Dialog());
        Press(VK_RETURN);
        EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
        EXPECT_TRUE(Panel().StatusBecomes(L"New profile"));
        EXPECT_TRUE(ActiveBecomes(KORA4_PROFILE_P1));
    }
    void DeleteProfile() {
        Panel().TabTo(eDeleteButton);
        Press(VK_SPACE);
        ASSERT_NE(nullptr, Panel().Dialog());
        Press(VK_LEFT);  // Cancel is the one that Enter takes
        Press(VK_RETURN);
        EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
        EXPECT_TRUE(Panel().StatusBecomes(L"Delete the profile: done."));
    }
    void Compare(const wchar_t* status, const wchar_t* button) {
        Press(VK_F9);
        EXPECT_TRUE(Panel().StatusBecomes(status)) << WindowText(Panel().Control(eStatusText));
        EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == button; }));
    }
};

constexpr wchar_t cA[] = L"&Compare: A";
constexpr wchar_t cB[] = L"&Compare: B";

TEST_F(PanelBack, TakesBackWhatIsOlderThanADeletedProfile) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    MoveLeveler(VK_RIGHT, 4);
    ASSERT_NO_FATAL_FAILURE(MakeProfile());
    ASSERT_NO_FATAL_FAILURE(DeleteProfile());
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: what was there before cannot be set again."));
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: somebody has changed it again since"));
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(LevelerBecomes(3));
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: done."));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsEnabled(eUndoOwnButton); }));
}

TEST_F(PanelBack, TakesBackWhatComparingOverwroteInAnotherProfile) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    Compare(L"this state is kept", cB);
    MoveLeveler(VK_RIGHT, 4);
    Choose(VK_DOWN, KORA4_PROFILE_MUSIC);
    Compare(L"Compare: done.", cA);
    EXPECT_EQ(KORA4_PROFILE_MOVIE, *Others().GetActiveProfile());
    EXPECT_TRUE(LevelerBecomes(3)) << "as it was kept";
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(LevelerBecomes(4));
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: done."));
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(ActiveBecomes(KORA4_PROFILE_MUSIC));
}

TEST_F(PanelBack, StaysInTheStateInUseWhenTheOtherOneIsRefused) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    Compare(L"this state is kept", cB);
    MoveLeveler(VK_RIGHT, 4);
    RefuseValues();
    Compare(L"Compare: the store refused", cB);
    ASSERT_NO_FATAL_FAILURE(TryAgain());
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == cA; }));
    EXPECT_TRUE(LevelerBecomes(3));
}

TEST_F(PanelBack, StaysInTheProfileInUseWhenTheOtherStateIsRefused) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    Compare(L"this state is kept", cB);
    MoveLeveler(VK_RIGHT, 4);
    Choose(VK_DOWN, KORA4_PROFILE_MUSIC);
    RefuseValues();
    Compare(L"Compare: the store refused", cB);
    EXPECT_EQ(KORA4_PROFILE_MUSIC, *Others().GetActiveProfile());
    EXPECT_EQ(L"Music", Panel().Chosen(eProfileList));
    ASSERT_NO_FATAL_FAILURE(TryAgain());
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == cA; }));
    EXPECT_EQ(KORA4_PROFILE_MOVIE, *Others().GetActiveProfile());
    EXPECT_TRUE(LevelerBecomes(3));
    Compare(L"Compare: done.", cB);
    EXPECT_EQ(KORA4_PROFILE_MUSIC, *Others().GetActiveProfile());
}

TEST_F(PanelBack, TakesNothingElseBackWhenItTriesAgain) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    // Without the key, values are those at first: the change is still the last word.
    Panel().Click(eRevertButton);
    EXPECT_TRUE(Panel().StatusBecomes(L"Factory values: done."));
    RefuseValues();
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: the store refused"));
    const bool isEnabled = !*Others().GetVeltoEnable();
    Panel().Click(eEnableBox);
    EXPECT_TRUE(Panel().StatusBecomes(L"Audio processing: done."));
    EXPECT_EQ(isEnabled, *Others().GetVeltoEnable());
    ASSERT_NO_FATAL_FAILURE(TryAgain());
    // Whatever was asked before this is done by then.
    Panel().Click(IdFor(eSwitchBox, eVirtualizerHP));
    EXPECT_TRUE(Panel().StatusBecomes(L"Headphone virtualizer: done."));
    EXPECT_EQ(isEnabled, *Others().GetVeltoEnable());
}

TEST_F(PanelBack, ComparesAnewWhenTheProfileOfTheOtherStateIsDeleted) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    ASSERT_NO_FATAL_FAILURE(MakeProfile());
    Compare(L"this state is kept", cB);
    MoveLeveler(VK_RIGHT, 4);
    ASSERT_NO_FATAL_FAILURE(DeleteProfile());
    // In the place of the deleted one.
    ASSERT_NO_FATAL_FAILURE(MakeProfile());
    MoveLeveler(VK_END, 10);
    Compare(L"the other state is gone with its profile", cB);
    EXPECT_EQ(10u, *Others().GetVolumeLeveler());
    Choose(VK_HOME, KORA4_PROFILE_MOVIE);
    Compare(L"Compare: done.", cA);
    EXPECT_EQ(KORA4_PROFILE_P1, *Others().GetActiveProfile());
    EXPECT_EQ(10u, *Others().GetVolumeLeveler());
}

}  // namespace
}  // namespace kora4::test
