// SPDX-License-Identifier: MIT
// Finds the transcripts in a document, runs their commands, and compares or replaces what
// follows them.
#include "tools/manuals/transcript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "base/text.h"
#include "support/registry_fixture.h"

namespace kora4::test {

namespace {

constexpr char cFence[] = "```";
constexpr char cNotRun[] = "<!-- not run: ";
constexpr char cLeftOut[] = "...";

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

void Append(std::vector<std::string>& lines, const std::vector<std::string>& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

void ReplaceAll(std::string& text, const std::string& what, const std::string& by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
}

// The folders of this machine under the names that the documents give them, also where JSON
// doubles the backslashes.
std::string WithPlainFolders(std::string text) {
    const std::pair<std::string, std::string> folders[] = {
        {tools::Narrow(std::filesystem::current_path().wstring()), "C:\\work"},
        {tools::Narrow(std::filesystem::path(ProgramFolder()).make_preferred().wstring()),
         "C:\\KORA4"},
    };
    for (auto [actual, shown] : folders) {
        while (!actual.empty() && actual.back() == '\\')
            actual.pop_back();
        ReplaceAll(text, actual, shown);
        ReplaceAll(actual, "\\", "\\\\");
        ReplaceAll(shown, "\\", "\\\\");
        ReplaceAll(text, actual, shown);
    }
    return text;
}

std::vector<std::string> Words(const std::string& command) {
    std::vector<std::string> words;
    std::string word;
    bool isBegun = false;
    char quote = 0;
    for (const char c : command) {
        if (quote != 0) {
            if (c == quote)
                quote = 0;
            else
                word += c;
        } else if (c == '\'' || c == '"') {
            quote = c;
            isBegun = true;
        } else if (c == ' ') {
            if (isBegun)
                words.push_back(word);
            word.clear();
            isBegun = false;
        } else {
            word += c;
            isBegun = true;
        }
    }
    if (isBegun)
        words.push_back(word);
    return words;
}

// The words before and behind the first one that is `sign`.
bool SplitAt(const std::string& sign, const std::vector<std::string>& words,
             std::vector<std::string>& before, std::vector<std::string>& behind) {
    const auto at = std::find(words.begin(), words.end(), sign);
    if (at == words.end())
        return false;
    before.assign(words.begin(), at);
    behind.assign(at + 1, words.end());
    return true;
}

ToolResult RunWords(const std::vector<std::string>& words, std::string_view input = {}) {
    if (words.empty() || !words.front().starts_with("kora4")) {
        ADD_FAILURE() << "no program of ours: " << (words.empty() ? "" : words.front());
        return {};
    }
    return RunTool(words.front(), {words.begin() + 1, words.end()}, input);
}

std::string ReadFile(const std::string& name) {
    std::ifstream in(std::filesystem::path(tools::Widen(name)), std::ios::binary);
    EXPECT_TRUE(in) << name;
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

std::vector<std::string> ReadLines(const std::wstring& path) {
    std::ifstream in(std::filesystem::path(path), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

void WriteLines(const std::wstring& path, const std::vector<std::string>& lines) {
    std::ofstream out(std::filesystem::path(path), std::ios::binary);
    for (const std::string& line : lines)
        out << line << '\n';
}

std::vector<TranscriptBlock> TranscriptsOf(const std::vector<std::string>& document) {
    std::vector<TranscriptBlock> blocks;
    bool isInside = false;
    std::string reason;
    for (std::size_t i = 0; i < document.size(); ++i) {
        const std::string& line = document[i];
        if (line.starts_with(cFence)) {
            isInside = line == std::string(cFence) + "console";
            if (isInside)
                blocks.push_back({{}, reason});
        } else if (isInside && line.starts_with("$ ")) {
            blocks.back().steps.push_back({line.substr(2), {}, i + 1});
        } else if (isInside && !blocks.back().steps.empty()) {
            blocks.back().steps.back().expected.push_back(line);
        }
        if (!line.empty())
            reason =
                line.starts_with(cNotRun)
                    ? line.substr(sizeof cNotRun - 1, line.rfind(" -->") - sizeof cNotRun + 1)
                    : "";
    }
    return blocks;
}

std::vector<std::string> WithOutputs(const std::vector<std::string>& document,
                                     const Outputs& outputs) {
    std::vector<std::string> result;
    bool isReplaced = false;
    for (std::size_t i = 0; i < document.size(); ++i) {
        const std::string& line = document[i];
        if (line.starts_with(cFence) || line.starts_with("$ "))
            isReplaced = false;
        if (!isReplaced)
            result.push_back(line);
        if (const auto output = outputs.find(i + 1); output != outputs.end()) {
            Append(result, output->second);
            isReplaced = true;
        }
    }
    return result;
}

std::string Normalised(const std::string& line) {
    static const std::pair<std::regex, const char*> cVarying[] = {
        {std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(\.\d+)?([+-]\d\d:\d\d|Z)?)"), "<moment>"},
        {std::regex(R"(\d{4}-\d\d-\d\d)"), "<day>"},
        {std::regex(R"(\d\d:\d\d:\d\d(\.\d+)?)"), "<time>"},
        {std::regex(R"(process \d+)"), "process <id>"},
        // The source line of a line of the library's trace.
        {std::regex(R"(^(KORA4\w*|KOLFX\w*|Reg\w*): +\d+ )"), "$1: <line> "},
        {std::regex(R"((gain|excitation)( -?[\d.]+)+)"), "$1 <levels>"},
        {std::regex(R"x("(gains|excitations)":\[[^\]]*\])x"), "\"$1\": <levels>"},
        {std::regex(R"x("(pid|process|offset|at|elapsed)": ?[\d.]+)x"), "\"$1\": <number>"},
        {std::regex(R"(\d+(\.\d+)? (ms|s)\b)"), "<duration>"},
    };
    std::string text = line;
    for (const auto& [pattern, word] : cVarying)
        text = std::regex_replace(text, pattern, word);
    return text;
}

bool IsSameOutput(const std::vector<std::string>& expected,
                  const std::vector<std::string>& printed) {
    const auto sameFrom = [&](const auto& self, std::size_t e, std::size_t p) -> bool {
        if (e == expected.size())
            return p == printed.size();
        if (expected[e] == cLeftOut) {
            for (std::size_t next = p; next <= printed.size(); ++next) {
                if (self(self, e + 1, next))
                    return true;
            }
            return false;
        }
        return p < printed.size() && Normalised(expected[e]) == Normalised(printed[p]) &&
               self(self, e + 1, p + 1);
    };
    return sameFrom(sameFrom, 0, 0);
}

std::vector<std::string> TranscriptShell::Run(const std::string& command) {
    std::vector<std::string> words = Words(command);
    if (words.empty())
        return {};
    if (words.back() == "&") {
        words.pop_back();
        return Start(words);
    }
    if (words.front() == "wait")
        return Wait();
    if (command == "echo $?")
        return {std::to_string(m_exitCode)};
    if (words.front() == "cat")
        return LinesOf(WithPlainFolders(ReadFile(words.back())));
    if (std::vector<std::string> text, file;
        words.front() == "echo" && SplitAt(">", words, text, file)) {
        std::ofstream(std::filesystem::path(tools::Widen(file.front()))) << text.back() << '\n';
        return {};
    }
    if (words.front() == "sleep") {
        // What runs in the background has that long.
        Sleep(static_cast<DWORD>(1000 * std::atof(words.back().c_str())));
        return {};
    }
    return RunPlain(words);
}

std::vector<std::string> TranscriptShell::RunPlain(const std::vector<std::string>& words) {
    std::vector<std::string> before;
    std::vector<std::string> behind;
    ToolResult result;
    if (SplitAt("|", words, before, behind)) {
        const ToolResult first = RunWords(before);
        result = RunWords(behind, first.out);
        result.err = first.err + result.err;
    } else if (SplitAt(">", words, before, behind)) {
        result = RunWords(before);
        std::ofstream out(std::filesystem::path(tools::Widen(behind.front())),
                          std::ios::binary);
        out << result.out;
        result.out.clear();
    } else {
        result = RunWords(words);
    }
    m_exitCode = result.exitCode;
    std::vector<std::string> lines = LinesOf(WithPlainFolders(result.out));
    Append(lines, LinesOf(WithPlainFolders(result.err)));
    return lines;
}

std::vector<std::string> TranscriptShell::Start(const std::vector<std::string>& words) {
    m_background = std::make_unique<RunningTool>(
        words.front(), std::vector<std::string>(words.begin() + 1, words.end()));
    m_shown = {words.front() == "kora4sim" ? m_background->NextLine()
                                           : m_background->NextErrorLine()};
    return {WithPlainFolders(m_shown.front())};
}

std::vector<std::string> TranscriptShell::Wait() {
    if (!m_background) {
        ADD_FAILURE() << "nothing runs in the background";
        return {};
    }
    const ToolResult result = m_background->WaitForEnd();
    m_background.reset();
    m_exitCode = result.exitCode;
    std::vector<std::string> lines = LinesOf(WithPlainFolders(result.out));
    Append(lines, LinesOf(WithPlainFolders(result.err)));
    // What was shown at the start is not shown again.
    const auto shown = std::find(lines.begin(), lines.end(), WithPlainFolders(m_shown.front()));
    if (shown != lines.end())
        lines.erase(shown);
    return lines;
}

}  // namespace kora4::test
