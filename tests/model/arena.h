// SPDX-License-Identifier: MIT
// What the tests of random calls against the model have in common: the store and its model,
// the library, an object at each seat, and the command line.
#ifndef KORA4_TESTS_MODEL_ARENA_H
#define KORA4_TESTS_MODEL_ARENA_H

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/seats.h"
#include "model/store_model.h"
#include "model/stored_values.h"
#include "model/told_model.h"

namespace kora4::test {

// The base of such a test. Its program has one.
class Arena {
  public:
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

  protected:
    // `name` tells the programs apart.
    explicit Arena(const std::wstring& name);
    ~Arena() = default;

    // What the model holds goes into the store, and an object takes each seat: 0 on the
    // driver's own thread, 1 in the multithreaded apartment, 2 in another process.
    void Enter();
    void Leave();

    // What the object of a seat has been told since the last Forget.
    std::vector<Told> ToldTo(std::size_t seat) const;
    // Lets calls in until `done` holds of every seat, or in vain; says of which it does.
    // Asks once, and again whenever that seat has been told something.
    std::array<bool, cSeats> AwaitAll(const std::function<bool(std::size_t)>& done);

    RawStore m_store;
    StoreModel m_model;
    Apartment m_apartment{COINIT_APARTMENTTHREADED};
    ApiLibrary m_library;
    Meeting m_meeting;
    StoredValues m_storedValues;
    std::array<std::unique_ptr<Seat>, cSeats> m_seats;

    LONG m_clockBase = 0;                     // the shared clock before the first step
    std::array<Hypotheses, cSeats> m_starts;  // what each object can be then
};

// PROGRAM [COUNT [SEED]]
struct ModelArguments {
    unsigned count;
    std::uint32_t seed;  // of the time of day, unless said
};

// Ends the program with `usage` when they are wrong.
ModelArguments ArgumentsOf(int argc, char** argv, unsigned defaultCount, const char* usage);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_ARENA_H
