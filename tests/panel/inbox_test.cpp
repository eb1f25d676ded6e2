// SPDX-License-Identifier: MIT
// In which order the worker finds what it has to do.
#include "panel/worker/inbox.h"

#include <gtest/gtest.h>

namespace kora4::test {
namespace {

using namespace ::panel;

class PanelInbox : public testing::Test {
  protected:
    void Push(Action action, Items items = {}) {
        Command command;
        command.action = action;
        command.items = std::move(items);
        command.number = ++m_number;
        m_inbox.Push(std::move(command));
    }
    void Announce() {
        m_inbox.Announce([](Announced& announced) { announced.isAll = true; });
    }
    // The number of the next command; 0 when there is none.
    unsigned Next() {
        const Work work = m_inbox.Take(Inbox::Time{});
        return work.command ? work.command->number : 0;
    }

    Inbox m_inbox{nullptr};
    unsigned m_number = 0;
};

Item About(Subject subject, std::size_t index) {
    Item item;
    item.subject = subject;
    item.index = index;
    return item;
}

TEST_F(PanelInbox, GivesACommandAlsoWhileOthersGoOnChanging) {
    Push(Action::eUndo);
    Push(Action::eCompare);
    for (const unsigned number : {1u, 2u}) {
        Announce();
        const Work work = m_inbox.Take(Inbox::Time{});
        EXPECT_TRUE(work.announced.isAll);
        ASSERT_TRUE(work.command);
        EXPECT_EQ(number, work.command->number);
    }
}

TEST_F(PanelInbox, KeepsTheLastOneOfSeveralThatSetTheSame) {
    const Item leveler = About(Subject::eValue, 0);
    const Items bands{About(Subject::eBand, 0), About(Subject::eBand, 1)};
    Push(Action::eSet, {leveler});
    Push(Action::eSet, {leveler});
    Push(Action::eSet, {bands[1]});
    Push(Action::eSet, bands);
    Push(Action::eSet, {bands[0]});
    for (const unsigned number : {2u, 4u, 5u, 0u})
        EXPECT_EQ(number, Next());
}

TEST_F(PanelInbox, DoesEachStepThatWasAskedFor) {
    for (const Action action : {Action::eUndo, Action::eUndo, Action::eCompare})
        Push(action);
    for (const unsigned number : {1u, 2u, 3u, 0u})
        EXPECT_EQ(number, Next());
}

TEST(PanelCommand, CoversOneOfTheSameProfileAndAComparisonOfAny) {
    Command compare;
    compare.action = Action::eCompare;
    Command other = compare;
    other.profile = KORA4_PROFILE_MUSIC;
    EXPECT_TRUE(Covers(other, compare));
    compare.action = other.action = Action::eRevert;
    EXPECT_FALSE(Covers(other, compare));
    EXPECT_TRUE(Covers(compare, compare));
}

}  // namespace
}  // namespace kora4::test
