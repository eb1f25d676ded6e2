// SPDX-License-Identifier: MIT
// The key access on the real registry: key sets 2 to 4.
#include "store/access/reg_prop_keys_access.h"

#include <gtest/gtest.h>

#include <objidl.h>

#include <array>
#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "contract/registry_paths.h"
#include "contract/value_kind.h"
#include "store/access/task_memory.h"
#include "support/registry_fixture.h"
#include "support/trace_capture.h"
#include "support/trace_flags.h"

namespace kora4::test {
namespace {

constexpr PropertyKey cKey = pkey::Setting(5);
constexpr std::uint32_t cUntouched = 0xABABABAB;
constexpr std::array cRegistrySets{eKeySetStatic, eKeySetDynamic, eKeySetApp};

class RegAccess : public ::testing::Test {
  protected:
    void SetUp() override { ResetStore(); }
    void TearDown() override { ResetStore(); }

    void OpenWritable() { ASSERT_HRESULT_SUCCEEDED(m_access.Open(true)); }

    void StoreBytes(DWORD type, const std::vector<std::uint8_t>& data) {
        WriteRaw(eKeySetStatic, cKey, type, data.data(), data.size());
    }
    void StoreText(const std::u16string& text, std::size_t bytes) {
        WriteRaw(eKeySetStatic, cKey, REG_SZ, text.data(), bytes);
    }

    HRESULT ReadUINT(KORA4KeySet keySet = eKeySetStatic) {
        m_value = cUntouched;
        return m_access.ReadUINT(keySet, cKey, &m_value);
    }
    HRESULT ReadText(KORA4KeySet keySet = eKeySetStatic) {
        m_text.Reset();
        return m_access.ReadText(keySet, cKey, m_text.Put());
    }
    HRESULT ReadBlob(KORA4KeySet keySet = eKeySetStatic) {
        m_size = cUntouched;
        m_data.Reset();
        return m_access.ReadBlob(keySet, cKey, &m_size, m_data.Put());
    }
    std::u16string Text() const { return m_text ? m_text.Get() : u"(null)"; }

    KORA4RegPropKeysAccess m_access;
    std::uint32_t m_value = cUntouched;
    TaskPtr<char16_t> m_text;
    std::uint32_t m_size = cUntouched;
    TaskPtr<std::uint8_t> m_data;
};

// ---- Opening ------------------------------------------------------------------------------

void ExpectNotOpen(KORA4RegPropKeysAccess& access) {
    std::uint32_t value = 0;
    char16_t* text = nullptr;
    std::uint8_t* data = nullptr;
    for (const KORA4KeySet keySet : {eKeySetPropertyStore, eKeySetStatic, eKeySetDynamic,
                                     eKeySetApp, static_cast<KORA4KeySet>(5)}) {
        EXPECT_EQ(APOERR_NOT_INITIALIZED, access.ReadUINT(keySet, cKey, &value));
        EXPECT_EQ(APOERR_NOT_INITIALIZED, access.ReadText(keySet, cKey, &text));
        EXPECT_EQ(APOERR_NOT_INITIALIZED, access.ReadBlob(keySet, cKey, &value, &data));
        EXPECT_EQ(APOERR_NOT_INITIALIZED, access.WriteUINT(keySet, cKey, 1));
        EXPECT_EQ(APOERR_NOT_INITIALIZED, access.WriteText(keySet, cKey, u"x"));
        EXPECT_EQ(APOERR_NOT_INITIALIZED, access.WriteBlob(keySet, cKey, 0, nullptr));
        EXPECT_EQ(APOERR_NOT_INITIALIZED, access.Delete(keySet, cKey));
    }
}

TEST_F(RegAccess, EveryOperationIsRefusedBeforeItIsOpen) {
    ExpectNotOpen(m_access);
}

TEST_F(RegAccess, EveryOperationIsRefusedAfterItIsClosed) {
    OpenWritable();
    m_access.Close();
    ExpectNotOpen(m_access);
}

TEST_F(RegAccess, WritableOpenCreatesTheStaticAndDynamicKeysOnly) {
    RemoveStore();
    EXPECT_EQ(S_FALSE, m_access.Open(true));
    EXPECT_EQ("[]\n[DynamicKeys]\n[StaticKeys]\n", StoreSnapshot());
}

TEST_F(RegAccess, OpenIsSOkWhenEveryKeyExists) {
    CreateKey(HKEY_LOCAL_MACHINE, cAppKeysPath);
    EXPECT_EQ(S_OK, m_access.Open(true));
    m_access.Close();
    EXPECT_EQ(S_OK, m_access.Open(false));
}

TEST_F(RegAccess, OpeningTwiceIsHarmless) {
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.Open(true));
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetStatic, cKey, 3));
}

TEST_F(RegAccess, ItCanBeOpenedAgainAfterItWasClosed) {
    OpenWritable();
    m_access.Close();
    m_access.Close();
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetStatic, cKey, 3));
}

TEST_F(RegAccess, ReadOnlyOpenOfAnAbsentStoreSucceedsAndCreatesNothing) {
    RemoveStore();
    EXPECT_EQ(S_FALSE, m_access.Open(false));
    EXPECT_TRUE(m_access.IsOpen());
    EXPECT_EQ("", StoreSnapshot());
}

TEST_F(RegAccess, KeysThatWereAbsentAtOpeningReadAsAbsentValues) {
    RemoveStore();
    ASSERT_HRESULT_SUCCEEDED(m_access.Open(false));
    for (const KORA4KeySet keySet : cRegistrySets) {
        EXPECT_EQ(S_FALSE, ReadUINT(keySet));
        EXPECT_EQ(cUntouched, m_value);
        EXPECT_EQ(S_FALSE, ReadText(keySet));
        EXPECT_EQ(S_FALSE, ReadBlob(keySet));
    }
}

TEST_F(RegAccess, WritesAndDeletesOfKeysThatWereAbsentAtOpeningSucceedAndDoNothing) {
    RemoveStore();
    ASSERT_HRESULT_SUCCEEDED(m_access.Open(false));
    const std::uint8_t byte = 1;
    for (const KORA4KeySet keySet : cRegistrySets) {
        EXPECT_EQ(S_OK, m_access.WriteUINT(keySet, cKey, 1));
        EXPECT_EQ(S_OK, m_access.WriteText(keySet, cKey, u"x"));
        EXPECT_EQ(S_OK, m_access.WriteBlob(keySet, cKey, 1, &byte));
        EXPECT_EQ(S_OK, m_access.Delete(keySet, cKey));
    }
    EXPECT_EQ("", StoreSnapshot());
}

TEST_F(RegAccess, OneAbsentKeyDoesNotHideTheOthers) {
    RemoveKey(HKEY_LOCAL_MACHINE, cDynamicKeysPath);
    WriteStoredUINT(eKeySetStatic, cKey, 7);
    EXPECT_EQ(S_FALSE, m_access.Open(false));
    EXPECT_EQ(S_OK, ReadUINT(eKeySetStatic));
    EXPECT_EQ(7u, m_value);
    EXPECT_EQ(S_FALSE, ReadUINT(eKeySetDynamic));
}

TEST_F(RegAccess, ReadOnlyOpenOfExistingKeysRefusesWrites) {
    ASSERT_HRESULT_SUCCEEDED(m_access.Open(false));
    EXPECT_EQ(E_FAIL, m_access.WriteUINT(eKeySetStatic, cKey, 1));
    EXPECT_EQ(E_FAIL, m_access.Delete(eKeySetDynamic, cKey));
    EXPECT_EQ("[]\n[DynamicKeys]\n[StaticKeys]\n", StoreSnapshot());
}

TEST_F(RegAccess, AFailedOpenLeavesItClosed) {
    RemoveStore();
    UniqueRegKey base;  // under a volatile key only volatile ones can be created
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_LOCAL_MACHINE, cBaseKeyPath, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_WRITE, nullptr, base.Put(), nullptr));
    EXPECT_EQ(E_FAIL, m_access.Open(true));
    EXPECT_FALSE(m_access.IsOpen());
    ExpectNotOpen(m_access);
}

// ---- The app keys ---------------------------------------------------------------------------

TEST_F(RegAccess, AppKeysAreRead) {
    WriteStoredText(eKeySetApp, cKey, L"editor.exe");
    OpenWritable();
    EXPECT_EQ(S_OK, ReadText(eKeySetApp));
    EXPECT_EQ(u"editor.exe", Text());
}

TEST_F(RegAccess, WritesToExistingAppKeysGoNowhereAndSucceed) {
    WriteStoredText(eKeySetApp, cKey, L"editor.exe");
    OpenWritable();
    const std::string before = StoreSnapshot();
    const std::uint8_t byte = 1;
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetApp, cKey, 1));
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetApp, cKey, u"other.exe"));
    EXPECT_EQ(S_OK, m_access.WriteBlob(eKeySetApp, cKey, 1, &byte));
    EXPECT_EQ(before, StoreSnapshot());
}

// ---- Numbers
// ----------------------------------------------------------------------------------

TEST_F(RegAccess, ValueNamesAreTheBracedGuidACommaAndThePid) {
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetDynamic, cKey, 42));
    EXPECT_EQ("[]\n{5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},5 REG_DWORD 0000002a\n",
              DumpKey(HKEY_LOCAL_MACHINE, cDynamicKeysPath));
}

TEST_F(RegAccess, NumbersReadBack) {
    OpenWritable();
    for (const std::uint32_t number : {0u, 1u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetDynamic, cKey, number));
        EXPECT_EQ(S_OK, ReadUINT(eKeySetDynamic));
        EXPECT_EQ(number, m_value);
    }
}

TEST_F(RegAccess, AbsentValuesAreSFalse) {
    OpenWritable();
    EXPECT_EQ(S_FALSE, ReadUINT());
    EXPECT_EQ(cUntouched, m_value);
    EXPECT_EQ(S_FALSE, ReadText());
    EXPECT_FALSE(m_text);
    EXPECT_EQ(S_FALSE, ReadBlob());
    EXPECT_EQ(cUntouched, m_size);
    EXPECT_FALSE(m_data);
}

TEST_F(RegAccess, ATextIsNoNumber) {
    WriteStoredText(eKeySetStatic, cKey, L"7");
    OpenWritable();
    EXPECT_EQ(E_FAIL, ReadUINT());
    EXPECT_EQ(cUntouched, m_value);
}

TEST_F(RegAccess, FourBytesOfAnotherTypeAreNoNumber) {
    StoreBytes(REG_BINARY, {1, 2, 3, 4});
    OpenWritable();
    EXPECT_EQ(E_FAIL, ReadUINT());
    EXPECT_EQ(cUntouched, m_value);
}

class RegAccessNumberSize : public RegAccess, public ::testing::WithParamInterface<size_t> {};

TEST_P(RegAccessNumberSize, ANumberThatIsNotFourBytesLongIsUnreadable) {
    StoreBytes(REG_DWORD, std::vector<std::uint8_t>(GetParam(), 1));
    OpenWritable();
    EXPECT_EQ(E_FAIL, ReadUINT());
    EXPECT_EQ(cUntouched, m_value);
}

INSTANTIATE_TEST_SUITE_P(Sizes, RegAccessNumberSize, ::testing::Values(0, 1, 3, 5, 8, 100));

// ---- Texts
// ------------------------------------------------------------------------------------

TEST_F(RegAccess, TextsReadBack) {
    OpenWritable();
    for (const std::u16string text : {u"", u"a", u"0001,0014", u"M\u00fcsik \u4e2d"}) {
        EXPECT_EQ(S_OK, m_access.WriteText(eKeySetStatic, cKey, text.c_str()));
        EXPECT_EQ(S_OK, ReadText());
        EXPECT_EQ(text, Text());
    }
}

TEST_F(RegAccess, TextsAreStoredWithTheirTerminator) {
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetStatic, cKey, u"ab"));
    EXPECT_EQ((RawValue{REG_SZ, {'a', 0, 'b', 0, 0, 0}}), ReadRaw(eKeySetStatic, cKey));
}

TEST_F(RegAccess, ANullTextIsStoredAsTheEmptyOne) {
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetStatic, cKey, nullptr));
    EXPECT_EQ((RawValue{REG_SZ, {0, 0}}), ReadRaw(eKeySetStatic, cKey));
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(u"", Text());
}

TEST_F(RegAccess, ATextWithoutTerminatorIsReadToItsEnd) {
    StoreText(u"abcdef", 3 * sizeof(char16_t));
    OpenWritable();
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(u"abc", Text());
}

TEST_F(RegAccess, ATextEndsAtItsFirstTerminator) {
    StoreText(std::u16string(u"ab\0cd", 5), 5 * sizeof(char16_t));
    OpenWritable();
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(u"ab", Text());
}

TEST_F(RegAccess, AnOddLastByteIsDropped) {
    StoreBytes(REG_SZ, {'a', 0, 'b', 0, 'c'});
    OpenWritable();
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(u"ab", Text());
    StoreBytes(REG_SZ, {'a'});
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(u"", Text());
}

TEST_F(RegAccess, ATextOfNoBytesIsEmpty) {
    StoreBytes(REG_SZ, {});
    OpenWritable();
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(u"", Text());
}

TEST_F(RegAccess, ATextOf4096BytesIsRead) {
    const std::u16string text(cMaxTextChars, u'x');
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetStatic, cKey, text.c_str()));
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(text, Text());
}

TEST_F(RegAccess, ATextOf4096BytesWithoutTerminatorIsRead) {
    // Stored from a longer text: the platform adds a terminator that it finds behind one.
    StoreText(std::u16string(cMaxTextChars + 2, u'x'), cMaxTextBytes);
    OpenWritable();
    EXPECT_EQ(S_OK, ReadText());
    EXPECT_EQ(std::u16string(cMaxTextChars + 1, u'x'), Text());
}

TEST_F(RegAccess, ALongerTextCanBeWrittenButNotRead) {
    const std::u16string text(cMaxTextChars + 1, u'x');
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteText(eKeySetStatic, cKey, text.c_str()));
    EXPECT_EQ(2048u, ReadStoredText(eKeySetStatic, cKey)->size());
    EXPECT_EQ(E_FAIL, ReadText());
    EXPECT_FALSE(m_text);
}

TEST_F(RegAccess, OtherTypesAreNoTexts) {
    OpenWritable();
    for (const auto type : {REG_DWORD, REG_BINARY, REG_EXPAND_SZ, REG_MULTI_SZ}) {
        StoreBytes(static_cast<DWORD>(type), {'a', 0, 0, 0});
        EXPECT_EQ(E_FAIL, ReadText()) << type;
        EXPECT_FALSE(m_text);
    }
}

// ---- Blobs
// ------------------------------------------------------------------------------------

TEST_F(RegAccess, BlobsReadBack) {
    const std::vector<std::uint8_t> blob{0, 1, 2, 0xFF, 0, 5};
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteBlob(eKeySetStatic, cKey, 6, blob.data()));
    EXPECT_EQ((RawValue{REG_BINARY, blob}), ReadRaw(eKeySetStatic, cKey));
    EXPECT_EQ(S_OK, ReadBlob());
    ASSERT_EQ(6u, m_size);
    EXPECT_EQ(std::vector<std::uint8_t>(m_data.Get(), m_data.Get() + 6), blob);
}

TEST_F(RegAccess, ABlobMayBeLongerThanAText) {
    const std::vector<std::uint8_t> blob(20000, 7);
    WriteStoredBlob(eKeySetStatic, cKey, blob);
    OpenWritable();
    EXPECT_EQ(S_OK, ReadBlob());
    ASSERT_EQ(20000u, m_size);
    EXPECT_EQ(std::vector<std::uint8_t>(m_data.Get(), m_data.Get() + m_size), blob);
}

TEST_F(RegAccess, AnEmptyBlobIsAValue) {
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteBlob(eKeySetStatic, cKey, 0, nullptr));
    EXPECT_EQ(S_OK, ReadBlob());
    EXPECT_EQ(0u, m_size);
    EXPECT_TRUE(m_data);
}

TEST_F(RegAccess, OtherTypesAreNoBlobs) {
    OpenWritable();
    for (const auto type : {REG_DWORD, REG_SZ, REG_NONE}) {
        StoreBytes(static_cast<DWORD>(type), {1, 2, 3, 4});
        EXPECT_EQ(E_FAIL, ReadBlob()) << type;
        EXPECT_EQ(cUntouched, m_size);
        EXPECT_FALSE(m_data);
    }
}

TEST_F(RegAccess, ABlobThatChangesItsSizeMeanwhileIsNeverTorn) {
    const std::vector<std::uint8_t> small(8, 0x11);
    const std::vector<std::uint8_t> large(4000, 0x22);
    WriteStoredBlob(eKeySetStatic, cKey, small);
    OpenWritable();
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        while (!stop) {
            WriteStoredBlob(eKeySetStatic, cKey, large);
            WriteStoredBlob(eKeySetStatic, cKey, small);
        }
    });
    int whole = 0;
    for (int i = 0; i < 500; ++i) {
        if (ReadBlob() != S_OK)
            continue;
        ++whole;
        const std::vector<std::uint8_t> read(m_data.Get(), m_data.Get() + m_size);
        EXPECT_TRUE(read == small || read == large) << read.size();
    }
    stop = true;
    writer.join();
    EXPECT_LT(250, whole);
}

// Does something in the middle of reading a blob: between the query of its size and the read
// the library asks for memory, and it gives back what it read in vain.
class DuringBlobReads final : public IMallocSpy {
  public:
    DuringBlobReads(std::function<void()> onAllocation, std::function<void()> onFree)
        : m_onAllocation(std::move(onAllocation)), m_onFree(std::move(onFree)) {
        EXPECT_EQ(S_OK, CoRegisterMallocSpy(this));
    }
    ~DuringBlobReads() { EXPECT_EQ(S_OK, CoRevokeMallocSpy()); }

    STDMETHODIMP QueryInterface(REFIID, void** ppv) override {
        *ppv = this;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) override {
        m_onAllocation();
        return size;
    }
    STDMETHODIMP_(void*) PostAlloc(void* memory) override { return memory; }
    STDMETHODIMP_(void*) PreFree(void* memory, BOOL) override {
        m_onFree();
        return memory;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T)
    PreRealloc(void*, SIZE_T size, void**, BOOL) override { return size; }
    STDMETHODIMP_(void*) PostRealloc(void* memory, BOOL) override { return memory; }
    STDMETHODIMP_(void*) PreGetSize(void* memory, BOOL) override { return memory; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, BOOL) override { return size; }
    STDMETHODIMP_(void*) PreDidAlloc(void* memory, BOOL) override { return memory; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int actual) override { return actual; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}

  private:
    std::function<void()> m_onAllocation;
    std::function<void()> m_onFree;
};

TEST_F(RegAccess, ABlobThatGrewMeanwhileIsReadAgain) {
    const std::vector<std::uint8_t> large(100, 0x22);
    WriteStoredBlob(eKeySetStatic, cKey, {1, 2});
    OpenWritable();
    const DuringBlobReads grow([&] { WriteStoredBlob(eKeySetStatic, cKey, large); }, [] {});
    EXPECT_EQ(S_OK, ReadBlob());
    ASSERT_EQ(100u, m_size);
    EXPECT_EQ(large, std::vector<std::uint8_t>(m_data.Get(), m_data.Get() + m_size));
    m_data.Reset();  // while it is spied on
}

TEST_F(RegAccess, ABlobThatGrowsAgainAndAgainIsGivenUp) {
    std::size_t size = 2;
    WriteStoredBlob(eKeySetStatic, cKey, std::vector<std::uint8_t>(size));
    OpenWritable();
    const DuringBlobReads grow(
        [&] { WriteStoredBlob(eKeySetStatic, cKey, std::vector<std::uint8_t>(++size)); },
        [] {});
    EXPECT_EQ(E_FAIL, ReadBlob());
    EXPECT_EQ(6u, size);
    EXPECT_EQ(cUntouched, m_size);
}

TEST_F(RegAccess, ABlobThatCannotBeReadForAnotherReasonIsNotReadAgain) {
    const std::vector<std::uint8_t> blob{1, 2, 3, 4};
    WriteStoredBlob(eKeySetStatic, cKey, blob);
    OpenWritable();
    // A number meanwhile, and a blob again before there could be a second attempt.
    bool isFirst = true;
    const DuringBlobReads change(
        [&] {
            if (std::exchange(isFirst, false))
                StoreBytes(REG_DWORD, blob);
        },
        [&] { WriteStoredBlob(eKeySetStatic, cKey, blob); });
    EXPECT_EQ(E_FAIL, ReadBlob());
    EXPECT_EQ(cUntouched, m_size);
    EXPECT_FALSE(m_data);
    m_data.Reset();  // while it is spied on
}

// ---- Deletion, key sets, deleted keys
// -----------------------------------------------------------

TEST_F(RegAccess, DeleteRemovesTheValueAndSaysWhenThereWasNone) {
    WriteStoredUINT(eKeySetDynamic, cKey, 1);
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.Delete(eKeySetDynamic, cKey));
    EXPECT_FALSE(ReadRaw(eKeySetDynamic, cKey));
    EXPECT_EQ(S_FALSE, m_access.Delete(eKeySetDynamic, cKey));
}

TEST_F(RegAccess, TheKeySetsDoNotMix) {
    OpenWritable();
    EXPECT_EQ(S_OK, m_access.WriteUINT(eKeySetStatic, cKey, 1));
    EXPECT_EQ(S_FALSE, ReadUINT(eKeySetDynamic));
    EXPECT_EQ(S_FALSE, ReadUINT(eKeySetApp));
}

TEST_F(RegAccess, UnknownKeySetsFail) {
    OpenWritable();
    const std::uint8_t byte = 1;
    for (const auto keySet : {static_cast<KORA4KeySet>(0), static_cast<KORA4KeySet>(5),
                              static_cast<KORA4KeySet>(0xFFFFFFFF)}) {
        EXPECT_EQ(E_FAIL, ReadUINT(keySet));
        EXPECT_EQ(E_FAIL, ReadText(keySet));
        EXPECT_EQ(E_FAIL, ReadBlob(keySet));
        EXPECT_EQ(E_FAIL, m_access.WriteUINT(keySet, cKey, 1));
        EXPECT_EQ(E_FAIL, m_access.WriteText(keySet, cKey, u"x"));
        EXPECT_EQ(E_FAIL, m_access.WriteBlob(keySet, cKey, 1, &byte));
        EXPECT_EQ(E_INVALIDARG, m_access.Delete(keySet, cKey));
    }
}

TEST_F(RegAccess, AKeyThatIsDeletedWhileOpenFailsAlsoAfterItIsCreatedAgain) {
    WriteStoredUINT(eKeySetDynamic, cKey, 1);
    OpenWritable();
    ResetStore();
    WriteStoredUINT(eKeySetDynamic, cKey, 1);
    EXPECT_EQ(E_FAIL, ReadUINT(eKeySetDynamic));
    EXPECT_EQ(E_FAIL, m_access.WriteUINT(eKeySetDynamic, cKey, 2));
    EXPECT_EQ(E_FAIL, m_access.Delete(eKeySetDynamic, cKey));
}

// ---- Trace
// --------------------------------------------------------------------------------------

class RegAccessTrace : public RegAccess {
  protected:
    static constexpr const char* cTag = "KOLFXPropKeysAccess";
    static constexpr std::uint32_t cLog = trace::eLogFiles | trace::eAllEntryExit;

    TraceLog m_log;
};

TEST_F(RegAccessTrace, OpeningTellsTheStatusOfEachKey) {
    RemoveStore();
    const TraceFlags flags(cLog);
    m_access.Open(true);
    const auto lines = m_log.Read(cTag);
    EXPECT_EQ((std::vector<std::string>{">>", "<< hr: 0x00000001"}),
              MessagesOf(lines, "KORA4RegPropKeysAccess::Open"));
    EXPECT_EQ((std::vector<std::string>{">> pwRegPath: SOFTWARE\\Velto\\KORA4\\StaticKeys",
                                        "reg open retStatus: 0", "<< hr: 0x00000000",
                                        ">> pwRegPath: SOFTWARE\\Velto\\KORA4\\DynamicKeys",
                                        "reg open retStatus: 0", "<< hr: 0x00000000",
                                        ">> pwRegPath: SOFTWARE\\Velto\\KORA4\\AppKeys",
                                        "reg open retStatus: 2", "<< hr: 0x00000001"}),
              MessagesOf(lines, "KORA4RegPropKeysAccess::OpenGlobalKey"));
}

TEST_F(RegAccessTrace, AReadTellsTheValueNameAndItsResult) {
    OpenWritable();
    const TraceFlags flags(cLog);
    ReadUINT();
    EXPECT_EQ((std::vector<std::string>{
                  ">>", "to RegQueryValueEx of: {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},5",
                  "<< hr: 0x00000001"}),
              MessagesOf(m_log.Read(cTag), "KORA4RegPropKeysAccess::QueryRegistryValue"));
}

TEST_F(RegAccessTrace, WritesAndDeletesTellTheStatus) {
    OpenWritable();
    const TraceFlags flags(cLog);
    m_access.WriteUINT(eKeySetStatic, cKey, 1);
    m_access.Delete(eKeySetStatic, cKey);
    m_access.Delete(eKeySetStatic, cKey);
    const auto lines = m_log.Read(cTag);
    EXPECT_EQ((std::vector<std::string>{">>", "RegSetValue retStatus: 0", "<< hr: 0x00000000"}),
              MessagesOf(lines, "KORA4RegPropKeysAccess::SetRegistryValue"));
    const std::string name = "to RegDeleteValue of: {5C2E8A47-91D3-4B6F-A0E2-3F7C19B84D60},5";
    EXPECT_EQ(MessagesOf(lines, "KORA4RegPropKeysAccess::DeleteRegistryKey"),
              (std::vector<std::string>{">>", name, "RegDeleteValue retStatus: 0",
                                        "<< hr: 0x00000000", ">>", name,
                                        "RegDeleteValue retStatus: 2", "<< hr: 0x00000001"}));
}

TEST_F(RegAccessTrace, NothingIsTracedByDefault) {
    const TraceFlags flags(trace::cDefaultFlags | trace::eLogFiles);
    m_access.Open(true);
    ReadUINT();
    m_access.WriteUINT(eKeySetStatic, cKey, 1);
    EXPECT_TRUE(m_log.ReadShared().empty());
}

}  // namespace
}  // namespace kora4::test
