// SPDX-License-Identifier: MIT
// How a tool gives up: thrown wherever it cannot go on, and printed by main.
#pragma once

#include <exception>
#include <string>
#include <utility>

#include "base/exit_code.h"

namespace kora4::tools {

// An exit code with the words for it.
class Failure : public std::exception {
  public:
    // what: one sentence with its full stop, in the user's words; never a bare number.
    // next: what to do about it, a sentence too; may be empty.
    Failure(ExitCode code, std::string what, std::string next = {})
        : m_code(code), m_what(std::move(what)), m_next(std::move(next)) {}

    // What main returns for it.
    ExitCode Code() const { return m_code; }
    const char* what() const noexcept override { return m_what.c_str(); }
    const std::string& Next() const { return m_next; }

  private:
    ExitCode m_code;
    std::string m_what;
    std::string m_next;
};

// A value or a file that cannot be taken; nothing was changed.
class BadInput : public Failure {
  public:
    explicit BadInput(std::string what, std::string next = {})
        : Failure(ExitCode::eBadInput, std::move(what), std::move(next)) {}
};

}  // namespace kora4::tools
