// SPDX-License-Identifier: MIT
// Starting, looking at and operating the panel.
#include "panel/panel_fixture.h"

#include <commctrl.h>

#include <cmath>

namespace kora4::test {

namespace {

constexpr wchar_t cOwnKey[] = L"Software\\Velto\\KORA4Panel";

// Its answer, or 0 when the window does not answer: then something blocks it.
LRESULT Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, cPanelWait, &answer);
    return static_cast<LRESULT>(answer);
}

INPUT Key(WORD key, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.dwFlags = flags;
    return input;
}

GUITHREADINFO ThreadOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info;
}

}  // namespace

bool Becomes(const std::function<bool()>& isSo, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!isSo()) {
        if (GetTickCount64() > end)
            return false;
        Sleep(2);
    }
    return true;
}

std::wstring WindowText(HWND window) {
    wchar_t text[1024] = L"";
    Ask(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
    return text;
}

void Press(WORD key, std::initializer_list<WORD> held) {
    std::vector<INPUT> inputs;
    for (const WORD modifier : held)
        inputs.push_back(Key(modifier, 0));
    inputs.push_back(Key(key, 0));
    inputs.push_back(Key(key, KEYEVENTF_KEYUP));
    for (const WORD modifier : held)
        inputs.push_back(Key(modifier, KEYEVENTF_KEYUP));
    EXPECT_EQ(inputs.size(),
              SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)));
}

void Type(const std::wstring& text) {
    for (const wchar_t letter : text) {
        INPUT input = Key(0, KEYEVENTF_UNICODE);
        input.ki.wScan = letter;
        SendInput(1, &input, sizeof input);
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
        SendInput(1, &input, sizeof input);
    }
}

void ForgottenPanel::Forget() {
    RemoveKey(HKEY_CURRENT_USER, cOwnKey);
}

PanelProcess::PanelProcess(const std::vector<std::string>& options)
    : m_program(std::make_unique<RunningTool>("KORA4Panel", options)) {
    EXPECT_TRUE(Becomes([this] {
        m_window = FindWindowW(panel::cPanelClass, nullptr);
        return m_window && IsWindowVisible(m_window);
    }));
    SetForegroundWindow(m_window);
}

PanelProcess::~PanelProcess() {
    PostMessageW(m_window, WM_CLOSE, 0, 0);
    EXPECT_EQ(0u, m_program->WaitForEnd(cPanelWait).exitCode);
}

bool PanelProcess::IsChecked(int id) const {
    return Ask(Control(id), BM_GETCHECK) == BST_CHECKED;
}

std::wstring PanelProcess::Chosen(int id) const {
    wchar_t text[1024] = L"";
    const LRESULT index = Ask(Control(id), CB_GETCURSEL);
    if (index >= 0)
        Ask(Control(id), CB_GETLBTEXT, static_cast<WPARAM>(index),
            reinterpret_cast<LPARAM>(text));
    return text;
}

bool PanelProcess::StatusBecomes(const std::wstring& part) const {
    return Becomes([&] { return Status().find(part) != std::wstring::npos; });
}

LRESULT PanelProcess::Position(int id) const {
    return Ask(Control(id), TBM_GETPOS);
}

void PanelProcess::TabTo(int id) const {
    constexpr int cMost = 60;
    // A dialog that has just closed may not have given the keyboard back yet.
    Becomes([&] { return Focused() != 0; }, 1000);
    for (int i = 0; i < cMost; ++i) {
        // A key that was pressed before may still be on its way.
        if (Focused() == id)
            Sleep(50);
        const int before = Focused();
        if (before == id)
            return;
        Press(VK_TAB);
        Becomes([&] { return Focused() != before; }, 1000);
    }
    ADD_FAILURE() << "the Tab key does not reach " << id;
}

int PanelProcess::Focused() const {
    const HWND focus = ThreadOf(m_window).hwndFocus;
    return focus && GetParent(focus) == m_window ? GetDlgCtrlID(focus) : 0;
}

bool PanelProcess::FocusBecomes(int id) const {
    return Becomes([&] { return Focused() == id; });
}

HWND PanelProcess::Dialog() const {
    HWND dialog = nullptr;
    Becomes([&] {
        const HWND active = ThreadOf(m_window).hwndActive;
        dialog = active != m_window ? active : nullptr;
        return dialog && GetForegroundWindow() == dialog;
    });
    return dialog;
}

bool PanelProcess::ForegroundBecomes(HWND window) const {
    return Becomes([&] { return GetForegroundWindow() == window; });
}

bool PanelProcess::HasMenu() const {
    return (ThreadOf(m_window).flags & GUI_INMENUMODE) != 0;
}

void PanelTest::MouseAt(double left, double top, DWORD button) {
    // The middle of the pixel.
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dx = std::lround((left + 0.5) * 65536 / GetSystemMetrics(SM_CXSCREEN));
    input.mi.dy = std::lround((top + 0.5) * 65536 / GetSystemMetrics(SM_CYSCREEN));
    input.mi.dwFlags = MOUSEEVENTF_ABSOLUTE | MOUSEEVENTF_MOVE;
    // The display under Wine may tell once more where the mouse was before, and puts it
    // back there: that must not come when the button is down already.
    constexpr DWORD cSettled = 100;
    EXPECT_TRUE(Becomes([&] {
        EXPECT_EQ(1u, SendInput(1, &input, sizeof input));
        Sleep(cSettled);
        POINT place{};
        GetCursorPos(&place);
        return place.x == std::lround(left) && place.y == std::lround(top);
    }));
    // With the place, in case that comes all the same.
    input.mi.dwFlags |= button;
    if (button != 0) {
        EXPECT_EQ(1u, SendInput(1, &input, sizeof input));
    }
}

void PanelTest::SetUp() {
    ASSERT_TRUE(m_api) << m_api.Text();
    ASSERT_TRUE(m_desktop.IsHeld());
}

void PanelTest::Start(const std::vector<std::string>& options) {
    m_panel = std::make_unique<PanelProcess>(options);
    ASSERT_NE(nullptr, Panel().Window());
    ASSERT_TRUE(Becomes([this] { return Panel().IsReady(); })) << "the panel did not connect";
}

}  // namespace kora4::test
