// SPDX-License-Identifier: MIT
// Text of several styles, for what draws.
#pragma once

#include <string>
#include <vector>

#include "base/output.h"

namespace kora4::tools {

// A piece of text in one style.
struct Span {
    Style style = Style::ePlain;
    std::string text;
};

using StyledLine = std::vector<Span>;

// The text without its styles.
inline std::string PlainText(const StyledLine& line) {
    std::string text;
    for (const Span& span : line)
        text += span.text;
    return text;
}

}  // namespace kora4::tools
