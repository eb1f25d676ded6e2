// SPDX-License-Identifier: MIT
// The key access on a property store: key set 1.
#include <gtest/gtest.h>
#include <propidl.h>
#include <propsys.h>
#include <wrl/client.h>

#include <bit>
#include <string>

#include "store/access/reg_prop_keys_access.h"
#include "store/access/task_memory.h"
#include "support/registry_fixture.h"
#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr PropertyKey cKey = pkey::Setting(5);

class RegAccessPropertyStore : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_HRESULT_SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        ResetStore();
        ASSERT_EQ(PSCreateMemoryPropertyStore(
                      __uuidof(IPropertyStore),
                      reinterpret_cast<void**>(m_store.ReleaseAndGetAddressOf())),
                  S_OK);
        ASSERT_HRESULT_SUCCEEDED(m_access.Open(true));
    }
    void TearDown() override {
        m_access.SetPropertyStore(nullptr);
        m_store.Reset();
        CoUninitialize();
    }

    void UseStore() { m_access.SetPropertyStore(m_store.Get()); }

    HRESULT ReadUINT() { return m_access.ReadUINT(eKeySetPropertyStore, cKey, &m_value); }
    HRESULT ReadText() { return m_access.ReadText(eKeySetPropertyStore, cKey, m_text.Put()); }

    ComPtr<IPropertyStore> m_store;
    KORA4RegPropKeysAccess m_access;
    std::uint32_t m_value = 77;
    TaskPtr<char16_t> m_text;
};

TEST_F(RegAccessPropertyStore, NumbersReadBack) {
    UseStore();
    EXPECT_EQ(m_access.WriteUINT(eKeySetPropertyStore, cKey, 0x80000001), S_OK);
    EXPECT_EQ(ReadUINT(), S_OK);
    EXPECT_EQ(m_value, 0x80000001u);
}

TEST_F(RegAccessPropertyStore, NumbersAreStoredAsUnsigned32) {
    UseStore();
    EXPECT_EQ(m_access.WriteUINT(eKeySetPropertyStore, cKey, 9), S_OK);
    PROPVARIANT value;
    PropVariantInit(&value);
    ASSERT_EQ(m_store->GetValue(std::bit_cast<PROPERTYKEY>(cKey), &value), S_OK);
    EXPECT_EQ(value.vt, VT_UI4);
    EXPECT_EQ(value.ulVal, 9u);
    PropVariantClear(&value);
}

TEST_F(RegAccessPropertyStore, TextsReadBack) {
    UseStore();
    for (const std::u16string text : {u"", u"a text", u"\u00e4\u4e2d"}) {
        EXPECT_EQ(m_access.WriteText(eKeySetPropertyStore, cKey, text.c_str()), S_OK);
        ASSERT_EQ(ReadText(), S_OK);
        EXPECT_EQ(m_text.Get(), text);
    }
}

TEST_F(RegAccessPropertyStore, ANullTextIsStoredAsTheEmptyOne) {
    UseStore();
    EXPECT_EQ(m_access.WriteText(eKeySetPropertyStore, cKey, nullptr), S_OK);
    ASSERT_EQ(ReadText(), S_OK);
    EXPECT_EQ(m_text.Get(), std::u16string());
}

TEST_F(RegAccessPropertyStore, AbsentPropertiesAreSFalse) {
    UseStore();
    EXPECT_EQ(ReadUINT(), S_FALSE);
    EXPECT_EQ(m_value, 77u);
    EXPECT_EQ(ReadText(), S_FALSE);
    EXPECT_FALSE(m_text);
}

TEST_F(RegAccessPropertyStore, PropertiesOfAnotherTypeAreSFalse) {
    UseStore();
    EXPECT_EQ(m_access.WriteText(eKeySetPropertyStore, cKey, u"7"), S_OK);
    EXPECT_EQ(ReadUINT(), S_FALSE);
    EXPECT_EQ(m_value, 77u);
    EXPECT_EQ(m_access.WriteUINT(eKeySetPropertyStore, cKey, 7), S_OK);
    EXPECT_EQ(ReadText(), S_FALSE);
    EXPECT_FALSE(m_text);
}

TEST_F(RegAccessPropertyStore, BlobsAndDeletionAreRefused) {
    UseStore();
    std::uint32_t size = 0;
    std::uint8_t* data = nullptr;
    const std::uint8_t byte = 1;
    EXPECT_EQ(m_access.ReadBlob(eKeySetPropertyStore, cKey, &size, &data), E_FAIL);
    EXPECT_EQ(m_access.WriteBlob(eKeySetPropertyStore, cKey, 1, &byte), E_FAIL);
    EXPECT_EQ(m_access.Delete(eKeySetPropertyStore, cKey), E_INVALIDARG);
}

TEST_F(RegAccessPropertyStore, ItsValuesNeverReachTheRegistry) {
    UseStore();
    const std::string before = StoreSnapshot();
    EXPECT_EQ(m_access.WriteUINT(eKeySetPropertyStore, cKey, 1), S_OK);
    EXPECT_EQ(m_access.WriteText(eKeySetPropertyStore, pkey::Setting(6), u"x"), S_OK);
    EXPECT_EQ(StoreSnapshot(), before);
}

TEST_F(RegAccessPropertyStore, WithoutAStoreEveryOperationFails) {
    EXPECT_EQ(ReadUINT(), E_FAIL);
    EXPECT_EQ(m_value, 77u);
    EXPECT_EQ(ReadText(), E_FAIL);
    EXPECT_EQ(m_access.WriteUINT(eKeySetPropertyStore, cKey, 1), E_FAIL);
    EXPECT_EQ(m_access.WriteText(eKeySetPropertyStore, cKey, u"x"), E_FAIL);
    EXPECT_EQ(m_access.Delete(eKeySetPropertyStore, cKey), E_INVALIDARG);
}

TEST_F(RegAccessPropertyStore, WithoutAStoreEveryReadAndWriteFailsAnAssertion) {
    const TraceFlags flags(trace::eAssertions | trace::eLogFiles);
    const TraceLog log;
    ReadUINT();
    ReadText();
    m_access.WriteUINT(eKeySetPropertyStore, cKey, 1);
    m_access.WriteText(eKeySetPropertyStore, cKey, u"x");
    EXPECT_EQ(Messages(log.ReadShared()),
              std::vector<std::string>(4, "KALASSERT failed: m_spIPropertyStore != NULL"));
}

// Refuses everything with a code of its own; lives on the stack.
class RefusingStore final : public IPropertyStore {
  public:
    static constexpr HRESULT cRefusal = static_cast<HRESULT>(0x80030005);

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetCount(DWORD*) override { return cRefusal; }
    STDMETHODIMP GetAt(DWORD, PROPERTYKEY*) override { return cRefusal; }
    STDMETHODIMP GetValue(REFPROPERTYKEY, PROPVARIANT*) override { return cRefusal; }
    STDMETHODIMP SetValue(REFPROPERTYKEY, REFPROPVARIANT) override { return cRefusal; }
    STDMETHODIMP Commit() override { return cRefusal; }
};

TEST_F(RegAccessPropertyStore, FailuresOfTheStorePassThrough) {
    RefusingStore refusing;
    m_access.SetPropertyStore(&refusing);
    EXPECT_EQ(ReadUINT(), RefusingStore::cRefusal);
    EXPECT_EQ(ReadText(), RefusingStore::cRefusal);
    EXPECT_EQ(m_access.WriteUINT(eKeySetPropertyStore, cKey, 1), RefusingStore::cRefusal);
    EXPECT_EQ(m_access.WriteText(eKeySetPropertyStore, cKey, u"x"), RefusingStore::cRefusal);
    m_access.SetPropertyStore(nullptr);
}

}  // namespace
}  // namespace kora4::test
