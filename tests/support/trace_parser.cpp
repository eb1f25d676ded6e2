// SPDX-License-Identifier: MIT
// Splits a log into lines and each line into tag, line number, function and message.
#include <cctype>

#include "support/trace_capture.h"

namespace kora4::test {

namespace {

bool IsTagCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Finds the colon that ends the function's name, which is not half of a "::".
std::size_t FindSingleColon(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != ':')
            continue;
        if (i + 1 == text.size() || text[i + 1] != ':')
            return i;
        ++i;
    }
    return std::string_view::npos;
}

// Reads the three fields of a physical line; false when it does not begin with them.
bool ParseHead(std::string_view text, TraceLine* pLine) {
    std::size_t i = 0;
    while (i < text.size() && IsTagCharacter(text[i]))
        ++i;
    if (i == 0 || text.substr(i, 2) != ": ")
        return false;
    pLine->tag = text.substr(0, i);
    text.remove_prefix(i + 2);

    const std::size_t number = text.find_first_not_of(' ');
    if (number == std::string_view::npos || number > 3)
        return false;
    for (i = number; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        pLine->line = 10 * pLine->line + (text[i] - '0');
    if (i == number || i < 4 || text.substr(i, 1) != " ")
        return false;
    text.remove_prefix(i + 1);

    const std::size_t colon = FindSingleColon(text);
    if (colon == std::string_view::npos || text.substr(0, colon).find(' ') < colon)
        return false;
    pLine->function = text.substr(0, colon);
    pLine->message = text.substr(colon + 1);
    return true;
}

}  // namespace

std::vector<TraceLine> ParseTrace(std::string_view log) {
    std::vector<TraceLine> lines;
    while (!log.empty()) {
        const std::size_t end = log.find('\n');
        std::string_view text = log.substr(0, end);
        log.remove_prefix(end == std::string_view::npos ? log.size() : end + 1);
        if (text.ends_with('\r'))
            text.remove_suffix(1);
        TraceLine line;
        if (ParseHead(text, &line))
            lines.push_back(std::move(line));
        else if (!lines.empty())
            lines.back().message.append("\n").append(text);
    }
    return lines;
}

std::vector<std::string> Messages(const std::vector<TraceLine>& lines) {
    std::vector<std::string> messages;
    for (const TraceLine& line : lines)
        messages.push_back(line.message);
    return messages;
}

std::vector<std::string> MessagesOf(const std::vector<TraceLine>& lines,
                                    std::string_view function) {
    std::vector<std::string> messages;
    for (const TraceLine& line : lines) {
        if (line.function == function)
            messages.push_back(line.message);
    }
    return messages;
}

}  // namespace kora4::test
