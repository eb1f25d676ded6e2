// SPDX-License-Identifier: MIT
// What a callback at a seat does when it has been told something.
#ifndef KORA4_TESTS_MODEL_REACTIONS_H
#define KORA4_TESTS_MODEL_REACTIONS_H

#include <windows.h>

#include <cstdint>

#include "model/command.h"

namespace kora4::test {

inline constexpr std::size_t cRawNameCapacity = 48;
inline constexpr std::size_t cRawTextCapacity = 216;
inline constexpr LONG cMaxRawWrites = 24;
inline constexpr LONG cMaxReactions = 48;

// One value of the store, a text or a number.
struct RawWrite {
    bool dynamic;
    bool isText;
    std::uint32_t number;
    wchar_t name[cRawNameCapacity];
    wchar_t text[cRawTextCapacity];
};

// A change by a program that is not a client of the API; all see it as one.
struct RawChange {
    LONG count;
    RawWrite writes[cMaxRawWrites];

    void Perform() const;
};

// What a callback does in one of its calls.
struct Reaction {
    LONG atTold;           // in this call of the callback since the last Forget, the first is 0
    bool fromOtherThread;  // of the multithreaded apartment; the callback waits for it
    Command command;       // of the seat's own object, unless `change` has writes
    RawChange change;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_REACTIONS_H
