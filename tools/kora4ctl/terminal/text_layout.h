// SPDX-License-Identifier: MIT
// Texts made to fit: cut, wrapped, in columns.
#pragma once

#include <string>
#include <vector>

#include "base/output.h"

namespace kora4::tools {

std::string Repeated(const std::string& text, std::size_t times);

// "1 value", "3 values"
std::string CountOf(std::size_t count, const std::string& what);

// Columns that line up, each line with two blanks before it; for texts of --help.
std::string Aligned(const std::vector<std::vector<std::string>>& rows);

// At most so many columns; dots stand for what is cut off at the end, or at the beginning.
std::string Cut(const std::string& text, std::size_t columns);
std::string CutFront(const std::string& text, std::size_t columns);

// On a terminal, cut to what is left of a line behind `margin` columns.
std::string Fitting(const Output& output, const std::string& text, std::size_t margin);

// The text in lines of at most so many columns, broken at blanks; a longer word stays whole.
std::vector<std::string> Wrapped(const std::string& text, std::size_t columns);

// A paragraph with a heading to its left. A pipe gets it in one line.
void PrintBeside(Output& output, const std::string& heading, const std::string& text);

// Text of the store for people: characters that would move the cursor or change colours are
// replaced.
std::string Shown(const std::string& text);
// The same, between quotation marks.
std::string Quoted(const std::string& text);

}  // namespace kora4::tools
