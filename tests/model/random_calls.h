// SPDX-License-Identifier: MIT
// Calls of the API, drawn at random. The draws depend on the seed alone, never on what the
// calls answered.
#ifndef KORA4_TESTS_MODEL_RANDOM_CALLS_H
#define KORA4_TESTS_MODEL_RANDOM_CALLS_H

#include <cstdint>
#include <random>

#include "model/seats.h"

namespace kora4::test {

// The source of all random choices of a run.
class RandomCalls {
  public:
    explicit RandomCalls(std::uint32_t seed) : m_random(seed) {}

    std::uint32_t Below(std::uint32_t bound);
    bool OneIn(std::uint32_t count) { return Below(count) == 0; }

    // Registration is not among them.
    Command Next();

    KORA4PatchValueUnion SliderValue();
    GraphicEQData EQ();
    float Between(float lowest, float highest);

  private:
    void DrawArguments(Command* pCommand);
    void DrawName(wchar_t* name);

    std::mt19937 m_random;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_RANDOM_CALLS_H
