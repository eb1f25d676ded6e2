// SPDX-License-Identifier: MIT
// Console transcripts in documents: blocks of "$ command" lines, each followed by what it
// prints. They are run and compared, so that a document shows what the programs really say.
//
//   ```console
//   $ kora4ctl get volume-leveler
//   7
//   ```
//
// Understood: programs of this project with arguments, in quotes where needed; `|` between two
// of them; `> FILE`; `cat FILE`; `echo $?`; `sleep SECONDS`; `... &`, which starts a command,
// waits for its first line and goes on; `wait`, which waits for that command's end and shows
// the rest. Messages come behind the results of the same command.
#ifndef KORA4_TESTS_TOOLS_MANUALS_TRANSCRIPT_H
#define KORA4_TESTS_TOOLS_MANUALS_TRANSCRIPT_H

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/support/tool_process.h"

namespace kora4::test {

// A command of a transcript and what it prints.
struct TranscriptStep {
    std::string command;
    std::vector<std::string> expected;
    std::size_t line = 0;  // of the command, from 1
};

// The steps of one block of a document.
struct TranscriptBlock {
    std::vector<TranscriptStep> steps;
    // From a comment "<!-- not run: REASON -->" right before the block; empty: it is run.
    std::string reasonNotToRun;
};

// The lines of a document without their ends, and back.
std::vector<std::string> ReadLines(const std::wstring& path);
void WriteLines(const std::wstring& path, const std::vector<std::string>& lines);

std::vector<TranscriptBlock> TranscriptsOf(const std::vector<std::string>& document);

// The document with other outputs: by the line number of their command.
using Outputs = std::map<std::size_t, std::vector<std::string>>;
std::vector<std::string> WithOutputs(const std::vector<std::string>& document,
                                     const Outputs& outputs);

// What differs from run to run (times, process ids, ...) replaced by a word for it.
std::string Normalised(const std::string& line);
// A line of three dots in a document stands for any lines.
bool IsSameOutput(const std::vector<std::string>& expected,
                  const std::vector<std::string>& printed);

// Runs commands one after the other in the current folder, as one session of a shell.
class TranscriptShell {
  public:
    // What a command prints, in lines; folders of this machine have the names of the
    // documents: C:\KORA4 for the programs, C:\work for the current folder.
    std::vector<std::string> Run(const std::string& command);

  private:
    std::vector<std::string> RunPlain(const std::vector<std::string>& words);
    std::vector<std::string> Start(const std::vector<std::string>& words);
    std::vector<std::string> Wait();

    std::unique_ptr<RunningTool> m_background;
    std::vector<std::string> m_shown;  // of the background command
    DWORD m_exitCode = 0;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_MANUALS_TRANSCRIPT_H
