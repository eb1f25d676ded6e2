// SPDX-License-Identifier: MIT
// A terminal that is drawn on in place.
#pragma once

#include <windows.h>

#include <vector>

#include "kora4ctl/terminal/styled_text.h"

namespace kora4::tools {

// Takes the terminal's window for as long as it lives; the cursor is hidden meanwhile, and
// stands below the last picture afterwards. Draws cell by cell instead of with control
// sequences, which some consoles count as columns.
class TerminalScreen {
  public:
    explicit TerminalScreen(const Output& output);
    ~TerminalScreen();
    TerminalScreen(const TerminalScreen&) = delete;
    TerminalScreen& operator=(const TerminalScreen&) = delete;

    // False when standard output is not a terminal.
    bool IsUsable() const { return m_isUsable; }

    // Room for a picture, at present. The last line stays free for what comes after it. Wine 8
    // never learns that a Unix terminal has changed its size.
    std::size_t Width() const { return m_output.Width(); }
    std::size_t Height() const { return m_output.Height() - 1; }

    // In place of the last picture, in one piece.
    void Show(const std::vector<StyledLine>& lines);

  private:
    WORD AttributesOf(Style style) const;

    const Output& m_output;
    const HANDLE m_console;
    const bool m_isUsable;
    const bool m_hasColour;
    WORD m_plain = 0;
    CONSOLE_CURSOR_INFO m_cursor{};
    std::size_t m_lines = 0;  // of the last picture
};

}  // namespace kora4::tools
