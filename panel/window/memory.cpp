// SPDX-License-Identifier: MIT
// The panel's own registry key.
#include "panel/window/memory.h"

#include <shellscalingapi.h>

#include <algorithm>

#include "panel/model/place.h"
#include "panel/window/strings.h"

namespace panel {

namespace {

constexpr wchar_t cKey[] = L"Software\\Velto\\KORA4Panel";
constexpr wchar_t cLastMonitor[] = L"Monitor";

std::wstring PlaceName(const std::wstring& monitor) {
    return L"Place " + monitor;
}

Area ToArea(const RECT& rect) {
    return {static_cast<int>(rect.left), static_cast<int>(rect.top),
            static_cast<int>(rect.right), static_cast<int>(rect.bottom)};
}

}  // namespace

DWORD Memory::Number(const wchar_t* name, DWORD first) const {
    DWORD number = first;
    DWORD size = sizeof number;
    const LSTATUS status =
        RegGetValueW(HKEY_CURRENT_USER, cKey, name, RRF_RT_REG_DWORD, nullptr, &number, &size);
    return status == ERROR_SUCCESS ? number : first;
}

void Memory::SetNumber(const wchar_t* name, DWORD number) const {
    RegSetKeyValueW(HKEY_CURRENT_USER, cKey, name, REG_DWORD, &number, sizeof number);
}

std::wstring Memory::Text(const std::wstring& name) const {
    wchar_t text[MAX_PATH] = L"";
    DWORD size = sizeof text;
    const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, cKey, name.c_str(), RRF_RT_REG_SZ,
                                        nullptr, text, &size);
    return status == ERROR_SUCCESS ? text : L"";
}

void Memory::SetText(const std::wstring& name, const std::wstring& text) const {
    RegSetKeyValueW(HKEY_CURRENT_USER, cKey, name.c_str(), REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

Memory::Monitor Memory::About(HMONITOR monitor) {
    MONITORINFOEXW info{};
    info.cbSize = sizeof info;
    GetMonitorInfoW(monitor, &info);
    UINT x = USER_DEFAULT_SCREEN_DPI;
    UINT y = USER_DEFAULT_SCREEN_DPI;
    GetDpiForMonitor(monitor, MDT_EFFECTIVE_DPI, &x, &y);
    return {info.szDevice, info.rcWork, static_cast<int>(x)};
}

Memory::Monitor Memory::LastMonitor() const {
    struct Search {
        std::wstring name;
        HMONITOR found;
    };
    Search search{Text(cLastMonitor), MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY)};
    const auto look = [](HMONITOR monitor, HDC, LPRECT, LPARAM pSearch) -> BOOL {
        auto& wanted = *reinterpret_cast<Search*>(pSearch);
        if (About(monitor).name == wanted.name)
            wanted.found = monitor;
        return TRUE;
    };
    EnumDisplayMonitors(nullptr, nullptr, look, reinterpret_cast<LPARAM>(&search));
    return About(search.found);
}

void Memory::SavePlace(HWND window) const {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    // The place without being minimised or maximised; its coordinates leave out task bars at
    // the upper and left edge.
    if (!GetWindowPlacement(window, &placement))
        return;
    const Monitor monitor = About(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST));
    RECT& place = placement.rcNormalPosition;
    if (IsIconic(window) || IsZoomed(window)) {
        MONITORINFO info{};
        info.cbSize = sizeof info;
        GetMonitorInfoW(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY), &info);
        OffsetRect(&place, info.rcWork.left - info.rcMonitor.left,
                   info.rcWork.top - info.rcMonitor.top);
    } else {
        GetWindowRect(window, &place);
    }
    SetText(cLastMonitor, monitor.name);
    SetText(PlaceName(monitor.name),
            Widen(PlaceText(ToArea(place), ToArea(monitor.workArea), monitor.dpi)));
}

RECT Memory::PlaceOn(const Monitor& monitor, SIZE least, SIZE usual) const {
    const Area workArea = ToArea(monitor.workArea);
    const Point smallest{static_cast<int>(least.cx), static_cast<int>(least.cy)};
    const int width = std::max(static_cast<int>(usual.cx), smallest.x);
    const int height = std::max(static_cast<int>(usual.cy), smallest.y);
    const int left = workArea.left + (workArea.Width() - width) / 2;
    const int top = workArea.top + (workArea.Height() - height) / 2;
    const Area place =
        PlaceOf(Narrow(Text(PlaceName(monitor.name))), workArea, monitor.dpi, smallest)
            .value_or(MovedInto({left, top, left + width, top + height}, workArea, smallest));
    return {place.left, place.top, place.right, place.bottom};
}

}  // namespace panel
