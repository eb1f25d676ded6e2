// SPDX-License-Identifier: MIT
// Who changed what, and going back.
#include "panel/model/journal.h"

#include <gtest/gtest.h>

namespace panel {
namespace {

using Verdict = History::Verdict;
constexpr std::size_t cLeveler = IndexOf(Technology::eVolumeLeveler);

Settings WithLeveler(double value, long profile = KORA4_PROFILE_MOVIE) {
    Settings settings;
    settings.profile = profile;
    settings.values[cLeveler] = value;
    return settings;
}

class JournalTest : public testing::Test {
  protected:
    void Own(const Settings& settings) { m_journal.Became(settings, Origin::eOwn, 0, 0); }
    void Foreign(const Settings& settings) {
        m_journal.Became(settings, Origin::eForeign, 0, 0);
    }

    Journal m_journal;
};

TEST_F(JournalTest, NotesChangesButNotTheFirstReadingNorGoingBack) {
    m_journal.Opened(WithLeveler(2));
    EXPECT_FALSE(m_journal.Shown().hasForeign);
    Own(WithLeveler(3));
    EXPECT_TRUE(m_journal.Shown().hasOwn);
    EXPECT_EQ(Verdict::eItems, m_journal.TakeBack(Origin::eOwn).verdict);
    m_journal.WentBack(WithLeveler(2));
    EXPECT_FALSE(m_journal.Shown().hasOwn);
    EXPECT_FALSE(m_journal.Shown().hasForeign);
}

TEST_F(JournalTest, KeepsWhatCouldNotBeTakenBack) {
    m_journal.Opened(WithLeveler(2));
    Own(WithLeveler(3));
    EXPECT_EQ(Verdict::eItems, m_journal.TakeBack(Origin::eOwn).verdict);
    m_journal.Restore();
    EXPECT_TRUE(m_journal.Shown().hasOwn);
    EXPECT_EQ(Verdict::eItems, m_journal.TakeBack(Origin::eOwn).verdict);
}

TEST_F(JournalTest, StaysInTheStateInUseWhenTheOtherOneIsRefused) {
    m_journal.Opened(WithLeveler(2));
    EXPECT_FALSE(m_journal.Compare());
    EXPECT_TRUE(m_journal.Shown().isB);
    Own(WithLeveler(5));
    for (int i = 0; i < 2; ++i) {
        const auto items = m_journal.Compare();
        ASSERT_TRUE(items);
        ASSERT_EQ(1u, items->size());
        EXPECT_EQ(2, items->front().number);
        m_journal.Restore();
        EXPECT_TRUE(m_journal.Shown().isB);
    }
}

TEST_F(JournalTest, GoesBackInTheProfileThatWasShown) {
    m_journal.Opened(WithLeveler(2));
    EXPECT_TRUE(m_journal.IsMeant(KORA4_PROFILE_MOVIE));
    Foreign(WithLeveler(7, KORA4_PROFILE_MUSIC));
    EXPECT_FALSE(m_journal.IsMeant(KORA4_PROFILE_MOVIE)) << "its user saw Movie";
    EXPECT_TRUE(m_journal.IsMeant(KORA4_PROFILE_MUSIC));
    // Of two steps back the first one can be to another profile.
    m_journal.WentBack(WithLeveler(2));
    EXPECT_TRUE(m_journal.IsMeant(KORA4_PROFILE_MUSIC));
}

}  // namespace
}  // namespace panel
