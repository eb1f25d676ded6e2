// SPDX-License-Identifier: MIT
// A tool for trials of the test driver:
//   arguments ARGUMENT...   prints each in brackets, one a line
//   input                   prints its input
//   variable NAME           prints an environment variable in brackets
//   both                    a line to each of the two outputs
//   flood                   prints until nobody reads
//   wait                    prints "ready", waits for Ctrl-C and says so, exit code 5
//   wait-on                 the same, and then goes on waiting
//   hang                    prints "ready" and does nothing else
#include <windows.h>

#include <string>
#include <vector>

#include "base/output.h"
#include "base/text.h"
#include "process/interrupt.h"
#include "process/program.h"

namespace {

using namespace kora4::tools;

// Byte by byte: an Output would escape what a terminal acts on.
void PrintInput() {
    char text[4096];
    DWORD size = 0;
    DWORD written = 0;
    while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), text, sizeof text, &size, nullptr) &&
           size != 0 &&
           WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, size, &written, nullptr)) {
    }
}

std::string Variable(const std::string& name) {
    wchar_t text[256] = L"";
    const DWORD length = GetEnvironmentVariableW(Widen(name).c_str(), text, 256);
    return Narrow({text, length});
}

int Wait(Output& output, bool goesOn) {
    const Interrupt interrupt;
    output.Print("ready");
    WaitForSingleObject(interrupt.Event(), INFINITE);
    output.Print("interrupted");
    if (goesOn)
        Sleep(INFINITE);
    return 5;
}

}  // namespace

int wmain(int count, wchar_t** values) {
    const std::vector<std::string> arguments = Arguments(count, values);
    const std::string verb = arguments.empty() ? "" : arguments[0];
    Output output;
    if (verb == "arguments") {
        for (std::size_t i = 1; i < arguments.size(); ++i)
            output.Print("[" + arguments[i] + "]");
    } else if (verb == "input") {
        PrintInput();
    } else if (verb == "variable") {
        output.Print("[" + Variable(arguments.at(1)) + "]");
    } else if (verb == "both") {
        output.Print("result");
        output.Complain("message");
    } else if (verb == "flood") {
        while (!output.IsBroken())
            output.Print("again");
    } else if (verb == "wait" || verb == "wait-on") {
        return Wait(output, verb == "wait-on");
    } else if (verb == "hang") {
        output.Print("ready");
        Sleep(INFINITE);
    } else {
        return 2;
    }
    return 0;
}
