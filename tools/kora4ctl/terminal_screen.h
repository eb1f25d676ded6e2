// A terminal that is drawn on in place.
#ifndef KORA4_TOOLS_KORA4CTL_TERMINAL_SCREEN_H
#define KORA4_TOOLS_KORA4CTL_TERMINAL_SCREEN_H

#include <windows.h>

#include <string>
#include <vector>

#include "common/output.h"

namespace kora4::tools {

// The cursor is hidden while it lives, and stands below the last picture afterwards.
class TerminalScreen {
  public:
    explicit TerminalScreen(Output& output);
    ~TerminalScreen();
    TerminalScreen(const TerminalScreen&) = delete;
    TerminalScreen& operator=(const TerminalScreen&) = delete;

    // False: it is no terminal, or one that cannot be drawn on.
    bool IsUsable() const { return m_isUsable; }

    // Room for a picture. The last column and the last line stay free: a character there
    // moves the lines up on some terminals.
    std::size_t Width() const { return m_output.Width() - 1; }
    std::size_t Height() const { return m_output.Height() - 1; }

    // In place of the last picture, in one piece; nothing when it is the same.
    void Show(const std::vector<std::string>& lines);

  private:
    Output& m_output;
    const HANDLE m_console;
    DWORD m_oldMode = 0;
    bool m_isUsable = false;
    std::size_t m_width = 0;  // of the terminal at the last picture; 0: there was none
    std::size_t m_height = 0;
    std::vector<std::string> m_shown;
};

}  // namespace kora4::tools

#endif  // KORA4_TOOLS_KORA4CTL_TERMINAL_SCREEN_H
