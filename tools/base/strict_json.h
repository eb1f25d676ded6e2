// SPDX-License-Identifier: MIT
// JSON from outside: files that somebody may have edited, cut off or made up.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "base/output.h"

namespace kora4::tools {

// Failure with eBadInput, in one sentence, for a text that is empty, cut off or no JSON, that
// has a name twice in one object (one of the two values would be lost), or that is nested so
// deeply that walking over it could take up the stack, or has so many members in one object
// that looking them up would take minutes. `poll` is called every few milliseconds and may
// throw.
Json ParseStrictJson(std::string_view text, const std::function<void()>& poll = {});

// What is wrong, without the prefix of the parser, "[json.exception...] ", and a full stop.
std::string ProblemOf(const Json::exception& error);

}  // namespace kora4::tools
