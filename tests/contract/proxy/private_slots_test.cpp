// SPDX-License-Identifier: MIT
// Every slot of the private interfaces through a real proxy.
#include <memory>

#include "contract/proxy/border.h"
#include "contract/proxy/private_recorders.h"

namespace kora4::test {
namespace {

using Gate = Border<GateRecorder, ICOMCallbackGate>;
using Version = Border<VersionRecorder, IKaltrixVersion>;
using Processor = Border<ProcessorRecorder, IKaltrixAudioProcessor>;
using Kora4 = Border<Kora4Recorder, IKaltrixVeltoKORA4>;

template <typename T>
void Fill(T* elements, size_t count, ULONG first) {
    for (size_t i = 0; i < count; ++i)
        elements[i] = static_cast<T>(first + i * 7);
}

TEST_P(Gate, ValueAndResultTravel) {
    EXPECT_EQ(S_OK, Through([](auto* gate) { return gate->Callback(0); }));
    m_object->m_result = E_ABORT;
    EXPECT_EQ(E_ABORT, Through([](auto* gate) { return gate->Callback(0xFFFFFFFF); }));
    EXPECT_EQ("3 Callback 0;3 Callback 4294967295;", Log());
    EXPECT_EQ(m_owner.ThreadId(), m_object->m_threadId);
}

TEST_P(Version, CharacterComesOut) {
    CHAR character = 0;
    EXPECT_EQ(S_OK, Through([&](auto* v) { return v->GetVersionCharacter(-5, &character); }));
    EXPECT_EQ("3 GetVersionCharacter -5;", Log());
    EXPECT_EQ('k', character);
}

TEST_P(Processor, PointerSizedNumbersKeepTheirUpperHalf) {
    EXPECT_EQ(S_OK, Through([](auto* p) {
                  return p->Control(-1, 0xFEDCBA9876543210, -0x123456789ABCDEF0);
              }));
    EXPECT_EQ("3 Control -1 18364758544493064720 -1311768467463790320;", Log());
}

TEST_P(Processor, FormatsArriveWhole) {
    KaltrixStreamFormat in;
    KaltrixStreamFormat out;
    Fill(in.m_words, 9, 0x80000001);
    Fill(out.m_words, 9, 500);
    EXPECT_EQ(S_OK, Through([&](auto* p) { return p->SetFormats(&in, &out); }));
    EXPECT_EQ("4 SetFormats " + std::to_string(Digest(in.m_words, 9)) + " " +
                  std::to_string(Digest(out.m_words, 9)) + ";",
              Log());
}

TEST_P(Processor, FloatsTravelBothWays) {
    float result = 0;
    EXPECT_EQ(S_OK, Through([&](auto* p) { return p->Exchange(1.5f, &result, 77); }));
    EXPECT_EQ(S_OK, Through([](auto* p) { return p->Reset(); }));
    EXPECT_EQ("5 Exchange 1.5 77;6 Reset;", Log());
    EXPECT_EQ(3.0f, result);
}

TEST_P(Kora4, LocalSlotsFailThroughAProxyWithoutReachingTheObject) {
    EXPECT_EQ(E_NOTIMPL, Through([](auto* k) { return k->LocalAttach(nullptr); }));
    EXPECT_EQ(E_NOTIMPL, Through([](auto* k) { return k->LocalDetach(nullptr); }));
    EXPECT_EQ(E_NOTIMPL, Through([](auto* k) { return k->LocalRead(nullptr); }));
    EXPECT_EQ(E_NOTIMPL, Through([](auto* k) { return k->LocalWrite(nullptr); }));
    EXPECT_EQ("", Log());
}

TEST_P(Kora4, LocalSlotsWorkInsideTheApartment) {
    m_object->m_throughProxy = false;
    m_owner.Run([&] {
        IKaltrixVeltoKORA4* object = m_object.Get();
        EXPECT_EQ(S_OK, object->LocalAttach(nullptr));
        EXPECT_EQ(S_OK, object->LocalDetach(nullptr));
        EXPECT_EQ(S_OK, object->LocalRead(nullptr));
        EXPECT_EQ(S_OK, object->LocalWrite(nullptr));
    });
    EXPECT_EQ("3 LocalAttach;4 LocalDetach;5 LocalRead;6 LocalWrite;", Log());
}

TEST_P(Kora4, ConfigurationArrivesWhole) {
    KaltrixHeader header;
    auto block = std::make_unique<KaltrixParameterBlock>();
    BYTE bytes[256];
    Fill(header.m_words, 4, 0x90000000);
    Fill(block->m_words, 725, 3);
    Fill(bytes, 256, 5);
    EXPECT_EQ(S_OK, Through([&](auto* k) {
                  return k->Configure(eKaltrixLast, &header, -1, 2, block.get(), -3, 4, 0.5f,
                                      -2.25f, bytes);
              }));
    std::ostringstream expected;
    expected << "7 Configure 32767 " << Digest(header.m_words, 4) << " -1 2 "
             << Digest(block->m_words, 725) << " -3 4 0.5 -2.25 " << Digest(bytes, 256) << ";";
    EXPECT_EQ(expected.str(), Log());
}

TEST_P(Kora4, SlotsBehindTheLocalOnesReachTheirOwnMethods) {
    EXPECT_EQ(S_OK, Through([](auto* k) { return k->SetPair(1.25f, -8.5f); }));
    EXPECT_EQ(S_OK, Through([](auto* k) { return k->SetSwitch(eKaltrixSecond, -4); }));
    EXPECT_EQ(S_OK, Through([](auto* k) { return k->SetOption(eKaltrixFirst, 9); }));
    EXPECT_EQ("8 SetPair 1.25 -8.5;9 SetSwitch 1 -4;11 SetOption 0 9;", Log());
}

TEST_P(Kora4, BothUnionSlotsCarryEachCase) {
    for (KaltrixSelector selector : {eKaltrixFirst, eKaltrixSecond}) {
        KaltrixValue value{selector, {0xA0000000u + static_cast<ULONG>(selector)}};
        const std::string text =
            std::to_string(selector) + " " + std::to_string(value.m_values.m_number) + ";";
        EXPECT_EQ(S_OK, Through([&](auto* k) { return k->SetValue(&value); }));
        EXPECT_EQ("10 SetValue " + text, Log());
        EXPECT_EQ(S_OK, Through([&](auto* k) { return k->ApplyValue(&value); }));
        EXPECT_EQ("12 ApplyValue " + text, Log());
    }
}

TEST_P(Kora4, UnionWithoutACaseFailsInTheProxy) {
    KaltrixValue value{eKaltrixLast, {1}};
    EXPECT_EQ(cBadDiscriminant, Through([&](auto* k) { return k->SetValue(&value); }));
    EXPECT_EQ(cBadDiscriminant, Through([&](auto* k) { return k->ApplyValue(&value); }));
    EXPECT_EQ("", Log());
}

TEST_P(Kora4, SelectorThatNeedsMoreThanSixteenBitsNeverLeaves) {
    const auto large = NumberAs<KaltrixSelector>(0x8000);
    EXPECT_EQ(cEnumTooLarge, Through([&](auto* k) { return k->SetSwitch(large, 1); }));
    EXPECT_EQ(cEnumTooLarge, Through([&](auto* k) { return k->SetOption(large, 1); }));
    EXPECT_EQ("", Log());
}

TEST_P(Kora4, OutputsComeOut) {
    LONG state = 0;
    EXPECT_EQ(S_OK, Through([&](auto* k) { return k->GetState(&state); }));
    EXPECT_EQ(-99, state);
    LONG count = 41;
    float first = 0;
    float second = 0;
    EXPECT_EQ(S_OK, Through([&](auto* k) { return k->GetLevels(&count, &first, &second); }));
    EXPECT_EQ(42, count);
    EXPECT_EQ(0.25f, first);
    EXPECT_EQ(-0.75f, second);
    LONG a = 0;
    LONG b = 0;
    LONG c = 0;
    EXPECT_EQ(S_OK, Through([&](auto* k) { return k->GetCounters(6, -6, &a, &b, &c); }));
    EXPECT_EQ(101, a);
    EXPECT_EQ(102, b);
    EXPECT_EQ(103, c);
    EXPECT_EQ("13 GetState;14 GetLevels 41;15 GetCounters 6 -6;", Log());
}

KORA4_BOTH_BORDERS(Gate);
KORA4_BOTH_BORDERS(Version);
KORA4_BOTH_BORDERS(Processor);
KORA4_BOTH_BORDERS(Kora4);

}  // namespace
}  // namespace kora4::test
