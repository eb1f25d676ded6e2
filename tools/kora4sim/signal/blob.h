// SPDX-License-Identifier: MIT
// The value that the engine publishes, and every way to spoil it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "kora4sim/signal/levels.h"
#include "kora4sim/signal/noise.h"
#include "registry/stored_value.h"

namespace kora4::tools::sim {

// The picture as readers expect it.
StoredValue Published(const Picture& picture);

// What is spoilt. number: of the picture, from 0.
struct Moment {
    const Picture& picture;
    Noise noise;
    std::uint64_t number;
};

// A way to spoil a picture.
struct Spoiling {
    const char* name;
    const char* meaning;
    StoredValue (*make)(const Moment& now);
};

// Values that are not levels, and values that state wrong counts.
std::span<const Spoiling> Garbage();
std::span<const Spoiling> WrongCounts();

// A digest of a sequence of values: the same values in the same order give the same digest.
class Digest {
  public:
    void Add(const StoredValue& value);
    // 16 hexadecimal digits.
    std::string Text() const;

  private:
    void Add(std::uint64_t word);

    std::uint64_t m_state = 0xCBF29CE484222325;
};

}  // namespace kora4::tools::sim
