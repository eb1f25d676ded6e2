// SPDX-License-Identifier: MIT
// The questions as rows of docs/platforms.md.
#ifndef KORA4_TESTS_PLATFORM_PROBE_TABLE_H
#define KORA4_TESTS_PLATFORM_PROBE_TABLE_H

#include <array>
#include <span>
#include <string>
#include <vector>

#include "platform_probe/question.h"

namespace kora4::probe {

std::array<std::span<const Question>, 5> AllQuestions();

// What the document says of a question besides what was seen, cell by cell: name, question,
// what Windows answers, where that stands; and last, the files that depend on it.
std::vector<std::string> CellsOf(const Question& question);

// The row of the document, with what was seen under Wine.
std::string TableRow(const Question& question, const std::string& underWine);

}  // namespace kora4::probe

#endif  // KORA4_TESTS_PLATFORM_PROBE_TABLE_H
