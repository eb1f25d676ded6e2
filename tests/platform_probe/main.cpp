// SPDX-License-Identifier: MIT
// platform_probe [--table]: asks the platform every question and prints a line each:
//   NAME: QUESTION expected on Windows: ANSWER (document: TITLE); seen: ANSWER; VERDICT
// With --table, the rows of docs/platforms.md as this machine answers. A difference is a
// finding and no failure: the exit code is 0.
#include <cstdio>
#include <cstring>

#include "platform_probe/question.h"
#include "platform_probe/roles.h"
#include "platform_probe/table.h"

namespace {

using namespace kora4::probe;

void PrintLine(const Question& question) {
    const std::string answer = Answer(question);
    const std::string verdict = Verdict(question, answer);
    const std::vector<std::string> cells = CellsOf(question);
    std::printf("%s: %s expected on Windows: %s (document: %s); seen: %s; %s\n", question.name,
                question.text, cells[2].c_str(), cells[3].c_str(), answer.c_str(),
                verdict.c_str());
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
    if (const auto code = PlayRole(count, arguments))
        return *code;
    const bool isTable = count > 1 && std::strcmp(arguments[1], "--table") == 0;
    for (const auto& questions : AllQuestions()) {
        for (const Question& question : questions) {
            if (isTable)
                std::printf("%s\n", TableRow(question, Answer(question)).c_str());
            else
                PrintLine(question);
        }
    }
    return 0;
}
