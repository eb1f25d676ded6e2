// SPDX-License-Identifier: MIT
// Where a window was on a monitor, as a text that fits any resolution of it.
#ifndef KORA4_PANEL_MODEL_PLACE_H
#define KORA4_PANEL_MODEL_PLACE_H

#include <optional>
#include <string>
#include <string_view>

#include "panel/model/curve.h"

namespace panel {

// Pixels at this resolution are the unit of what is remembered.
inline constexpr int cPlainDpi = 96;

// "40 30 900 640": from the corner of the monitor's work area, and the size, in plain pixels.
std::string PlaceText(const Area& window, const Area& workArea, int dpi);
// Back, at the resolution that the monitor has now; wholly inside of the work area, as far as
// `least` (the smallest size of the window, in pixels) allows. None when the text is no place.
std::optional<Area> PlaceOf(std::string_view text, const Area& workArea, int dpi, Point least);
// The window moved, and if need be made smaller, into the work area.
Area MovedInto(Area window, const Area& workArea, Point least);

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_PLACE_H
