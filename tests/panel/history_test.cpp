// SPDX-License-Identifier: MIT
// Taking back changes, and comparing two states.
#include "panel/model/history.h"

#include <gtest/gtest.h>

namespace panel {
namespace {

using Verdict = History::Verdict;
constexpr std::size_t cLeveler = IndexOf(Technology::eVolumeLeveler);
constexpr std::size_t cHeadphone = IndexOf(Technology::eHeadphoneVirtualizer);

class HistoryTest : public testing::Test {
  protected:
    // The settings change by somebody; each change is far from the one before.
    template <typename How>
    void Change(Origin origin, How how, unsigned gesture = 0, std::uint64_t later = 5000) {
        const Settings before = m_now;
        how(m_now);
        m_history.Note(origin, before, m_now, gesture, m_time += later);
    }
    void SetLeveler(Origin origin, double value, unsigned gesture = 0,
                    std::uint64_t later = 5000) {
        Change(
            origin, [=](Settings& now) { now.values[cLeveler] = value; }, gesture, later);
    }
    void Undo(Origin origin) {
        const History::Undo undo = m_history.TakeBack(origin, m_now);
        ASSERT_EQ(Verdict::eItems, undo.verdict);
        for (const Item& item : undo.items)
            Put(m_now, item);
    }

    Settings m_now;
    History m_history;
    std::uint64_t m_time = 0;
};

TEST_F(HistoryTest, TakesBackOneAfterTheOther) {
    SetLeveler(Origin::eOwn, 3);
    SetLeveler(Origin::eOwn, 7);
    Change(Origin::eOwn, [](Settings& now) { now.isEnabled = true; });
    Undo(Origin::eOwn);
    EXPECT_FALSE(m_now.isEnabled);
    Undo(Origin::eOwn);
    EXPECT_EQ(3, m_now.values[cLeveler]);
    Undo(Origin::eOwn);
    EXPECT_EQ(Settings{}, m_now);
    EXPECT_EQ(Verdict::eNothing, m_history.TakeBack(Origin::eOwn, m_now).verdict);
}

TEST_F(HistoryTest, TellsOwnFromForeign) {
    SetLeveler(Origin::eOwn, 3);
    Change(Origin::eForeign, [](Settings& now) { now.values[cHeadphone] = 2; });
    EXPECT_TRUE(m_history.Has(Origin::eForeign, m_now));
    Undo(Origin::eOwn);
    EXPECT_EQ(0, m_now.values[cLeveler]);
    EXPECT_EQ(2, m_now.values[cHeadphone]);
    EXPECT_FALSE(m_history.Has(Origin::eOwn, m_now));
    Undo(Origin::eForeign);
    EXPECT_EQ(0, m_now.values[cHeadphone]);
}

TEST_F(HistoryTest, DoesNotUndoWhatSomebodyHasChangedAgain) {
    SetLeveler(Origin::eOwn, 3);
    SetLeveler(Origin::eForeign, 5);
    EXPECT_EQ(Verdict::eOvertaken, m_history.TakeBack(Origin::eOwn, m_now).verdict);
    EXPECT_EQ(Verdict::eNothing, m_history.TakeBack(Origin::eOwn, m_now).verdict);
}

TEST_F(HistoryTest, TakesBackTheRestOfWhatWasRefusedHalfway) {
    Change(Origin::eOwn, [](Settings& now) {
        now.isEnabled = true;
        now.values[cLeveler] = 3;
    });
    m_now.isEnabled = false;
    const History::Undo undo = m_history.TakeBack(Origin::eOwn, m_now);
    ASSERT_EQ(Verdict::eItems, undo.verdict);
    EXPECT_EQ(Items{Get({}, Subject::eValue, cLeveler)}, undo.items);
}

TEST_F(HistoryTest, TakesNothingBackThatIsBackAlready) {
    SetLeveler(Origin::eOwn, 3);
    SetLeveler(Origin::eForeign, 0);
    EXPECT_EQ(Verdict::eOvertaken, m_history.TakeBack(Origin::eOwn, m_now).verdict);
}

TEST_F(HistoryTest, CountsADragAsOneChangeAndABurstOfOthersToo) {
    for (int i = 1; i <= 9; ++i)
        SetLeveler(Origin::eOwn, i, 4, 10);
    EXPECT_EQ(1u, m_history.Changes().size());
    for (int i = 9; i >= 1; --i)
        SetLeveler(Origin::eForeign, i, 0, i == 9 ? 5000 : 10);
    EXPECT_EQ(2u, m_history.Changes().size());
    Undo(Origin::eForeign);
    EXPECT_EQ(9, m_now.values[cLeveler]);
    Undo(Origin::eOwn);
    EXPECT_EQ(0, m_now.values[cLeveler]);
}

TEST_F(HistoryTest, KeepsFiftyChanges) {
    for (int i = 0; i < 60; ++i)
        SetLeveler(Origin::eOwn, 1 + i % 2);
    EXPECT_EQ(50, History::cMost);
    EXPECT_EQ(50u, m_history.Changes().size());
}

TEST_F(HistoryTest, KeepsOnesOwnHoweverManyChangesOthersMake) {
    SetLeveler(Origin::eOwn, 3);
    for (int i = 0; i < 60; ++i)
        Change(Origin::eForeign, [i](Settings& now) { now.isEnabled = i % 2 == 0; });
    EXPECT_TRUE(m_history.Has(Origin::eOwn, m_now));
    Undo(Origin::eOwn);
    EXPECT_EQ(0, m_now.values[cLeveler]);
}

TEST_F(HistoryTest, PassesOverWhatBelongsToAnotherProfile) {
    SetLeveler(Origin::eOwn, 3);
    Change(Origin::eForeign, [](Settings& now) {
        now.profile = KORA4_PROFILE_MUSIC;
        now.values[cLeveler] = 9;
    });
    EXPECT_EQ(Verdict::eNothing, m_history.TakeBack(Origin::eOwn, m_now).verdict);
    // Only the profile: its values come along by themselves.
    const History::Undo undo = m_history.TakeBack(Origin::eForeign, m_now);
    ASSERT_EQ(1u, undo.items.size());
    EXPECT_EQ(Subject::eProfile, undo.items[0].subject);
    m_now = {};
    m_now.values[cLeveler] = 3;
    Undo(Origin::eOwn);
    EXPECT_EQ(0, m_now.values[cLeveler]);
}

TEST_F(HistoryTest, BringsBackNoDeletedProfileAndDeletesNone) {
    const auto create = [](Settings& now) { now.names[3] = L"Evening"; };
    Change(Origin::eOwn, create);
    Change(Origin::eForeign, [](Settings& now) { now.names[3].reset(); });
    EXPECT_EQ(Verdict::eImpossible, m_history.TakeBack(Origin::eForeign, m_now).verdict);
    Change(Origin::eForeign, create);
    EXPECT_EQ(Verdict::eImpossible, m_history.TakeBack(Origin::eForeign, m_now).verdict);
    Change(Origin::eOwn, [](Settings& now) { now.names[3] = L"Morning"; });
    Undo(Origin::eOwn);
    EXPECT_EQ(L"Evening", m_now.names[3]);
}

TEST_F(HistoryTest, CannotSetAgainWhatIsOutsideTheLimits) {
    m_now.values[cLeveler] = KORA4_VOLUME_LEVELER_MOVIE_DEFAULT;
    SetLeveler(Origin::eOwn, 3);
    EXPECT_EQ(Verdict::eImpossible, m_history.TakeBack(Origin::eOwn, m_now).verdict);
    m_now.bands = {{100, 20}, {1000, 0}};
    Change(Origin::eOwn, [](Settings& now) { now.bands[0].gain = 5; });
    EXPECT_EQ(Verdict::eImpossible, m_history.TakeBack(Origin::eOwn, m_now).verdict);
    m_now.bands[0].gain = 20;
    Change(Origin::eOwn, [](Settings& now) { now.bands = {{64, 1}}; });
    EXPECT_EQ(Verdict::eImpossible, m_history.TakeBack(Origin::eOwn, m_now).verdict);
}

TEST_F(HistoryTest, GoesOnBehindADeletedProfile) {
    Change(Origin::eOwn, [](Settings& now) { now.isEnabled = true; });
    Change(Origin::eOwn, [](Settings& now) {
        now.profile = KORA4_PROFILE_P1;
        now.names[KORA4_PROFILE_P1] = L"Evening";
    });
    Change(Origin::eOwn, [](Settings& now) {
        now.profile = KORA4_PROFILE_MOVIE;
        now.names[KORA4_PROFILE_P1].reset();
    });
    EXPECT_EQ(Verdict::eImpossible, m_history.TakeBack(Origin::eOwn, m_now).verdict);
    EXPECT_EQ(Verdict::eOvertaken, m_history.TakeBack(Origin::eOwn, m_now).verdict);
    Undo(Origin::eOwn);
    EXPECT_EQ(Settings{}, m_now);
}

TEST_F(HistoryTest, ChoosesNoProfileThatDoesNotExist) {
    for (const long profile : {long{KORA4_PROFILE_P2}, 77L}) {
        m_now.profile = profile;
        Change(Origin::eForeign, [](Settings& now) { now.profile = KORA4_PROFILE_MUSIC; });
        EXPECT_EQ(Verdict::eImpossible, m_history.TakeBack(Origin::eForeign, m_now).verdict)
            << profile;
    }
}

TEST_F(HistoryTest, NotesNothingOfADemo) {
    SetLeveler(Origin::eOwn, 3);
    const Settings before = m_now;
    Change(Origin::eOwn, [](Settings& now) {
        now.profile = KORA4_PROFILE_DEMO_MUSIC;
        now.isEnabled = true;
        now.values[cLeveler] = 9;
    });
    Change(Origin::eForeign, [](Settings& now) { now.isEnabled = false; });
    Change(Origin::eForeign, [&](Settings& now) { now = before; });
    EXPECT_FALSE(m_history.Has(Origin::eForeign, m_now));
    Undo(Origin::eOwn);
    EXPECT_EQ(0, m_now.values[cLeveler]);
}

TEST_F(HistoryTest, TakesBackOneBandWhenOthersMovedAnother) {
    m_now.bands = {{100, 0}, {1000, 0}};
    for (int i = 1; i <= 3; ++i) {
        Change(
            Origin::eOwn, [](Settings& now) { now.bands[1].gain += 1; }, 7, 10);
        Change(Origin::eForeign, [](Settings& now) { now.bands[0].gain -= 1; });
    }
    Undo(Origin::eOwn);
    EXPECT_EQ((kora4::Bands{{100, -3}, {1000, 2}}), m_now.bands);
}

TEST_F(HistoryTest, NotesNothingWhenNothingChanged) {
    SetLeveler(Origin::eForeign, 0);
    EXPECT_TRUE(m_history.Changes().empty());
}

TEST(Comparison, GoesToAndFro) {
    Comparison comparison;
    Settings a;
    a.values[cLeveler] = 2;
    Settings b = a;
    b.values[cLeveler] = 8;
    EXPECT_FALSE(comparison.IsB());
    EXPECT_FALSE(comparison.Other()) << "both are the same at first";
    comparison.Exchange(a);
    EXPECT_TRUE(comparison.IsB());
    EXPECT_EQ(a, comparison.Other());
    comparison.Exchange(b);
    EXPECT_FALSE(comparison.IsB());
    EXPECT_EQ(b, comparison.Other());
}

TEST(Steps, SetWhatDiffersAndNothingThatCannotBeSet) {
    Settings from;
    from.bands = {{100, 0}, {1000, 0}};
    Settings to = from;
    to.switches[cHeadphone] = true;
    to.values[cLeveler] = KORA4_VOLUME_LEVELER_MOVIE_DEFAULT;
    to.names[4] = L"Other";
    to.bands[0].gain = 20;
    const Items items = Steps(from, to);
    ASSERT_EQ(1u, items.size());
    EXPECT_EQ(Subject::eSwitch, items[0].subject);
    EXPECT_TRUE(Steps(from, from).empty());
}

}  // namespace
}  // namespace panel
