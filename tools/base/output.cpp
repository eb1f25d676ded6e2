// SPDX-License-Identifier: MIT
// Writing to consoles, files and pipes: consoles take UTF-16 and colour sequences, everything
// else takes UTF-8 bytes.
#include "base/output.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>

#include "base/shown_text.h"
#include "base/text.h"

namespace kora4::tools {

namespace {

bool IsConsole(HANDLE file) {
    DWORD mode = 0;
    return GetConsoleMode(file, &mode) != 0;
}

// An empty NO_COLOR counts as none.
bool WantsPlainText() {
    const char* const plain = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (plain && *plain) || (terminal && std::string_view(terminal) == "dumb");
}

CONSOLE_SCREEN_BUFFER_INFO ScreenOf(HANDLE console) {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!GetConsoleScreenBufferInfo(console, &info))
        info.srWindow = {0, 0, 79, 23};
    return info;
}

// Whether the cursor moves with a sequence that shows nothing. Such a console breaks lines in
// the middle of words; Wine's is one, although it says that it interprets sequences.
bool CountsSequences(HANDLE console) {
    constexpr std::wstring_view cNothing = L"\x1b[0m";
    const COORD before = ScreenOf(console).dwCursorPosition;
    DWORD written = 0;
    WriteConsoleW(console, cNothing.data(), static_cast<DWORD>(cNothing.size()), &written,
                  nullptr);
    const COORD after = ScreenOf(console).dwCursorPosition;
    if (before.X == after.X && before.Y == after.Y)
        return false;
    FillConsoleOutputCharacterW(console, L' ', written, before, &written);
    SetConsoleCursorPosition(console, before);
    return true;
}

// Switches the interpretation of colour sequences on; false when there is none.
bool TakesColours(HANDLE console) {
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) && !WantsPlainText() &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) &&
           !CountsSequences(console);
}

// Whether a write failed because nobody reads any more. A Unix pipe without a reader is "not
// connected" under Wine.
bool IsReaderGone(DWORD error) {
    return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA ||
           error == ERROR_PIPE_NOT_CONNECTED;
}

// A console takes UTF-16, everything else UTF-8 bytes. False: nobody reads any more.
bool WriteAll(HANDLE file, bool isConsole, std::string_view text) {
    if (isConsole) {
        const std::wstring wide = Widen(text);
        for (std::size_t done = 0; done < wide.size();) {
            // Consoles before Windows 8 refuse a piece of more than 64 KB.
            const DWORD chunk =
                static_cast<DWORD>(std::min<std::size_t>(wide.size() - done, 8000));
            DWORD written = 0;
            if (!WriteConsoleW(file, wide.data() + done, chunk, &written, nullptr) ||
                written == 0)
                return false;
            done += written;
        }
        return true;
    }
    while (!text.empty()) {
        DWORD written = 0;
        if (!WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ||
            written == 0)
            return false;
        text.remove_prefix(written);
    }
    return true;
}

constexpr const char* cSequences[] = {"",         "\x1b[1m",  "\x1b[90m",
                                      "\x1b[32m", "\x1b[33m", "\x1b[31m"};

// Everything that is printed goes through here: own styles become colour sequences, and what
// else a terminal would act on is escaped.
std::string Presented(std::string_view text) {
    std::string presented;
    while (!text.empty()) {
        const std::size_t mark = std::min(text.find(cStyleMark), text.size());
        presented += ShownLines(text.substr(0, mark));
        text.remove_prefix(mark);
        if (text.empty())
            break;
        const auto style =
            text.size() > 1 ? static_cast<std::size_t>(text[1] - cPlainMark) : 0u;
        if (style < std::size(cSequences))
            presented += style == 0 ? "\x1b[0m" : cSequences[style];
        text.remove_prefix(std::min<std::size_t>(2, text.size()));
    }
    return presented;
}

// Bytes that are not UTF-8 (a garbage name in the store) must not stop the output.
std::string Dump(const Json& document, int indent) {
    return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

Output::Output()
    : m_results(GetStdHandle(STD_OUTPUT_HANDLE)),
      m_messages(GetStdHandle(STD_ERROR_HANDLE)),
      m_isTerminal(IsConsole(m_results)),
      m_areMessagesOnTerminal(IsConsole(m_messages)),
      m_hasColour(TakesColours(m_results)) {}

void Output::Print(std::string_view line) {
    Write(std::string(line) + '\n');
}

void Output::Write(std::string_view text) {
    if (m_isBroken || WriteAll(m_results, m_isTerminal, Presented(text)))
        return;
    const DWORD error = GetLastError();
    m_isBroken = true;
    m_isIncomplete = !IsReaderGone(error);
}

void Output::PrintJson(const Json& document) {
    Print(Dump(document, 2));
}

void Output::PrintJsonLine(const Json& document) {
    Print(Dump(document, -1));
}

void Output::Table(const std::vector<std::string>& headings,
                   const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    const auto measure = [&widths](const std::vector<std::string>& row) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], Columns(row[i]));
    };
    measure(headings);
    for (const auto& row : rows)
        measure(row);
    const auto line = [&widths](const std::vector<std::string>& row) {
        std::string text;
        for (std::size_t i = 0; i < row.size(); ++i)
            text += i + 1 < row.size() ? Padded(row[i], widths[i] + 2) : row[i];
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    };
    if (!headings.empty())
        Print(Paint(Style::eDim, line(headings)));
    for (const auto& row : rows)
        Print(line(row));
}

void Output::Say(std::string_view message) {
    if (!quiet)
        Complain(message);
}

void Output::Complain(std::string_view message) {
    WriteAll(m_messages, m_areMessagesOnTerminal, Presented(message) + '\n');
}

unsigned Output::Width() const {
    const SMALL_RECT window = ScreenOf(m_results).srWindow;
    return static_cast<unsigned>(window.Right - window.Left + 1);
}

unsigned Output::Height() const {
    const SMALL_RECT window = ScreenOf(m_results).srWindow;
    return static_cast<unsigned>(window.Bottom - window.Top + 1);
}

std::string Output::Paint(Style style, std::string_view text) const {
    if (!m_hasColour || style == Style::ePlain)
        return std::string(text);
    const char mark[] = {cStyleMark, static_cast<char>(cPlainMark + static_cast<int>(style))};
    return std::string(mark, sizeof mark) + std::string(text) + cStyleMark + cPlainMark;
}

}  // namespace kora4::tools
