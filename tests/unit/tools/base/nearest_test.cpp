// SPDX-License-Identifier: MIT
// Suggestions for mistyped names.
#include "base/nearest.h"

#include <gtest/gtest.h>

namespace kora4::tools {
namespace {

using Names = std::vector<std::string>;

const Names cProfiles = {"movie", "music", "games", "p1", "p2", "demo-movie", "demo-music"};

TEST(Nearest, WrongMissingSurplusAndSwappedLetters) {
    EXPECT_EQ(Names{"music"}, Nearest("musik", cProfiles));
    EXPECT_EQ(Names{"music"}, Nearest("musc", cProfiles));
    EXPECT_EQ(Names{"music"}, Nearest("musicc", cProfiles));
    EXPECT_EQ(Names{"music"}, Nearest("muisc", cProfiles));
    EXPECT_EQ(Names{"games"}, Nearest("agmes", cProfiles));
}

TEST(Nearest, CaseDoesNotCount) {
    EXPECT_EQ(Names{"movie"}, Nearest("MOVEI", cProfiles));
    EXPECT_EQ(Names{"Movie"}, Nearest("movie", {"Movie"}));
}

TEST(Nearest, BeginningOfANameFindsIt) {
    EXPECT_EQ((Names{"demo-movie", "demo-music"}), Nearest("demo", cProfiles));
    EXPECT_EQ(Names{"games"}, Nearest("g", cProfiles));
}

TEST(Nearest, LastPartOfANameFindsIt) {
    EXPECT_EQ(Names{"force-leave"}, Nearest("leave", {"enter", "force-leave"}));
    EXPECT_EQ(Names{}, Nearest("eave", {"force-leave"}));
}

TEST(Nearest, TheNearestComeFirst) {
    EXPECT_EQ((Names{"watch", "match", "watches"}),
              Nearest("watch", {"watches", "match", "watch"}));
}

TEST(Nearest, AtMostThree) {
    EXPECT_EQ((Names{"p1", "p2", "p3"}), Nearest("p", {"p1", "p2", "p3", "p4", "p5"}));
}

TEST(Nearest, NothingNear) {
    EXPECT_EQ(Names{}, Nearest("equalizer", cProfiles));
    EXPECT_EQ(Names{}, Nearest("", cProfiles));
    EXPECT_EQ(Names{}, Nearest("music", {}));
    // One letter of a short word, no more.
    EXPECT_EQ((Names{"p1", "p2"}), Nearest("p9", cProfiles));
    EXPECT_EQ(Names{}, Nearest("q9", cProfiles));
}

TEST(Nearest, SuggestionIsOneSentence) {
    EXPECT_EQ("Did you mean 'music'?", Suggestion("musik", cProfiles));
    EXPECT_EQ("Did you mean 'p1' or 'p2'?", Suggestion("p7", cProfiles));
    EXPECT_EQ("Did you mean 'a1', 'a2' or 'a3'?", Suggestion("a9", {"a1", "a2", "a3"}));
    EXPECT_EQ("Expected one of: on, off.", Suggestion("perhaps", {"on", "off"}));
}

}  // namespace
}  // namespace kora4::tools
