// SPDX-License-Identifier: MIT
// The trace flag word in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "contract/trace_flags.h"
#include "registry/store_access.h"

namespace kora4::tools {

// Stands for every category but the log files.
inline constexpr char cAllCategories[] = "all";

// The names of the categories in those bits.
std::vector<std::string> NamesOfCategories(std::uint32_t bits);

// A flag word. Immutable but for WriteFiles.
class TraceWord {
  public:
    // The word with which every process begins.
    TraceWord() = default;
    explicit TraceWord(std::uint32_t flags) : m_flags(flags) {}

    // What is worth reading when something does not work: calls, results, messages.
    static TraceWord Usual();
    // Nothing at all.
    static TraceWord Silent();
    // The word with exactly these categories. Failure with eBadInput and the nearest names.
    static TraceWord Of(const std::vector<std::string>& categories);

    std::uint32_t Flags() const { return m_flags; }

    // Sets the bit that has lines written to log files as well.
    void WriteFiles() { m_flags |= trace::eLogFiles; }
    bool WritesFiles() const { return (m_flags & trace::eLogFiles) != 0; }
    bool IsSilent() const {
        return (m_flags & trace::eMasterSwitch) == trace::eMasterSwitchOff;
    }
    // Without that of the log files.
    std::vector<std::string> CategoryNames() const {
        return NamesOfCategories(m_flags & ~std::uint32_t{trace::eLogFiles});
    }
    // Bits that mean nothing.
    std::uint32_t UnknownBits() const;

    // "messages, results; into log files"
    std::string InWords() const;

  private:
    std::uint32_t m_flags = trace::cDefaultFlags;
};

// The caller holds the store's mutex. What is absent or unreadable counts as the word that a
// process begins with.
TraceWord ReadTraceWord(StoreAccess& store);
void WriteTraceWord(StoreAccess& store, TraceWord word);

// The names of all categories, for messages and completion.
std::vector<std::string> TraceCategoryNames();

}  // namespace kora4::tools
