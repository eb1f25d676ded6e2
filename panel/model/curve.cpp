// SPDX-License-Identifier: MIT
// The geometry of the equalizer's curve.
#include "panel/model/curve.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "panel/model/limits.h"

namespace panel {

CurvePicture::CurvePicture(const kora4::Bands& bands, const Area& area)
    : m_bands(bands), m_area(area) {
    m_isOrdered = bands.size() > 1 && bands.front().frequency > 0 &&
                  std::isfinite(bands.back().frequency);
    for (std::size_t i = 1; i < bands.size(); ++i)
        m_isOrdered = m_isOrdered && bands[i].frequency > bands[i - 1].frequency;
}

// Half a step is left free at both ends.
double CurvePicture::Share(std::size_t band) const {
    const double margin = 0.5 / static_cast<double>(std::max<std::size_t>(m_bands.size(), 1));
    if (!m_isOrdered)
        return margin * (1 + 2 * static_cast<double>(band));
    const auto log = [this](std::size_t i) {
        return std::log2(static_cast<double>(m_bands[i].frequency));
    };
    const double share = (log(band) - log(0)) / (log(m_bands.size() - 1) - log(0));
    return margin + share * (1 - 2 * margin);
}

Point CurvePicture::At(std::size_t band) const {
    const double x = Share(band) * m_area.Width();
    return {m_area.left + static_cast<int>(std::lround(x)),
            HeightOf(static_cast<double>(m_bands[band].gain))};
}

int CurvePicture::HeightOf(double gain) const {
    const Limits limits = LimitsOf(Technology::eGraphicEq);
    const double inside =
        std::isnan(gain) ? limits.least : std::clamp(gain, limits.least, limits.most);
    const double share = (limits.most - inside) / (limits.most - limits.least);
    return m_area.top + static_cast<int>(std::lround(share * std::max(m_area.Height() - 1, 0)));
}

double CurvePicture::GainAt(int y) const {
    const Limits limits = LimitsOf(Technology::eGraphicEq);
    const int last = std::max(m_area.Height() - 1, 1);
    const double share = std::clamp(static_cast<double>(y - m_area.top) / last, 0.0, 1.0);
    const double gain = limits.most - share * (limits.most - limits.least);
    return std::round(gain / limits.step) * limits.step;
}

std::optional<std::size_t> CurvePicture::Nearest(Point point) const {
    std::optional<std::size_t> nearest;
    for (std::size_t i = 0; i < m_bands.size(); ++i)
        if (!nearest || std::abs(At(i).x - point.x) < std::abs(At(*nearest).x - point.x))
            nearest = i;
    return nearest;
}

kora4::Bands WithGain(kora4::Bands bands, std::size_t band, double gain) {
    if (band < bands.size())
        bands[band].gain = kora4::StorableGain(gain);
    return bands;
}

bool IsSameBand(const kora4::Band& a, const kora4::Band& b) {
    return !(a.frequency < b.frequency || b.frequency < a.frequency);
}

bool AreSameBands(const kora4::Bands& a, const kora4::Bands& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), IsSameBand);
}

kora4::Bands Flat(kora4::Bands bands) {
    for (kora4::Band& band : bands)
        band.gain = 0;
    return bands;
}

bool IsOutside(const kora4::Band& band) {
    return !IsInside(Technology::eGraphicEq, static_cast<double>(band.gain));
}

}  // namespace panel
