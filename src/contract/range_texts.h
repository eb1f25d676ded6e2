// SPDX-License-Identifier: MIT
// The ranges of the contract's numbers as literals, for texts that are built at compile time.
#pragma once

#include "kora4api_constants.h"

// A constant as text: the token it stands for, so whole numbers only.
#define KORA4_TEXT_OF(number) #number
#define KORA4_TEXT(constant) KORA4_TEXT_OF(constant)

#define KORA4_SELECTABLE_PROFILES "0 to " KORA4_TEXT(KORA4_PROFILE_LAST_CUSTOM)
#define KORA4_DEMO_PROFILES \
    KORA4_TEXT(KORA4_PROFILE_DEMO_MOVIE) " to " KORA4_TEXT(KORA4_PROFILE_DEMO_GAMES)
#define KORA4_CURVES "0 to " KORA4_TEXT(KORA4_INTELLIGENT_EQ_WARM)
