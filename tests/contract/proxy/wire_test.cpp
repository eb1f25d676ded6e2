// SPDX-License-Identifier: MIT
// The bytes that calls become, and requests that no proxy would make.
#include <gtest/gtest.h>

#include <algorithm>

#include "contract/proxy/api_recorder.h"
#include "contract/proxy/loopback_channel.h"
#include "contract/proxy/private_recorders.h"
#include "proxy/proxy_factory.h"

namespace kora4::test {
namespace {

using Bytes = std::vector<BYTE>;
using Microsoft::WRL::ComPtr;

class Outer final : public IUnknown {
  public:
    STDMETHODIMP QueryInterface(REFIID, void** ppv) override {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
};

template <typename Object, typename Interface>
class Wire : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(S_OK, PrxDllGetClassObject(IID_ICOMCallbackGate, IID_PPV_ARGS(&m_factory)));
        ASSERT_EQ(S_OK, m_factory->CreateStub(__uuidof(Interface), m_object.Get(), &m_stub));
        m_channel = std::make_unique<LoopbackChannel>(m_stub.Get());
        void* proxy = nullptr;
        ASSERT_EQ(S_OK, m_factory->CreateProxy(&m_outer, __uuidof(Interface), &m_proxyBuffer,
                                               &proxy));
        m_proxy = static_cast<Interface*>(proxy);
        ASSERT_EQ(S_OK, m_proxyBuffer->Connect(m_channel.get()));
    }
    void TearDown() override {
        m_proxy->Release();
        m_proxyBuffer->Disconnect();
        m_proxyBuffer.Reset();
        m_stub->Disconnect();
        m_stub.Reset();
    }

    // The little-endian number of `size` bytes at `offset` of the last request.
    ULONG Sent(size_t offset, size_t size) const {
        ULONG number = 0;
        for (size_t i = size; i-- > 0;)
            number = number << 8 | m_channel->m_request.at(offset + i);
        return number;
    }
    size_t SentSize() const { return m_channel->m_request.size(); }

    Outer m_outer;
    ComPtr<Object> m_object{new Object};
    ComPtr<IPSFactoryBuffer> m_factory;
    ComPtr<IRpcStubBuffer> m_stub;
    ComPtr<IRpcProxyBuffer> m_proxyBuffer;
    std::unique_ptr<LoopbackChannel> m_channel;
    Interface* m_proxy = nullptr;
};

using ApiWire = Wire<ApiRecorder, IVeltoKORA4API>;
using ProcessorWire = Wire<ProcessorRecorder, IKaltrixAudioProcessor>;
using Kora4Wire = Wire<Kora4Recorder, IKaltrixVeltoKORA4>;

TEST_F(ApiWire, ValueIsASixteenBitDiscriminantAndOneMember) {
    KORA4PatchValueUnion value{eIntelligentEQ, {0x12345678}};
    EXPECT_EQ(S_OK, m_proxy->SetSimplePatchValue(&value));
    EXPECT_EQ(30u, m_channel->m_slot);
    ASSERT_EQ(8u, SentSize());
    EXPECT_EQ(2u, Sent(0, 2));
    EXPECT_EQ(0x12345678u, Sent(4, 4));
}

TEST_F(ApiWire, TechnologyIsSixteenBits) {
    EXPECT_EQ(S_OK, m_proxy->SetTechnologyOnElseOff(eVirtualizerSpkr, 7));
    EXPECT_EQ(28u, m_channel->m_slot);
    ASSERT_EQ(8u, SentSize());
    EXPECT_EQ(5u, Sent(0, 2));
    EXPECT_EQ(7u, Sent(4, 4));
}

TEST_F(ApiWire, GraphicEQIsCopiedAsItIs) {
    GraphicEQData data = SampleEQ(2);
    EXPECT_EQ(S_OK, m_proxy->SetGraphicEQData(&data));
    ASSERT_EQ(324u, SentSize());
    EXPECT_EQ(0, std::memcmp(&data, m_channel->m_request.data(), 324));
}

TEST_F(ApiWire, VisualizationArraysAreEightyBytesEach) {
    float gain[KORA4_VISUALIZATION_BANDS] = {};
    float excitation[KORA4_VISUALIZATION_BANDS] = {};
    EXPECT_EQ(S_OK, m_proxy->GetVisualizationData(gain, excitation));
    EXPECT_EQ(160u, SentSize());
    EXPECT_EQ(164u, m_channel->m_reply.size());
}

TEST_F(ApiWire, TableOfNullsIsNineNullReferents) {
    LPWSTR names[KORA4_PROFILE_TABLE_ENTRIES] = {};
    EXPECT_EQ(S_OK, m_proxy->GetProfileTable(names));
    ASSERT_EQ(36u, SentSize());
    EXPECT_EQ(Bytes(36, 0), m_channel->m_request);
}

TEST_F(ApiWire, ForgedDiscriminantDoesNotReachTheObject) {
    const Bytes valid = {4, 0, 0, 0, 9, 0, 0, 0};
    EXPECT_EQ(S_OK, m_channel->Forge(30, valid));
    EXPECT_EQ("30 SetSimplePatchValue 4:9;", m_object->TakeLog());
    for (BYTE discriminant : Bytes{1, 6, 200}) {
        Bytes forged = valid;
        forged[0] = discriminant;
        EXPECT_HRESULT_FAILED(m_channel->Forge(30, forged));
        EXPECT_EQ("", m_object->TakeLog());
    }
}

TEST_F(ApiWire, SlotBeyondTheLastIsRefused) {
    EXPECT_HRESULT_FAILED(m_channel->Forge(33, {}));
    EXPECT_EQ("", m_object->TakeLog());
}

TEST_F(ProcessorWire, PointerSizedNumbersAreSixtyFourBits) {
    EXPECT_EQ(S_OK, m_proxy->Control(1, 2, 3));
    ASSERT_EQ(24u, SentSize());
    EXPECT_EQ(1u, Sent(0, 4));
    EXPECT_EQ(2u, Sent(8, 4));
    EXPECT_EQ(0u, Sent(12, 4));
    EXPECT_EQ(3u, Sent(16, 4));
}

TEST_F(ProcessorWire, FormatsAreThirtySixBytesEach) {
    KaltrixStreamFormat format{};
    EXPECT_EQ(S_OK, m_proxy->SetFormats(&format, &format));
    EXPECT_EQ(72u, SentSize());
}

TEST_F(Kora4Wire, ConfigurationIsItsPartsInOrder) {
    const KaltrixHeader header{{11, 12, 13, 14}};
    auto block = std::make_unique<KaltrixParameterBlock>();
    block->m_words[724] = 0xDEADBEEF;
    BYTE bytes[256] = {};
    bytes[255] = 0x7F;
    EXPECT_EQ(S_OK, m_proxy->Configure(eKaltrixSecond, &header, 21, 22, block.get(), 23, 24,
                                       1.0f, 2.0f, bytes));
    EXPECT_EQ(7u, m_channel->m_slot);
    // 16 bits and padding, 16, 2 x 4, 2900, 4 x 4, 256.
    ASSERT_EQ(4u + 16 + 8 + 2900 + 16 + 256, SentSize());
    EXPECT_EQ(1u, Sent(0, 2));
    EXPECT_EQ(11u, Sent(4, 4));
    EXPECT_EQ(22u, Sent(24, 4));
    EXPECT_EQ(0xDEADBEEFu, Sent(28 + 2896, 4));
    EXPECT_EQ(24u, Sent(28 + 2900 + 4, 4));
    EXPECT_EQ(0x7Fu, Sent(SentSize() - 1, 1));
}

TEST_F(Kora4Wire, UnionsHaveASixteenBitDiscriminant) {
    KaltrixValue value{eKaltrixSecond, {0x01020304}};
    EXPECT_EQ(S_OK, m_proxy->SetValue(&value));
    EXPECT_EQ(10u, m_channel->m_slot);
    ASSERT_EQ(8u, SentSize());
    EXPECT_EQ(1u, Sent(0, 2));
    EXPECT_EQ(0x01020304u, Sent(4, 4));
}

TEST_F(Kora4Wire, LocalSlotsSendNothing) {
    EXPECT_EQ(E_NOTIMPL, m_proxy->LocalAttach(nullptr));
    EXPECT_EQ(E_NOTIMPL, m_proxy->LocalWrite(nullptr));
    EXPECT_EQ(0u, m_channel->m_slot);
}

TEST_F(Kora4Wire, ForgedCallOfALocalSlotDoesNotReachTheObject) {
    for (ULONG slot = 3; slot <= 6; ++slot) {
        EXPECT_EQ(S_OK, m_channel->Forge(slot, {}));
        HRESULT answer = S_OK;
        ASSERT_EQ(sizeof answer, m_channel->m_reply.size());
        std::memcpy(&answer, m_channel->m_reply.data(), sizeof answer);
        EXPECT_EQ(E_NOTIMPL, answer);
    }
    EXPECT_EQ("", m_object->TakeLog());
}

TEST(ProxyFactory, ServesTheClassOfTheGateAndNoOther) {
    ComPtr<IUnknown> factory;
    EXPECT_EQ(S_OK, PrxDllGetClassObject(IID_ICOMCallbackGate, IID_PPV_ARGS(&factory)));
    ComPtr<IPSFactoryBuffer> buffer;
    EXPECT_EQ(S_OK, factory.As(&buffer));
    ComPtr<IUnknown> other;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
              PrxDllGetClassObject(CLSID_VeltoKORA4APITestCoclass, IID_PPV_ARGS(&other)));
    EXPECT_FALSE(other);
}

TEST(ProxyFactory, HasSixInterfacesAndNoMore) {
    ComPtr<IPSFactoryBuffer> factory;
    ASSERT_EQ(S_OK, PrxDllGetClassObject(IID_ICOMCallbackGate, IID_PPV_ARGS(&factory)));
    const IID* const interfaces[] = {&IID_ICOMCallbackGate,       &IID_IKaltrixAudioProcessor,
                                     &IID_IKaltrixVersion,        &IID_IKaltrixVeltoKORA4,
                                     &IID_IVeltoKORA4APICallback, &IID_IVeltoKORA4API};
    Outer outer;
    for (const IID* iid : interfaces) {
        ComPtr<IRpcProxyBuffer> buffer;
        void* proxy = nullptr;
        ASSERT_EQ(S_OK, factory->CreateProxy(&outer, *iid, &buffer, &proxy));
        static_cast<IUnknown*>(proxy)->Release();
    }
    ComPtr<IRpcProxyBuffer> buffer;
    void* proxy = nullptr;
    EXPECT_EQ(E_NOINTERFACE, factory->CreateProxy(&outer, IID_IPersist, &buffer, &proxy));
}

}  // namespace
}  // namespace kora4::test
