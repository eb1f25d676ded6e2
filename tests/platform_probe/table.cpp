// SPDX-License-Identifier: MIT
// Rows, and what they hold.
#include "platform_probe/table.h"

#include <sstream>

namespace kora4::probe {

std::array<std::span<const Question>, 5> AllQuestions() {
    return {RegistryQuestions(), ObjectQuestions(), FileQuestions(), ProcessQuestions(),
            ComQuestions()};
}

std::vector<std::string> CellsOf(const Question& question) {
    const std::string expected = question.expected;
    const std::string document = question.document;
    std::string files;
    std::istringstream code(question.code);
    for (std::string file; code >> file;)
        files += (files.empty() ? "" : ", ") + file;
    return {question.name, question.text, expected.empty() ? "not documented" : expected,
            document.empty() ? "none" : document, files};
}

std::string TableRow(const Question& question, const std::string& underWine) {
    const std::vector<std::string> cells = CellsOf(question);
    return "| `" + cells[0] + "` | " + cells[1] + " | " + cells[2] + " | " + cells[3] +
           " | not yet seen | " + underWine + " | `" + cells[4] + "` |";
}

}  // namespace kora4::probe
