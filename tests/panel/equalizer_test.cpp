// SPDX-License-Identifier: MIT
// The curve of the equalizer by mouse, keys, numbers and files.
#include <windows.h>

#include <oleacc.h>
#include <wrl/client.h>

#include <cmath>
#include <fstream>

#include "panel/panel_fixture.h"
#include "panel/pictures.h"

namespace kora4::test {
namespace {

using namespace ::panel;

class PanelEqualizer : public PanelTest {
  protected:
    double Gain(std::size_t band) {
        const auto bands = Others().GetGraphicEQData();
        return bands && band < bands->size() ? static_cast<double>((*bands)[band].gain) : 99;
    }
    bool GainBecomes(std::size_t band, double gain) {
        return Becomes([&] { return std::abs(Gain(band) - gain) < 0.01; });
    }
    // Moves the mouse there, and presses or releases a button; the shares are of the control's
    // width and height.
    void Mouse(double x, double y, DWORD button = 0) {
        RECT place{};
        GetWindowRect(Panel().Control(eEqualizer), &place);
        MouseAt(place.left + x * (place.right - place.left),
                place.top + y * (place.bottom - place.top), button);
    }
    Microsoft::WRL::ComPtr<IAccessible> Curve() {
        Microsoft::WRL::ComPtr<IAccessible> curve;
        EXPECT_EQ(S_OK,
                  AccessibleObjectFromWindow(
                      Panel().Control(eEqualizer), static_cast<DWORD>(OBJID_CLIENT),
                      __uuidof(IAccessible), reinterpret_cast<void**>(curve.GetAddressOf())));
        return curve;
    }
    // Of a band, counted from 1.
    static VARIANT Part(long band) {
        VARIANT part{};
        part.vt = VT_I4;
        part.lVal = band;
        return part;
    }
    // Middle of the dot of a band, on the display.
    POINT Dot(long band) {
        long left = 0, top = 0, width = 0, height = 0;
        EXPECT_EQ(S_OK, Curve()->accLocation(&left, &top, &width, &height, Part(band)));
        return {left + width / 2, top + height / 2};
    }
    // What a screen reader says of its gain.
    std::wstring ValueOf(long band) {
        BSTR text = nullptr;
        EXPECT_EQ(S_OK, Curve()->get_accValue(Part(band), &text));
        const std::wstring value(text ? text : L"");
        SysFreeString(text);
        return value;
    }
    // Takes the last band into the hand; what others do then is up to the test.
    void BeginDrag() {
        Mouse(0.98, 0.3, MOUSEEVENTF_LEFTDOWN);
        EXPECT_TRUE(Becomes([&] { return Gain(9) > 3; }));
        EXPECT_TRUE(Panel().StatusBecomes(L"Graphic equalizer: done."));
    }
    // Goes on with it, and lets go: no band may move by that.
    void ExpectThatTheDragIsOver() {
        const Bands before = *Others().GetGraphicEQData();
        Mouse(0.98, 0.2);
        Mouse(0.98, 0.1);
        Sleep(300);
        EXPECT_EQ(before, *Others().GetGraphicEQData());
        Mouse(0.98, 0.1, MOUSEEVENTF_LEFTUP);
        Sleep(100);
        EXPECT_EQ(before, *Others().GetGraphicEQData());
    }
};

TEST_F(PanelEqualizer, MovesBandsWithTheKeys) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eEqualizer);
    Press(VK_UP);
    EXPECT_TRUE(GainBecomes(0, 0.5));
    Press(VK_RIGHT);
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eBandList) == L"64 Hz"; }));
    Press(VK_NEXT);
    EXPECT_TRUE(GainBecomes(1, -3));
    Press(VK_UP, {VK_CONTROL});
    EXPECT_TRUE(GainBecomes(1, -2.9));
    Press(VK_DELETE);
    EXPECT_TRUE(GainBecomes(1, 0));
    Press(VK_END);
    for (int i = 0; i < 6; ++i)
        Press(VK_PRIOR);
    EXPECT_TRUE(GainBecomes(9, 12)) << "it stops at the limit";
    Press(VK_HOME);
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == L"+0.5"; }));
    Panel().TabTo(eFlatButton);
    Press(VK_SPACE);
    EXPECT_TRUE(GainBecomes(9, 0));
    EXPECT_TRUE(GainBecomes(0, 0));
}

TEST_F(PanelEqualizer, TakesNumbers) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eBandList);
    Press(VK_DOWN);
    Panel().TabTo(eGainField);
    Press('A', {VK_CONTROL});
    Type(L"-4,5 dB");
    Press(VK_RETURN);
    EXPECT_TRUE(GainBecomes(1, -4.5));
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == L"-4.5"; }));
    Press('A', {VK_CONTROL});
    Type(L"13");
    Press(VK_RETURN);
    EXPECT_TRUE(Panel().StatusBecomes(L"from -12 to +12"));
    EXPECT_TRUE(GainBecomes(1, -4.5));
}

TEST_F(PanelEqualizer, WritesAndTakesADecimalCommaInGerman) {
    ASSERT_TRUE(Others().SetGraphicEQData({{32, 1.5f}, {2500, 0}}));
    ASSERT_TRUE(Others().SetDialogEnhancer(0.25f));
    ASSERT_NO_FATAL_FAILURE(Start({"--language", "de"}));
    EXPECT_EQ(L"+1,5", Panel().Text(eGainField));
    EXPECT_EQ(L"0,25", Panel().Text(IdFor(eValueText, eDialogEnhancer)));
    Panel().TabTo(eGainField);
    Press('A', {VK_CONTROL});
    Type(L"-4,5");
    Press(VK_RETURN);
    EXPECT_TRUE(GainBecomes(0, -4.5));
    EXPECT_TRUE(Becomes([&] { return Panel().Text(eGainField) == L"-4,5"; }));
}

TEST_F(PanelEqualizer, FollowsTheMouseAndKeepsADragWhenOthersChangeTheCurve) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Mouse(0.98, 0.3, MOUSEEVENTF_LEFTDOWN);
    EXPECT_TRUE(Becomes([&] { return Gain(9) > 3; }));
    // The API sets whole curves: two sets at the same moment would be a race that one loses.
    EXPECT_TRUE(Panel().StatusBecomes(L"Graphic equalizer: done."));
    Sleep(300);
    const double held = Gain(9);
    Bands bands = *Others().GetGraphicEQData();
    bands[0].gain = 5;
    bands[9].gain = -7;
    ASSERT_TRUE(Others().SetGraphicEQData(bands));
    EXPECT_TRUE(Panel().StatusBecomes(L"Another program"));
    Mouse(0.98, 0.2);
    EXPECT_TRUE(Becomes([&] { return Gain(9) > held + 1; }));
    EXPECT_EQ(5, Gain(0)) << "what the other program has set stays";
    Mouse(0.98, 0.2, MOUSEEVENTF_LEFTUP);
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Becomes([&] { return Gain(9) < 0; })) << "a drag is taken back as one change";
}

TEST_F(PanelEqualizer, EndsADragWhenThereAreOtherBands) {
    ASSERT_NO_FATAL_FAILURE(Start());
    BeginDrag();
    ASSERT_TRUE(Others().SetGraphicEQData({{100, 0}, {1000, 0}, {10000, 0}}));
    EXPECT_TRUE(Becomes(
        [&] { return SendMessageW(Panel().Control(eBandList), CB_GETCOUNT, 0, 0) == 3; }));
    ExpectThatTheDragIsOver();
    Mouse(0.9, 0.3, MOUSEEVENTF_LEFTDOWN);
    EXPECT_TRUE(Becomes([&] { return Gain(2) > 3; })) << "the next one goes as ever";
    Mouse(0.9, 0.3, MOUSEEVENTF_LEFTUP);
}

TEST_F(PanelEqualizer, EndsADragWhenADemoBegins) {
    ASSERT_NO_FATAL_FAILURE(Start());
    BeginDrag();
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, true));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsEnabled(eEqualizer); }));
    ASSERT_TRUE(Others().ForceRevertFromDemoMode());
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(eEqualizer); }));
    ExpectThatTheDragIsOver();
}

TEST_F(PanelEqualizer, ChoosesABandWithAClickOnItsDotAndDoesNotMoveIt) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Bands bands = *Others().GetGraphicEQData();
    bands[7].gain = 5.25f;
    ASSERT_TRUE(Others().SetGraphicEQData(bands));
    EXPECT_TRUE(Panel().StatusBecomes(L"Another program"));
    const POINT dot = Dot(8);
    MouseAt(dot.x - 3, dot.y - 3, MOUSEEVENTF_LEFTDOWN);
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eBandList) == L"4000 Hz"; }));
    MouseAt(dot.x - 3, dot.y - 2, MOUSEEVENTF_LEFTUP);
    Sleep(300);
    EXPECT_EQ(bands, *Others().GetGraphicEQData());
    // A drag keeps the distance to where the dot was taken.
    MouseAt(dot.x, dot.y + 5, MOUSEEVENTF_LEFTDOWN);
    MouseAt(dot.x, dot.y + 45);
    EXPECT_TRUE(Becomes([&] { return Gain(7) < 4; }));
    // A step of the gain can be more than a pixel.
    EXPECT_TRUE(Becomes([&] { return std::abs(Dot(8).y - dot.y - 40) <= 1; }))
        << Dot(8).y - dot.y;
    MouseAt(dot.x, dot.y + 45, MOUSEEVENTF_LEFTUP);
}

TEST_F(PanelEqualizer, GoesOnWithADragInTheProfileThatOthersChoseAndEndsItInADemo) {
    constexpr std::size_t cLast = 9;
    // Between what is dragged in Movie and in Music.
    constexpr double cBorder = 8;
    // A display may put the pointer elsewhere in between.
    const auto dragUntil = [&](double height, double gain) {
        return Becomes([&] {
            Mouse(0.98, height);
            return Gain(cLast) > gain;
        });
    };
    ASSERT_NO_FATAL_FAILURE(Start());
    Mouse(0.98, 0.3, MOUSEEVENTF_LEFTDOWN);
    EXPECT_TRUE(dragUntil(0.3, 3));
    EXPECT_TRUE(Panel().StatusBecomes(L"Graphic equalizer: done."));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MUSIC));
    EXPECT_TRUE(Becomes([&] { return Panel().Chosen(eProfileList) == L"Music"; }));
    EXPECT_TRUE(dragUntil(0.05, cBorder));
    ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MUSIC, true));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsEnabled(eEqualizer); }));
    Mouse(0.98, 0.9);
    ASSERT_TRUE(Others().RevertFromDemoMode());
    EXPECT_TRUE(Becomes([&] { return Panel().IsEnabled(eEqualizer); }));
    // Nobody holds it any more, although the button is still down.
    Mouse(0.98, 0.8);
    Mouse(0.98, 0.8, MOUSEEVENTF_LEFTUP);
    Sleep(300);
    EXPECT_LT(-1, Gain(cLast));
    // Each profile has what was dragged in it.
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(GainBecomes(cLast, 0));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_MOVIE));
    EXPECT_NE(0, Gain(cLast));
    EXPECT_GT(cBorder, Gain(cLast));
}

class PanelEqualizerFile : public PanelEqualizer {
  protected:
    void SetUp() override {
        DeleteFileW(m_path.c_str());
        PanelEqualizer::SetUp();
    }
    void TearDown() override { DeleteFileW(m_path.c_str()); }
    void Transfer(WORD key) {
        Press(key, {VK_CONTROL});
        ASSERT_NE(nullptr, Panel().Dialog());
        Type(m_path);
        Press(VK_RETURN);
        EXPECT_TRUE(Panel().ForegroundBecomes(Panel().Window()));
    }
    void Import(std::string_view text) {
        std::ofstream(m_path.c_str(), std::ios::binary) << text;
        Transfer('O');
    }

    const std::wstring m_path = ProgramFolder() + L"\\panel_curve.txt";
};

TEST_F(PanelEqualizerFile, IsTheTextOfTheCommandLine) {
    ASSERT_NO_FATAL_FAILURE(Start());
    Panel().TabTo(eEqualizer);
    Press(VK_PRIOR);
    EXPECT_TRUE(GainBecomes(0, 3));
    ASSERT_NO_FATAL_FAILURE(Transfer('S'));
    EXPECT_TRUE(Panel().StatusBecomes(L"Export: done."));
    std::string text;
    std::getline(std::ifstream(m_path.c_str()), text);
    EXPECT_EQ(FormatGraphicEq(*Others().GetGraphicEQData()), text);
    EXPECT_EQ(RunCtl({"eq", "export"}).Lines().front(), text);

    ASSERT_NO_FATAL_FAILURE(Import("GraphicEQ: 20 -6; 20000 -6\n"));
    EXPECT_TRUE(GainBecomes(0, -6));
    EXPECT_TRUE(GainBecomes(9, -6));
    EXPECT_TRUE(Panel().StatusBecomes(L"Import: done."));

    ASSERT_NO_FATAL_FAILURE(Import("GraphicEQ: 20 -6; five\n"));
    EXPECT_TRUE(Panel().StatusBecomes(L"line 1: 'five' is not a frequency"));
    EXPECT_EQ(-6, Gain(0));
}

TEST_F(PanelEqualizerFile, IsRefusedInASentenceWhateverItHolds) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const std::string plain = "GraphicEQ: 20 -6\n";
    std::string wide = "\xFF\xFE";
    for (const char letter : plain)
        wide += {letter, '\0'};
    ASSERT_NO_FATAL_FAILURE(Import(wide));
    EXPECT_TRUE(Panel().StatusBecomes(L"Import: the file is no plain text; save it as UTF-8."));
    ASSERT_NO_FATAL_FAILURE(Import(std::string(9999, '\a')));
    EXPECT_TRUE(Panel().StatusBecomes(L"line 1: '????"));
    EXPECT_GT(120u, Panel().Status().size());
    ASSERT_NO_FATAL_FAILURE(Import(plain + std::string(1 << 20, ' ')));
    EXPECT_TRUE(Panel().StatusBecomes(L"Import: the file is too long for an equalizer."));
    EXPECT_EQ(0, Gain(0));
}

TEST_F(PanelEqualizerFile, GivesBandsToAProfileThatHasNone) {
    ASSERT_TRUE(Others().SetGraphicEQData({}));
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ(L"", Panel().Text(eGainField));
    EXPECT_LT(2u, StillPicture(Panel().Control(eEqualizer)).Colors()) << "it says so in words";
    SavePicture(StillPicture(Panel().Window()), L"panel-no-bands.bmp");
    Panel().TabTo(eEqualizer);
    Press(VK_UP);
    ASSERT_NO_FATAL_FAILURE(Import("GraphicEQ: 100 1; 1000 2\n"));
    EXPECT_TRUE(Panel().StatusBecomes(L"Import: done."));
    EXPECT_EQ((Bands{{100, 1}, {1000, 2}}), *Others().GetGraphicEQData());
}

TEST_F(PanelEqualizer, MarksAGainThatIsOffScaleAndDoesNotBringItBack) {
    const std::wstring field = PatchName(RawTechnology::eStandardEQ, KORA4_PROFILE_MOVIE, 4);
    Bands bands = *Others().GetGraphicEQData();
    bands[0].gain = 12;
    ASSERT_TRUE(Others().SetGraphicEQData(bands));
    // As another program stores it, which writes into the store itself.
    std::wstring gains = RawStore::Text(cStatic, field).value_or(L"");
    const std::size_t twelve = gains.find(L"0c00");
    ASSERT_NE(std::wstring::npos, twelve) << gains.size();
    RawStore::SetText(cStatic, field, gains.replace(twelve, 4, L"1400"));
    ASSERT_NO_FATAL_FAILURE(Start());
    EXPECT_EQ(L"+20.0", Panel().Text(eGainField));
    EXPECT_EQ(L"+20.0 dB (off scale)", ValueOf(1));
    EXPECT_EQ(L"0.0 dB", ValueOf(2));
    Panel().TabTo(eEqualizer);
    Press(VK_NEXT);
    EXPECT_TRUE(GainBecomes(0, 12));
    EXPECT_TRUE(Panel().StatusBecomes(L"Graphic equalizer: done."));
    Press('Z', {VK_CONTROL});
    EXPECT_TRUE(Panel().StatusBecomes(L"Undo: what was there before cannot be set again."));
    EXPECT_EQ(12, Gain(0));
}

}  // namespace
}  // namespace kora4::test
