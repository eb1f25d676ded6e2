// SPDX-License-Identifier: MIT
// A client that shows what it is told and what it has done itself, and reads again what it
// must: at the start, when it registers, and after each change of the profile.
#ifndef KORA4_TESTS_MODEL_MIRROR_H
#define KORA4_TESTS_MODEL_MIRROR_H

#include <array>
#include <string>

#include "model/pass_model.h"

namespace kora4::test {

// `known` is what the object knew then, before the call. Where others had changed the store
// since, the client has done or read something over a change that it is still to be told
// of: if they take the change back before the object looks, there is nothing to tell. Such
// an item is shown, but not compared until it is told, or read or written again.
class Mirror {
  public:
    explicit Mirror(const View& view) { ReadAll(view, Baseline(view)); }

    void ReadAll(const View& view, const Baseline& known);
    // Told while the store was as `view`.
    void Hear(const Told& told, const View& view, const Baseline& known);
    void Did(const OwnCall& call, const Baseline& known);
    // Somebody has created `profile`, as a copy of the one that was stored.
    void Created(std::uint32_t profile, const View& stored);

    // Each item that is shown otherwise than stored; empty when none is.
    std::string Difference(const View& view) const;
    // How many items Difference looks at.
    unsigned Certain() const;

  private:
    struct Doubts {
        bool profile = false;
        bool enable = false;
        std::array<bool, cToldTechnologies.size()> switches{};
    };

    static Doubts DoubtsOf(const View& view, const Baseline& known);
    void ReadProfile(const View& view, const Baseline& known);
    void ShowValue(std::size_t technology, const View& view);

    View m_shown{};
    Doubts m_doubts;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_MIRROR_H
