// SPDX-License-Identifier: MIT
// The sample with a window, as a user and another program see it.
#include <gtest/gtest.h>
#include <kora4.hpp>

#include <commctrl.h>

#include <string>

#include "support/raw_store.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {
namespace {

class SliderWindow : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_api) << m_api.Text();
        for (int i = 0; i < 1000 && !m_window; ++i, Sleep(20))
            m_window = FindWindowW(L"kora4_slider", nullptr);
        ASSERT_NE(nullptr, m_window);
        m_slider = FindWindowExW(m_window, nullptr, TRACKBAR_CLASSW, nullptr);
        ASSERT_NE(nullptr, m_slider);
    }
    void TearDown() override {
        if (m_window) {
            PostMessageW(m_window, WM_CLOSE, 0, 0);
            EXPECT_EQ(0u, m_program.WaitForEnd().exitCode);
        }
    }

    std::wstring Title() const {
        wchar_t text[100] = L"";
        DWORD_PTR length = 0;
        // Within 100 ms also on a busy machine: the window waits for nobody.
        EXPECT_NE(
            0, SendMessageTimeoutW(m_window, WM_GETTEXT, std::size(text),
                                   reinterpret_cast<LPARAM>(text), SMTO_NORMAL, 2000, &length));
        return text;
    }
    bool WaitForTitle(const std::wstring& title) const {
        for (int i = 0; i < 500 && Title() != title; ++i)
            Sleep(20);
        return Title() == title;
    }
    LRESULT Position() const { return SendMessageW(m_slider, TBM_GETPOS, 0, 0); }
    void DragTo(LPARAM position) const {
        SendMessageW(m_slider, TBM_SETPOS, TRUE, position);
        SendMessageW(m_window, WM_HSCROLL,
                     MAKEWPARAM(TB_THUMBTRACK, static_cast<WORD>(position)),
                     reinterpret_cast<LPARAM>(m_slider));
        SendMessageW(m_window, WM_HSCROLL, MAKEWPARAM(TB_ENDTRACK, 0),
                     reinterpret_cast<LPARAM>(m_slider));
    }

    RawStore m_store;
    RegisteredLibrary m_registered;
    ApartmentGuard m_apartment{ApartmentKind::eMultithreaded};
    Result<Api> m_api = Api::Open();
    RunningTool m_program{"kora4_slider_window", {}};
    HWND m_window = nullptr;
    HWND m_slider = nullptr;
};

TEST_F(SliderWindow, ShowsWhatIsStoredAlsoBeyondItsEnd) {
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 262151"));
    EXPECT_EQ(KORA4_VOLUME_LEVELER_MAX, Position());
    EXPECT_EQ(ULONG{KORA4_VOLUME_LEVELER_MOVIE_DEFAULT}, *m_api->GetVolumeLeveler());
}

TEST_F(SliderWindow, SetsWhatItsUserChooses) {
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 262151"));
    DragTo(4);
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 4"));
    EXPECT_EQ(4u, *m_api->GetVolumeLeveler());
}

TEST_F(SliderWindow, MovesWithOthersAndSetsNothingThen) {
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 262151"));
    EXPECT_TRUE(m_api->SetVolumeLeveler(7));
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 7"));
    EXPECT_EQ(7, Position());
    EXPECT_TRUE(m_api->SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 0"));
    EXPECT_TRUE(m_api->SetVolumeLeveler(5));
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 5"));
    const auto counter =
        RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)).value_or(0);
    Sleep(500);
    EXPECT_EQ(counter, RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)));
    EXPECT_EQ(2u, counter) << "one for each of this program's own sets";
}

TEST_F(SliderWindow, GoesOnWhileAnotherProgramHoldsTheStore) {
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 262151"));
    {
        const RawTransaction hold;
        for (LPARAM position = 1; position <= 6; ++position)
            DragTo(position);
        for (int i = 0; i < 20; ++i, Sleep(20))
            EXPECT_EQ(L"Volume leveler: 262151", Title());
        EXPECT_EQ(6, Position());
    }
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 6"));
}

TEST_F(SliderWindow, ComesBackToWhatIsStoredWhenADemoIsActive) {
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 262151"));
    EXPECT_TRUE(m_api->SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, true));
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 0"));
    DragTo(9);
    for (int i = 0; i < 500 && Position() != 0; ++i)
        Sleep(20);
    EXPECT_EQ(0, Position());
    EXPECT_TRUE(WaitForTitle(L"Volume leveler: 0"));
}

}  // namespace
}  // namespace kora4::test
