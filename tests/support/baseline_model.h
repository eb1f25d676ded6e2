// SPDX-License-Identifier: MIT
// The rules of what a client knows of the store, and so of what a notification pass tells it,
// for every test that predicts notifications. Shares no code with the library, and compiles
// for any platform.
#ifndef KORA4_TESTS_SUPPORT_BASELINE_MODEL_H
#define KORA4_TESTS_SUPPORT_BASELINE_MODEL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kora4::test {

// Technologies that clients are told of. The model knows them by their place in the order in
// which they are told.
inline constexpr std::size_t cToldTechnologyCount = 6;

// What of the store a client can be told the change of. A value is told when its trigger word
// has changed; the switches are those of the active profile.
struct StoreState {
    std::uint32_t profile = 0;
    bool enable = true;
    std::uint32_t table = 0;
    std::array<std::uint32_t, cToldTechnologyCount> triggers{};
    std::array<bool, cToldTechnologyCount> switches{};

    friend bool operator==(const StoreState&, const StoreState&) = default;
};

// One call of the callback, without what it hands over.
struct News {
    enum class Kind { eEnable, eProfile, eSwitch, eValue, eTable };

    Kind kind;
    std::size_t technology = 0;  // of a switch or a value

    friend bool operator==(const News&, const News&) = default;
};

// What a client takes for the state of the store, because it has been told it or has done it.
class Baseline {
  public:
    Baseline() = default;
    explicit Baseline(const StoreState& state) : m_known(state) {}

    const StoreState& Known() const { return m_known; }

    // What a pass over `stored` tells, in its order. After the pass the baseline is `stored`.
    std::vector<News> Compare(const StoreState& stored) const;

    // A call of the client itself has changed the store: what the baseline knew before, it
    // knows now. A foreign change that was pending stays so.
    void MoveWithOwn(const StoreState& before, const StoreState& after);

    friend bool operator==(const Baseline&, const Baseline&) = default;

  private:
    StoreState m_known;
};

// What a call of the client itself, which succeeded, has written of what clients are told.
struct OwnWrite {
    bool enable = false;
    bool profile = false;
    bool switches = false;
    bool values = false;
    std::optional<std::size_t> technology{};  // whose switch or value; none: that of each
    std::uint32_t profileBefore = 0;          // the active one; switches and values are its own
    std::uint32_t profileAfter = 0;

    // Whether what a pass over `analysed` has found, and not told yet, is told no more.
    bool Overtakes(const News& news, std::uint32_t analysed) const;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_BASELINE_MODEL_H
