// SPDX-License-Identifier: MIT
// The tools' way to the registry, on the real one.
#include <gtest/gtest.h>

#include <thread>

#include "base/failure.h"
#include "contract/profiles.h"
#include "faults/damage.h"
#include "platform/handles.h"
#include "registry/change_watch.h"
#include "registry/registry_store.h"
#include "registry/store_lock.h"
#include "settings/document.h"
#include "support/foreign_mutex.h"
#include "support/raw_store.h"
#include "tools/support/memory_store.h"

namespace kora4::tools {
namespace {

constexpr DWORD cPatience = 20000;  // ms
const PropertyKey cEnable = pkey::Setting(pkey::cMasterEnablePid);
const PropertyKey cBlob = pkey::Setting(pkey::cVisualizationDataPid);

ExitCode CodeOf(auto action) {
    try {
        action();
    } catch (const Failure& failure) {
        EXPECT_STRNE("", failure.what());
        return failure.Code();
    }
    return ExitCode::eDone;
}

TEST(RegistryStore, AMissingStoreIsOneSentenceWithTheCommandThatMendsIt) {
    test::RawStore::DeleteKeys();
    try {
        RegistryStore store(OpenMode::eRead);
        FAIL() << "opened";
    } catch (const Failure& failure) {
        EXPECT_EQ(ExitCode::eNotReady, failure.Code());
        EXPECT_NE(std::string::npos, failure.Next().find("kora4ctl register"));
    }
    EXPECT_EQ(ExitCode::eNotReady, CodeOf([] { ChangeWatch watch; }));
}

TEST(RegistryStore, GivesBackWhatWasWrittenToTheByte) {
    const test::RawStore keys;
    RegistryStore store(OpenMode::eReadWrite);
    RandomStore random(1);
    for (int i = 0; i < 300; ++i) {
        const StoredValue value = random.Garbage();
        store.Write(eKeySetStatic, cBlob, value);
        ASSERT_EQ(value, store.Read(eKeySetStatic, cBlob)) << i << ": " << Describe(value);
    }
    store.Delete(eKeySetStatic, cBlob);
    store.Delete(eKeySetStatic, cBlob);
    EXPECT_EQ(std::nullopt, store.Read(eKeySetStatic, cBlob));
}

TEST(RegistryStore, WritesWhereTheLibraryReads) {
    const test::RawStore keys;
    RegistryStore store(OpenMode::eReadWrite);
    store.WriteNumber(eKeySetDynamic, cEnable, 5);
    EXPECT_EQ(5u, test::RawStore::Number(test::cDynamic, test::SettingName(test::cEnablePid)));
    store.Bump(cEnable);
    EXPECT_EQ(6u, store.Number(eKeySetDynamic, cEnable, 0));
    EXPECT_EQ(std::vector<std::string>{ValueName(cEnable)}, store.ValueNames(eKeySetDynamic));
}

TEST(RegistryStore, OpenedForReadingItDoesNotWrite) {
    const test::RawStore keys;
    RegistryStore store(OpenMode::eRead);
    EXPECT_EQ(ExitCode::eFailed,
              CodeOf([&store] { store.WriteNumber(eKeySetDynamic, cEnable, 0); }));
}

TEST(RegistryStore, TheAppKeysAreOptionalAndMadeByTheFirstWrite) {
    const test::RawStore keys;
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4\\AppKeys");
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4\\AppKeys");
    RegistryStore store(OpenMode::eReadWrite);
    const PropertyKey command = pkey::Setting(pkey::cDemoAppCommandPid);
    EXPECT_EQ(std::nullopt, store.Read(eKeySetApp, command));
    EXPECT_TRUE(store.ValueNames(eKeySetApp).empty());
    store.Delete(eKeySetApp, command);
    EXPECT_FALSE(test::RawStore::KeyExists(test::cApp));
    store.Write(eKeySetApp, command, StoredValue::FromText(u"demo.exe"));
    EXPECT_EQ(L"demo.exe", test::RawStore::Text(test::cApp, test::SettingName(63)));
}

TEST(RegistryStore, DumpsAndLoadsDamagedStoresToTheByte) {
    const test::RawStore keys;
    test::StoreKeys raw;
    RegistryStore store(OpenMode::eReadWrite);
    for (std::uint32_t seed = 0; seed < 10; ++seed) {
        test::Damage damage(seed);
        for (const test::SchemaValue& value : test::WholeSchema())
            damage.Apply(raw, value);
        // A dump made in a demo holds what the demo returns to.
        const PropertyKey active = pkey::Setting(pkey::cActivePresetPid);
        if (IsDemoProfile(store.Number(eKeySetDynamic, active, cMovieProfile)))
            store.WriteNumber(eKeySetDynamic, active, cMovieProfile);
        const auto wanted = raw.Everything();
        const std::string text = Dump(store, Scope::eAll).dump();
        const Plan plan = ReadDocument(text);
        for (const test::SchemaValue& value : test::WholeSchema())
            if (damage.OneIn(3))
                damage.Apply(raw, value);
        for (const Difference& difference : Compare(plan, store)) {
            if (difference.wanted)
                store.Write(difference.value.keySet, difference.value.key, *difference.wanted);
            else
                store.Delete(difference.value.keySet, difference.value.key);
        }
        EXPECT_EQ(text, Dump(store, Scope::eAll).dump());
        const auto loaded = raw.Everything();
        for (const PlannedValue& planned : plan.values) {
            const std::string name = planned.value.Name();
            const std::size_t key = planned.value.keySet - eKeySetStatic;
            const std::wstring place =
                std::to_wstring(key) + std::wstring(name.begin(), name.end());
            const auto before = wanted.find(place);
            const auto after = loaded.find(place);
            ASSERT_EQ(before == wanted.end(), after == loaded.end()) << seed << ": " << name;
            if (before != wanted.end()) {
                ASSERT_EQ(before->second, after->second) << seed << ": " << name;
            }
        }
    }
}

TEST(OpenStore, PutsTheWrapperAroundTheStore) {
    const test::RawStore keys;
    SetStoreWrapper([](std::unique_ptr<StoreAccess>) -> std::unique_ptr<StoreAccess> {
        auto store = std::make_unique<MemoryStore>();
        store->WriteNumber(eKeySetDynamic, cEnable, 77);
        return store;
    });
    EXPECT_EQ(77u, OpenStore(OpenMode::eRead)->Number(eKeySetDynamic, cEnable, 0));
    SetStoreWrapper(nullptr);
    EXPECT_EQ(0u, OpenStore(OpenMode::eRead)->Number(eKeySetDynamic, cEnable, 0));
}

// Holds the mutex on a thread of its own until told to end, or dies with it.
class Holder {
  public:
    explicit Holder(bool dies = false)
        : m_held(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_end(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_thread([this, dies] {
              const HANDLE mutex =
                  CreateMutexW(nullptr, FALSE, L"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}");
              WaitForSingleObject(mutex, INFINITE);
              SetEvent(m_held.Get());
              if (!dies) {
                  WaitForSingleObject(m_end.Get(), INFINITE);
                  ReleaseMutex(mutex);
              }
              m_mutex.Reset(mutex);
          }) {
        WaitForSingleObject(m_held.Get(), INFINITE);
        if (dies)
            m_thread.join();
    }
    ~Holder() {
        SetEvent(m_end.Get());
        if (m_thread.joinable())
            m_thread.join();
    }

  private:
    UniqueHandle m_held;
    UniqueHandle m_end;
    UniqueHandle m_mutex;
    std::thread m_thread;
};

TEST(StoreLock, WaitsAsLongAsItsPatience) {
    const Holder holder;
    EXPECT_EQ(ExitCode::eTimedOut, CodeOf([] { StoreLock lock(50); }));
}

TEST(StoreLock, AnInterruptEndsTheWait) {
    const Holder holder;
    const UniqueHandle interrupt(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    EXPECT_EQ(ExitCode::eFailed,
              CodeOf([&interrupt] { StoreLock lock(cPatience, interrupt.Get()); }));
}

TEST(StoreLock, TellsThatItsFormerHolderDied) {
    {
        const Holder holder(true);
        const StoreLock lock(cPatience);
        EXPECT_TRUE(lock.WasAbandoned());
    }
    const StoreLock lock(cPatience);
    EXPECT_FALSE(lock.WasAbandoned());
}

TEST(StoreLock, IsFreeAfterItsScope) {
    { const StoreLock lock(cPatience); }
    std::thread([] {
        EXPECT_EQ(ExitCode::eDone, CodeOf([] { StoreLock lock(cPatience); }));
    }).join();
}

TEST(StoreLock, HoldsTheMutexOfAnotherToken) {
    const test::ForeignMutex foreign;
    const StoreLock lock(cPatience);
    std::thread([&] { EXPECT_EQ(DWORD{WAIT_TIMEOUT}, foreign.Take(0)); }).join();
}

TEST(StoreLock, SaysSoWhenTheNameMeansSomethingElse) {
    const UniqueHandle event(
        CreateEventW(nullptr, TRUE, FALSE, L"KORA4.{AB3C51E0-6D27-4F0B-9C42-7E15A8D3F6B2}"));
    ASSERT_TRUE(event);
    EXPECT_EQ(ExitCode::eFailed, CodeOf([] { StoreLock lock(cPatience); }));
    EXPECT_EQ(ExitCode::eFailed, CodeOf([] { OpenStoreMutex(); }));
}

TEST(ChangeWatch, WakesForEachChangeOfTheDynamicKeys) {
    const test::RawStore keys;
    RegistryStore store(OpenMode::eReadWrite);
    ChangeWatch watch;
    EXPECT_EQ(ChangeWatch::Wake::eTimedOut, watch.Wait(50, nullptr));
    for (std::uint32_t i = 1; i < 4; ++i) {
        store.WriteNumber(eKeySetDynamic, cEnable, i);
        EXPECT_EQ(ChangeWatch::Wake::eChanged, watch.Wait(cPatience, nullptr));
    }
    store.WriteNumber(eKeySetStatic, pkey::Setting(pkey::cSamplingPeriodPid), 9);
    EXPECT_EQ(ChangeWatch::Wake::eTimedOut, watch.Wait(50, nullptr));
    const UniqueHandle interrupt(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    EXPECT_EQ(ChangeWatch::Wake::eInterrupted, watch.Wait(cPatience, interrupt.Get()));
}

TEST(StoredValue, DescribesItselfForPeople) {
    EXPECT_EQ("7", Describe(StoredValue::FromDword(7)));
    EXPECT_EQ("'abc'", Describe(StoredValue::FromText(u"abc")));
    EXPECT_EQ("REG_DWORD of 1 byte: 07", Describe({cDwordType, {7}}));
    EXPECT_EQ("type 77 of 0 bytes", Describe({77, {}}));
    EXPECT_EQ("'xxxxx...'", Describe(StoredValue::FromText(std::u16string(100, u'x')), 5));
    EXPECT_EQ("'a\\u000a\\u001b[1m\\u009b\u00E4'",
              Describe(StoredValue::FromText(u"a\n\x1B[1m\u009B\u00E4")));
}

TEST(StoredValue, TextsAreReadAsTheLibraryReadsThem) {
    EXPECT_EQ(u"a", (StoredValue{cTextType, {'a', 0, 'b'}}.AsText()));
    EXPECT_EQ(u"a", (StoredValue{cTextType, {'a', 0, 0, 0, 'b', 0}}.AsText()));
    EXPECT_EQ(u"", (StoredValue{cTextType, {}}.AsText()));
    EXPECT_TRUE((StoredValue{cTextType, Bytes(4096, 'x')}.AsText()));
    EXPECT_FALSE((StoredValue{cTextType, Bytes(4097, 'x')}.AsText()));
    EXPECT_FALSE((StoredValue{cBinaryType, {'a', 0}}.AsText()));
}

}  // namespace
}  // namespace kora4::tools
