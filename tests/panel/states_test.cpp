// SPDX-License-Identifier: MIT
// What the panel says and does when something is not as it should be.
#include "panel/panel_fixture.h"
#include "panel/pictures.h"
#include "support/key_security.h"

namespace kora4::test {
namespace {

using namespace ::panel;

TEST_F(PanelTest, ShowsADemoAndTheWayOut) {
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, true));
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerButton); }));
    EXPECT_EQ(0u, Panel().Text(eBannerText).find(L"Demo of Games is active."));
    EXPECT_FALSE(Panel().IsEnabled(eSlider));
    EXPECT_FALSE(Panel().IsEnabled(eEqualizer));
    EXPECT_TRUE(Panel().IsEnabled(eEnableBox));
    Panel().TabTo(eBannerButton);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return *Others().GetActiveProfile() == KORA4_PROFILE_MOVIE; }));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerButton); }));
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(eSlider); }));
    EXPECT_TRUE(Panel().StatusBecomes(L"demo: done."));
}

TEST_F(PanelTest, SaysThatNothingIsRegisteredAndGoesOnByItself) {
    m_api = Result<Api>(Status(E_FAIL));
    ASSERT_EQ(S_OK, m_registered.Library().UnregisterServer());
    m_panel = std::make_unique<PanelProcess>();
    EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerText); }));
    EXPECT_NE(std::wstring::npos, Panel().Text(eBannerText).find(L"kora4ctl register"));
    EXPECT_FALSE(Panel().IsEnabled(eEnableBox));
    EXPECT_TRUE(Panel().IsEnabled(eMoreButton));
    EXPECT_EQ(L"", Panel().Chosen(eProfileList)) << "nothing is made up";
    SavePicture(StillPicture(Panel().Window()), L"panel-not-registered.bmp");
    ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
    EXPECT_TRUE(Becomes([&] { return Panel().IsReady(); }));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerText); }));
}

TEST_F(PanelTest, SaysThatThereIsNoStoreAndGoesOnByItself) {
    m_api = Result<Api>(Status(E_FAIL));
    RawStore::DeleteKeys();
    m_panel = std::make_unique<PanelProcess>();
    EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerText); }));
    EXPECT_NE(std::wstring::npos, Panel().Text(eBannerText).find(L"kora4ctl doctor"));
    ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
    Panel().TabTo(eBannerButton);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return Panel().IsReady(); }));
}

TEST_F(PanelTest, SaysThatTheStoreRefusesAndTriesAgain) {
    ASSERT_NO_FATAL_FAILURE(Start());
    // The keys vanish under the panel: every write fails from now on.
    RawStore::DeleteKeys();
    Panel().TabTo(IdFor(eSlider, eVirtualizerHP));
    Press(VK_LEFT);
    EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerText); }));
    EXPECT_NE(std::wstring::npos, Panel().Text(eBannerText).find(L"kora4ctl doctor"));
    SavePicture(StillPicture(Panel().Window()), L"panel-refused.bmp");
    ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
    Panel().TabTo(eBannerButton);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerText) && Panel().IsReady(); }))
        << WindowText(Panel().Control(eBannerText));
}

TEST_F(PanelTest, ComesToTheFrontInsteadOfStartingTwice) {
    ASSERT_NO_FATAL_FAILURE(Start());
    ShowWindow(Panel().Window(), SW_MINIMIZE);
    EXPECT_TRUE(Becomes([&] { return IsIconic(Panel().Window()) != FALSE; }));
    EXPECT_EQ(0u, RunTool("KORA4Panel", {}).exitCode);
    EXPECT_TRUE(Becomes([&] { return !IsIconic(Panel().Window()); }));
}

TEST_F(PanelTest, StaysInTheNotificationAreaAndChoosesProfilesThere) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const auto chooseInMenu = [&](int downs) {
        EXPECT_TRUE(Becomes([&] { return Panel().HasMenu(); }));
        for (int i = 0; i < downs; ++i)
            Press(VK_DOWN);
        Press(VK_RETURN);
        EXPECT_TRUE(Becomes([&] { return !Panel().HasMenu(); }));
    };
    Panel().TabTo(eMoreButton);
    Press(VK_SPACE);
    chooseInMenu(1);
    PostMessageW(Panel().Window(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(Becomes([&] { return !IsWindowVisible(Panel().Window()); }));
    // A click on the icon with the other mouse button; the second profile is Music.
    constexpr UINT cTrayMessage = WM_APP + 2;
    PostMessageW(Panel().Window(), cTrayMessage, 0, WM_RBUTTONUP);
    chooseInMenu(2);
    EXPECT_TRUE(Becomes([&] { return *Others().GetActiveProfile() == KORA4_PROFILE_MUSIC; }));
    PostMessageW(Panel().Window(), cTrayMessage, 0, WM_LBUTTONUP);
    EXPECT_TRUE(Becomes([&] { return IsWindowVisible(Panel().Window()) != FALSE; }));
    EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
    Panel().TabTo(eMoreButton);
    Press(VK_SPACE);
    chooseInMenu(1);
}

TEST_F(PanelTest, LeavesADemoWhenAnotherProfileIsChosen) {
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, true));
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eProfileList);
    Press(VK_HOME);
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Movie"; }));
    EXPECT_TRUE(Becomes([&] { return *Others().GetActiveProfile() == KORA4_PROFILE_MOVIE; }));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerText); }));
}

TEST_F(PanelTest, ComesBackWhereItWas) {
    ASSERT_NO_FATAL_FAILURE(Start());
    SetWindowPos(Panel().Window(), nullptr, 60, 50, 1000, 640, SWP_NOZORDER);
    RECT before{};
    GetWindowRect(Panel().Window(), &before);
    m_panel.reset();
    ASSERT_NO_FATAL_FAILURE(Start());
    RECT after{};
    GetWindowRect(Panel().Window(), &after);
    EXPECT_TRUE(EqualRect(&before, &after))
        << after.left << ' ' << after.top << ' ' << after.right << ' ' << after.bottom;
}

TEST_F(PanelTest, ShowsWhateverIsStored) {
    constexpr std::uint32_t cValues[] = {1, 2, 3, 4, 5, 6};
    for (const std::uint32_t pid : cValues)
        for (const std::uint32_t profile : {0u, 77u}) {
            RawStore::SetText(cStatic, PatchName(RawTechnology::eStandardEQ, profile, pid),
                              L"ffff,0000,7fff,zz");
            RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, profile, pid),
                                0xFFFFFFFF);
        }
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 77);
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ(L"Profile number 77", Panel().Chosen(eProfileList));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MOVIE));
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Movie"; }));
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(eImportButton); }));
}

}  // namespace
}  // namespace kora4::test
