// SPDX-License-Identifier: MIT
// What the panel says and does when something is not as it should be.
#include <atomic>
#include <thread>

#include "panel/panel_fixture.h"
#include "panel/pictures.h"
#include "support/key_security.h"

namespace kora4::test {
namespace {

using namespace ::panel;

// Everybody may read the store, and nobody may change it, for the length of a scope.
class ReadOnlyStore {
  public:
    ReadOnlyStore() { Set(L"D:(A;;KR;;;WD)"); }
    ~ReadOnlyStore() { Set(cWorldAccess); }
    ReadOnlyStore(const ReadOnlyStore&) = delete;
    ReadOnlyStore& operator=(const ReadOnlyStore&) = delete;

  private:
    static void Set(const wchar_t* sddl) {
        for (const wchar_t* key : {L"StaticKeys", L"DynamicKeys"})
            SetDacl(std::wstring(L"SOFTWARE\\Velto\\KORA4\\") + key, sddl);
    }
};

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

TEST_F(PanelTest, SaysThatTheStoreMayOnlyBeReadAndGoesOnByItself) {
    m_api = Result<Api>(Status(E_FAIL));
    {
        const ReadOnlyStore readOnly;
        m_panel = std::make_unique<PanelProcess>();
        EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerText); }));
        EXPECT_NE(std::wstring::npos, Panel().Text(eBannerText).find(L"kora4ctl doctor"));
        EXPECT_FALSE(Panel().IsEnabled(eEnableBox));
    }
    EXPECT_TRUE(Becomes([&] { return Panel().IsReady(); }));
    EXPECT_FALSE(Panel().IsVisible(eBannerText));
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

TEST_F(PanelTest, SaysThatTheStoreRefusesWhateverWasAsked) {
    const std::wstring refuses = L"The store refused changes";
    const auto isSaid = [&] { return Panel().Text(eBannerText).starts_with(refuses); };
    const std::pair<int, const wchar_t*> buttons[] = {{eRevertButton, L"Factory values"},
                                                      {eNewButton, L"New profile"}};
    for (const auto& [button, what] : buttons) {
        SCOPED_TRACE(button);
        ASSERT_NO_FATAL_FAILURE(Start());
        RawStore::DeleteKeys();
        Panel().TabTo(button);
        Press(VK_SPACE);
        if (button == eNewButton) {
            ASSERT_NE(nullptr, Panel().Dialog());
            Press(VK_RETURN);
            EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
        }
        EXPECT_TRUE(Panel().StatusBecomes(what));
        EXPECT_TRUE(Becomes(isSaid)) << Panel().Text(eBannerText).size();
        ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
        Panel().TabTo(eBannerButton);
        Press(VK_SPACE);
        EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerText); }));
        EXPECT_TRUE(Panel().StatusBecomes(L"done.")) << "it was done again";
        m_panel.reset();
    }
}

TEST_F(PanelTest, DoesAllAgainThatWasRefused) {
    const auto isRefused = [&] {
        return Panel().Text(eBannerText).starts_with(L"The store refused");
    };
    ASSERT_TRUE(Others().SetHeadphoneVirtualizer(2));
    ASSERT_TRUE(Others().SetSpeakerVirtualizer(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    RemoveKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4\\StaticKeys");
    for (const KORA4APITechnology technology : {eVirtualizerHP, eVirtualizerSpkr}) {
        Panel().TabTo(IdFor(eSlider, technology));
        Press(VK_LEFT);
        EXPECT_TRUE(Panel().StatusBecomes(L"the store refused (E_FAIL)."));
        EXPECT_TRUE(Becomes(isRefused));
        // What the store takes meanwhile does not let it be forgotten.
        const bool wasEnabled = Panel().IsChecked(eEnableBox);
        Panel().Click(eEnableBox);
        EXPECT_TRUE(Becomes([&] { return *Others().GetVeltoEnable() != wasEnabled; }));
        EXPECT_TRUE(Panel().StatusBecomes(L"Audio processing: done."));
        EXPECT_TRUE(isRefused());
    }
    ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
    Panel().TabTo(eBannerButton);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerText) && Panel().IsReady(); }));
    EXPECT_TRUE(Becomes([&] {
        const Result<Api> anew = Api::Open();
        return anew && *anew->GetSpeakerVirtualizer() == 2.9f &&
               *anew->GetHeadphoneVirtualizer() == 1.9f;
    }));
    EXPECT_FALSE(Panel().IsVisible(eBannerText)) << "nothing is left to be done again";
}

TEST_F(PanelTest, DoesAgainOnceHoweverOftenItIsTold) {
    ASSERT_NO_FATAL_FAILURE(Start());
    RawStore::DeleteKeys();
    Press('N', {VK_CONTROL});
    ASSERT_NE(nullptr, Panel().Dialog());
    Press(VK_RETURN);
    EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
    EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerButton); }));
    ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
    Panel().Click(eBannerButton);
    Panel().Click(eBannerButton);
    // Whatever was asked before this is done by then.
    Panel().Click(eEnableBox);
    EXPECT_TRUE(Panel().StatusBecomes(L"Audio processing: done."));
    m_api = Api::Open();
    const auto table = *Others().GetProfileTable();
    EXPECT_TRUE(table[KORA4_PROFILE_P1]);
    EXPECT_FALSE(table[KORA4_PROFILE_P2]);
}

TEST_F(PanelTest, KeepsTheWayOutOfADemoWhenTheStoreRefuses) {
    ASSERT_TRUE(Others().SetHeadphoneVirtualizer(2));
    ASSERT_NO_FATAL_FAILURE(Start());
    // Values cannot be set any more; which profile is active still can.
    RemoveKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4\\StaticKeys");
    Panel().TabTo(IdFor(eSlider, eVirtualizerHP));
    Press(VK_LEFT);
    EXPECT_TRUE(
        Becomes([&] { return Panel().Text(eBannerText).starts_with(L"The store refused"); }));
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, true));
    EXPECT_TRUE(Becomes([&] {
        const std::wstring text = Panel().Text(eBannerText);
        return text.starts_with(L"Demo of Games is active.") &&
               text.find(L"The store refused changes") != std::wstring::npos;
    }));
    EXPECT_EQ(L"Bac&k from the demo", Panel().Text(eBannerButton));
    ASSERT_EQ(S_OK, m_registered.Library().RegisterServer());
    Panel().TabTo(eBannerButton);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return !Panel().IsVisible(eBannerText) && Panel().IsReady(); }));
    EXPECT_EQ(KORA4_PROFILE_MOVIE, *Others().GetActiveProfile());
    EXPECT_TRUE(Becomes([&] {
        const Result<Api> anew = Api::Open();
        return anew && *anew->GetHeadphoneVirtualizer() == 1.9f;
    })) << "what was refused is done again";
}

// ---- One panel, and its icon ------------------------------------------------------------

TEST_F(PanelTest, ComesToTheFrontInsteadOfStartingTwice) {
    ASSERT_NO_FATAL_FAILURE(Start());
    ShowWindow(Panel().Window(), SW_MINIMIZE);
    EXPECT_TRUE(Becomes([&] { return IsIconic(Panel().Window()) != FALSE; }));
    EXPECT_EQ(0u, RunTool("KORA4Panel", {}).exitCode);
    EXPECT_TRUE(Becomes([&] { return !IsIconic(Panel().Window()); }));
}

// Milliseconds in which a second start ends, on a busy machine.
constexpr DWORD cSecondStart = 10000;

TEST_F(PanelTest, DoesNotWaitForAFirstOneThatHangs) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const HANDLE thread = OpenThread(THREAD_SUSPEND_RESUME, FALSE,
                                     GetWindowThreadProcessId(Panel().Window(), nullptr));
    ASSERT_NE(nullptr, thread);
    SuspendThread(thread);
    RunningTool second("KORA4Panel", {});
    EXPECT_TRUE(Becomes([&] { return !second.IsRunning(); }, cSecondStart));
    ResumeThread(thread);
    CloseHandle(thread);
    EXPECT_EQ(0u, second.WaitForEnd().exitCode);
}

TEST_F(PanelTest, SeesAFirstOneThatHasHigherRights) {
    // As that one's mutex is to others: nobody may open it.
    SECURITY_DESCRIPTOR descriptor;
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ACL nobody;
    ASSERT_TRUE(InitializeAcl(&nobody, sizeof nobody, ACL_REVISION));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE));
    SECURITY_ATTRIBUTES attributes{sizeof attributes, &descriptor, FALSE};
    const HANDLE mutex = CreateMutexW(&attributes, FALSE, L"Local\\KORA4Panel");
    ASSERT_NE(nullptr, mutex);
    RunningTool second("KORA4Panel", {});
    EXPECT_TRUE(Becomes([&] { return !second.IsRunning(); }, cSecondStart));
    CloseHandle(mutex);
}

TEST_F(PanelTest, ChoosesAProfileInTheNotificationAreaDuringADemo) {
    ASSERT_TRUE(Others().CreateCustomProfile(KORA4_PROFILE_P1, L"Late &Zero"));
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, true));
    ASSERT_NO_FATAL_FAILURE(Start());
    MouseAt(2, 2);
    PostMessageW(Panel().Window(), WM_APP + 2, 0, WM_RBUTTONUP);
    EXPECT_TRUE(Becomes([&] { return Panel().HasMenu(); }));
    Press('Z');
    Sleep(300);
    EXPECT_TRUE(Panel().HasMenu()) << "'&' in a name marks no letter";
    Press(VK_DOWN);
    Press(VK_DOWN);
    Press(VK_RETURN);
    EXPECT_TRUE(Becomes([&] { return *Others().GetActiveProfile() == KORA4_PROFILE_MUSIC; }));
}

// A notification area in place of the desktop's, which takes icons or does not.
class NotificationArea {
  public:
    NotificationArea() {
        EXPECT_TRUE(Becomes([this] { return m_window.load() != nullptr; }));
        EXPECT_EQ(m_window.load(), FindWindowW(cClass, nullptr));
    }
    ~NotificationArea() {
        PostMessageW(m_window, WM_CLOSE, 0, 0);
        m_thread.join();
    }
    NotificationArea(const NotificationArea&) = delete;
    NotificationArea& operator=(const NotificationArea&) = delete;

    void TakeIcons(bool isSo) { s_takes = isSo; }

  private:
    static constexpr wchar_t cClass[] = L"Shell_TrayWnd";

    void Run() {
        WNDCLASSW windowClass{};
        windowClass.lpszClassName = cClass;
        windowClass.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            if (message == WM_COPYDATA)
                return static_cast<LRESULT>(s_takes.load());
            if (message == WM_DESTROY)
                PostQuitMessage(0);
            return DefWindowProcW(window, message, wParam, lParam);
        };
        RegisterClassW(&windowClass);
        m_window = CreateWindowExW(WS_EX_TOPMOST, cClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr,
                                   nullptr, nullptr, nullptr);
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
        UnregisterClassW(cClass, nullptr);
    }

    static inline std::atomic<bool> s_takes{false};
    std::atomic<HWND> m_window{nullptr};
    std::thread m_thread{[this] { Run(); }};
};

TEST_F(PanelTest, IsNotHiddenWithoutAnIcon) {
    NotificationArea area;
    ASSERT_NO_FATAL_FAILURE(Start());
    const auto comeBack = [&] {
        SendMessageW(Panel().Window(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    };
    Panel().TabTo(eMoreButton);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return Panel().HasMenu(); }));
    Press(VK_DOWN);
    Press(VK_RETURN);
    EXPECT_TRUE(Panel().StatusBecomes(L"The notification area takes no icon now"));
    area.TakeIcons(true);
    comeBack();
    PostMessageW(Panel().Window(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(Becomes([&] { return !IsWindowVisible(Panel().Window()); }));
    area.TakeIcons(false);
    comeBack();
    EXPECT_TRUE(Becomes([&] { return IsWindowVisible(Panel().Window()) != FALSE; }));
}

TEST_F(PanelTest, StaysInTheNotificationAreaAndChoosesProfilesThere) {
    ASSERT_NO_FATAL_FAILURE(Start());
    // Beside every menu, in which it would choose as well.
    MouseAt(2, 2);
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
