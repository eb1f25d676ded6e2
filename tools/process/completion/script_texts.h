// SPDX-License-Identifier: MIT
// What the makers of the scripts share.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "base/text.h"
#include "process/completion/completion.h"
#include "process/help_parts.h"

namespace kora4::tools {

// Between single quotation marks; those inside, and backslashes, written as the shell wants
// them.
inline std::string QuotedFor(const std::string& text, const char* mark,
                             const char* backslash = "\\") {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\''   ? std::string(mark)
                  : c == '\\' ? std::string(backslash)
                              : std::string(1, c);
    return quoted + "'";
}

template <typename Elements, typename Write>
std::vector<std::string> Each(const Elements& elements, Write write) {
    std::vector<std::string> texts;
    std::transform(elements.begin(), elements.end(), std::back_inserter(texts), write);
    return texts;
}

// The functions of a script have the name of the program in theirs; `script` has "PROGRAM".
inline std::string ForProgram(std::string script, const std::string& program) {
    return ReplacedAll(std::move(script), "PROGRAM", program);
}

std::string BashScript(const Completion& completion);
std::string FishScript(const Completion& completion);
std::string PowerShellScript(const Completion& completion);
std::string ZshScript(const Completion& completion);

// Tables that bash and zsh read alike: functions with a case for each list and each command.
std::string TablesForBash(const Completion& completion);

}  // namespace kora4::tools
