// SPDX-License-Identifier: MIT
// kora4ctl load, and doctor after it, that die at each place in turn.
//
// ctl_kill_test [EACH [SEED]]: of the places where values are put back every EACH-th
// (default: 40), the first of them chosen at random.
#include <cstdio>
#include <random>

#include "support/program_arguments.h"
#include "tools/kora4ctl/broken_load.h"

namespace kora4::test {
namespace {

class KilledLoad : public BrokenLoad, public testing::WithParamInterface<Scope> {
  protected:
    void SetUp() override {
        BrokenLoad::SetUp();
        Prepare(GetParam());
    }

    // The places from `first` to `last` that are looked at.
    static std::vector<std::size_t> Some(std::size_t first, std::size_t last) {
        const unsigned each = ProgramArgument(1, 40);
        const unsigned seed = SeedArgument(2);
        std::vector<std::size_t> places;
        for (std::size_t n = first + std::mt19937(seed)() % each; n <= last; n += each)
            places.push_back(n);
        std::printf("%zu of %zu places, seed %u\n", places.size(), last + 1 - first, seed);
        return places;
    }

    // How many values are those of the document already.
    std::size_t Written() const {
        const StoreValues now = ReadStoreValues();
        std::size_t written = 0;
        for (const tools::SchemaValue& value : tools::Schema()) {
            const std::pair place(value.keySet, value.Name());
            const auto present = now.find(place);
            const auto old = m_stores.before.find(place);
            if (value.role == tools::Role::eTrigger || value.role == tools::Role::eTableCounter)
                continue;
            written += (present == now.end()) != (old == m_stores.before.end()) ||
                       (present != now.end() && present->second != old->second);
        }
        return written;
    }
};

TEST_P(KilledLoad, AtEachWriteIsMendedByDoctor) {
    for (std::size_t n = 1; n <= m_load.Writes() && !HasFailure(); ++n) {
        SCOPED_TRACE("dies before write " + std::to_string(n));
        const ToolResult result = LoadWith(At("die", n));
        EXPECT_EQ(cDied, result.exitCode) << result;
        EXPECT_TRUE(HasJournal());
        EXPECT_EQ(Written(), std::min(n - 1, m_load.changes));
        ExpectMended(n);
        if (n > m_load.changes)
            ReplaceStoreValues(m_stores.before);
    }
}

TEST_P(KilledLoad, BehindTheLastWriteIsFinishedByDoctor) {
    EXPECT_EQ(cDied, LoadWith(At("die-after", m_load.Writes())).exitCode);
    EXPECT_TRUE(HasJournal());
    ExpectStore(m_load.after);
    ExpectFinished();
}

// The last value is refused, and all others are put back; then what moves counters.
TEST_P(KilledLoad, WhilePuttingBackIsMendedByDoctor) {
    for (const std::size_t n : Some(1, m_load.changes - 1)) {
        if (HasFailure())
            break;
        SCOPED_TRACE("dies before it puts back number " + std::to_string(n));
        const ToolResult result =
            LoadWith(At("fail", m_load.changes) + " " + At("die", m_load.changes + n));
        EXPECT_EQ(cDied, result.exitCode) << result;
        EXPECT_TRUE(HasJournal());
        ExpectPutBack();
    }
}

TEST_P(KilledLoad, WhoseDoctorDiesTooIsMendedByTheNext) {
    for (const std::size_t n : Some(1, m_load.changes - 1)) {
        if (HasFailure())
            break;
        SCOPED_TRACE("doctor dies before write " + std::to_string(n));
        EXPECT_EQ(cDied, LoadWith(At("die", m_load.changes)).exitCode);
        const ToolResult result = RunTool(cFaulty, {"doctor"}, {}, Faults(At("die", n)));
        EXPECT_EQ(cDied, result.exitCode) << result;
        EXPECT_TRUE(HasJournal());
        ExpectPutBack();
    }
}

INSTANTIATE_TEST_SUITE_P(Scopes, KilledLoad, testing::Values(Scope::eUser, Scope::eAll),
                         ScopeName);

}  // namespace
}  // namespace kora4::test
