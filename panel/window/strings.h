// SPDX-License-Identifier: MIT
// The texts of the resources in one language.
#ifndef KORA4_PANEL_WINDOW_STRINGS_H
#define KORA4_PANEL_WINDOW_STRINGS_H

#include <windows.h>

#include <string>
#include <string_view>

#include "panel/window/string_ids.h"

namespace panel {

enum class Language { eEnglish, eGerman };

class Strings {
  public:
    explicit Strings(Language language) : m_language(language) {}
    // The language of the user's desktop, or English where there are no texts in it.
    static Language OfUser();
    // Whether the user's desktop reads from right to left.
    static bool IsUserRightToLeft();

    // Empty when there is no such text.
    std::wstring Text(UINT id) const;
    // With %1 and %2 replaced.
    std::wstring Format(UINT id, std::wstring_view first, std::wstring_view second = {}) const;
    // Without the mark of the letter that Alt takes, and without what follows a name in a
    // label.
    std::wstring Plain(UINT id) const;
    // A number with the decimal sign of the language.
    std::wstring Number(std::string_view number) const;
    // A name as a text of a menu, which takes '&' for the mark of a letter.
    static std::wstring Marked(std::wstring_view name);
    Language Which() const { return m_language; }

  private:
    const Language m_language;
};

std::wstring Widen(std::string_view utf8);
std::string Narrow(std::wstring_view text);

}  // namespace panel

#endif  // KORA4_PANEL_WINDOW_STRINGS_H
