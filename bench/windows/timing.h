// SPDX-License-Identifier: MIT
// Time in processor ticks, and what many samples of it say.
#ifndef KORA4_BENCH_TIMING_H
#define KORA4_BENCH_TIMING_H

#include <x86intrin.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kora4::bench {

// The processor's own counter: the platform's has steps of 0.1 us here.
inline std::uint64_t Ticks() {
    return __rdtsc();
}

// Measured once, against the platform's counter.
double MicrosecondsPerTick();

double MedianOf(std::vector<double> values);

class Samples {
  public:
    // `calls`: how many calls the ticks were spent on.
    void Add(std::uint64_t ticks, std::uint32_t calls = 1) {
        m_microseconds.push_back(static_cast<double>(ticks) * MicrosecondsPerTick() / calls);
    }

    std::size_t Count() const { return m_microseconds.size(); }
    double Median() const { return At(0.5); }
    double Percentile99() const { return At(0.99); }

  private:
    double At(double share) const;

    std::vector<double> m_microseconds;
};

}  // namespace kora4::bench

#endif  // KORA4_BENCH_TIMING_H
