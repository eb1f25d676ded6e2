// SPDX-License-Identifier: MIT
// A result or a line of the trace in words: what it means, how it comes about, what to do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/output.h"

namespace kora4::tools {

// One value that stands in a line: "profile", "4", "p2".
struct ExplainedValue {
    std::string kind;
    std::string text;
    std::string meaning;  // may be empty
};

// What is known of a result or a line; texts are empty where nothing is.
struct Explanation {
    enum class Kind { eResult, eLine };

    std::string input;
    Kind kind = Kind::eLine;
    // False: nobody knows it; `nearest` has what comes near.
    bool isKnown = false;

    // Of a result; of a line: the first result that stands in it.
    std::optional<std::uint32_t> code;
    std::string name;  // of the result

    std::string meaning;  // a sentence
    std::string why;      // sentences; may be empty
    std::string next;     // sentences; may be empty

    // Of a line.
    std::string tag;
    std::string function;  // as the line has it, or the only one that writes such lines
    std::string writer;    // what the function belongs to
    std::string message;   // as the library's source has it, with its conversions
    std::vector<std::string> categories;  // any of them lets the line through
    std::vector<ExplainedValue> values;

    std::vector<std::string> nearest;
};

// The number of a code in any spelling: 0x00040200, 40200h, 262656, -2147024809, 80004005,
// E_INVALIDARG, kora4_s_demo_mode_active. A decimal number below 65536 that is not a result is
// taken for a Win32 error. None for anything else.
std::optional<std::uint32_t> ParseCode(std::string_view text);

// A code, a whole line with anything before it that a debugger writes, or the message of a
// line alone. A text of somebody else with a code in it is that code.
Explanation Explain(std::string_view input);

// What people read: a heading, and the text that belongs to it.
struct ExplainedPart {
    std::string heading;
    std::string text;
};

// The explanation as headings and texts, without what is empty.
std::vector<ExplainedPart> Parts(const Explanation& explanation);

// {"input", "kind", "known", "code", "name", "meaning", "why", "next"}; kind is "result" or
// "line". Of a line also {"tag", "function", "writer", "message", "categories", "values"}; of
// what nobody knows {"nearest"}. What there is not is null, and a list is empty.
Json DocumentOf(const Explanation& explanation);

}  // namespace kora4::tools
