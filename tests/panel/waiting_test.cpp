// SPDX-License-Identifier: MIT
// What waits while another program holds the store, or was meant for something that is not
// there any more, does what its user saw, or nothing.
#include <array>
#include <limits>
#include <optional>

#include "panel/panel_fixture.h"
#include "panel/worker/command.h"

namespace kora4::test {
namespace {

using namespace ::panel;

class PanelWaiting : public PanelTest {
  protected:
    static constexpr int cLeveler = IdFor(eSlider, eVolumeLeveler);

    ULONG Leveler() { return Others().GetVolumeLeveler().ValueOr(99); }
    bool LevelerBecomes(ULONG value) {
        return Becomes([&] { return Leveler() == value; });
    }
    bool ShowsLeveler(const wchar_t* text) {
        return Becomes([&] { return Panel().Text(IdFor(eValueText, eVolumeLeveler)) == text; });
    }
    std::optional<std::wstring> Name(long profile) {
        return (*Others().GetProfileTable())[static_cast<std::size_t>(profile)];
    }
    void StartAtLeveler(ULONG value) {
        ASSERT_TRUE(Others().SetVolumeLeveler(value));
        ASSERT_NO_FATAL_FAILURE(Start());
        Panel().TabTo(cLeveler);
    }
    void AnswerDialog(const wchar_t* text) {
        Type(text);
        Press(VK_RETURN);
        EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
    }
};

TEST_F(PanelWaiting, TakesBackOneAfterTheOtherWhenItMayAgain) {
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(1));
    for (const ULONG value : {2u, 3u}) {
        Press(VK_RIGHT);
        EXPECT_TRUE(LevelerBecomes(value));
    }
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(eUndoOwnButton); }));
    {
        const RawTransaction hold;
        Press('Z', {VK_CONTROL});
        Press('Z', {VK_CONTROL});
        EXPECT_TRUE(Panel().StatusBecomes(L"Undo: waiting"));
    }
    EXPECT_TRUE(LevelerBecomes(1));
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: done."));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsEnabled(eUndoOwnButton); }));
}

TEST_F(PanelWaiting, TakesBackTheChangeThatWaitsItself) {
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(1));
    {
        const RawTransaction hold;
        Press(VK_RIGHT);
        EXPECT_TRUE(ShowsLeveler(L"2 \u2026"));
        Press('Z', {VK_CONTROL});
        EXPECT_TRUE(Panel().StatusBecomes(L"Undo: waiting"));
    }
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: done."));
    EXPECT_EQ(1u, Leveler());
    EXPECT_TRUE(ShowsLeveler(L"1"));
}

TEST_F(PanelWaiting, GoesToAndFroAsOftenAsTheKeyIsPressed) {
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(2));
    Press(VK_F9);
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == L"&Compare: B"; }));
    for (const ULONG value : {3u, 4u, 5u}) {
        Press(VK_RIGHT);
        EXPECT_TRUE(LevelerBecomes(value));
    }
    {
        const RawTransaction hold;
        Press(VK_F9);
        Press(VK_F9);
        EXPECT_TRUE(Panel().StatusBecomes(L"aiting"));
    }
    EXPECT_TRUE(Panel().StatusBecomes(L"Compare: done."));
    EXPECT_TRUE(LevelerBecomes(5));
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == L"&Compare: B"; }));
}

TEST_F(PanelWaiting, DoesNotAskAgainForAKeyThatIsHeld) {
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(2));
    Press(VK_F9);
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == L"&Compare: B"; }));
    Press(VK_RIGHT);
    EXPECT_TRUE(LevelerBecomes(3));
    constexpr LPARAM cRepeat = LPARAM{KF_REPEAT} << 16;
    constexpr LPARAM cRepeatWithAlt = LPARAM{KF_REPEAT | KF_ALTDOWN} << 16;
    struct {
        UINT message;
        WPARAM key;
        LPARAM state;
        const wchar_t* becomes;
        KORA4APITechnology last;
        const wchar_t* done;
    } const held[] = {{WM_KEYDOWN, VK_F9, cRepeat, L"&Compare: A", eDialogEnhancer,
                       L"Dialog enhancer: done."},
                      {WM_KEYDOWN, VK_RETURN, cRepeat, L"&Compare: B", eVirtualizerHP,
                       L"Headphone virtualizer: done."},
                      {WM_SYSCHAR, 'c', cRepeatWithAlt, L"&Compare: A", eVirtualizerSpkr,
                       L"Speaker virtualizer: done."}};
    for (const auto& [message, key, state, becomes, last, done] : held) {
        SCOPED_TRACE(key);
        Panel().TabTo(eCompareButton);
        {
            const RawTransaction hold;
            Press(VK_F9);
            EXPECT_TRUE(Panel().StatusBecomes(L"Compare: waiting"));
            for (int i = 0; i < 3; ++i)
                PostMessageW(Panel().Control(eCompareButton), message, key, state);
            // Whatever was asked before this is done by then.
            Panel().Click(IdFor(eSwitchBox, last));
        }
        EXPECT_TRUE(Panel().StatusBecomes(done));
        EXPECT_EQ(becomes, Panel().Text(eCompareButton));
    }
}

TEST_F(PanelWaiting, SetsNoValueInAnotherProfile) {
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MUSIC));
    ASSERT_TRUE(Others().SetVolumeLeveler(7));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MOVIE));
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(3));
    {
        const RawTransaction hold;
        Press(VK_RIGHT);
        EXPECT_TRUE(ShowsLeveler(L"4 \u2026"));
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), KORA4_PROFILE_MUSIC);
    }
    EXPECT_TRUE(Panel().StatusBecomes(L"meant for another profile"));
    EXPECT_EQ(L"Music", Panel().Chosen(eProfileList));
    EXPECT_EQ(7u, Leveler());
    EXPECT_TRUE(ShowsLeveler(L"7"));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MOVIE));
    EXPECT_EQ(3u, Leveler());
}

TEST_F(PanelWaiting, MovesOneBandAndLeavesTheOthersAsTheyAreByThen) {
    constexpr std::array<std::uint32_t, 2> cFields{3, 4};  // of the curve
    const auto field = [](std::uint32_t pid) {
        return PatchName(RawTechnology::eStandardEQ, KORA4_PROFILE_MOVIE, pid);
    };
    const Bands before = *Others().GetGraphicEQData();
    Bands changed = before;
    changed[9].gain = 6;
    ASSERT_TRUE(Others().SetGraphicEQData(changed));
    std::array<std::optional<std::wstring>, cFields.size()> texts;
    for (std::size_t i = 0; i < cFields.size(); ++i)
        texts[i] = RawStore::Text(cStatic, field(cFields[i]));
    ASSERT_TRUE(Others().SetGraphicEQData(before));
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eEqualizer);
    {
        const RawTransaction hold;
        Press(VK_UP);
        EXPECT_TRUE(Panel().StatusBecomes(L"Waiting"));
        for (std::size_t i = 0; i < cFields.size(); ++i)
            if (texts[i])
                RawStore::SetText(cStatic, field(cFields[i]), *texts[i]);
    }
    EXPECT_TRUE(Panel().StatusBecomes(L"Graphic equalizer: done."));
    EXPECT_EQ(0.5f, (*Others().GetGraphicEQData())[0].gain);
    EXPECT_EQ(6.0f, (*Others().GetGraphicEQData())[9].gain);
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: done."));
    EXPECT_EQ(0.0f, (*Others().GetGraphicEQData())[0].gain);
    EXPECT_EQ(6.0f, (*Others().GetGraphicEQData())[9].gain) << "another program's";
}

TEST_F(PanelWaiting, DoesNotBringBackAProfileByRenamingIt) {
    ASSERT_TRUE(Others().CreateCustomProfile(KORA4_PROFILE_P1, L"Evening"));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_P1));
    ASSERT_NO_FATAL_FAILURE(Start());
    Press(VK_F2);
    ASSERT_NE(nullptr, Panel().Dialog());
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MOVIE));
    ASSERT_TRUE(Others().DeleteCustomProfile(KORA4_PROFILE_P1));
    AnswerDialog(L"Ghost");
    EXPECT_TRUE(Panel().StatusBecomes(L"that profile does not exist any more"));
    EXPECT_EQ(std::nullopt, Name(KORA4_PROFILE_P1));
}

TEST_F(PanelWaiting, MakesANewProfileInAPlaceThatIsFreeByThen) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Press('N', {VK_CONTROL});
    ASSERT_NE(nullptr, Panel().Dialog());
    {
        const RawTransaction hold;
        AnswerDialog(L"Mine");
        EXPECT_TRUE(Panel().StatusBecomes(L"aiting"));
        RawStore::SetText(cStatic, ProfileNameName(KORA4_PROFILE_P1), L"Theirs");
    }
    EXPECT_TRUE(Panel().StatusBecomes(L"New profile \u201CMine\u201D: done."));
    EXPECT_EQ(L"Theirs", Name(KORA4_PROFILE_P1));
    EXPECT_EQ(L"Mine", Name(KORA4_PROFILE_P2));
    EXPECT_EQ(KORA4_PROFILE_P2, *Others().GetActiveProfile());
}

TEST_F(PanelWaiting, TakesBackWhatItsUserDidBeforeADemo) {
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(3));
    Press(VK_RIGHT);
    EXPECT_TRUE(LevelerBecomes(4));
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, true));
    EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerButton); }));
    Panel().Click(eBannerButton);
    EXPECT_TRUE(Panel().StatusBecomes(L"demo: done."));
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(eUndoOwnButton); }));
    EXPECT_FALSE(Panel().IsEnabled(eUndoForeignButton));
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: done."));
    EXPECT_EQ(3u, Leveler());
}

TEST_F(PanelWaiting, DoesNotSayThatItWaitsForALateTick) {
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_TRUE(Panel().StatusBecomes(L"Ready."));
    constexpr WPARAM cPatienceTimer = 1;
    SendMessageW(Panel().Window(), WM_TIMER, cPatienceTimer, 0);
    EXPECT_EQ(L"Ready. Changes take effect at once.", Panel().Status());
}

TEST_F(PanelWaiting, SetsWhatWaitsBeforeItEnds) {
    constexpr KORA4APITechnology cSwitched[] = {eVolumeLeveler, eVirtualizerHP};
    for (const KORA4APITechnology technology : cSwitched)
        ASSERT_TRUE(Others().SetTechnologyOnElseOff(technology, true));
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(3));
    {
        const RawTransaction hold;
        Press(VK_RIGHT);
        EXPECT_TRUE(ShowsLeveler(L"4 \u2026"));
        for (const KORA4APITechnology technology : cSwitched)
            Panel().Click(IdFor(eSwitchBox, technology));
        PostMessageW(Panel().Window(), WM_CLOSE, 0, 0);
        EXPECT_TRUE(Becomes([&] { return !IsWindowVisible(Panel().Window()); }));
        // By then it is being destroyed and waits for its worker, a second at most.
        Sleep(200);
    }
    EXPECT_TRUE(LevelerBecomes(4));
    for (const KORA4APITechnology technology : cSwitched)
        EXPECT_TRUE(
            Becomes([&] { return !*Others().GetTechnologyOnElseOff(technology); }, 3000))
            << technology;
}

TEST_F(PanelWaiting, EndsAlsoWhileAnotherProgramHoldsTheStoreForLong) {
    ASSERT_NO_FATAL_FAILURE(StartAtLeveler(3));
    {
        const RawTransaction hold;
        Press(VK_RIGHT);
        EXPECT_TRUE(ShowsLeveler(L"4 \u2026"));
        m_panel.reset();
    }
    EXPECT_EQ(3u, Leveler());
}

TEST(PanelLevels, AreTheSameAlsoWhenTheyAreNoNumbers) {
    LevelsRead levels;
    levels.gains.fill(std::numeric_limits<float>::quiet_NaN());
    LevelsRead same = levels;
    EXPECT_TRUE(levels == same) << "they would be drawn again and again";
    same.excitations[3] = 1;
    EXPECT_FALSE(levels == same);
}

}  // namespace
}  // namespace kora4::test
