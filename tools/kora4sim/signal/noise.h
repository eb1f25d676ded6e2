// SPDX-License-Identifier: MIT
// Repeatable random numbers.
#pragma once

#include <cstdint>

namespace kora4::tools::sim {

// Pseudo-random numbers that depend on the seed and on what is asked for, not on how often or
// in which order: a picture is the same whatever was drawn before it.
class Noise {
  public:
    explicit constexpr Noise(std::uint64_t seed) : m_seed(seed) {}

    // 64 even bits for a number and a part of it.
    constexpr std::uint64_t Word(std::uint64_t which, std::uint64_t part = 0) const {
        return Mixed(Mixed(m_seed ^ Mixed(which)) + part);
    }
    // From 0 up to below 1.
    constexpr double Even(std::uint64_t which, std::uint64_t part = 0) const {
        return static_cast<double>(Word(which, part) >> 11) * 0x1p-53;
    }

  private:
    static constexpr std::uint64_t Mixed(std::uint64_t word) {
        word += 0x9E3779B97F4A7C15;
        word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9;
        word = (word ^ (word >> 27)) * 0x94D049BB133111EB;
        return word ^ (word >> 31);
    }

    std::uint64_t m_seed;
};

}  // namespace kora4::tools::sim
