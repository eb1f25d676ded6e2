#include "kora4ctl/terminal_screen.h"

namespace kora4::tools {

namespace {

constexpr char cHideCursor[] = "\x1b[?25l";
constexpr char cShowCursor[] = "\x1b[?25h";
constexpr char cClear[] = "\x1b[2J";
constexpr char cHome[] = "\x1b[H";
constexpr char cClearToEndOfLine[] = "\x1b[K";
constexpr char cClearBelow[] = "\x1b[J";
constexpr char cPlain[] = "\x1b[0m";

}  // namespace

TerminalScreen::TerminalScreen(Output& output)
    : m_output(output), m_console(GetStdHandle(STD_OUTPUT_HANDLE)) {
    m_isUsable = output.IsTerminal() && GetConsoleMode(m_console, &m_oldMode) &&
                 SetConsoleMode(m_console, m_oldMode | ENABLE_PROCESSED_OUTPUT |
                                               ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    if (m_isUsable)
        m_output.Write(cHideCursor);
}

TerminalScreen::~TerminalScreen() {
    if (!m_isUsable)
        return;
    std::string end = cPlain;
    if (m_width != 0)
        end += "\r\n" + std::string(cClearBelow);
    m_output.Write(end + cShowCursor);
    SetConsoleMode(m_console, m_oldMode);
}

void TerminalScreen::Show(const std::vector<std::string>& lines) {
    const bool isResized = m_width != Width() || m_height != Height();
    if (!isResized && lines == m_shown)
        return;
    std::string picture = isResized ? std::string(cClear) + cHome : cHome;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        picture += lines[i];
        picture += cClearToEndOfLine;
        if (i + 1 < lines.size())
            picture += "\r\n";
    }
    m_output.Write(picture + cClearBelow);
    m_width = Width();
    m_height = Height();
    m_shown = lines;
}

}  // namespace kora4::tools
