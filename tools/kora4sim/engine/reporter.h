// SPDX-License-Identifier: MIT
// What the engine tells: one line for each event, in words or as JSON.
#pragma once

#include <string>

#include "base/output.h"

namespace kora4::tools::sim {

// Which lines are left when the user wants quiet.
enum class Weight {
    eNews,       // none of them
    eMilestone,  // the beginning, the end, and trouble
};

// Writes to standard output through Output. Single-threaded.
class Reporter {
  public:
    explicit Reporter(Output& output) : m_output(output) {}

    // The picture that comes next, from 0; part of each JSON line.
    void SetPicture(std::uint64_t picture) { m_picture = picture; }

    // words: what people read behind the time of day. JSON: {"time", "event", "cause",
    // "picture"} and then the details.
    void Tell(const std::string& event, const std::string& cause, const std::string& words,
              const Json& details = Json::object(), Weight weight = Weight::eNews);

    // Nobody reads any more.
    bool IsBroken() const { return m_output.IsBroken(); }

  private:
    Output& m_output;
    std::uint64_t m_picture = 0;
};

}  // namespace kora4::tools::sim
