// SPDX-License-Identifier: MIT
/* The numbers of the KORA4 API: profiles, technologies, limits, defaults, levels.
 *
 * Plain C11 or C++; includes nothing. Each number stands here and nowhere else: the library,
 * its tools and its documents take it from this file. Limits are inclusive. */
#ifndef KORA4API_CONSTANTS_H
#define KORA4API_CONSTANTS_H

/* ---- Profiles ------------------------------------------------------------------------- */

/* Preset profiles. They always exist, and can be reverted to their factory values. */
#define KORA4_PROFILE_MOVIE 0
#define KORA4_PROFILE_MUSIC 1
#define KORA4_PROFILE_GAMES 2

/* Custom profiles. One exists from CreateCustomProfile to DeleteCustomProfile. */
#define KORA4_PROFILE_P1 3
#define KORA4_PROFILE_P2 4
#define KORA4_PROFILE_P3 5
#define KORA4_PROFILE_P4 6
#define KORA4_PROFILE_P5 7
#define KORA4_PROFILE_P6 8
#define KORA4_PROFILE_FIRST_CUSTOM KORA4_PROFILE_P1
#define KORA4_PROFILE_LAST_CUSTOM KORA4_PROFILE_P6

/* Demo profiles, entered and left by the demo methods only. */
#define KORA4_PROFILE_DEMO_MOVIE 240
#define KORA4_PROFILE_DEMO_MUSIC 241
#define KORA4_PROFILE_DEMO_GAMES 242

/* Entries of GetProfileTable, by profile number: the presets, then the custom profiles. */
#define KORA4_PROFILE_TABLE_ENTRIES 9

/* How many there are of each kind; there are as many demo profiles as presets. */
#define KORA4_PRESET_PROFILES 3
#define KORA4_CUSTOM_PROFILES 6

/* UTF-16 units of a custom profile's name, without its terminator. A longer name is stored,
 * but can never be read again. */
#define KORA4_CUSTOM_NAME_MAX_LENGTH 2047

/* ---- Values of technologies ----------------------------------------------------------- */

/* Technologies of the API; their numbers are those of the enumeration KORA4APITechnology. */
#define KORA4_TECHNOLOGIES 6

/* Volume leveler, no unit: the engine's own scale. What Movie has until somebody sets it is
 * outside the limits, and still in effect: it can be read, but not set. */
#define KORA4_VOLUME_LEVELER_MIN 0
#define KORA4_VOLUME_LEVELER_MAX 10
#define KORA4_VOLUME_LEVELER_MOVIE_DEFAULT 262151

/* Intelligent EQ: the number of one of its built-in curves. */
#define KORA4_INTELLIGENT_EQ_BALANCED 0
#define KORA4_INTELLIGENT_EQ_OPEN 1
#define KORA4_INTELLIGENT_EQ_FOCUSED 2
#define KORA4_INTELLIGENT_EQ_BRIGHT 3
#define KORA4_INTELLIGENT_EQ_RICH 4
#define KORA4_INTELLIGENT_EQ_WARM 5
#define KORA4_INTELLIGENT_EQ_CURVES 6

/* Dialog enhancer, a share. */
#define KORA4_DIALOG_ENHANCER_MIN 0.0f
#define KORA4_DIALOG_ENHANCER_MAX 1.0f

/* Virtualizers for headphones and for speakers, no unit: the engine's own scale. What every
 * profile has for speakers until somebody sets it is outside the limits: it can be read, but
 * not set. */
#define KORA4_VIRTUALIZER_MIN 0.0f
#define KORA4_VIRTUALIZER_MAX 6.0f
#define KORA4_SPEAKER_VIRTUALIZER_DEFAULT 10.0f

/* Graphic EQ. More bands and gains beyond the limits are limited, not refused. Gains are
 * stored in equal steps, so many to 1 dB, and frequencies in whole hertz. The largest number
 * that a frequency's place in the store can hold is the highest frequency. */
#define KORA4_GRAPHIC_EQ_MAX_BANDS 40
#define KORA4_GRAPHIC_EQ_MIN_GAIN (-12.0f) /* dB */
#define KORA4_GRAPHIC_EQ_MAX_GAIN 12.0f    /* dB */
#define KORA4_GRAPHIC_EQ_STEPS_PER_DB 256
#define KORA4_GRAPHIC_EQ_MAX_FREQUENCY 32767.0f /* Hz */

/* ---- Levels of the engine ------------------------------------------------------------- */

/* Entries of the arrays of GetVisualizationData. */
#define KORA4_VISUALIZATION_BANDS 20

/* dB. What a band reads that no part of the engine has. */
#define KORA4_SILENT_GAIN (-144.0f)
#define KORA4_SILENT_EXCITATION (KORA4_SILENT_GAIN + KORA4_EXCITATION_OFFSET)

/* dB. What the library adds to the excitations that the engine publishes. */
#define KORA4_EXCITATION_OFFSET 36.0f

/* Milliseconds from one look at the levels to the next, when none is stored. */
#define KORA4_SAMPLING_PERIOD_DEFAULT 50

/* ---- The engine mask ------------------------------------------------------------------ */

/* What GetTechnologyMasterEnables hands out: the bit of each technology that the installed
 * engine carries, by the engine's own numbers, 1 to 10. They are not the numbers of
 * KORA4APITechnology. Which technology a number stands for is the engine's own matter and no
 * part of this API, so the bits have no names: recognise whole masks. */
#define KORA4_ENGINE_TECHNOLOGIES 10
#define KORA4_ENGINE_TECHNOLOGY_BIT(number) (1u << ((number)-1))

/* Engines that are known by their masks. No mask at all, 0, means that none is installed. */
#define KORA4_ENGINE_FULL 0x03FFu     /* technologies 1 to 10 */
#define KORA4_ENGINE_STANDARD 0x021Fu /* 1 to 5 and 10 */
#define KORA4_ENGINE_BASIC 0x0140u    /* 7 and 9 */

#endif /* KORA4API_CONSTANTS_H */
