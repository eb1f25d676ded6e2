// SPDX-License-Identifier: MIT
// Texts from files, which can be anything.
#ifndef KORA4_PANEL_MODEL_PLAIN_TEXT_H
#define KORA4_PANEL_MODEL_PLAIN_TEXT_H

#include <string>
#include <string_view>

namespace panel {

// Whether the bytes can be a text in ASCII or UTF-8. UTF-16 and what is no text at all have
// zeros among them.
bool IsPlainText(std::string_view bytes);

// The beginning of a text in UTF-8, for one line: of at most 80 bytes, and a question mark for
// each control character.
std::string Excerpt(std::string_view text);

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_PLAIN_TEXT_H
