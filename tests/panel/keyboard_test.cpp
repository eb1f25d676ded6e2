// SPDX-License-Identifier: MIT
// Everything that the panel can do, with the keyboard alone.
#include <algorithm>
#include <cmath>
#include <cwctype>
#include <set>

#include "panel/panel_fixture.h"

namespace kora4::test {
namespace {

using namespace ::panel;

constexpr int cKeyboardControls[] = {
    eEnableBox,     eProfileList,   eNewButton,     eRevertButton,  eSwitchBox,
    eSwitchBox + 1, eSwitchBox + 2, eSwitchBox + 3, eSwitchBox + 4, eSwitchBox + 5,
    eSlider,        eSlider + 3,    eSlider + 4,    eSlider + 5,    eCurveList,
    eLevelBox,      eBandList,      eGainField,     eEqualizer,     eFlatButton,
    eImportButton,  eExportButton,  eCompareButton, eMoreButton};

TEST_F(PanelTest, ReachesEveryControlWithTabInTheOrderOfTheWindow) {
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_TRUE(Panel().FocusBecomes(eEnableBox)) << "the first one has the keyboard";
    std::vector<int> visited;
    do {
        visited.push_back(Panel().Focused());
        Press(VK_TAB);
        ASSERT_TRUE(Becomes([&] { return Panel().Focused() != visited.back(); }));
    } while (Panel().Focused() != eEnableBox && visited.size() < 60);
    for (const int id : cKeyboardControls)
        EXPECT_EQ(1, std::count(visited.begin(), visited.end(), id)) << id;
    Press(VK_TAB, {VK_SHIFT});
    EXPECT_TRUE(Panel().FocusBecomes(visited.back()));
}

TEST_F(PanelTest, GoesToAListOrFieldWithTheLetterOfItsLabel) {
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_TRUE(Panel().FocusBecomes(eEnableBox));
    for (const auto& [letter, id] :
         {std::pair<WORD, int>('B', eBandList), {'G', eGainField}, {'P', eProfileList}}) {
        Press(letter, {VK_MENU});
        EXPECT_TRUE(Panel().FocusBecomes(id)) << static_cast<char>(letter);
    }
}

TEST_F(PanelTest, SwitchesWithTheSpaceBar) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eEnableBox);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return !*Others().GetVeltoEnable(); }));
    for (int i = 0; i < KORA4_TECHNOLOGIES; ++i) {
        const auto technology = static_cast<KORA4APITechnology>(i);
        const bool before = *Others().GetTechnologyOnElseOff(technology);
        Panel().TabTo(eSwitchBox + i);
        Press(VK_SPACE);
        EXPECT_TRUE(Becomes([&] {
            return *Others().GetTechnologyOnElseOff(technology) != before;
        })) << i;
    }
    EXPECT_TRUE(Panel().StatusBecomes(L": done."));
}

TEST_F(PanelTest, MovesSlidersAndListsWithTheArrows) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const auto amount = [&](KORA4APITechnology technology) {
        return Others().GetSimplePatchValue(technology)->Amount();
    };
    const std::pair<KORA4APITechnology, double> moved[] = {{eVolumeLeveler, 9},
                                                           {eDialogEnhancer, 0.32},
                                                           {eVirtualizerHP, 5.9},
                                                           {eVirtualizerSpkr, 5.9}};
    for (const auto& [technology, expected] : moved) {
        Panel().TabTo(IdFor(eSlider, technology));
        Press(VK_LEFT);
        EXPECT_TRUE(Becomes([&] { return std::abs(amount(technology) - expected) < 0.001; }))
            << technology << " is " << amount(technology);
    }
    Panel().TabTo(eCurveList);
    Press(VK_DOWN);
    EXPECT_TRUE(Becomes([&] { return amount(eIntelligentEQ) > 0; }));
    Panel().TabTo(eProfileList);
    Press(VK_DOWN);
    EXPECT_TRUE(Becomes([&] { return *Others().GetActiveProfile() == KORA4_PROFILE_MUSIC; }));
}

TEST_F(PanelTest, MakesRenamesAndDeletesAProfile) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const auto name = [&] { return (*Others().GetProfileTable())[KORA4_PROFILE_P1]; };
    const auto answer = [&](const wchar_t* text) {
        ASSERT_NE(nullptr, Panel().Dialog());
        Type(text);
        Press(VK_RETURN);
        EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
    };
    Panel().TabTo(eNewButton);
    Press(VK_SPACE);
    answer(L"Late night");
    EXPECT_TRUE(Panel().StatusBecomes(L"New profile \u201CLate night\u201D: done."));
    EXPECT_EQ(L"Late night", name());
    EXPECT_EQ(KORA4_PROFILE_P1, *Others().GetActiveProfile());
    EXPECT_EQ(L"Late night", Panel().Chosen(eProfileList));
    EXPECT_FALSE(Panel().IsEnabled(eRevertButton)) << "it has no factory values";

    Press(VK_F2);
    answer(L"Later");
    EXPECT_TRUE(Becomes([&] { return name() == L"Later"; }));

    Press(VK_F2);
    ASSERT_NE(nullptr, Panel().Dialog());
    Press(VK_ESCAPE);
    EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
    EXPECT_EQ(L"Later", name());

    Panel().TabTo(eDeleteButton);
    Press(VK_SPACE);
    ASSERT_NE(nullptr, Panel().Dialog());
    Press(VK_LEFT);  // Cancel is the one that Enter takes
    Press(VK_RETURN);
    EXPECT_TRUE(Becomes([&] { return !name(); }));
    EXPECT_TRUE(Becomes([&] { return *Others().GetActiveProfile() == KORA4_PROFILE_MOVIE; }));
}

TEST_F(PanelTest, RevertsAProfileToItsFactoryValues) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eRevertButton);
    Press(VK_SPACE);
    EXPECT_TRUE(Panel().StatusBecomes(L"Factory values: done."));
    EXPECT_EQ(ULONG{KORA4_VOLUME_LEVELER_MOVIE_DEFAULT}, *Others().GetVolumeLeveler());
}

TEST_F(PanelTest, TakesBackItsUsersChangesAndThoseOfOthers) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(IdFor(eSlider, eVolumeLeveler));
    Press(VK_RIGHT);
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 4; }));
    ASSERT_TRUE(Others().SetHeadphoneVirtualizer(2));
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(eUndoForeignButton); }));
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 3; }));
    EXPECT_EQ(2, *Others().GetHeadphoneVirtualizer());
    Press('Z', {VK_CONTROL, VK_SHIFT});
    EXPECT_TRUE(Becomes([&] { return *Others().GetHeadphoneVirtualizer() > 5; }));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsEnabled(eUndoForeignButton); }));
}

TEST_F(PanelTest, GoesToAndFroBetweenTwoStatesWithOneKey) {
    ASSERT_TRUE(Others().SetVolumeLeveler(3));
    ASSERT_NO_FATAL_FAILURE(Start());
    Press(VK_F9);
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == L"&Compare: B"; }));
    Panel().TabTo(IdFor(eSlider, eVolumeLeveler));
    Press(VK_RIGHT);
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 4; }));
    Press(VK_F9);
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 3; }));
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eCompareButton) == L"&Compare: A"; }));
    Press(VK_F9);
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 4; }));
}

TEST_F(PanelTest, GivesEveryControlALetterOfItsOwn) {
    for (const char* language : {"en", "de"}) {
        ASSERT_NO_FATAL_FAILURE(Start({"--language", language}));
        std::set<wchar_t> letters;
        for (HWND control = GetWindow(Panel().Window(), GW_CHILD); control;
             control = GetWindow(control, GW_HWNDNEXT)) {
            const std::wstring text = WindowText(control);
            const std::size_t mark = text.find(L'&');
            if (mark == std::wstring::npos || GetDlgCtrlID(control) == eStatusText)
                continue;
            const wchar_t letter =
                static_cast<wchar_t>(std::towlower(static_cast<wint_t>(text[mark + 1])));
            EXPECT_TRUE(letters.insert(letter).second)
                << language << ", id " << GetDlgCtrlID(control);
        }
        EXPECT_LT(20u, letters.size());
        m_panel.reset();
    }
}

}  // namespace
}  // namespace kora4::test
