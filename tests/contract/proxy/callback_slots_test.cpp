// SPDX-License-Identifier: MIT
// Every slot of IVeltoKORA4APICallback through a real proxy.
#include "contract/proxy/api_recorder.h"
#include "contract/proxy/border.h"

namespace kora4::test {
namespace {

using Callback = Border<CallbackRecorder, IVeltoKORA4APICallback>;

TEST_P(Callback, NumbersAndFlagsArrive) {
    EXPECT_EQ(S_OK, Through([](auto* c) {
                  return c->OnActiveProfileChange(KORA4_PROFILE_DEMO_GAMES);
              }));
    EXPECT_EQ(S_OK, Through([](auto* c) { return c->OnEnableStateChange(TRUE); }));
    EXPECT_EQ(S_OK, Through([](auto* c) { return c->OnCustomProfileTableChange(); }));
    EXPECT_EQ(S_OK, Through([](auto* c) {
                  return c->OnTechnologyOnElseOffChange(eVirtualizerSpkr, FALSE);
              }));
    EXPECT_EQ(
        "3 OnActiveProfileChange 242;4 OnEnableStateChange 1;5 OnCustomProfileTableChange;"
        "6 OnTechnologyOnElseOffChange 5 0;",
        Log());
}

TEST_P(Callback, EveryCaseOfTheValueArrives) {
    for (KORA4APITechnology technology :
         {eVolumeLeveler, eDialogEnhancer, eVirtualizerHP, eVirtualizerSpkr, eIntelligentEQ}) {
        KORA4PatchValueUnion value = SampleValue(technology, 0xABCD0000);
        EXPECT_EQ(S_OK, Through([&](auto* c) { return c->OnSimplePatchValueChange(&value); }));
        EXPECT_EQ("7 OnSimplePatchValueChange " + Text(value) + ";", Log());
    }
}

TEST_P(Callback, ValueWithoutACaseFailsInTheProxy) {
    KORA4PatchValueUnion value{eGraphicEQ, {5}};
    EXPECT_EQ(cBadDiscriminant,
              Through([&](auto* c) { return c->OnSimplePatchValueChange(&value); }));
    EXPECT_EQ("", Log());
}

TEST_P(Callback, TechnologyNumberThatNeedsMoreThanSixteenBitsNeverLeaves) {
    EXPECT_EQ(cEnumTooLarge, Through([](auto* c) {
                  return c->OnTechnologyOnElseOffChange(NumberAs<KORA4APITechnology>(0x8000),
                                                        TRUE);
              }));
    EXPECT_EQ("", Log());
}

TEST_P(Callback, GraphicEQArrivesWhole) {
    GraphicEQData data = SampleEQ(6);
    EXPECT_EQ(S_OK, Through([&](auto* c) { return c->OnGraphicEQChange(&data); }));
    EXPECT_EQ("8 OnGraphicEQChange " + Text(SampleEQ(6)) + ";", Log());
}

TEST_P(Callback, ResultTravelsBackUnchanged) {
    for (HRESULT result : {S_FALSE, E_ABORT, APOERR_NOT_INITIALIZED}) {
        m_object->m_result = result;
        EXPECT_EQ(result, Through([](auto* c) { return c->OnCustomProfileTableChange(); }));
    }
}

TEST_P(Callback, NullReferencesFailInTheProxy) {
    EXPECT_EQ(cNullReference,
              Through([](auto* c) { return c->OnSimplePatchValueChange(nullptr); }));
    EXPECT_EQ(cNullReference, Through([](auto* c) { return c->OnGraphicEQChange(nullptr); }));
    EXPECT_EQ("", Log());
}

KORA4_BOTH_BORDERS(Callback);

}  // namespace
}  // namespace kora4::test
