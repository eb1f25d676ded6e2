// SPDX-License-Identifier: MIT
// The frequencies of the bands of a level display.
#pragma once

#include <vector>

#include "contract/defaults.h"
#include "settings/texts.h"

namespace kora4::tools {

// In Hz, one for each band. The levels themselves come without frequencies; these are the
// built-in ones of the intelligent equalizer, which has as many bands.
inline const std::vector<float>& DisplayFrequencies() {
    static const std::vector<float> cFrequencies =
        ParseNumericArray(defaults::DynEQFreqDefault[0]).value();
    return cFrequencies;
}

}  // namespace kora4::tools
