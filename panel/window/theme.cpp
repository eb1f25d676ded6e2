// SPDX-License-Identifier: MIT
// Colours and lengths.
#include "panel/window/theme.h"

#include <dwmapi.h>
#include <uxtheme.h>

namespace panel {

namespace {

bool IsHighContrast() {
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

bool IsSystemDark() {
    DWORD isLight = 1;
    DWORD size = sizeof isLight;
    RegGetValueW(HKEY_CURRENT_USER,
                 L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
                 L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &isLight, &size);
    return isLight == 0;
}

COLORREF Mixed(COLORREF a, COLORREF b) {
    return RGB((GetRValue(a) + GetRValue(b)) / 2, (GetGValue(a) + GetGValue(b)) / 2,
               (GetBValue(a) + GetBValue(b)) / 2);
}

Palette SystemPalette(bool isHighContrast) {
    const COLORREF window = GetSysColor(COLOR_BTNFACE);
    const COLORREF text = GetSysColor(COLOR_BTNTEXT);
    const COLORREF field = GetSysColor(COLOR_WINDOW);
    const COLORREF accent = GetSysColor(COLOR_HIGHLIGHT);
    const COLORREF line = GetSysColor(isHighContrast ? COLOR_WINDOWTEXT : COLOR_BTNSHADOW);
    if (isHighContrast)
        return {window, text, text, field, line, line, accent, accent, window};
    const COLORREF warning = RGB(0xB0, 0x30, 0x00);
    const COLORREF muted = Mixed(window, text);
    return {window, text, muted, field, line, Mixed(line, field), accent, warning, window};
}

constexpr Palette cDark = {RGB(0x20, 0x20, 0x20), RGB(0xF0, 0xF0, 0xF0), RGB(0xA8, 0xA8, 0xA8),
                           RGB(0x2B, 0x2B, 0x2B), RGB(0x5A, 0x5A, 0x5A), RGB(0x42, 0x42, 0x42),
                           RGB(0x60, 0xB0, 0xFF), RGB(0xFF, 0xA0, 0x60), RGB(0x38, 0x38, 0x38)};

}  // namespace

Theme::~Theme() {
    DeleteObject(m_window);
    DeleteObject(m_field);
}

void Theme::Choose(ColorChoice choice) {
    m_choice = choice;
    const bool isHighContrast = IsHighContrast();
    m_isDark = !isHighContrast && (choice == ColorChoice::eDark ||
                                   (choice == ColorChoice::eSystem && IsSystemDark()));
    m_palette = m_isDark ? cDark : SystemPalette(isHighContrast);
    DeleteObject(m_window);
    DeleteObject(m_field);
    m_window = CreateSolidBrush(m_palette.window);
    m_field = CreateSolidBrush(m_palette.field);
}

void Theme::Dress(HWND control) const {
    // Without a visual style, controls take the colours that their window gives them.
    SetWindowTheme(control, m_isDark ? L"" : nullptr, m_isDark ? L"" : nullptr);
}

void Theme::DressFrame(HWND window) const {
    constexpr DWORD cDarkFrame = 20;  // DWMWA_USE_IMMERSIVE_DARK_MODE, newer than these headers
    const BOOL isDark = m_isDark;
    DwmSetWindowAttribute(window, cDarkFrame, &isDark, sizeof isDark);
}

Scale::~Scale() {
    DeleteDC(m_dc);
    DeleteObject(m_font);
}

void Scale::Use(int dpi) {
    m_dpi = dpi;
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    // The font of message boxes, with the size of texts that the user has chosen.
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                               static_cast<UINT>(dpi));
    const HFONT font = CreateFontIndirectW(&metrics.lfMessageFont);
    SelectObject(m_dc, font);
    DeleteObject(m_font);
    m_font = font;
    m_lineHeight = HeightOf(L"Wg", MAXSHORT);
}

SIZE Scale::Measured(const std::wstring& text, int width, UINT flags) const {
    RECT box{0, 0, width, 0};
    DrawTextW(m_dc, text.c_str(), static_cast<int>(text.size()), &box, DT_CALCRECT | flags);
    return {box.right, box.bottom};
}

int Scale::WidthOf(const std::wstring& text) const {
    return static_cast<int>(Measured(text, 0, DT_SINGLELINE).cx);
}

int Scale::HeightOf(const std::wstring& text, int width) const {
    return static_cast<int>(Measured(text, width, DT_WORDBREAK).cy);
}

}  // namespace panel
