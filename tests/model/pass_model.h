// SPDX-License-Identifier: MIT
// One notification pass as its client sees it: what the comparison with the store found,
// less what the object's own calls have overtaken before it was told.
#ifndef KORA4_TESTS_MODEL_PASS_MODEL_H
#define KORA4_TESTS_MODEL_PASS_MODEL_H

#include <cstdint>
#include <optional>
#include <vector>

#include "model/command.h"
#include "model/told_model.h"

namespace kora4::test {

// A call of the object's own client that gave S_OK.
struct OwnCall {
    const Command& command;
    const View& before;
    const View& after;

    // What it wrote of what clients are told.
    OwnWrite Written() const;
    // Whether what a pass about `profile` has found, and not told yet, is told no more.
    bool Overtakes(const Told& told, std::uint32_t profile) const;
};

// A pass on its way: what it still has to tell.
class PassModel {
  public:
    PassModel(const Baseline& known, const View& view)
        : m_profile(view.profile), m_left(ToldBy(known, view)) {}

    // The next call of the callback, if there is one more.
    std::optional<Told> Next();
    void Own(const OwnCall& call);
    // The callback is registered no more.
    void End() { m_left.clear(); }

    // What is still to be told.
    const std::vector<Told>& Left() const { return m_left; }
    unsigned Dropped() const { return m_dropped; }

  private:
    const std::uint32_t m_profile;
    std::vector<Told> m_left;
    unsigned m_dropped = 0;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_PASS_MODEL_H
