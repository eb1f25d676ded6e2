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

Settings Custom(double leveler, const wchar_t* name) {
    Settings settings = WithLeveler(leveler, KORA4_PROFILE_P1);
    settings.names[KORA4_PROFILE_P1] = name;
    return settings;
}

TEST_F(TimelineTest, LosesAStateWhoseProfileIsDeletedAlsoWhenThereIsANewOne) {
    m_timeline.Opened(Custom(2, L"Evening"));
    m_timeline.Exchange(m_timeline.Now());
    EXPECT_TRUE(m_timeline.Compared().Other());
    EXPECT_FALSE(m_timeline.Compared().IsLost());
    Own(WithLeveler(5));
    EXPECT_FALSE(m_timeline.Compared().Other());
    EXPECT_TRUE(m_timeline.Compared().IsLost());
    EXPECT_FALSE(m_timeline.Shown().isB);
    Own(Custom(2, L"Morning"));
    EXPECT_FALSE(m_timeline.Compared().Other());
    m_timeline.Exchange(m_timeline.Now());
    EXPECT_FALSE(m_timeline.Compared().IsLost());
    EXPECT_TRUE(m_timeline.Compared().Other());
}

TEST_F(TimelineTest, KeepsAStateThatHasNoNameWhileItIsActive) {
    constexpr long cNoProfile = 77;
    m_timeline.Opened(WithLeveler(2, cNoProfile));
    m_timeline.Exchange(m_timeline.Now());
    Foreign(WithLeveler(3, cNoProfile));
    EXPECT_TRUE(m_timeline.Compared().Other());
    Foreign(WithLeveler(3));
    EXPECT_TRUE(m_timeline.Compared().IsLost()) << "it cannot be chosen again";
}

TEST_F(TimelineTest, TakesBackNothingOfADeletedProfileInANewOne) {
    m_timeline.Opened(Custom(2, L"Evening"));
    Own(Custom(3, L"Evening"));
    Foreign(WithLeveler(5));
    Foreign(Custom(3, L"Morning"));
    EXPECT_FALSE(m_timeline.Shown().hasOwn);
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
