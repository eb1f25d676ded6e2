// SPDX-License-Identifier: MIT
// The window of the panel: creates its controls, shows the session in them, and turns what its
// user does into commands for the worker. It makes no call of the library and never waits.
#ifndef KORA4_PANEL_WINDOW_MAIN_WINDOW_H
#define KORA4_PANEL_WINDOW_MAIN_WINDOW_H

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "panel/model/session.h"
#include "panel/window/control_ids.h"
#include "panel/window/dark_button.h"
#include "panel/window/equalizer_view.h"
#include "panel/window/level_view.h"
#include "panel/window/memory.h"
#include "panel/window/strings.h"
#include "panel/window/theme.h"
#include "panel/window/tray_icon.h"
#include "panel/worker/worker.h"

namespace panel {

struct PanelOptions {
    Language language = Strings::OfUser();
    bool isRightToLeft = Strings::IsUserRightToLeft();
    std::optional<ColorChoice> colors;  // in place of what is remembered
};

class MainWindow {
  public:
    explicit MainWindow(const PanelOptions& options);
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    // Shows the window and returns when it is closed.
    int Run(int show);

  private:
    // A control and the width that it needs; one of a row takes what is left.
    struct Cell {
        int id;
        int width;
        bool grows = false;
    };
    using Row = std::vector<Cell>;

    // ---- main_window.cpp: life and messages
    void Create();
    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> HandleFrame(UINT message, WPARAM wParam, LPARAM lParam);
    std::optional<LRESULT> HandlePlace(UINT message, WPARAM wParam, LPARAM lParam);
    void KeepLeast() const;
    LRESULT OnColor(HDC dc, HWND control, bool isField) const;
    void OnReport(std::unique_ptr<Report> pReport);
    void NoteRefusal(const Command& command, bool isRefused);
    void OnBusy(bool isBusy);
    void OnTray(UINT message);
    void ShowTray();
    void Activate();
    void UpdateLevels();
    void KeepFocus();
    void TakeFocus();
    HWND Control(int id) const;

    // ---- main_window_layout.cpp: controls and their places
    void MakeControls();
    void MakeControl(const wchar_t* windowClass, int id, UINT text, DWORD style);
    void NameForReaders() const;
    void UseFont();
    void UseColors();
    void Arrange();
    SIZE Least(int dpi);
    Row HeadRow() const;
    Row TechnologyRow(Technology technology) const;
    Row BandRow() const;
    Row CurveRow() const;
    Row FootRow() const;
    int WidthOf(const Row& row) const;
    int ButtonWidth(UINT text) const;
    int BoxWidth(UINT text) const;
    int LabelWidth(UINT text) const;
    int LeftWidth() const;
    int BannerHeight(int width) const;
    int RowHeight() const;
    void Place(HWND control, const RECT& place) const;
    void PlaceList(HWND list, const RECT& place) const;
    RECT PlaceOf(HWND control) const;  // in the window
    void PlaceRow(const Row& row, int left, int right, int top, int height);

    // ---- main_window_show.cpp: the session in the controls
    void ShowAll();
    void ShowProfiles(const Settings& shown);
    void ShowTechnology(const Settings& shown, Technology technology);
    void ShowEqualizer(const Settings& shown);
    void ShowBands(const Settings& shown);
    void ShowGain();
    void ShowEnabled(const Settings& shown);
    void ShowBanner();
    void ShowStatus();
    void ShowText(int id, const std::wstring& text) const;
    void ShowChecked(int id, bool isChecked) const;
    void Enable(int id, bool isEnabled) const;
    std::wstring ProfileName(const Settings& settings, long profile) const;
    std::wstring BannerText() const;
    std::wstring ActionText(const Command& command) const;
    std::wstring AnswerText(const Answer& answer) const;
    std::wstring CodeText(HRESULT code) const;
    std::wstring SubjectName(const Item& item) const;
    bool IsConnected() const { return m_connection && m_connection->code == S_OK; }

    // ---- main_window_actions.cpp: what the user does
    void OnCommand(int id, int event);
    void OnButton(int id);
    void OnList(int id, int event);
    void OnScroll(HWND slider, int event);
    void ChooseOf(int id, std::size_t chosen, bool isPicked);
    void OnEnter();
    void OnEscape();
    void Want(Items items, unsigned gesture = 0);
    void Want(Item item, unsigned gesture = 0) { Want(Items{std::move(item)}, gesture); }
    void Ask(Command command);
    void ChooseProfile(long profile);
    void NewProfile();
    void RenameProfile();
    void DeleteProfile();
    void CommitGain();
    void MoveBand(std::size_t band, double gain, bool isDrag);
    void TransferFile(bool isImport);
    void UndoLast(Origin origin);
    void PressBanner();
    void ShowMoreMenu();
    void OnMenu(int id);
    void Say(std::wstring status);
    Command Make(Action action) const;

    const Strings m_strings;
    const bool m_isRightToLeft;
    Theme m_theme;
    Scale m_scale;
    const ButtonLook m_look{m_theme, m_scale};
    const Memory m_memory{};
    EqualizerView m_equalizer{m_theme, m_scale, m_strings};
    LevelView m_levelView{m_theme, m_scale, m_strings};
    HWND m_window = nullptr;
    // By their ids; looked for once, because everything that is shown begins with it.
    mutable std::array<HWND, eMoreButton - eEnableBox + 1> m_controls{};
    HICON m_icon = nullptr;
    TrayIcon m_tray;
    UINT m_trayMade = 0;  // the message that the notification area is new

    Session m_session;
    std::optional<Connection> m_connection;  // none before the first answer
    std::optional<LevelsRead> m_levels;
    std::vector<Command> m_refused;  // by the store; done again when the user says so
    std::wstring m_status;
    Past m_past;
    unsigned m_asked = 0;              // the number of the last command
    std::optional<Command> m_pending;  // the last one that shows in no control, unanswered
    bool m_isKeyHeld = false;          // the one whose message is handled
    bool m_isBusy = false;             // the worker
    bool m_isWaiting = false;          // for another program
    int m_heldSlider = 0;
    unsigned m_gesture = 1;
    // What the lists were filled for; an open one keeps its content.
    std::optional<Settings> m_listedProfiles;
    std::optional<kora4::Bands> m_listedBands;
    bool m_isPicked = false;  // a line of the list that was opened last
    // Whose gain the field shows.
    long m_gainProfile = 0;
    kora4::Band m_gainBand;
    HWND m_lastFocus = nullptr;  // that had the keyboard when the window lost it

    std::unique_ptr<Worker> m_worker;
};

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_MAIN_WINDOW_H
