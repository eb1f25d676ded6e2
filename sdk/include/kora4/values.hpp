// SPDX-License-Identifier: MIT
// The records of the API as standard types. Include kora4.hpp.
//
// Names in parentheses are safe from the platform's macros min and max.
#ifndef KORA4_VALUES_HPP
#define KORA4_VALUES_HPP

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <optional>
#include <string>

#include "kora4/equalizer.hpp"
#include "kora4api.h"

namespace kora4 {
inline namespace v1 {

// The curves of the intelligent equalizer.
enum class Curve : ULONG {
    eBalanced = KORA4_INTELLIGENT_EQ_BALANCED,  // Balanced
    eOpen = KORA4_INTELLIGENT_EQ_OPEN,          // Open
    eFocused = KORA4_INTELLIGENT_EQ_FOCUSED,    // Focused
    eBright = KORA4_INTELLIGENT_EQ_BRIGHT,      // Bright
    eRich = KORA4_INTELLIGENT_EQ_RICH,          // Rich
    eWarm = KORA4_INTELLIGENT_EQ_WARM           // Warm
};

// The version of the library.
struct Version {
    ULONG numbers[4] = {};  // the most significant one first
};

// The engine's present levels in dB, by band.
struct Levels {
    // KORA4_SILENT_GAIN where no part of the engine has the band.
    std::array<float, KORA4_VISUALIZATION_BANDS> gains{};
    // KORA4_SILENT_EXCITATION where no part of the engine has the band.
    std::array<float, KORA4_VISUALIZATION_BANDS> excitations{};
};

// By profile number; entries of preset profiles and of profiles that do not exist are empty.
using ProfileTable = std::array<std::optional<std::wstring>, KORA4_PROFILE_TABLE_ENTRIES>;

// The value of one technology other than the graphic equalizer: what a slider shows. All
// amounts are exact: a double holds every ULONG and every float.
class Value {
  public:
    // As the API has it.
    explicit Value(const KORA4PatchValueUnion& value) noexcept : m_value(value) {}

    // An amount in the unit of its technology. For the volume leveler and the intelligent
    // equalizer, which take whole numbers, a fraction is cut off, and what is no ULONG becomes
    // the largest one, which the API refuses.
    Value(KORA4APITechnology technology, double amount) noexcept : m_value{} {
        m_value.m_technology = technology;
        if (IsWhole()) {
            constexpr double cMost = (std::numeric_limits<ULONG>::max)();
            m_value.m_values.m_volumeSlider = amount >= 0 && amount <= cMost
                                                  ? static_cast<ULONG>(amount)
                                                  : (std::numeric_limits<ULONG>::max)();
        } else {
            m_value.m_values.m_enhancementSlider = static_cast<float>(amount);
        }
    }

    // Whose value it is.
    KORA4APITechnology Technology() const noexcept { return m_value.m_technology; }

    // The amount in the unit of its technology; of the intelligent equalizer, the curve's
    // number.
    double Amount() const noexcept {
        return IsWhole() ? static_cast<double>(m_value.m_values.m_volumeSlider)
                         : static_cast<double>(m_value.m_values.m_enhancementSlider);
    }

    // As the API has it.
    const KORA4PatchValueUnion& Raw() const noexcept { return m_value; }

    // Whether the technology takes whole numbers only.
    bool IsWhole() const noexcept {
        return m_value.m_technology == eVolumeLeveler || m_value.m_technology == eIntelligentEQ;
    }

  private:
    KORA4PatchValueUnion m_value;
};

// The bands that are in use. May throw std::bad_alloc.
inline Bands ToBands(const GraphicEQData& data) {
    Bands bands((std::min<ULONG>)(data.m_bands, KORA4_GRAPHIC_EQ_MAX_BANDS));
    for (std::size_t i = 0; i < bands.size(); ++i)
        bands[i] = {data.m_freq[i], data.m_gain[i]};
    return bands;
}

// The first KORA4_GRAPHIC_EQ_MAX_BANDS bands; the places behind the last one are 0.
inline GraphicEQData ToGraphicEQ(const Bands& bands) noexcept {
    GraphicEQData data{};
    data.m_bands =
        static_cast<ULONG>((std::min<std::size_t>)(bands.size(), KORA4_GRAPHIC_EQ_MAX_BANDS));
    for (std::size_t i = 0; i < data.m_bands; ++i) {
        data.m_freq[i] = bands[i].frequency;
        data.m_gain[i] = bands[i].gain;
    }
    return data;
}

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_VALUES_HPP
