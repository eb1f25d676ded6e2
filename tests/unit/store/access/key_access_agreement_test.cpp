// SPDX-License-Identifier: MIT
// The store in memory, on which most tests of the upper layers rest, answers as the platform's
// does: both go through the same cases, every operation on every kind of stored value.
#include <gtest/gtest.h>
#include <propidl.h>
#include <propsys.h>
#include <wrl/client.h>

#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "contract/value_kind.h"
#include "store/access/reg_prop_keys_access.h"
#include "store/access/task_memory.h"
#include "support/com_client.h"
#include "support/memory_key_access.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr PropertyKey cKey = pkey::Setting(5);
constexpr std::uint32_t cUntouched = 0xABABABAB;
constexpr char cNothing[] = "nothing";

// ---- What there is, in words ----------------------------------------------------------------

std::string InWords(std::uint32_t number) {
    return "number " + std::to_string(number);
}
std::string InWords(const std::u16string& text) {
    std::string words = "text of " + std::to_string(text.size());
    for (const char16_t c : text.substr(0, 8))
        words += " " + std::to_string(static_cast<unsigned>(c));
    return words;
}
std::string InWords(const Blob& blob) {
    std::string words = "blob of " + std::to_string(blob.size());
    for (const std::uint8_t byte : blob)
        words += " " + std::to_string(byte);
    return words;
}
std::string InWords(const Unreadable&) {
    return "what nobody reads";
}
std::string InWords(const std::optional<StoredValue>& value) {
    return value ? std::visit([](const auto& kind) { return InWords(kind); }, *value)
                 : cNothing;
}

// ---- Two stores -----------------------------------------------------------------------------

class Store {
  public:
    virtual ~Store() = default;
    virtual KORA4KeyAccess& Access() = 0;
    virtual void Put(KORA4KeySet keySet, const StoredValue& value) = 0;
    virtual std::optional<StoredValue> Stored(KORA4KeySet keySet) = 0;
};

// How a store is set up before an operation.
struct Situation {
    bool isOpen = true;
    bool hasPropertyStore = true;
    KORA4KeySet keySet = eKeySetStatic;
    std::optional<StoredValue> stored;

    std::string InWords() const {
        return std::string(isOpen ? "" : "closed, ") +
               (hasPropertyStore ? "" : "no property store, ") + "key set " +
               std::to_string(keySet) + ", stored " + test::InWords(stored);
    }
};

class StoreInMemory final : public Store {
  public:
    explicit StoreInMemory(const Situation& situation) {
        m_access.SetOpen(situation.isOpen);
        m_access.SetPropertyStore(situation.hasPropertyStore);
    }
    KORA4KeyAccess& Access() override { return m_access; }
    void Put(KORA4KeySet keySet, const StoredValue& value) override {
        m_access.Put(keySet, cKey, value);
    }
    std::optional<StoredValue> Stored(KORA4KeySet keySet) override {
        for (const auto& [place, value] : m_access.Values()) {
            if (place.first == keySet)
                return value;
        }
        return std::nullopt;
    }

  private:
    MemoryKeyAccess m_access;
};

const PROPERTYKEY& PlatformKey() {
    return reinterpret_cast<const PROPERTYKEY&>(cKey);
}

class StoreOfThePlatform final : public Store {
  public:
    explicit StoreOfThePlatform(const Situation& situation) {
        DeleteStored(eKeySetStatic, cKey);
        DeleteStored(eKeySetDynamic, cKey);
        DeleteStored(eKeySetApp, cKey);
        EXPECT_EQ(S_OK, PSCreateMemoryPropertyStore(
                            __uuidof(IPropertyStore),
                            reinterpret_cast<void**>(m_properties.ReleaseAndGetAddressOf())));
        if (situation.hasPropertyStore)
            m_access.SetPropertyStore(m_properties.Get());
        EXPECT_EQ(S_OK, situation.isOpen ? m_access.Open(true) : S_OK);
    }
    KORA4KeyAccess& Access() override { return m_access; }

    void Put(KORA4KeySet keySet, const StoredValue& value) override {
        if (keySet == eKeySetPropertyStore)
            std::visit([this](const auto& kind) { PutProperty(kind); }, value);
        else
            std::visit([keySet](const auto& kind) { PutRaw(keySet, kind); }, value);
    }
    std::optional<StoredValue> Stored(KORA4KeySet keySet) override {
        if (keySet == eKeySetPropertyStore)
            return StoredProperty();
        if (keySet < eKeySetStatic || keySet > eKeySetApp)
            return std::nullopt;
        const std::optional<RawValue> raw = ReadRaw(keySet, cKey);
        if (!raw)
            return std::nullopt;
        if (raw->type == REG_DWORD && raw->data.size() == sizeof(std::uint32_t)) {
            std::uint32_t number = 0;
            std::memcpy(&number, raw->data.data(), sizeof number);
            return number;
        }
        if (raw->type == REG_SZ)
            return std::u16string(reinterpret_cast<const char16_t*>(raw->data.data()),
                                  raw->data.size() / sizeof(char16_t) - 1);
        return raw->type == REG_BINARY ? StoredValue(raw->data) : StoredValue(Unreadable{});
    }

  private:
    static void PutRaw(KORA4KeySet keySet, std::uint32_t number) {
        WriteStoredUINT(keySet, cKey, number);
    }
    static void PutRaw(KORA4KeySet keySet, const std::u16string& text) {
        WriteRaw(keySet, cKey, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    }
    static void PutRaw(KORA4KeySet keySet, const Blob& blob) {
        WriteStoredBlob(keySet, cKey, blob);
    }
    static void PutRaw(KORA4KeySet keySet, const Unreadable&) {
        WriteRaw(keySet, cKey, REG_DWORD, "abc", 3);
    }

    void PutProperty(std::uint32_t number) {
        PROPVARIANT variant{};
        variant.vt = VT_UI4;
        variant.ulVal = number;
        SetProperty(variant);
    }
    void PutProperty(const std::u16string& text) {
        PROPVARIANT variant{};
        variant.vt = VT_LPWSTR;
        variant.pwszVal = const_cast<wchar_t*>(reinterpret_cast<const wchar_t*>(text.c_str()));
        SetProperty(variant);
    }
    void PutProperty(const Blob&) { FAIL() << "a property store holds no blobs"; }
    void PutProperty(const Unreadable&) {
        PROPVARIANT variant{};
        variant.vt = VT_BOOL;
        SetProperty(variant);
    }
    void SetProperty(const PROPVARIANT& variant) {
        EXPECT_EQ(S_OK, m_properties->SetValue(PlatformKey(), variant));
    }
    std::optional<StoredValue> StoredProperty() {
        PROPVARIANT variant{};
        EXPECT_EQ(S_OK, m_properties->GetValue(PlatformKey(), &variant));
        std::optional<StoredValue> value;
        if (variant.vt == VT_UI4)
            value = std::uint32_t{variant.ulVal};
        else if (variant.vt == VT_LPWSTR)
            value = std::u16string(reinterpret_cast<const char16_t*>(variant.pwszVal));
        else if (variant.vt != VT_EMPTY)
            value = Unreadable{};
        PropVariantClear(&variant);
        return value;
    }

    ComPtr<IPropertyStore> m_properties;
    KORA4RegPropKeysAccess m_access;
};

// ---- The operations -------------------------------------------------------------------------

std::string Outcome(HRESULT hr, const std::string& read = cNothing) {
    std::ostringstream words;
    words << std::hex << static_cast<unsigned>(hr) << ", read " << read;
    return words.str();
}

struct Case {
    const char* name;
    std::function<std::string(KORA4KeyAccess&, KORA4KeySet)> run;
};

std::vector<Case> Cases() {
    static const std::uint8_t cBytes[] = {1, 0, 255};
    static const std::u16string cTooLong(cMaxTextChars + 1, u'x');
    return {
        {"read number",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             std::uint32_t value = cUntouched;
             const HRESULT hr = access.ReadUINT(keySet, cKey, &value);
             return Outcome(hr, InWords(value));
         }},
        {"read text",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             TaskPtr<char16_t> text;
             const HRESULT hr = access.ReadText(keySet, cKey, text.Put());
             return Outcome(hr, text ? InWords(std::u16string(text.Get())) : cNothing);
         }},
        {"read blob",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             TaskPtr<std::uint8_t> data;
             std::uint32_t size = cUntouched;
             const HRESULT hr = access.ReadBlob(keySet, cKey, &size, data.Put());
             return Outcome(
                 hr, data ? InWords(Blob(data.Get(), data.Get() + size)) : InWords(size));
         }},
        {"write number",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             return Outcome(access.WriteUINT(keySet, cKey, 0x80000001));
         }},
        {"write text",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             return Outcome(access.WriteText(keySet, cKey, u"a\u4e2d"));
         }},
        {"write no text",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             return Outcome(access.WriteText(keySet, cKey, nullptr));
         }},
        {"write a text that nobody reads again",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             return Outcome(access.WriteText(keySet, cKey, cTooLong.c_str()));
         }},
        {"write blob",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             return Outcome(access.WriteBlob(keySet, cKey, 3, cBytes));
         }},
        {"write empty blob",
         [](KORA4KeyAccess& access, KORA4KeySet keySet) {
             return Outcome(access.WriteBlob(keySet, cKey, 0, nullptr));
         }},
        {"delete", [](KORA4KeyAccess& access,
                      KORA4KeySet keySet) { return Outcome(access.Delete(keySet, cKey)); }},
    };
}

std::vector<Situation> Situations() {
    const std::optional<StoredValue> values[] = {
        std::nullopt,
        std::uint32_t{0x80000000},
        std::u16string(),
        std::u16string(u"M\u00fcsik"),
        std::u16string(cMaxTextChars, u'x'),
        std::u16string(cMaxTextChars + 1, u'x'),
        Blob{},
        Blob{1, 0, 255},
        Unreadable{},
    };
    std::vector<Situation> situations;
    for (unsigned keySet = 0; keySet <= 5; ++keySet) {
        const auto set = static_cast<KORA4KeySet>(keySet);
        situations.push_back({false, true, set, std::nullopt});
        situations.push_back({true, false, set, std::nullopt});
        for (const auto& value : values) {
            const bool isBlob = value && std::holds_alternative<Blob>(*value);
            const bool fits = set == eKeySetPropertyStore
                                  ? !isBlob
                                  : set >= eKeySetStatic && set <= eKeySetApp;
            if (fits || !value)
                situations.push_back({true, true, set, value});
        }
    }
    return situations;
}

// What an operation answers, and what is stored afterwards.
template <typename StoreKind>
std::string Answer(const Situation& situation, const Case& one) {
    StoreKind store(situation);
    if (situation.stored)
        store.Put(situation.keySet, *situation.stored);
    const std::string outcome = one.run(store.Access(), situation.keySet);
    return outcome + ", then stored " + InWords(store.Stored(situation.keySet));
}

class KeyAccessAgreement : public testing::Test {
  protected:
    void SetUp() override {
        ResetStore();
        CreateKey(HKEY_LOCAL_MACHINE, KeySetPath(eKeySetApp));
    }
    void TearDown() override { ResetStore(); }

    Apartment m_apartment{COINIT_MULTITHREADED};
};

TEST_F(KeyAccessAgreement, OfEveryOperationOnEveryKindOfValue) {
    for (const Situation& situation : Situations()) {
        for (const Case& one : Cases())
            EXPECT_EQ(Answer<StoreOfThePlatform>(situation, one),
                      Answer<StoreInMemory>(situation, one))
                << one.name << ": " << situation.InWords();
    }
}

TEST_F(KeyAccessAgreement, ADeletionInTheAppKeysIsRefused) {
    const Case deletion = Cases().back();
    const Situation situation{true, true, eKeySetApp, std::uint32_t{7}};
    const std::string expected = "80004005, read nothing, then stored number 7";
    EXPECT_EQ(expected, Answer<StoreOfThePlatform>(situation, deletion));
    EXPECT_EQ(expected, Answer<StoreInMemory>(situation, deletion));
}

}  // namespace
}  // namespace kora4::test
