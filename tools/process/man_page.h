// SPDX-License-Identifier: MIT
// The manual page of a program, made of what --help shows.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace kora4::tools {

// In the macros of man(7): the program and each of its commands.
std::string ManPage(const CLI::App& root);

}  // namespace kora4::tools
