// SPDX-License-Identifier: MIT
// The frame of the API's methods: order of the checks, results, and the lines around a body.
#include "api/method_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {
namespace {

constexpr auto cBad = msg::Message("CKORA4ASL::Plain", "**** Error: bad", {}, "");
constexpr auto cSaid = msg::Message(cBad.function, "said", {}, "");
constexpr auto cEntryWithArguments =
    msg::Line("CKORA4ASL::WithArguments", ">> first: %d second: %d", trace::eEntry,
              {msg::eCount, msg::eCount}, "");

constexpr Method cPlain{cBad.function, {.badArgument = cBad}};
constexpr Method cStateFirst{
    "CKORA4ASL::StateFirst",
    {.badArgument = cBad, .initialization = InitializationCheck::eBeforeArguments}};
constexpr Method cStateless{"CKORA4ASL::Stateless",
                            {.initialization = InitializationCheck::eNone}};
constexpr Method cQuiet{"CKORA4ASL::Quiet", {.tellsNotInitialized = false}};
constexpr Method cWithArguments{cEntryWithArguments.function};

HRESULT NeverRun() {
    ADD_FAILURE() << "the body ran";
    return S_OK;
}

class MethodFrame : public testing::Test {
  protected:
    std::vector<std::string> Told() { return Messages(m_log.Read(contract::tag::cApi)); }

    TraceFlags m_flags{cEveryCategory | trace::eLogFiles};
    TraceLog m_log;
};

using testing::ElementsAre;

TEST_F(MethodFrame, TheBodysResultTravelsUpUnchanged) {
    for (HRESULT hr : {S_OK, S_FALSE, HRESULT{0x00040202}, E_OUTOFMEMORY})
        EXPECT_EQ(hr, RunMethod(cPlain, true, true, [hr] { return hr; }));
}

TEST_F(MethodFrame, ArgumentsComeBeforeTheState) {
    EXPECT_EQ(E_INVALIDARG, RunMethod(cPlain, false, false, NeverRun));
    EXPECT_EQ(APOERR_NOT_INITIALIZED, RunMethod(cPlain, false, true, NeverRun));
    EXPECT_EQ(E_INVALIDARG, RunMethod(cPlain, true, false, NeverRun));
}

TEST_F(MethodFrame, AMethodMayHaveTheStateFirst) {
    EXPECT_EQ(APOERR_NOT_INITIALIZED, RunMethod(cStateFirst, false, false, NeverRun));
    EXPECT_EQ(E_INVALIDARG, RunMethod(cStateFirst, true, false, NeverRun));
}

TEST_F(MethodFrame, AMethodMayNeedNoState) {
    EXPECT_EQ(S_FALSE, RunMethod(cStateless, false, true, [] { return S_FALSE; }));
}

TEST_F(MethodFrame, TheBodysLinesStandBetweenEntryAndExit) {
    RunMethod(cPlain, true, true, [] {
        KALTRACE(cSaid);
        return S_FALSE;
    });
    EXPECT_THAT(Told(), ElementsAre(">>", "said", "<< hr: 0x00000001"));
}

TEST_F(MethodFrame, RefusalsAreTold) {
    RunMethod(cPlain, true, false, NeverRun);
    RunMethod(cPlain, false, true, NeverRun);
    EXPECT_THAT(Told(), ElementsAre(">>", "**** Error: bad", "<< hr: 0x80070057", ">>",
                                    "**** Error: APOERR_NOT_INITIALIZED", "<< hr: 0x887d0002"));
}

TEST_F(MethodFrame, AMethodMayRefuseWithoutAnErrorLine) {
    RunMethod(cQuiet, true, false, NeverRun);
    RunMethod(cQuiet, false, true, NeverRun);
    EXPECT_THAT(Told(), ElementsAre(">>", "<< hr: 0x80070057", ">>", "<< hr: 0x887d0002"));
}

TEST_F(MethodFrame, TheEntryLineMayHaveArguments) {
    RunMethod<cEntryWithArguments>(
        cWithArguments, true, true, [] { return S_OK; }, 7, -1);
    EXPECT_THAT(Told(), ElementsAre(">> first: 7 second: -1", "<< hr: 0x00000000"));
}

TEST_F(MethodFrame, TheLinesCarryTheLineOfTheMethodsTable) {
    static constexpr int cLine = __LINE__ + 1;
    static constexpr Method cHere{"CKORA4ASL::Here"};
    RunMethod(cHere, true, true, [] { return S_OK; });
    for (const TraceLine& line : m_log.Read(contract::tag::cApi)) {
        EXPECT_EQ(cLine, line.line);
        EXPECT_EQ("CKORA4ASL::Here", line.function);
    }
}

TEST_F(MethodFrame, WithTheDefaultWordOnlyMessagesAreTold) {
    trace::SetFlags(trace::cDefaultFlags | trace::eLogFiles);
    RunMethod(cPlain, false, true, NeverRun);
    EXPECT_THAT(Told(), ElementsAre("**** Error: APOERR_NOT_INITIALIZED"));
}

}  // namespace
}  // namespace kora4::test
