// SPDX-License-Identifier: MIT
// Faults by their names.
#include "kora4sim/engine/faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "base/failure.h"

namespace kora4::tools::sim {
namespace {

using testing::HasSubstr;

// What is said of a fault that there is not; empty when it is taken.
std::string Refusal(std::string_view text) {
    try {
        ParseFault(text);
    } catch (const Failure& failure) {
        EXPECT_EQ(ExitCode::eBadInput, failure.Code()) << text;
        EXPECT_THAT(failure.Next(), HasSubstr("kora4sim --help"));
        return failure.what();
    }
    return {};
}

TEST(ParseFault, TakesNameArgumentAndMoment) {
    const Fault fault = ParseFault("garbage=nan@2.5");
    EXPECT_EQ(FaultKind::eGarbage, fault.kind);
    EXPECT_EQ("nan", fault.argument);
    EXPECT_EQ(2500u, fault.atMilliseconds);
    EXPECT_EQ(FaultCause::eCommandLine, fault.cause);
    EXPECT_EQ("garbage=nan", fault.Text());
}

TEST(ParseFault, IsAtOnceWithoutAMoment) {
    const Fault fault = ParseFault("stop");
    EXPECT_EQ(FaultKind::eStop, fault.kind);
    EXPECT_EQ(0u, fault.atMilliseconds);
    EXPECT_EQ("stop", fault.Text());
}

TEST(ParseFault, TakesNumbersWithinTheirRange) {
    EXPECT_EQ(0.25, ParseFault("hold=0.25").number);
    EXPECT_EQ(1000, ParseFault("burst=1000@1").number);
    for (const char* text : {"hold=0", "hold=601", "hold=-1", "hold=soon", "hold=1s", "burst=0",
                             "burst=1.5", "burst=100001", "hold=nan", "burst=inf"})
        EXPECT_THAT(Refusal(text), HasSubstr("expected ")) << text;
}

TEST(ParseFault, TakesEveryNameWithEveryKind) {
    for (const FaultDef& def : Faults()) {
        for (const FaultArgument& argument : ArgumentsOf(def.kind)) {
            const std::string text = std::string(def.name) + "=" + argument.name;
            EXPECT_EQ("", Refusal(text));
            EXPECT_FALSE(argument.meaning.empty()) << text;
        }
    }
}

TEST(ParseFault, DoesWithoutAnArgumentWhereThatIsAllowed) {
    for (const char* text : {"stop", "die", "wrong-types", "profile-garbage", "resume"})
        EXPECT_EQ("", Refusal(text));
    for (const char* text : {"garbage", "counts", "hold", "burst"})
        EXPECT_THAT(Refusal(text), HasSubstr("needs an argument")) << text;
}

TEST(ParseFault, AnswersWithTheNearestName) {
    EXPECT_EQ("Unknown fault 'garbag'. Did you mean 'garbage'?", Refusal("garbag"));
    EXPECT_THAT(Refusal("xyzzy"), HasSubstr("Expected one of: stop, garbage"));
    EXPECT_THAT(Refusal(""), HasSubstr("Unknown fault ''"));
}

TEST(ParseFault, AnswersWithTheKindsOfTheFault) {
    EXPECT_THAT(Refusal("garbage=trunc"), HasSubstr("Did you mean 'truncated'?"));
    EXPECT_THAT(Refusal("counts=zzz"), HasSubstr("Expected one of: records-more"));
    EXPECT_EQ("The fault 'stop' takes no argument.", Refusal("stop=now"));
    EXPECT_THAT(Refusal("die="), HasSubstr("lacks an argument"));
}

TEST(ParseFault, RefusesMomentsThatAreNone) {
    EXPECT_THAT(Refusal("stop@"), HasSubstr("expected a number of seconds"));
    EXPECT_THAT(Refusal("stop@later"), HasSubstr("expected a number of seconds"));
    EXPECT_THAT(Refusal("stop@-1"), HasSubstr("0 to 86400 seconds"));
    EXPECT_THAT(Refusal("stop@86401"), HasSubstr("0 to 86400 seconds"));
    EXPECT_THAT(Refusal("stop@nan"), HasSubstr("0 to 86400 seconds"));
}

}  // namespace
}  // namespace kora4::tools::sim
