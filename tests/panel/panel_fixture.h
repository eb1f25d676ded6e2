// SPDX-License-Identifier: MIT
// The real panel as a person has it in front of them: in a process of its own, on a display,
// with a keyboard and a mouse; and as another program sees the same store.
#ifndef KORA4_TESTS_PANEL_PANEL_FIXTURE_H
#define KORA4_TESTS_PANEL_PANEL_FIXTURE_H

#include <gtest/gtest.h>
#include <kora4.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "panel/window/control_ids.h"
#include "support/desktop_hold.h"
#include "support/raw_store.h"
#include "support/registry_fixture.h"
#include "tools/support/tool_process.h"

namespace kora4::test {

// Milliseconds. Nothing that works takes nearly as long, on a busy machine either.
inline constexpr DWORD cPanelWait = 20000;

// Whether it becomes so in time.
bool Becomes(const std::function<bool()>& isSo, DWORD milliseconds = cPanelWait);
// A text of a window of any process.
std::wstring WindowText(HWND window);
// Sent as by a person, to the window that has the keyboard.
void Press(WORD key, std::initializer_list<WORD> held = {});
void Type(const std::wstring& text);

// What a panel remembers from one start to the next is forgotten for the length of a scope.
class ForgottenPanel {
  public:
    ForgottenPanel() { Forget(); }
    ~ForgottenPanel() { Forget(); }
    ForgottenPanel(const ForgottenPanel&) = delete;
    ForgottenPanel& operator=(const ForgottenPanel&) = delete;

  private:
    static void Forget();
};

// One running panel.
class PanelProcess {
  public:
    explicit PanelProcess(const std::vector<std::string>& options = {"--language", "en"});
    // Closes it, as its user would, and expects that it ends with success.
    ~PanelProcess();
    PanelProcess(const PanelProcess&) = delete;
    PanelProcess& operator=(const PanelProcess&) = delete;

    HWND Window() const { return m_window; }
    HWND Control(int id) const { return GetDlgItem(m_window, id); }
    DWORD ProcessId() const { return m_program->ProcessId(); }

    std::wstring Text(int id) const { return WindowText(Control(id)); }
    bool IsChecked(int id) const;
    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
    bool IsVisible(int id) const { return IsWindowVisible(Control(id)) != FALSE; }
    LRESULT Position(int id) const;     // of a slider
    std::wstring Chosen(int id) const;  // of a list
    std::wstring Status() const { return Text(panel::eStatusText); }
    bool StatusBecomes(const std::wstring& part) const;
    // It has read the store: its controls can be used.
    bool IsReady() const { return IsEnabled(panel::eEnableBox); }

    // Takes the keyboard there with the Tab key.
    void TabTo(int id) const;
    int Focused() const;  // the id, 0 when the keyboard is elsewhere
    bool FocusBecomes(int id) const;
    void Click(int id) const { PostMessageW(Control(id), BM_CLICK, 0, 0); }
    // A dialog of this panel, once it is there.
    HWND Dialog() const;
    bool ForegroundBecomes(HWND window) const;
    // A menu is open.
    bool HasMenu() const;

  private:
    std::unique_ptr<RunningTool> m_program;
    HWND m_window = nullptr;
};

class PanelTest : public testing::Test {
  protected:
    void SetUp() override;
    void Start(const std::vector<std::string>& options = {"--language", "en"});

    // The pointer, in pixels of the display, and then the button.
    static void MouseAt(double left, double top, DWORD button = 0);

    kora4::Api& Others() { return *m_api; }
    PanelProcess& Panel() { return *m_panel; }

    RawStore m_store;
    RegisteredLibrary m_registered;
    DesktopHold m_desktop;
    ForgottenPanel m_forgotten;
    ApartmentGuard m_apartment{ApartmentKind::eMultithreaded};
    Result<Api> m_api = Api::Open();
    std::unique_ptr<PanelProcess> m_panel;
};

// Of the control of a technology.
constexpr int IdFor(int first, KORA4APITechnology technology) {
    return first + static_cast<int>(technology);
}

}  // namespace kora4::test

#endif  // KORA4_TESTS_PANEL_PANEL_FIXTURE_H
