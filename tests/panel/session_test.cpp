// SPDX-License-Identifier: MIT
// What is shown while a change is on its way.
#include "panel/model/session.h"

#include <gtest/gtest.h>

namespace panel {
namespace {

constexpr std::size_t cLeveler = IndexOf(Technology::eVolumeLeveler);

Item Leveler(double value) {
    Item item;
    item.subject = Subject::eValue;
    item.index = cLeveler;
    item.number = value;
    return item;
}

Settings WithLeveler(double value) {
    Settings settings;
    settings.values[cLeveler] = value;
    return settings;
}

TEST(Session, ShowsWhatIsWantedUntilItIsAnswered) {
    Session session;
    session.Became(WithLeveler(2));
    session.Want(Leveler(5), 1);
    EXPECT_TRUE(session.Wants(Subject::eValue, cLeveler));
    EXPECT_EQ(5, session.Shown().values[cLeveler]);
    Settings other = WithLeveler(2);
    other.isEnabled = true;
    session.Became(other);
    EXPECT_EQ(5, session.Shown().values[cLeveler]) << "it does not jump back";
    EXPECT_TRUE(session.Shown().isEnabled);
    session.Answered(1);
    EXPECT_EQ(2, session.Shown().values[cLeveler]) << "refused: what is stored";
    EXPECT_FALSE(session.HasWishes());
}

TEST(Session, KeepsALaterWishWhenAnEarlierOneIsAnswered) {
    Session session;
    session.Want(Leveler(5), 1);
    session.Want(Leveler(6), 2);
    session.Want(Leveler(5), 3);
    session.Answered(1);
    EXPECT_EQ(5, session.Shown().values[cLeveler]);
    session.Answered(2);
    EXPECT_EQ(5, session.Shown().values[cLeveler]) << "the same as the first one";
    session.Answered(3);
    EXPECT_FALSE(session.HasWishes());
}

TEST(Session, ForgetsWishesWithTheConnection) {
    Session session;
    session.Want(Leveler(5), 1);
    session.Disconnected();
    EXPECT_FALSE(session.HasWishes());
}

TEST(Session, ShowsAWishInItsOwnProfileOnly) {
    Session session;
    session.Became(WithLeveler(2));
    session.Want(Leveler(5), 1);
    Settings music = WithLeveler(7);
    music.profile = KORA4_PROFILE_MUSIC;
    session.Became(music);
    EXPECT_EQ(7, session.Shown().values[cLeveler]);
    session.Want(Leveler(8), 2);
    EXPECT_EQ(8, session.Shown().values[cLeveler]);
    session.Became(WithLeveler(2));
    EXPECT_EQ(5, session.Shown().values[cLeveler]);
    session.Answered(2);
    EXPECT_FALSE(session.HasWishes()) << "the first one was answered before it";
}

TEST(Session, WishesForAProfileAreForTheOneThatIsWanted) {
    Session session;
    Item profile;
    for (const long wanted : {KORA4_PROFILE_MUSIC, KORA4_PROFILE_GAMES}) {
        profile.number = static_cast<double>(wanted);
        session.Want(profile, static_cast<unsigned>(wanted));
        EXPECT_EQ(wanted, session.Shown().profile);
    }
    session.Want(Leveler(8), 3);
    EXPECT_EQ(8, session.Shown().values[cLeveler]);
    session.Answered(2);
    EXPECT_EQ(0, session.Shown().values[cLeveler]) << "Games did not become active";
}

TEST(Session, WishesForABandLeaveTheOthersAlone) {
    Session session;
    Settings settings;
    settings.bands = {{100, 0}, {1000, 0}, {10000, 0}};
    session.Became(settings);
    Settings moved = settings;
    moved.bands[1].gain = 3;
    session.Want(Get(moved, Subject::eBand, 1), 1);
    settings.bands[0].gain = -6;
    session.Became(settings);
    EXPECT_EQ((kora4::Bands{{100, -6}, {1000, 3}, {10000, 0}}), session.Shown().bands);
    settings.bands = {{50, 0}, {500, 0}};
    session.Became(settings);
    EXPECT_EQ(settings.bands, session.Shown().bands) << "there is no such band";
}

TEST(Bands, AreSetTogetherWhereTheyAreThatWereMeant) {
    const kora4::Bands stored{{100, 1}, {1000, 2}, {10000, 3}};
    Settings from;
    from.bands = {{100, 0}, {1000, 0}, {10000, 0}};
    Settings to = from;
    to.bands[0].gain = 4;
    to.bands[2].gain = 5;
    const Items items = Difference(from, to);
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ((kora4::Bands{{100, 4}, {1000, 2}, {10000, 5}}), Together(items, stored));
    EXPECT_FALSE(Together(items, {{100, 1}, {1000, 2}})) << "fewer";
    EXPECT_FALSE(Together(items, {{100, 1}, {1000, 2}, {9000, 3}})) << "another frequency";
    to.bands[1].frequency = 900;
    ASSERT_EQ(1u, Difference(from, to).size());
    EXPECT_EQ(Subject::eBands, Difference(from, to)[0].subject);
}

TEST(Session, RemembersThePresetThatWasActiveLast) {
    Session session;
    Settings settings;
    settings.profile = KORA4_PROFILE_GAMES;
    session.Became(settings);
    settings.profile = KORA4_PROFILE_P1;
    session.Became(settings);
    EXPECT_EQ(KORA4_PROFILE_GAMES, session.LastPreset());
}

TEST(Session, FindsAFreeCustomProfile) {
    Settings settings;
    settings.names[3] = L"One";
    settings.names[5] = L"Three";
    EXPECT_EQ(4, FreeCustomProfile(settings));
    for (long profile = 3; profile <= 8; ++profile)
        settings.names[static_cast<std::size_t>(profile)] = L"x";
    EXPECT_FALSE(FreeCustomProfile(settings));
}

}  // namespace
}  // namespace panel
