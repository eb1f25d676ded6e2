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
    session.Connected(WithLeveler(2));
    session.Want(Leveler(5));
    EXPECT_TRUE(session.Wants(Subject::eValue, cLeveler));
    EXPECT_EQ(5, session.Shown().values[cLeveler]);
    Settings other = WithLeveler(2);
    other.isEnabled = true;
    session.Became(other, Origin::eForeign, true, 0, 0);
    EXPECT_EQ(5, session.Shown().values[cLeveler]) << "it does not jump back";
    EXPECT_TRUE(session.Shown().isEnabled);
    session.Answered({Leveler(5)});
    EXPECT_EQ(2, session.Shown().values[cLeveler]) << "refused: what is stored";
    EXPECT_FALSE(session.HasWishes());
}

TEST(Session, KeepsALaterWishWhenAnEarlierOneIsAnswered) {
    Session session;
    session.Want(Leveler(5));
    session.Want(Leveler(6));
    session.Answered({Leveler(5)});
    EXPECT_EQ(6, session.Shown().values[cLeveler]);
    session.Answered({Leveler(6)});
    EXPECT_FALSE(session.HasWishes());
}

TEST(Session, ForgetsWishesWithTheConnection) {
    Session session;
    session.Want(Leveler(5));
    session.Disconnected();
    EXPECT_FALSE(session.HasWishes());
}

TEST(Session, NotesChangesButNotTheFirstReading) {
    Session session;
    session.Connected(WithLeveler(2));
    EXPECT_TRUE(session.Changes().Changes().empty());
    session.Became(WithLeveler(3), Origin::eOwn, true, 0, 0);
    session.Became(WithLeveler(2), Origin::eOwn, false, 0, 0);
    EXPECT_EQ(1u, session.Changes().Changes().size()) << "taking back is not noted";
}

TEST(Session, RemembersThePresetThatWasActiveLast) {
    Session session;
    Settings settings;
    settings.profile = KORA4_PROFILE_GAMES;
    session.Connected(settings);
    settings.profile = KORA4_PROFILE_P1;
    session.Became(settings, Origin::eOwn, true, 0, 0);
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
