// SPDX-License-Identifier: MIT
// What the store keeps of a value: its text forms, worked out here apart from the library.
#ifndef KORA4_TESTS_MODEL_ENCODINGS_H
#define KORA4_TESTS_MODEL_ENCODINGS_H

#include <windows.h>

#include <cstdint>
#include <string>

#include "support/raw_store.h"
#include "veltokora4api.h"

namespace kora4::test {

inline constexpr ULONG cMaxBands = cMostElements;
inline constexpr unsigned cHertzScale = 1;
inline constexpr unsigned cGainScale = 256;

// Six decimals, the nearest ones, of two equally near ones the even one. For magnitudes up
// to 16, where a float holds every such text apart from its neighbours.
std::wstring FloatText(float value);
float FloatOf(const std::wstring& text);

// The scaled value without its fraction, as 16 bits.
std::uint16_t ArrayElement(float value, unsigned scale);
float ArrayValue(std::uint16_t element, unsigned scale);
std::wstring ArrayText(const float* values, ULONG count, unsigned scale);

// What is written for a graphic EQ: at most 40 bands, gains within -12 and 12 dB.
GraphicEQData Limited(const GraphicEQData& eq);
// What is read after that: the limited values as their texts hold them, zeros behind them.
GraphicEQData Stored(const GraphicEQData& eq);
GraphicEQData EQOf(const std::wstring& frequencies, const std::wstring& gains);

// Bit for bit, so that a negative zero is not a positive one.
bool Same(float a, float b);
bool Same(const GraphicEQData& a, const GraphicEQData& b);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_ENCODINGS_H
