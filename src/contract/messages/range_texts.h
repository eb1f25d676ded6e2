// SPDX-License-Identifier: MIT
// The ranges of the contract's numbers as literals, for texts that are built at compile time.
#pragma once

#include "kora4api_constants.h"

// A constant as text: the token it stands for, so whole numbers only.
#define KORA4_TEXT_OF(number) #number
#define KORA4_TEXT(constant) KORA4_TEXT_OF(constant)

#define KORA4_RANGE(first, last) KORA4_TEXT(first) " to " KORA4_TEXT(last)

#define KORA4_SELECTABLE_PROFILES KORA4_RANGE(KORA4_PROFILE_MOVIE, KORA4_PROFILE_LAST_CUSTOM)
#define KORA4_DEMO_PROFILES KORA4_RANGE(KORA4_PROFILE_DEMO_MOVIE, KORA4_PROFILE_DEMO_GAMES)
#define KORA4_CURVES KORA4_RANGE(KORA4_INTELLIGENT_EQ_BALANCED, KORA4_INTELLIGENT_EQ_WARM)
