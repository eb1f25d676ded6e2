// SPDX-License-Identifier: MIT
// Changes of the store as command lines, so that any process can be told to make them.
#ifndef KORA4_TESTS_MULTIPROCESS_API_COMMANDS_H
#define KORA4_TESTS_MULTIPROCESS_API_COMMANDS_H

#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "support/com_client.h"
#include "support/raw_store.h"

namespace kora4::test {

// A method of the API by its name, with its arguments: "SetActiveProfile 1",
// "SetSimplePatchValue <technology> <value>", "SetGraphicEQData <bands> <first gain>".
// E_NOTIMPL: there is no such command.
HRESULT RunApiCommand(IVeltoKORA4API& api, const std::string& line);

// Every kind of change, with a random choice of its arguments.
std::string RandomCommand(std::mt19937& random);

// A writer that does not use the library. Technologies are numbered as in the API; a value
// is a small whole number, for the equalizer the gain of its only band.
//   begin, end                      a change of several values at once
//   profile <number>, enable <flag>, table
//   flag <technology> <profile> <flag>
//   value <technology> <profile> <number>
class RawWriter {
  public:
    // False when there is no such command.
    bool Run(const std::string& line);

  private:
    std::unique_ptr<RawTransaction> m_transaction;
};

// What a callback is told of a value that RawWriter wrote.
std::string ToldValue(KORA4APITechnology technology, std::uint32_t value);
std::string ToldFlag(KORA4APITechnology technology, bool flag);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_API_COMMANDS_H
