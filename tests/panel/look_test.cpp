// SPDX-License-Identifier: MIT
// What stands on the display: nothing cut off, nothing on top of something else, nothing blank,
// at each resolution and in both languages. The pictures are kept in the working folder.
#include <windows.h>

#include <algorithm>
#include <optional>
#include <set>

#include "panel/panel_fixture.h"
#include "panel/pictures.h"

namespace kora4::test {
namespace {

using namespace ::panel;

// The resolution of the display, for programs that start in the scope.
class Resolution {
  public:
    explicit Resolution(DWORD dpi) { Set(dpi); }
    ~Resolution() { Set(USER_DEFAULT_SCREEN_DPI); }
    Resolution(const Resolution&) = delete;
    Resolution& operator=(const Resolution&) = delete;

  private:
    static void Set(DWORD dpi) {
        RegSetKeyValueW(HKEY_CURRENT_USER, L"Control Panel\\Desktop", L"LogPixels", REG_DWORD,
                        &dpi, sizeof dpi);
    }
};

// The font of the panel at a resolution.
class PanelFont {
  public:
    explicit PanelFont(UINT dpi) {
        NONCLIENTMETRICSW metrics{};
        metrics.cbSize = sizeof metrics;
        SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
        m_font = CreateFontIndirectW(&metrics.lfMessageFont);
        SelectObject(m_dc, m_font);
    }
    ~PanelFont() {
        DeleteDC(m_dc);
        DeleteObject(m_font);
    }
    PanelFont(const PanelFont&) = delete;
    PanelFont& operator=(const PanelFont&) = delete;

    SIZE Measure(const std::wstring& text, LONG width, UINT flags) const {
        RECT box{0, 0, width, 0};
        DrawTextW(m_dc, text.c_str(), -1, &box, DT_CALCRECT | flags);
        return {box.right, box.bottom};
    }

  private:
    const HDC m_dc = CreateCompatibleDC(nullptr);
    HFONT m_font = nullptr;
};

RECT PlaceOf(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

std::vector<HWND> VisibleControls(HWND window) {
    std::vector<HWND> controls;
    for (HWND control = GetWindow(window, GW_CHILD); control;
         control = GetWindow(control, GW_HWNDNEXT))
        if (IsWindowVisible(control))
            controls.push_back(control);
    return controls;
}

std::wstring ClassOf(HWND window) {
    wchar_t name[64] = L"";
    GetClassNameW(window, name, std::size(name));
    return name;
}

// What a check box needs beside its text, and a button, at 96 dpi.
LONG EdgeOf(HWND control) {
    if (ClassOf(control) != L"Button")
        return 0;
    return (GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK) == BS_AUTOCHECKBOX ? 17 : 8;
}

// The height of a button is that of a line of its text and 12 pixels at 96 dpi.
void ExpectResolution(const PanelProcess& panel, UINT dpi) {
    const RECT button = PlaceOf(panel.Control(eNewButton));
    const LONG line = PanelFont(dpi).Measure(L"Wg", 0, DT_SINGLELINE).cy;
    EXPECT_EQ(line + MulDiv(12, static_cast<int>(dpi), USER_DEFAULT_SCREEN_DPI),
              button.bottom - button.top);
}

void ExpectTextsFit(const PanelProcess& panel, UINT dpi) {
    const PanelFont font(dpi);
    for (const HWND control : VisibleControls(panel.Window())) {
        const std::wstring name = ClassOf(control);
        if (name != L"Button" && name != L"Static")
            continue;
        const std::wstring text = WindowText(control);
        const RECT place = PlaceOf(control);
        const LONG width = place.right - place.left;
        const int id = GetDlgCtrlID(control);
        const bool isLines = id == eStatusText || id == eBannerText;
        const SIZE need =
            font.Measure(text, width, isLines ? DT_WORDBREAK | DT_NOPREFIX : DT_SINGLELINE);
        const LONG edge = EdgeOf(control) * static_cast<LONG>(dpi) / USER_DEFAULT_SCREEN_DPI;
        EXPECT_LE(need.cx + edge, width) << id;
        EXPECT_LE(need.cy, place.bottom - place.top) << id;
    }
}

void ExpectNothingOverlaps(const PanelProcess& panel) {
    RECT client{};
    GetClientRect(panel.Window(), &client);
    MapWindowPoints(panel.Window(), nullptr, reinterpret_cast<POINT*>(&client), 2);
    const std::vector<HWND> controls = VisibleControls(panel.Window());
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const RECT place = PlaceOf(controls[i]);
        EXPECT_FALSE(IsRectEmpty(&place)) << GetDlgCtrlID(controls[i]);
        RECT common{};
        IntersectRect(&common, &place, &client);
        EXPECT_TRUE(EqualRect(&common, &place)) << GetDlgCtrlID(controls[i]) << " sticks out";
        for (std::size_t j = 0; j < i; ++j) {
            const RECT other = PlaceOf(controls[j]);
            EXPECT_FALSE(IntersectRect(&common, &place, &other))
                << GetDlgCtrlID(controls[i]) << " and " << GetDlgCtrlID(controls[j]);
        }
    }
}

void ExpectNothingIsBlank(const PanelProcess& panel) {
    EXPECT_LT(10u, StillPicture(panel.Window()).Colors());
    for (const HWND control : VisibleControls(panel.Window())) {
        if (!WindowText(control).empty() || ClassOf(control).starts_with(L"KORA4")) {
            EXPECT_LT(1u, TakePicture(control).Colors()) << GetDlgCtrlID(control);
        }
    }
}

class PanelLook : public PanelTest {
  protected:
    void SetUp() override {
        SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
        PanelTest::SetUp();
    }
    void LookClosely(UINT dpi) {
        ExpectTextsFit(Panel(), dpi);
        ExpectNothingOverlaps(Panel());
        ExpectNothingIsBlank(Panel());
    }
    // At the smallest size, where it is tightest.
    void MakeSmall() {
        SetWindowPos(Panel().Window(), nullptr, 10, 10, 100, 100, SWP_NOZORDER);
    }
};

TEST_F(PanelLook, CutsNothingOffAtAnyResolutionAndInEitherLanguage) {
    // The longest value that can be shown.
    RawStore::SetNumber(cStatic, PatchName(RawTechnology::eVolume, KORA4_PROFILE_MOVIE, 3),
                        0xFFFFFFFF);
    for (const UINT dpi : {96u, 144u, 192u}) {
        const Resolution resolution(dpi);
        for (const char* language : {"en", "de"}) {
            const std::string name = std::to_string(dpi) + "-" + language;
            SCOPED_TRACE(name);
            ASSERT_TRUE(Others().ForceRevertFromDemoMode());
            ASSERT_NO_FATAL_FAILURE(Start({"--language", language}));
            ExpectResolution(Panel(), dpi);
            MakeSmall();
            EXPECT_TRUE(
                Panel().Text(IdFor(eValueText, eVolumeLeveler)).starts_with(L"4294967295 ("));
            LookClosely(dpi);
            ASSERT_TRUE(Others().SetDemoProfileAndEnable(KORA4_PROFILE_DEMO_MOVIE, true));
            EXPECT_TRUE(Becomes([&] { return Panel().IsVisible(eBannerButton); }));
            MakeSmall();
            LookClosely(dpi);
            SavePicture(TakePicture(Panel().Window()),
                        L"panel-" + std::wstring(name.begin(), name.end()) + L".bmp");
            m_panel.reset();
        }
    }
}

// Rows, from the first to behind the last, in which something stands out from the background
// between two columns.
std::vector<std::pair<int, int>> RowsBetween(const Picture& picture, int left, int right) {
    const std::uint32_t background = picture.At(1, 1);
    std::vector<std::pair<int, int>> runs;
    for (int y = 1; y < picture.height - 1; ++y) {
        bool stands = false;
        for (int x = left; x < right; ++x)
            stands = stands || picture.At(x, y) != background;
        if (stands && !runs.empty() && runs.back().second == y)
            ++runs.back().second;
        else if (stands)
            runs.push_back({y, y + 1});
    }
    return runs;
}

TEST_F(PanelLook, WritesAtTheLevelsWhatTheyAre) {
    struct {
        const char* language;
        const wchar_t* bars;
        const wchar_t* marks;
    } const texts[] = {{"en", L"Level, dB", L"Gain, dB"},
                       {"de", L"Pegel, dB", L"Verst\u00E4rkung, dB"}};
    RunningTool engine("kora4sim", {"--for", "120", "--quiet", "--seed", "1"});
    for (const int dpi : {96, 144, 192}) {
        const Resolution resolution(static_cast<DWORD>(dpi));
        const auto scaled = [&](int length) {
            return MulDiv(length, dpi, USER_DEFAULT_SCREEN_DPI);
        };
        const PanelFont font(static_cast<UINT>(dpi));
        const auto widthOf = [&](const wchar_t* text) {
            return static_cast<int>(font.Measure(text, 0, DT_SINGLELINE).cx);
        };
        for (const auto& [language, bars, marks] : texts) {
            const std::string name = std::to_string(dpi) + "-" + language;
            SCOPED_TRACE(name);
            ASSERT_NO_FATAL_FAILURE(Start({"--language", language}));
            MakeSmall();
            const int legend = widthOf(L"-48") + scaled(12);
            // Behind the last word of the legend.
            const int end = legend + scaled(40) + widthOf(bars) + widthOf(marks);
            Picture picture;
            EXPECT_TRUE(Becomes([&] {
                picture = TakePicture(Panel().Control(eLevels));
                return !RowsBetween(picture, end - scaled(8), end).empty();
            }));
            SavePicture(picture, L"levels-" + std::wstring(name.begin(), name.end()) + L".bmp");
            EXPECT_LT(end, picture.width);
            EXPECT_TRUE(RowsBetween(picture, 1, scaled(3)).empty()) << "cut off at the left";
            // Numbers of one height, none cut off and none touching another.
            const auto numbers = RowsBetween(picture, scaled(3), legend - scaled(7));
            EXPECT_LE(3u, numbers.size());
            for (const auto& [top, bottom] : numbers) {
                EXPECT_NEAR(numbers[0].second - numbers[0].first, bottom - top, 1);
                EXPECT_LT(scaled(6), bottom - top);
                EXPECT_LT(1, top);
                EXPECT_GT(picture.height - 1, bottom);
            }
            // The words, above the upper edge of the scale.
            const auto words = RowsBetween(picture, end - scaled(8), end);
            ASSERT_FALSE(words.empty());
            EXPECT_GE(numbers[0].first + scaled(4), words[0].second);
            m_panel.reset();
        }
    }
    engine.Kill();
}

// How many pixels differ in the upper halves, where no letter is underlined, when one picture
// is moved to where it fits best.
int Difference(const Picture& one, const Picture& other, bool isMirrored) {
    constexpr int cMoves = 3;
    int least = one.width * one.height;
    for (int move = -cMoves; move <= cMoves; ++move) {
        int count = 0;
        for (int y = cMoves; y < one.height / 2; ++y)
            for (int x = 2 * cMoves; x < one.width - 2 * cMoves; ++x)
                count +=
                    one.At(x, y) != other.At((isMirrored ? one.width - 1 - x : x) + move, y);
        least = std::min(least, count);
    }
    return least;
}

TEST_F(PanelLook, IsCompleteInDarkColorsAndFromRightToLeft) {
    struct {
        const char* colors;
        const char* layout;
        const wchar_t* picture;
    } const looks[] = {{"dark", "ltr", L"panel-dark.bmp"},
                       {"light", "rtl", L"panel-rtl.bmp"},
                       {"dark", "rtl", L"panel-dark-rtl.bmp"}};
    std::optional<Picture> button;
    for (const auto& [colors, layout, picture] : looks) {
        SCOPED_TRACE(std::string(colors) + " " + layout);
        ASSERT_NO_FATAL_FAILURE(
            Start({"--language", "en", "--colors", colors, "--layout", layout}));
        LookClosely(96);
        const Picture present = TakePicture(Panel().Control(eNewButton));
        const bool isDark = (present.At(5, 3) & 0xFF) < 0x80;
        EXPECT_EQ(colors == std::string("dark"), isDark);
        // The letters read from left to right in either layout.
        if (isDark && button) {
            ASSERT_EQ(button->width, present.width);
            EXPECT_LT(Difference(present, *button, false), Difference(present, *button, true));
        }
        if (isDark)
            button = present;
        const RECT enable = PlaceOf(Panel().Control(eEnableBox));
        const RECT revert = PlaceOf(Panel().Control(eRevertButton));
        EXPECT_EQ(layout == std::string("rtl"), enable.left > revert.right);
        SavePicture(TakePicture(Panel().Window()), picture);
        m_panel.reset();
    }
}

TEST_F(PanelLook, FollowsTheResolutionOfTheMonitorItIsMovedTo) {
    ASSERT_NO_FATAL_FAILURE(Start());
    // What the platform sends; its rectangle has to be in the panel's memory.
    const HANDLE process =
        OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_WRITE, FALSE, Panel().ProcessId());
    void* const pPlace = VirtualAllocEx(process, nullptr, sizeof(RECT),
                                        MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    const RECT place{20, 20, 1820, 1220};
    ASSERT_TRUE(WriteProcessMemory(process, pPlace, &place, sizeof place, nullptr));
    constexpr UINT cDouble = 2 * USER_DEFAULT_SCREEN_DPI;
    SendMessageW(Panel().Window(), WM_DPICHANGED, MAKEWPARAM(cDouble, cDouble),
                 reinterpret_cast<LPARAM>(pPlace));
    CloseHandle(process);
    ExpectResolution(Panel(), cDouble);
    ExpectTextsFit(Panel(), cDouble);
    ExpectNothingOverlaps(Panel());
}

TEST_F(PanelLook, MovesTheCurveAndFollowsAlsoWhileItIsMinimised) {
    ASSERT_NO_FATAL_FAILURE(Start());
    const Picture flat = StillPicture(Panel().Control(eEqualizer));
    Bands bands = *Others().GetGraphicEQData();
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i].gain = i % 2 ? 8.0f : -8.0f;
    ASSERT_TRUE(Others().SetGraphicEQData(bands));
    EXPECT_TRUE(Panel().StatusBecomes(L"Another program"));
    EXPECT_TRUE(Becomes([&] { return !(flat == StillPicture(Panel().Control(eEqualizer))); }));
    ShowWindow(Panel().Window(), SW_MINIMIZE);
    EXPECT_TRUE(Becomes([&] { return IsIconic(Panel().Window()) != FALSE; }));
    EXPECT_TRUE(Others().SetVeltoEnable(false));
    EXPECT_TRUE(Becomes([&] { return !Panel().IsChecked(eEnableBox); }));
    ShowWindow(Panel().Window(), SW_RESTORE);
    EXPECT_TRUE(Becomes([&] { return !IsIconic(Panel().Window()); }));
    SetForegroundWindow(Panel().Window());
}

TEST_F(PanelLook, ShowsLevelsAsTheyCome) {
    // A profile that somebody has made their own: this is the picture of the manual.
    ASSERT_TRUE(Others().CreateCustomProfile(KORA4_PROFILE_P1, L"Evening"));
    ASSERT_TRUE(Others().SetActiveProfile(KORA4_PROFILE_P1));
    ASSERT_TRUE(Others().SetVolumeLeveler(4));
    ASSERT_TRUE(Others().SetHeadphoneVirtualizer(2.5f));
    Bands bands = *Others().GetGraphicEQData();
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i].gain =
            static_cast<float>((i < 5 ? 4 - static_cast<int>(i) : static_cast<int>(i) - 6));
    ASSERT_TRUE(Others().SetGraphicEQData(bands));
    ASSERT_NO_FATAL_FAILURE(Start());
    const HWND levels = Panel().Control(eLevels);
    const Picture silent = StillPicture(levels);
    RunningTool engine("kora4sim", {"--for", "60", "--quiet", "--seed", "1"});
    std::set<std::vector<std::uint32_t>> pictures;
    EXPECT_TRUE(Becomes([&] {
        Picture now = TakePicture(levels);
        if (!(now == silent))
            pictures.insert(std::move(now.pixels));
        return pictures.size() >= 5;
    })) << pictures.size();
    // A small square of the middle that is blank in between would be a flicker: what is behind
    // the bars is never seen alone.
    for (const auto& pixels : pictures)
        EXPECT_LT(2u, (Picture{1, static_cast<int>(pixels.size()), pixels}.Colors()));
    SavePicture(TakePicture(Panel().Window()), L"panel-levels.bmp");
    engine.Kill();
}

}  // namespace
}  // namespace kora4::test
