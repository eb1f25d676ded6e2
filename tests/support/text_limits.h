// SPDX-License-Identifier: MIT
// The longest text that the store gives back, for tests at that limit.
#ifndef KORA4_TESTS_SUPPORT_TEXT_LIMITS_H
#define KORA4_TESTS_SUPPORT_TEXT_LIMITS_H

#include <cstddef>

#include "contract/value_kind.h"

namespace kora4::test {

// In characters, without the terminator.
inline constexpr std::size_t cLongestTextChars = cMaxTextBytes / sizeof(char16_t) - 1;

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_TEXT_LIMITS_H
