// SPDX-License-Identifier: MIT
// What the user has in hand stays there: the keyboard's place, a list that is open, a gain that
// is being typed.
#include <windows.h>

#include <cmath>

#include "panel/panel_fixture.h"
#include "panel/pictures.h"

namespace kora4::test {
namespace {

using namespace ::panel;

class PanelHands : public PanelTest {
  protected:
    bool IsOpen(int id) {
        return SendMessageW(Panel().Control(id), CB_GETDROPPEDSTATE, 0, 0) != 0;
    }
    LRESULT CountOf(int id) { return SendMessageW(Panel().Control(id), CB_GETCOUNT, 0, 0); }
    void Open(int id) {
        Panel().TabTo(id);
        Press(VK_DOWN, {VK_MENU});
        EXPECT_TRUE(Becomes([&] { return IsOpen(id); }));
    }
    void Close(int id, WORD key) {
        Press(key);
        EXPECT_TRUE(Becomes([&] { return !IsOpen(id); }));
    }
    bool ActiveBecomes(long profile) {
        return Becomes([&] { return *Others().GetActiveProfile() == profile; });
    }
    double Gain(std::size_t band) {
        return static_cast<double>((*Others().GetGraphicEQData())[band].gain);
    }
    bool GainBecomes(std::size_t band, double gain) {
        return Becomes([&] { return std::abs(Gain(band) - gain) < 0.01; });
    }
    void TypeGain(const wchar_t* text) {
        Panel().TabTo(eGainField);
        Press('A', {VK_CONTROL});
        Type(text);
        EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == text; }));
    }
};

// ---- Lists ------------------------------------------------------------------------------

TEST_F(PanelHands, KeepsTheChoiceInAnOpenListOfProfiles) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Open(eProfileList);
    Press(VK_DOWN);
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Music"; }));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_GAMES));
    EXPECT_TRUE(Panel().StatusBecomes(L"Another program"));
    EXPECT_EQ(L"Music", Panel().Chosen(eProfileList));
    Close(eProfileList, VK_RETURN);
    EXPECT_TRUE(ActiveBecomes(KORA4_PROFILE_MUSIC));
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Music"; }));
}

TEST_F(PanelHands, ShowsWhatOthersChoseWhenAListIsClosedWithoutAChoice) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Open(eProfileList);
    Press(VK_DOWN);
    ASSERT_TRUE(Others().CreateCustomProfile(KORA4_PROFILE_P1, L"Evening"));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_P1));
    EXPECT_TRUE(Panel().StatusBecomes(L"Another program"));
    EXPECT_EQ(6, CountOf(eProfileList));
    Close(eProfileList, VK_ESCAPE);
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Evening"; }));
    EXPECT_EQ(7, CountOf(eProfileList));
    Sleep(200);
    EXPECT_EQ(KORA4_PROFILE_P1, *Others().GetActiveProfile());
}

TEST_F(PanelHands, KeepsTheChoiceInAnOpenListOfBands) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Open(eBandList);
    Press(VK_DOWN);
    Press(VK_DOWN);
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eBandList) == L"125 Hz"; }));
    ASSERT_TRUE(Others().SetGraphicEQData({{64, 1}, {125, 2}, {250, 3}, {500, 4}}));
    EXPECT_TRUE(Panel().StatusBecomes(L"Another program"));
    EXPECT_EQ(10, CountOf(eBandList));
    Close(eBandList, VK_RETURN);
    EXPECT_TRUE(Becomes([&] { return CountOf(eBandList) == 4; }));
    EXPECT_EQ(L"125 Hz", Panel().Chosen(eBandList));
    EXPECT_EQ(L"+2.0", Panel().Text(eGainField));
}

TEST_F(PanelHands, BeginsADemoFromTheOpenListOnly) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eProfileList);
    Press(VK_END);
    EXPECT_TRUE(Panel().StatusBecomes(L"Arrows do not begin a demo."));
    EXPECT_EQ(L"Movie", Panel().Chosen(eProfileList));
    EXPECT_EQ(KORA4_PROFILE_MOVIE, *Others().GetActiveProfile());
    Open(eProfileList);
    Press(VK_END);
    Close(eProfileList, VK_RETURN);
    EXPECT_TRUE(ActiveBecomes(KORA4_PROFILE_DEMO_GAMES));
}

// ---- The number -------------------------------------------------------------------------

TEST_F(PanelHands, TakesBackAGainThatWasEntered) {
    ASSERT_NO_FATAL_FAILURE(Start());
    TypeGain(L"4.5");
    Press(VK_RETURN);
    EXPECT_TRUE(GainBecomes(0, 4.5));
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == L"+4.5"; }));
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(GainBecomes(0, 0));
}

TEST_F(PanelHands, DropsWhatWasTypedWithEscape) {
    ASSERT_NO_FATAL_FAILURE(Start());
    TypeGain(L"7");
    Press(VK_ESCAPE);
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == L"0.0"; }));
    Panel().TabTo(eFlatButton);
    Sleep(200);
    EXPECT_NEAR(0, Gain(0), 0.01);
}

TEST_F(PanelHands, GivesATypedGainToNoOtherProfileAndNoOtherBand) {
    ASSERT_NO_FATAL_FAILURE(Start());
    TypeGain(L"5");
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Music"; }));
    Press(VK_RETURN);
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == L"0.0"; }));
    TypeGain(L"5");
    ASSERT_TRUE(Others().SetGraphicEQData({{64, 1}, {125, 2}}));
    EXPECT_TRUE(Becomes([&] { return CountOf(eBandList) == 2; }));
    Press(VK_RETURN);
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == L"+1.0"; }));
    Sleep(200);
    EXPECT_NEAR(1, Gain(0), 0.01);
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MOVIE));
    EXPECT_NEAR(0, Gain(0), 0.01);
    // Another gain of the same band takes nothing away.
    EXPECT_TRUE(Becomes([&] { return CountOf(eBandList) == 10; }));
    TypeGain(L"5");
    Bands bands = *Others().GetGraphicEQData();
    bands[0].gain = 2;
    ASSERT_TRUE(Others().SetGraphicEQData(bands));
    Sleep(200);
    EXPECT_EQ(L"5", Panel().Text(eGainField));
    Press(VK_RETURN);
    EXPECT_TRUE(GainBecomes(0, 5));
}

// ---- The keyboard -----------------------------------------------------------------------

TEST_F(PanelHands, GivesTheKeyboardBackAfterADialog) {
    ASSERT_TRUE(Others().CreateCustomProfile(KORA4_PROFILE_P1, L"Evening"));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_P1));
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eEqualizer);
    Press(VK_F2);
    ASSERT_NE(nullptr, Panel().Dialog());
    Press(VK_ESCAPE);
    EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
    EXPECT_TRUE(Becomes([&] { return Panel().Focused() != 0; }));
    EXPECT_EQ(eEqualizer, Panel().Focused());
}

TEST_F(PanelHands, KeepsTheFontOfADialogWhenThatOfTheWindowChanges) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Press('N', {VK_CONTROL});
    const HWND dialog = Panel().Dialog();
    ASSERT_NE(nullptr, dialog);
    const HWND question = GetWindow(dialog, GW_CHILD);
    EXPECT_TRUE(Becomes([&] { return StillPicture(question).Colors() > 1; }));
    const Picture before = StillPicture(question);
    SendMessageW(Panel().Window(), WM_SETTINGCHANGE, 0, 0);
    SendMessageW(Panel().Window(), WM_SETTINGCHANGE, 0, 0);
    RedrawWindow(question, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE);
    Sleep(200);
    EXPECT_EQ(before, StillPicture(question));
    Press(VK_ESCAPE);
    EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
}

TEST_F(PanelHands, GivesTheKeyboardBackWhenItIsActiveAgain) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eFlatButton);
    const HWND other =
        CreateWindowExW(0, L"STATIC", L"Another program", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0,
                        0, 200, 100, nullptr, nullptr, nullptr, nullptr);
    const auto activate = [](HWND window) {
        SetForegroundWindow(window);
        EXPECT_TRUE(Becomes([&] {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&message);
            return GetForegroundWindow() == window;
        }));
    };
    activate(other);
    EXPECT_TRUE(Becomes([&] { return Panel().Focused() == 0; }));
    activate(Panel().Window());
    DestroyWindow(other);
    EXPECT_TRUE(Becomes([&] { return Panel().Focused() != 0; }));
    EXPECT_EQ(eFlatButton, Panel().Focused());
}

}  // namespace
}  // namespace kora4::test
