// SPDX-License-Identifier: MIT
// Options that several verbs have, and texts made to fit.
#ifndef KORA4_KORA4CTL_COMMAND_LINE_OPTIONS_H
#define KORA4_KORA4CTL_COMMAND_LINE_OPTIONS_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "settings/names.h"

namespace kora4::tools {

// --profile P; not given: the active profile. Belongs to the function that a verb runs.
class ProfileOption {
  public:
    void AddTo(CLI::App& verb) {
        verb.add_option("--profile", m_word,
                        "of this profile (music, p1, ...) instead of the active one");
    }
    // Failure with eBadInput when there is no such profile.
    std::optional<std::uint32_t> Get() const {
        return m_word.empty() ? std::nullopt : std::optional(ParseProfile(m_word));
    }

  private:
    std::string m_word;
};

// Columns that line up, each line with two blanks before it; for texts of --help.
std::string Aligned(const std::vector<std::vector<std::string>>& rows);

// At most so many columns; dots stand for what is cut off at the end, or at the beginning.
std::string Cut(const std::string& text, std::size_t columns);
std::string CutFront(const std::string& text, std::size_t columns);

// Text of the store for people: characters that would move the cursor or change colours are
// replaced.
std::string Shown(const std::string& text);

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_COMMAND_LINE_OPTIONS_H
