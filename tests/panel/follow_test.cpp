// SPDX-License-Identifier: MIT
// The panel shows what others change, at once, and takes nothing out of its user's hands.
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "panel/panel_fixture.h"
#include "panel/pictures.h"

namespace kora4::test {
namespace {

using namespace ::panel;

struct ForeignChange {
    const char* what;
    std::function<bool(Api&)> make;
    std::function<bool(Api&)> takeBack;
    std::function<bool(const PanelProcess&)> isShown;
};

double Milliseconds(LONGLONG ticks) {
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(ticks) / static_cast<double>(frequency.QuadPart);
}

LONGLONG Now() {
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

// How much of a time no processor had anything to do, of all processors together. The panel
// needs one at a time: of two, it leaves half.
class IdleTime {
  public:
    double Share() const {
        const auto [idle, all] = Read();
        return all == m_begin.second ? 0
                                     : static_cast<double>(idle - m_begin.first) /
                                           static_cast<double>(all - m_begin.second);
    }

  private:
    static ULONGLONG Ticks(const FILETIME& time) {
        return ULARGE_INTEGER{{time.dwLowDateTime, time.dwHighDateTime}}.QuadPart;
    }
    static std::pair<ULONGLONG, ULONGLONG> Read() {
        FILETIME idle{}, kernel{}, user{};
        EXPECT_TRUE(GetSystemTimes(&idle, &kernel, &user));
        // The time in the kernel has that of idling in it.
        return {Ticks(idle), Ticks(kernel) + Ticks(user)};
    }
    const std::pair<ULONGLONG, ULONGLONG> m_begin = Read();
};

Bands WithFirst(const Api& api, float gain) {
    Bands bands = *api.GetGraphicEQData();
    bands[0].gain = gain;
    return bands;
}

std::vector<ForeignChange> Changes() {
    std::vector<ForeignChange> changes;
    const auto add = [&](const char* what, auto make, auto takeBack, auto isShown) {
        changes.push_back({what, make, takeBack, isShown});
    };
    const auto addSwitch = [&](const char* what, KORA4APITechnology technology,
                               bool wasOn = true) {
        for (const bool isOn : {!wasOn, wasOn})
            add(
                what,
                [=](Api& api) {
                    return static_cast<bool>(api.SetTechnologyOnElseOff(technology, isOn));
                },
                [=](Api& api) {
                    return static_cast<bool>(api.SetTechnologyOnElseOff(technology, !isOn));
                },
                [=](const PanelProcess& panel) {
                    return panel.IsChecked(IdFor(eSwitchBox, technology)) == isOn;
                });
    };
    const auto addValue = [&](const char* what, KORA4APITechnology technology, double value,
                              int position, const wchar_t* text) {
        add(
            what,
            [=](Api& api) {
                return static_cast<bool>(api.SetSimplePatchValue({technology, value}));
            },
            [=](Api& api) {
                return static_cast<bool>(api.SetSimplePatchValue({technology, 0}));
            },
            [=](const PanelProcess& panel) {
                return panel.Position(IdFor(eSlider, technology)) == position &&
                       panel.Text(IdFor(eValueText, technology)) == text;
            });
    };
    add(
        "enable", [](Api& api) { return static_cast<bool>(api.SetVeltoEnable(false)); },
        [](Api& api) { return static_cast<bool>(api.SetVeltoEnable(true)); },
        [](const PanelProcess& panel) { return !panel.IsChecked(eEnableBox); });
    addSwitch("switch of the leveler", eVolumeLeveler);
    addSwitch("switch of the graphic EQ", eGraphicEQ);
    addSwitch("switch of the curve", eIntelligentEQ, false);
    addSwitch("switch of the dialog", eDialogEnhancer);
    addSwitch("switch of the headphones", eVirtualizerHP);
    addSwitch("switch of the speakers", eVirtualizerSpkr);
    addValue("leveler", eVolumeLeveler, 7, 7, L"7");
    addValue("dialog", eDialogEnhancer, 0.25, 25, L"0.25");
    addValue("headphones", eVirtualizerHP, 1.5, 15, L"1.5");
    addValue("speakers", eVirtualizerSpkr, 4, 40, L"4.0");
    add(
        "curve", [](Api& api) { return static_cast<bool>(api.SetIntelligentEq(Curve::eRich)); },
        [](Api& api) { return static_cast<bool>(api.SetIntelligentEq(Curve::eOpen)); },
        [](const PanelProcess& panel) { return panel.Chosen(eCurveList) == L"Rich"; });
    add(
        "bands",
        [](Api& api) { return static_cast<bool>(api.SetGraphicEQData(WithFirst(api, 3))); },
        [](Api& api) { return static_cast<bool>(api.SetGraphicEQData(WithFirst(api, 0))); },
        [](const PanelProcess& panel) { return panel.Text(eGainField) == L"+3.0"; });
    add(
        "new custom profile",
        [](Api& api) {
            return static_cast<bool>(api.CreateCustomProfile(KORA4_PROFILE_P1, L"Evening"));
        },
        [](Api& api) { return static_cast<bool>(api.DeleteCustomProfile(KORA4_PROFILE_P1)); },
        [](const PanelProcess& panel) {
            return SendMessageW(panel.Control(eProfileList), CB_GETCOUNT, 0, 0) == 7;
        });
    add(
        "profile",
        [](Api& api) { return static_cast<bool>(api.SetActiveProfile(KORA4_PROFILE_P1)); },
        [](Api& api) { return static_cast<bool>(api.SetActiveProfile(KORA4_PROFILE_MOVIE)); },
        [](const PanelProcess& panel) { return panel.Chosen(eProfileList) == L"Evening"; });
    add(
        "new name",
        [](Api& api) {
            return static_cast<bool>(api.SetCustomProfileName(KORA4_PROFILE_P1, L"Night"));
        },
        [](Api& api) {
            return static_cast<bool>(api.SetCustomProfileName(KORA4_PROFILE_P1, L"Evening"));
        },
        [](const PanelProcess& panel) { return panel.Chosen(eProfileList) == L"Night"; });
    add(
        "profile of the factory",
        [](Api& api) { return static_cast<bool>(api.SetActiveProfile(KORA4_PROFILE_MOVIE)); },
        [](Api& api) { return static_cast<bool>(api.SetActiveProfile(KORA4_PROFILE_P1)); },
        [](const PanelProcess& panel) { return panel.Chosen(eProfileList) == L"Movie"; });
    add(
        "deleted profile",
        [](Api& api) { return static_cast<bool>(api.DeleteCustomProfile(KORA4_PROFILE_P1)); },
        [](Api& api) {
            return static_cast<bool>(api.CreateCustomProfile(KORA4_PROFILE_P1, L"Night"));
        },
        [](const PanelProcess& panel) {
            return SendMessageW(panel.Control(eProfileList), CB_GETCOUNT, 0, 0) == 6;
        });
    add(
        "factory values", [](Api& api) { return static_cast<bool>(api.RevertActiveProfile()); },
        [](Api& api) { return static_cast<bool>(api.SetVolumeLeveler(7)); },
        [](const PanelProcess& panel) {
            return panel.Text(IdFor(eValueText, eVolumeLeveler)) == L"262151 (off scale)";
        });
    add(
        "demo",
        [](Api& api) {
            return static_cast<bool>(
                api.SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, true));
        },
        [](Api& api) { return static_cast<bool>(api.ForceRevertFromDemoMode()); },
        [](const PanelProcess& panel) {
            return panel.IsVisible(eBannerButton) &&
                   panel.Chosen(eProfileList) == L"Demo of Music";
        });
    return changes;
}

// Milliseconds in which a change is shown. A change that is late while the processors had
// nothing to spare for the panel is made once more, a little later; it is never let off
// altogether.
constexpr double cAtOnce = 100;
constexpr double cIdle = 0.2;
constexpr int cTries = 20;
constexpr DWORD cPause = 500;

TEST_F(PanelTest, ShowsEveryForeignChangeWithin100Milliseconds) {
    ASSERT_NO_FATAL_FAILURE(Start());
    std::vector<double> times;
    for (const ForeignChange& change : Changes()) {
        double took = 0;
        double idle = 0;
        for (int i = 0; i < cTries && (i == 0 || (took >= cAtOnce && idle < cIdle)); ++i) {
            if (i != 0) {
                EXPECT_TRUE(change.takeBack(Others())) << change.what;
                EXPECT_TRUE(Becomes([&] { return !change.isShown(Panel()); })) << change.what;
                Sleep(cPause);
            }
            EXPECT_FALSE(change.isShown(Panel())) << change.what;
            const IdleTime idling;
            const LONGLONG begin = Now();
            EXPECT_TRUE(change.make(Others())) << change.what;
            EXPECT_TRUE(Becomes([&] { return change.isShown(Panel()); })) << change.what;
            took = Milliseconds(Now() - begin);
            idle = idling.Share();
            std::printf("%-26s %6.1f ms\n", change.what, took);
            if (took >= cAtOnce)
                std::printf("  late; of the processors, %.0f%% were idle\n", 100 * idle);
        }
        EXPECT_GT(cAtOnce, took) << change.what;
        times.push_back(took);
    }
    std::sort(times.begin(), times.end());
    std::printf("%zu foreign changes: median %.1f ms, longest %.1f ms\n", times.size(),
                times[times.size() / 2], times.back());
}

TEST_F(PanelTest, SetsNothingThatItWasTold) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const auto counter = [] {
        return RawStore::Number(cDynamic, TriggerName(RawTechnology::eVolume)).value_or(0);
    };
    ASSERT_TRUE(Others().SetVolumeLeveler(4));
    ASSERT_TRUE(Becomes([&] { return Panel().Position(IdFor(eSlider, eVolumeLeveler)) == 4; }));
    const DWORD before = counter();
    ASSERT_TRUE(Others().SetVolumeLeveler(5));
    ASSERT_TRUE(Becomes([&] { return Panel().Position(IdFor(eSlider, eVolumeLeveler)) == 5; }));
    Sleep(300);
    EXPECT_EQ(before + 1, counter()) << "the set of this program alone";
}

TEST_F(PanelTest, KeepsASliderInItsUsersHand) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const HWND slider = Panel().Control(IdFor(eSlider, eVolumeLeveler));
    const auto scroll = [&](WORD what, WORD position) {
        SendMessageW(Panel().Window(), WM_HSCROLL, MAKEWPARAM(what, position),
                     reinterpret_cast<LPARAM>(slider));
    };
    SendMessageW(slider, TBM_SETPOS, TRUE, 3);
    scroll(TB_THUMBTRACK, 3);
    ASSERT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 3; }));
    ASSERT_TRUE(Others().SetVolumeLeveler(9));
    ASSERT_TRUE(
        Becomes([&] { return Panel().Text(IdFor(eValueText, eVolumeLeveler)) == L"9"; }));
    EXPECT_EQ(3, Panel().Position(IdFor(eSlider, eVolumeLeveler)));
    SendMessageW(slider, TBM_SETPOS, TRUE, 4);
    scroll(TB_THUMBTRACK, 4);
    scroll(TB_ENDTRACK, 0);
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 4; }));
    EXPECT_EQ(4, Panel().Position(IdFor(eSlider, eVolumeLeveler)));
}

TEST_F(PanelTest, KeepsASliderInItsUsersHandAcrossProfilesUntilADemo) {
    const auto choose = [&](long profile, ULONG leveler) {
        ASSERT_TRUE(Others().SetActiveProfile(profile));
        ASSERT_TRUE(Others().SetVolumeLeveler(leveler));
    };
    ASSERT_NO_FATAL_FAILURE(choose(KORA4_PROFILE_MUSIC, 6));
    ASSERT_NO_FATAL_FAILURE(choose(KORA4_PROFILE_MOVIE, 1));
    ASSERT_NO_FATAL_FAILURE(Start());
    const int id = IdFor(eSlider, eVolumeLeveler);
    const auto drag = [&](int position) {
        SendMessageW(Panel().Control(id), TBM_SETPOS, TRUE, position);
        SendMessageW(Panel().Window(), WM_HSCROLL,
                     MAKEWPARAM(TB_THUMBTRACK, static_cast<WORD>(position)),
                     reinterpret_cast<LPARAM>(Panel().Control(id)));
    };
    drag(2);
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 2; }));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Music"; }));
    EXPECT_EQ(2, Panel().Position(id)) << "it does not jump away from the pointer";
    EXPECT_EQ(L"6", Panel().Text(IdFor(eValueText, eVolumeLeveler)));
    EXPECT_EQ(6u, *Others().GetVolumeLeveler());
    drag(3);
    EXPECT_TRUE(Becomes([&] { return *Others().GetVolumeLeveler() == 3; }));
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_GAMES, true));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsEnabled(id); }));
    ASSERT_TRUE(Others().RevertFromDemoMode());
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(id); }));
    EXPECT_EQ(3u, *Others().GetVolumeLeveler());
    ASSERT_TRUE(Others().SetVolumeLeveler(9));
    EXPECT_TRUE(Becomes([&] { return Panel().Position(id) == 9; })) << "nobody holds it now";
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MOVIE));
    EXPECT_EQ(2u, *Others().GetVolumeLeveler());
}

TEST_F(PanelTest, ShowsWhatIsOutsideTheLimitsAndLeavesItAlone) {
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ(L"262151 (off scale)", Panel().Text(IdFor(eValueText, eVolumeLeveler)));
    EXPECT_EQ(L"10.0 (off scale)", Panel().Text(IdFor(eValueText, eVirtualizerSpkr)));
    EXPECT_EQ(KORA4_VOLUME_LEVELER_MAX, Panel().Position(IdFor(eSlider, eVolumeLeveler)));
    // Neither visiting every control nor changing another setting writes it back, nor a key
    // that does not move its slider.
    Panel().TabTo(IdFor(eSlider, eVirtualizerSpkr));
    Press(VK_END);
    Panel().TabTo(eMoreButton);
    Panel().TabTo(eEnableBox);
    Press(VK_SPACE);
    EXPECT_TRUE(Becomes([&] { return !*Others().GetVeltoEnable(); }));
    EXPECT_EQ(ULONG{KORA4_VOLUME_LEVELER_MOVIE_DEFAULT}, *Others().GetVolumeLeveler());
    EXPECT_EQ(KORA4_SPEAKER_VIRTUALIZER_DEFAULT, *Others().GetSpeakerVirtualizer());
}

TEST_F(PanelTest, LeavesAValueAloneThatIsNotOnTheScaleWhenItsSliderIsOnlyTouched) {
    constexpr float cBetween = 0.333f;
    ASSERT_TRUE(Others().SetDialogEnhancer(cBetween));
    ASSERT_NO_FATAL_FAILURE(Start());
    const std::pair<KORA4APITechnology, WORD> touched[] = {
        {eVolumeLeveler, WORD{KORA4_VOLUME_LEVELER_MAX}}, {eDialogEnhancer, WORD{33}}};
    for (const auto& [technology, position] : touched)
        for (const WORD what : {WORD{TB_THUMBTRACK}, WORD{TB_THUMBPOSITION}, WORD{TB_ENDTRACK}})
            SendMessageW(Panel().Window(), WM_HSCROLL, MAKEWPARAM(what, position),
                         reinterpret_cast<LPARAM>(Panel().Control(IdFor(eSlider, technology))));
    // What comes after it in the same row.
    Panel().Click(eEnableBox);
    EXPECT_TRUE(Becomes([&] { return !*Others().GetVeltoEnable(); }));
    EXPECT_EQ(ULONG{KORA4_VOLUME_LEVELER_MOVIE_DEFAULT}, *Others().GetVolumeLeveler());
    EXPECT_EQ(cBetween, *Others().GetDialogEnhancer());
}

TEST_F(PanelTest, GoesOnWhileAnotherProgramHoldsTheStoreAndSaysThatItWaits) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const int id = IdFor(eSlider, eVirtualizerHP);
    Panel().TabTo(id);
    {
        const RawTransaction hold;
        Press(VK_LEFT);
        EXPECT_TRUE(Panel().StatusBecomes(L"Waiting"));
        EXPECT_EQ(L"5.9 \u2026", Panel().Text(IdFor(eValueText, eVirtualizerHP)));
        SavePicture(TakePicture(Panel().Window()), L"panel-waiting.bmp");
        // The window answers meanwhile, and takes further wishes.
        for (int i = 0; i < 5; ++i) {
            const ULONGLONG begin = GetTickCount64();
            Press(VK_LEFT);
            EXPECT_TRUE(Becomes([&] { return Panel().Position(id) == 58 - i; }));
            EXPECT_GT(2000u, GetTickCount64() - begin);
        }
    }
    EXPECT_TRUE(Becomes([&] {
        const auto value = Others().GetHeadphoneVirtualizer();
        return value && *value > 5.39f && *value < 5.41f;
    }));
    EXPECT_TRUE(Panel().StatusBecomes(L"Headphone virtualizer: done."));
    EXPECT_EQ(L"5.4", Panel().Text(IdFor(eValueText, eVirtualizerHP)));
}

}  // namespace
}  // namespace kora4::test
