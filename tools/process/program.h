// SPDX-License-Identifier: MIT
// The frame of a tool: command line in, exit code out.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "base/output.h"
#include "process/interrupt.h"

namespace kora4::tools {

// What everything that a tool does gets. Lives as long as the program.
struct Context {
    Output& output;
    Interrupt& interrupt;
    CLI::App& root;
    // Set by the parser: what the command line asks for.
    std::function<ExitCode()> run;
    // Seconds until a verb gives up waiting for the settings store.
    double wait = 30;
};

// `run` is what the verb does, after the whole command line has been understood.
template <typename Run>
void OnRun(CLI::App& verb, Context& context, Run run) {
    verb.callback([&context, run] { context.run = run; });
}

// The arguments of the process in UTF-8, without the program's name.
std::vector<std::string> Arguments(int count, wchar_t** arguments);

// What the command lines of all tools have in common: the form of the help, and options.
void PrepareCommandLine(CLI::App& root, Output& output);

// Understands the arguments of a command line. Throws Failure with eUsage when they are none,
// and CLI::Success when they ask for the help or the version.
void ParseArguments(CLI::App& root, const std::vector<std::string>& arguments);

// Parses the arguments with what `add` puts on the command line, runs what they ask for and
// gives the exit code. Everything that is thrown ends here, in words on standard error.
int RunProgram(const char* name, const char* summary, const std::vector<std::string>& arguments,
               const std::function<void(Context&)>& add);

}  // namespace kora4::tools
