// SPDX-License-Identifier: MIT
// Who changed what, and going back.
#include "panel/model/timeline.h"

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

class TimelineTest : public testing::Test {
  protected:
    void Own(const Settings& settings) { m_timeline.Became(settings, Origin::eOwn, 0, 0); }
    void Foreign(const Settings& settings) {
        m_timeline.Became(settings, Origin::eForeign, 0, 0);
    }

    Timeline m_timeline;
};

TEST_F(TimelineTest, NotesChangesButNotTheFirstReadingNorGoingBack) {
    m_timeline.Opened(WithLeveler(2));
    EXPECT_FALSE(m_timeline.Shown().hasForeign);
    Own(WithLeveler(3));
    EXPECT_TRUE(m_timeline.Shown().hasOwn);
    EXPECT_EQ(Verdict::eItems, m_timeline.TakeBack(Origin::eOwn).verdict);
    m_timeline.WentBack(WithLeveler(2));
    EXPECT_FALSE(m_timeline.Shown().hasOwn);
    EXPECT_FALSE(m_timeline.Shown().hasForeign);
}

TEST_F(TimelineTest, KeepsWhatCouldNotBeTakenBack) {
    m_timeline.Opened(WithLeveler(2));
    Own(WithLeveler(3));
    EXPECT_EQ(Verdict::eItems, m_timeline.TakeBack(Origin::eOwn).verdict);
    m_timeline.Restore();
    EXPECT_TRUE(m_timeline.Shown().hasOwn);
    EXPECT_EQ(Verdict::eItems, m_timeline.TakeBack(Origin::eOwn).verdict);
}

TEST_F(TimelineTest, StaysInTheStateInUseWhenTheOtherOneIsRefused) {
    m_timeline.Opened(WithLeveler(2));
    EXPECT_FALSE(m_timeline.Compare());
    EXPECT_TRUE(m_timeline.Shown().isB);
    Own(WithLeveler(5));
    for (int i = 0; i < 2; ++i) {
        const auto items = m_timeline.Compare();
        ASSERT_TRUE(items);
        ASSERT_EQ(1u, items->size());
        EXPECT_EQ(2, items->front().number);
        m_timeline.Restore();
        EXPECT_TRUE(m_timeline.Shown().isB);
    }
}

TEST_F(TimelineTest, GoesBackInTheProfileThatWasShown) {
    m_timeline.Opened(WithLeveler(2));
    EXPECT_TRUE(m_timeline.IsMeant(KORA4_PROFILE_MOVIE));
    Foreign(WithLeveler(7, KORA4_PROFILE_MUSIC));
    EXPECT_FALSE(m_timeline.IsMeant(KORA4_PROFILE_MOVIE)) << "its user saw Movie";
    EXPECT_TRUE(m_timeline.IsMeant(KORA4_PROFILE_MUSIC));
    // Of two steps back the first one can be to another profile.
    m_timeline.WentBack(WithLeveler(2));
    EXPECT_TRUE(m_timeline.IsMeant(KORA4_PROFILE_MUSIC));
}

}  // namespace
}  // namespace panel
