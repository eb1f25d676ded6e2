// SPDX-License-Identifier: MIT
// The length of a tick, and medians and percentiles of samples.
#include "windows/timing.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace kora4::bench {

double MicrosecondsPerTick() {
    static const double perTick = [] {
        LARGE_INTEGER frequency, begin, end;
        QueryPerformanceFrequency(&frequency);
        QueryPerformanceCounter(&begin);
        const std::uint64_t first = Ticks();
        Sleep(200);
        const std::uint64_t last = Ticks();
        QueryPerformanceCounter(&end);
        const double seconds = static_cast<double>(end.QuadPart - begin.QuadPart) /
                               static_cast<double>(frequency.QuadPart);
        return seconds * 1e6 / static_cast<double>(last - first);
    }();
    return perTick;
}

namespace {

// The value that `share` of the values do not exceed.
double ValueAt(double share, std::vector<double> values) {
    if (values.empty())
        return 0;
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(
                                          share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

}  // namespace

double MedianOf(std::vector<double> values) {
    return ValueAt(0.5, std::move(values));
}

double Samples::At(double share) const {
    return ValueAt(share, m_microseconds);
}

}  // namespace kora4::bench
