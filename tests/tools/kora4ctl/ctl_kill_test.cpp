// SPDX-License-Identifier: MIT
// kora4ctl load that dies at each place in turn.
#include "tools/kora4ctl/broken_load.h"

namespace kora4::test {
namespace {

class KilledLoad : public BrokenLoad, public testing::WithParamInterface<Scope> {
  protected:
    void SetUp() override {
        BrokenLoad::SetUp();
        Prepare(GetParam());
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

INSTANTIATE_TEST_SUITE_P(Scopes, KilledLoad, testing::Values(Scope::eUser, Scope::eAll),
                         ScopeName);

}  // namespace
}  // namespace kora4::test
