// SPDX-License-Identifier: MIT
/* The constants in a C program that includes nothing else. */
#include <kora4api_constants.h>

#include "sdk/constants_c.h"

const double cConstantsInC[CONSTANTS_IN_C] = {
    KORA4_PROFILE_LAST_CUSTOM,          KORA4_PROFILE_DEMO_GAMES,
    KORA4_VOLUME_LEVELER_MOVIE_DEFAULT, KORA4_SILENT_EXCITATION,
    KORA4_GRAPHIC_EQ_MIN_GAIN,          KORA4_ENGINE_TECHNOLOGY_BIT(KORA4_ENGINE_TECHNOLOGIES),
};
