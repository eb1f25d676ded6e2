// SPDX-License-Identifier: MIT
// The bands of a graphic equalizer: as text that equalizer tools exchange, and moved to other
// frequencies.
#ifndef KORA4_KORA4CTL_EQUALIZER_BANDS_H
#define KORA4_KORA4CTL_EQUALIZER_BANDS_H

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace kora4::tools {

// One band: the gain at a frequency.
struct Band {
    float frequency = 0;  // Hz
    float gain = 0;       // dB

    friend bool operator==(const Band&, const Band&) = default;
};
using Bands = std::vector<Band>;

// Hz. The store holds whole ones with a sign, in 16 bits.
inline constexpr float cHighestFrequency = std::numeric_limits<std::int16_t>::max();

// ---- Text -------------------------------------------------------------------------------

// "GraphicEQ: 20 -1.5; 25 0; ..." with comments (# to the end of the line), blank lines and
// line breaks between any two words. Frequencies are positive and ascend. `name` is the file's;
// Failure with eBadInput says in which line what is wrong.
Bands ParseGraphicEq(std::string_view text, const std::string& name);

// One line without its end; every number reads back as the same float.
std::string FormatGraphicEq(const Bands& bands);

// One decimal number with a point and nothing behind it; none when it is not.
bool ParseDecimal(std::string_view text, float& number);

// ---- Frequencies ------------------------------------------------------------------------

// What is wrong with the frequencies as they are stored, a sentence for each band that cannot
// be used: not positive, or not above the one before.
std::vector<std::string> FrequencyProblems(const Bands& bands);
// The same about one band; empty when nothing is wrong.
std::string FrequencyProblem(const Bands& bands, std::size_t index);

// The gains of a curve at other frequencies: linear in dB over the logarithm of the
// frequency, and beyond its ends what it is at the ends. Both ascend and are positive.
Bands Resample(const Bands& curve, const Bands& frequencies);

// To the nearest gain that can be stored.
float StorableGain(double gain);

// "-12 to +12", in dB; "1 to 32767 Hz".
std::string GainRange();
std::string FrequencyRange();

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_EQUALIZER_BANDS_H
