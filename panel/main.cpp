// SPDX-License-Identifier: MIT
// KORA4Panel: one window for each user's desktop; a second start brings the first one to the
// front.
#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <string_view>

#include "panel/window/main_window.h"

namespace {

// For tests, translators and screenshots; the desktop decides otherwise.
//   --language en|de   --layout ltr|rtl   --colors system|light|dark
panel::PanelOptions ReadOptions() {
    panel::PanelOptions options;
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; words && i + 1 < count; i += 2) {
        const std::wstring_view name = words[i];
        const std::wstring_view value = words[i + 1];
        if (name == L"--language")
            options.language =
                value == L"de" ? panel::Language::eGerman : panel::Language::eEnglish;
        if (name == L"--layout")
            options.isRightToLeft = value == L"rtl";
        if (name == L"--colors")
            options.colors = value == L"dark"    ? panel::ColorChoice::eDark
                             : value == L"light" ? panel::ColorChoice::eLight
                                                 : panel::ColorChoice::eSystem;
    }
    LocalFree(words);
    return options;
}

// False when there is a panel already; that comes to the front.
bool IsFirst() {
    // Not closed: it stands as long as the process.
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Local\\KORA4Panel");
    // Access is denied when the first one runs with higher rights.
    const DWORD error = GetLastError();
    if (error != (mutex ? ERROR_ALREADY_EXISTS : ERROR_ACCESS_DENIED))
        return true;
    if (const HWND window = FindWindowW(panel::cPanelClass, nullptr)) {
        // Not waiting: that one may hang.
        ShowWindowAsync(window, IsIconic(window) ? SW_RESTORE : SW_SHOW);
        SetForegroundWindow(window);
    }
    return false;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int show) {
    if (!IsFirst())
        return 0;
    // What the window needs of COM: accessibility and file dialogs. The library's object lives
    // in the worker's apartment.
    const kora4::ApartmentGuard apartment(kora4::ApartmentKind::eSingleThreaded);
    INITCOMMONCONTROLSEX controls{sizeof controls, ICC_STANDARD_CLASSES | ICC_BAR_CLASSES};
    InitCommonControlsEx(&controls);
    panel::MainWindow window(ReadOptions());
    return window.Run(show);
}
