// SPDX-License-Identifier: MIT
// Where the bands of an equalizer are in its picture, and back from a point to a band and gain.
#ifndef KORA4_PANEL_MODEL_CURVE_H
#define KORA4_PANEL_MODEL_CURVE_H

#include <optional>

#include "panel/model/settings.h"

namespace panel {

struct Point {
    int x = 0;
    int y = 0;
};

// A rectangle without its right and lower edge.
struct Area {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    friend bool operator==(const Area&, const Area&) = default;
};

// The picture of one curve. Stored bands can be anything: when their frequencies do not ascend
// above 0, the bands stand side by side at equal distances; gains beyond the limits, or that
// are no number, stand at the edge.
class CurvePicture {
  public:
    CurvePicture(const kora4::Bands& bands, const Area& area);

    Point At(std::size_t band) const;
    int HeightOf(double gain) const;
    double GainAt(int y) const;  // inside the limits, in steps of 0.1 dB
    std::optional<std::size_t> Nearest(Point point) const;
    const Area& Plot() const { return m_area; }

  private:
    double Share(std::size_t band) const;

    const kora4::Bands& m_bands;
    Area m_area;
    bool m_isOrdered = false;
};

// The bands with a gain of one of them replaced by what can be stored of the new one.
kora4::Bands WithGain(kora4::Bands bands, std::size_t band, double gain);
// Whether a band of the one is a band of the other, whatever their gains.
bool IsSameBand(const kora4::Band& a, const kora4::Band& b);
bool AreSameBands(const kora4::Bands& a, const kora4::Bands& b);
// All gains 0.
kora4::Bands Flat(kora4::Bands bands);
// Whether a gain is no number or outside of what may be set.
bool IsOutside(const kora4::Band& band);

}  // namespace panel

#endif  // KORA4_PANEL_MODEL_CURVE_H
