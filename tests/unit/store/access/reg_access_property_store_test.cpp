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
#include "support/import_redirection.h"
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
        ASSERT_EQ(S_OK, PSCreateMemoryPropertyStore(
                            __uuidof(IPropertyStore),
                            reinterpret_cast<void**>(m_store.ReleaseAndGetAddressOf())));
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

void* WINAPI NoMemory(SIZE_T) {
    return nullptr;
}

TEST_F(RegAccessPropertyStore, ATextThatCannotBeCopiedIsNotStored) {
    UseStore();
    {
        const ImportRedirection memory(GetModuleHandleW(nullptr), "CoTaskMemAlloc", &NoMemory);
        ASSERT_TRUE(memory.IsInPlace());
        EXPECT_EQ(E_OUTOFMEMORY, m_access.WriteText(eKeySetPropertyStore, cKey, u"text"));
    }
    EXPECT_EQ(S_FALSE, ReadText());
}

TEST_F(RegAccessPropertyStore, NumbersReadBack) {
    UseStore();
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetPropertyStore, cKey, 0x80000001));
    EXPECT_EQ(S_OK, ReadUINT());
    EXPECT_EQ(0x80000001u, m_value);
}

TEST_F(RegAccessPropertyStore, NumbersAreStoredAsUnsigned32) {
    UseStore();
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetPropertyStore, cKey, 9));
    PROPVARIANT value;
    PropVariantInit(&value);
    ASSERT_EQ(S_OK, m_store->GetValue(std::bit_cast<PROPERTYKEY>(cKey), &value));
    EXPECT_EQ(VT_UI4, value.vt);
    EXPECT_EQ(9u, value.ulVal);
    PropVariantClear(&value);
}

TEST_F(RegAccessPropertyStore, TextsReadBack) {
    UseStore();
    for (const std::u16string text : {u"", u"a text", u"\u00e4\u4e2d"}) {
        EXPECT_EQ(S_OK, m_access.WriteText(eKeySetPropertyStore, cKey, text.c_str()));
        ASSERT_EQ(S_OK, ReadText());
        EXPECT_EQ(text, m_text.Get());
    }
}

TEST_F(RegAccessPropertyStore, ANullTextIsStoredAsTheEmptyOne) {
    UseStore();
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetPropertyStore, cKey, nullptr));
    ASSERT_EQ(S_OK, ReadText());
    EXPECT_EQ(std::u16string(), m_text.Get());
}

TEST_F(RegAccessPropertyStore, AbsentPropertiesAreSFalse) {
    UseStore();
    EXPECT_EQ(S_FALSE, ReadUINT());
    EXPECT_EQ(77u, m_value);
    EXPECT_EQ(S_FALSE, ReadText());
    EXPECT_FALSE(m_text);
}

TEST_F(RegAccessPropertyStore, PropertiesOfAnotherTypeAreSFalse) {
    UseStore();
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetPropertyStore, cKey, u"7"));
    EXPECT_EQ(S_FALSE, ReadUINT());
    EXPECT_EQ(77u, m_value);
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetPropertyStore, cKey, 7));
    EXPECT_EQ(S_FALSE, ReadText());
    EXPECT_FALSE(m_text);
}

TEST_F(RegAccessPropertyStore, BlobsAndDeletionAreRefused) {
    UseStore();
    std::uint32_t size = 0;
    std::uint8_t* data = nullptr;
    const std::uint8_t byte = 1;
    EXPECT_EQ(E_FAIL, m_access.ReadBlob(eKeySetPropertyStore, cKey, &size, &data));
    EXPECT_EQ(E_FAIL, m_access.WriteBlob(eKeySetPropertyStore, cKey, 1, &byte));
    EXPECT_EQ(E_INVALIDARG, m_access.Delete(eKeySetPropertyStore, cKey));
}

TEST_F(RegAccessPropertyStore, ItsValuesNeverReachTheRegistry) {
    UseStore();
    const std::string before = StoreSnapshot();
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetPropertyStore, cKey, 1));
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetPropertyStore, pkey::Setting(6), u"x"));
    EXPECT_EQ(before, StoreSnapshot());
}

TEST_F(RegAccessPropertyStore, WithoutAStoreEveryOperationFails) {
    EXPECT_EQ(E_FAIL, ReadUINT());
    EXPECT_EQ(77u, m_value);
    EXPECT_EQ(E_FAIL, ReadText());
    EXPECT_EQ(E_FAIL, m_access.WriteUINT(eKeySetPropertyStore, cKey, 1));
    EXPECT_EQ(E_FAIL, m_access.WriteText(eKeySetPropertyStore, cKey, u"x"));
    EXPECT_EQ(E_INVALIDARG, m_access.Delete(eKeySetPropertyStore, cKey));
}

TEST_F(RegAccessPropertyStore, WithoutAStoreEveryReadAndWriteFailsAnAssertion) {
    const TraceFlags flags(trace::eAssertions | trace::eLogFiles);
    const TraceLog log;
    ReadUINT();
    ReadText();
    m_access.WriteUINT(eKeySetPropertyStore, cKey, 1);
    m_access.WriteText(eKeySetPropertyStore, cKey, u"x");
    EXPECT_EQ(std::vector<std::string>(4, "KALASSERT failed: m_spIPropertyStore != NULL"),
              Messages(log.ReadShared()));
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
    EXPECT_EQ(RefusingStore::cRefusal, ReadUINT());
    EXPECT_EQ(RefusingStore::cRefusal, ReadText());
    EXPECT_EQ(RefusingStore::cRefusal, m_access.WriteUINT(eKeySetPropertyStore, cKey, 1));
    EXPECT_EQ(RefusingStore::cRefusal, m_access.WriteText(eKeySetPropertyStore, cKey, u"x"));
    m_access.SetPropertyStore(nullptr);
}

}  // namespace
}  // namespace kora4::test
