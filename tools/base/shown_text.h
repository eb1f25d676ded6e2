// SPDX-License-Identifier: MIT
// Text from outside for the eyes of a person: nothing in it acts on a terminal, or makes it
// look like something else.
#pragma once

#include <string>
#include <string_view>

namespace kora4::tools {

// What a terminal acts on becomes an escape as in JSON ("\u001b"), so that escaped JSON stays
// JSON with the same content: the control characters U+0000 to U+001F and U+007F to U+009F,
// the characters that change the direction of writing (U+061C, U+200E, U+200F, U+202A to
// U+202E, U+2066 to U+2069), and the separators U+2028 and U+2029. Bytes that are not UTF-8
// become U+FFFD.
std::string ShownText(std::string_view text);

// The same, but for line feeds and tabs, which stay.
std::string ShownLines(std::string_view text);

}  // namespace kora4::tools
