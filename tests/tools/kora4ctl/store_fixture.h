// SPDX-License-Identifier: MIT
// kora4ctl on a store of which each value is known, with its journal at hand.
#ifndef KORA4_TESTS_TOOLS_KORA4CTL_STORE_FIXTURE_H
#define KORA4_TESTS_TOOLS_KORA4CTL_STORE_FIXTURE_H

#include <string>

#include "base/text.h"
#include "contract/store_mutex.h"
#include "registry/journal.h"
#include "registry/registry_store.h"
#include "tools/kora4ctl/ctl_fixture.h"
#include "tools/support/raw_values.h"

namespace kora4::test {

inline constexpr DWORD cTimedOut = 6;
inline constexpr DWORD cFindings = 7;

inline std::string ScopeName(const testing::TestParamInfo<Scope>& scope) {
    return scope.param == Scope::eAll ? "All" : "User";
}

// A folder for the files of a test, gone at its end.
class TestFolder {
  public:
    TestFolder() {
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        m_path =
            tools::Narrow(folder) + "kora4-\xC3\xA4-" + std::to_string(GetCurrentProcessId());
        CreateDirectoryW(tools::Widen(m_path).c_str(), nullptr);
    }
    ~TestFolder() {
        WIN32_FIND_DATAW found;
        const HANDLE find = FindFirstFileW(tools::Widen(m_path + "\\*").c_str(), &found);
        if (find != INVALID_HANDLE_VALUE) {
            do {
                DeleteFileW((tools::Widen(m_path) + L"\\" + found.cFileName).c_str());
            } while (FindNextFileW(find, &found));
            FindClose(find);
        }
        RemoveDirectoryW(tools::Widen(m_path).c_str());
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& Path() const { return m_path; }
    std::string File(const std::string& name) const { return m_path + "\\" + name; }

  private:
    std::string m_path;
};

// kora4ctl on a store that the test fills and reads value by value.
class StoreTest : public CtlTest {
  protected:
    void SetUp() override {
        CtlTest::SetUp();
        m_journal.Remove();
        // As long as somebody has it open, a holder that dies leaves it abandoned.
        m_mutex.Reset(
            CreateMutexW(nullptr, FALSE, reinterpret_cast<const wchar_t*>(cStoreMutexName)));
        ASSERT_TRUE(m_mutex);
    }
    void TearDown() override {
        m_journal.Remove();
        CtlTest::TearDown();
    }

    bool HasJournal() const {
        return Exists(m_journal.Path()) || Exists(m_journal.Path() + ".new");
    }
    std::string JournalPath() const { return m_journal.Path(); }

    static bool Exists(const std::string& path) {
        return GetFileAttributesW(tools::Widen(path).c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    // The store, counters and all, is that to the byte.
    static void ExpectStore(const StoreValues& expected) {
        EXPECT_EQ("", DifferencesOf(expected, ReadStoreValues()));
    }
    // The same but for the counters, which may have moved.
    static void ExpectSettings(const StoreValues& expected) {
        EXPECT_EQ("",
                  DifferencesOf(WithoutCounters(expected), WithoutCounters(ReadStoreValues())));
    }
    // After a recovery, which leaves the application keys alone.
    static void ExpectRecovered(const StoreValues& expected) {
        EXPECT_EQ("", DifferencesOf(tools::WithoutAppKeys(WithoutCounters(expected)),
                                    tools::WithoutAppKeys(WithoutCounters(ReadStoreValues()))));
        RestoreAppKeys(expected);
    }
    // As an administrator would.
    static void RestoreAppKeys(const StoreValues& expected) {
        tools::RegistryStore store(tools::OpenMode::eReadWrite);
        for (const tools::SchemaValue& value : tools::Schema()) {
            const auto found = expected.find({value.keySet, value.Name()});
            if (value.keySet == eKeySetApp)
                store.Put(value.keySet, value.key,
                          found == expected.end()
                              ? std::nullopt
                              : std::optional<tools::StoredValue>(found->second));
        }
    }
    // Every client that listens to one of these counters reads again.
    static void ExpectMoved(const std::vector<PropertyKey>& counters,
                            const StoreValues& before) {
        const StoreValues now = ReadStoreValues();
        for (const PropertyKey& counter : counters) {
            const std::pair place(eKeySetDynamic, tools::ValueName(counter));
            const auto old = before.find(place);
            const auto present = now.find(place);
            ASSERT_NE(present, now.end()) << place.second;
            EXPECT_TRUE(old == before.end() || old->second != present->second) << place.second;
        }
    }

    TestFolder m_folder;

  private:
    const tools::JournalFile m_journal{tools::DefaultJournalPath()};
    UniqueHandle m_mutex;
};

inline std::string ContentOf(const std::string& path) {
    const HANDLE file = CreateFileW(tools::Widen(path).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(INVALID_HANDLE_VALUE, file) << path;
    if (file == INVALID_HANDLE_VALUE)
        return {};
    const UniqueHandle owner(file);
    std::string content(GetFileSize(file, nullptr), '\0');
    DWORD read = 0;
    EXPECT_TRUE(
        ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr));
    content.resize(read);
    return content;
}

inline void MakeFile(const std::string& path, std::string_view content) {
    const HANDLE file = CreateFileW(tools::Widen(path).c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file) << path;
    const UniqueHandle owner(file);
    DWORD written = 0;
    EXPECT_TRUE(
        WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr));
    EXPECT_EQ(content.size(), written);
}

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_KORA4CTL_STORE_FIXTURE_H
