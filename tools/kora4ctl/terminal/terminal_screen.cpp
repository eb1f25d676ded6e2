// SPDX-License-Identifier: MIT
// Draws styled lines into the cells of a console, and leaves the console as it was.
#include "kora4ctl/terminal/terminal_screen.h"

#include <algorithm>

#include "base/text.h"

namespace kora4::tools {

namespace {

constexpr WORD cForeground =
    FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE | FOREGROUND_INTENSITY;

bool HasColour(const Output& output) {
    return output.Paint(Style::eGood, "x") != "x";
}

}  // namespace

TerminalScreen::TerminalScreen(const Output& output)
    : m_output(output),
      m_console(GetStdHandle(STD_OUTPUT_HANDLE)),
      m_isUsable(output.IsTerminal()),
      m_hasColour(HasColour(output)) {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (!m_isUsable || !GetConsoleScreenBufferInfo(m_console, &screen) ||
        !GetConsoleCursorInfo(m_console, &m_cursor))
        return;
    m_plain = screen.wAttributes;
    const CONSOLE_CURSOR_INFO hidden{m_cursor.dwSize, FALSE};
    SetConsoleCursorInfo(m_console, &hidden);
}

TerminalScreen::~TerminalScreen() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (!m_isUsable || !GetConsoleScreenBufferInfo(m_console, &screen))
        return;
    if (m_lines != 0) {
        const auto line = static_cast<SHORT>(screen.srWindow.Top + static_cast<int>(m_lines));
        SetConsoleCursorPosition(
            m_console, {screen.srWindow.Left, std::min(line, screen.srWindow.Bottom)});
    }
    SetConsoleTextAttribute(m_console, m_plain);
    SetConsoleCursorInfo(m_console, &m_cursor);
}

WORD TerminalScreen::AttributesOf(Style style) const {
    if (!m_hasColour)
        return m_plain;
    const auto with = [this](int foreground) {
        return static_cast<WORD>((m_plain & ~cForeground) | foreground);
    };
    switch (style) {
        case Style::eStrong:
            return static_cast<WORD>(m_plain | FOREGROUND_INTENSITY);
        case Style::eDim:
            return with(FOREGROUND_INTENSITY);
        case Style::eGood:
            return with(FOREGROUND_GREEN);
        case Style::eWarning:
            return with(FOREGROUND_RED | FOREGROUND_GREEN);
        case Style::eBad:
            return with(FOREGROUND_RED);
        case Style::ePlain:
            break;
    }
    return m_plain;
}

void TerminalScreen::Show(const std::vector<StyledLine>& lines) {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (!GetConsoleScreenBufferInfo(m_console, &screen))
        return;
    const SMALL_RECT& window = screen.srWindow;
    const int columns = window.Right - window.Left + 1;
    const int rows = window.Bottom - window.Top + 1;
    const auto width = static_cast<std::size_t>(columns);
    const auto height = static_cast<std::size_t>(rows);
    CHAR_INFO blank{};
    blank.Char.UnicodeChar = L' ';
    blank.Attributes = m_plain;
    // The whole window, to clear what a larger picture left behind.
    std::vector<CHAR_INFO> cells(width * height, blank);
    m_lines = std::min(lines.size(), height);
    for (std::size_t row = 0; row < m_lines; ++row) {
        std::size_t column = 0;
        for (const Span& span : lines[row]) {
            for (const wchar_t character : Widen(span.text)) {
                if (column == width)
                    break;
                CHAR_INFO& cell = cells[row * width + column++];
                cell.Char.UnicodeChar = character;
                cell.Attributes = AttributesOf(span.style);
            }
        }
    }
    SMALL_RECT target = window;
    WriteConsoleOutputW(m_console, cells.data(),
                        {static_cast<SHORT>(width), static_cast<SHORT>(height)}, {0, 0},
                        &target);
}

}  // namespace kora4::tools
