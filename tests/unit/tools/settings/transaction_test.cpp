// SPDX-License-Identifier: MIT
// Plans applied and undone: the order of writes, a failure or interrupt at each of them, and
// recovery from a journal.
#include "settings/transaction.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "base/failure.h"
#include "base/text.h"
#include "process/files.h"
#include "tools/support/memory_store.h"

namespace kora4::tools {
namespace {

// A folder of this process, with the journal in it, gone at the end.
class Transaction : public testing::Test {
  protected:
    Transaction() {
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        m_folder = Narrow(folder) + "kora4-journal-" + std::to_string(GetCurrentProcessId());
        CreateDirectoryW(Widen(m_folder).c_str(), nullptr);
        m_file.emplace(m_folder + "\\load.journal");
        m_file->Remove();
    }
    ~Transaction() override {
        m_file->Remove();
        RemoveDirectoryW(Widen(m_folder).c_str());
    }

    const JournalFile& File() const { return *m_file; }
    bool HasJournal() const {
        Journal journal;
        return File().Read(journal) != JournalFile::State::eAbsent;
    }

    // Two random stores: the one that is, and the document of one that shall be.
    void Prepare(std::uint32_t seed) {
        RandomStore random(seed);
        m_before = random.Values(6);
        MemoryStore wanted;
        wanted.values = random.Values(6);
        m_after = wanted.values;
        m_plan = ReadDocument(Dump(wanted, Scope::eAll).dump());
        m_store = {};
        m_store.values = m_before;
    }

    // Nothing moved but the counters, which are no settings.
    void ExpectBefore(const std::string& where) {
        EXPECT_EQ(Covered(m_before, Scope::eAll), Covered(m_store.values, Scope::eAll))
            << where;
    }
    void ExpectAfter(const std::string& where) {
        EXPECT_EQ(Covered(m_after, Scope::eAll), Covered(m_store.values, Scope::eAll)) << where;
    }
    // After a recovery, which leaves application keys alone.
    void ExpectEither(const std::string& where, Recovery outcome) {
        const auto& expected = outcome == Recovery::eFinished ? m_after : m_before;
        EXPECT_EQ(WithoutAppKeys(Covered(expected, Scope::eAll)),
                  WithoutAppKeys(Covered(m_store.values, Scope::eAll)))
            << where;
    }

    // How many writes applying the whole plan takes.
    int Writes() {
        MemoryStore store;
        store.values = m_before;
        const StoreLock lock;
        Apply(m_plan, store, lock, File());
        return store.writes;
    }

    Plan m_plan;
    MemoryStore m_store;
    MemoryStore::Values m_before;
    MemoryStore::Values m_after;

  private:
    std::string m_folder;
    std::optional<JournalFile> m_file;
};

std::string At(int n) {
    return "write " + std::to_string(n);
}

TEST_F(Transaction, MakesTheStoreWhatTheDocumentSays) {
    for (std::uint32_t seed = 0; seed < 50; ++seed) {
        Prepare(seed);
        const StoreLock lock;
        Apply(m_plan, m_store, lock, File());
        ExpectAfter(std::to_string(seed));
        EXPECT_FALSE(HasJournal());
    }
}

TEST_F(Transaction, WritesNothingWhenNothingChanges) {
    Prepare(1);
    const StoreLock lock;
    Apply(m_plan, m_store, lock, File());
    m_store.writes = 0;
    const Applied again = Apply(m_plan, m_store, lock, File());
    EXPECT_TRUE(again.changes.empty());
    EXPECT_EQ(0u, again.announcements);
    EXPECT_EQ(0, m_store.writes);
}

TEST_F(Transaction, WritesStaticValuesThenDynamicOnesThenAppKeysThenCounters) {
    Prepare(2);
    const StoreLock lock;
    const Applied applied = Apply(m_plan, m_store, lock, File());
    ASSERT_EQ(applied.changes.size() + applied.announcements, m_store.written.size());
    EXPECT_LT(3u, applied.announcements);
    int phase = 0;
    for (const std::string& name : m_store.written) {
        const PropertyKey key = *ParseValueName(name);
        const SchemaValue* dynamic = FindInSchema(eKeySetDynamic, key);
        const bool isCounter = dynamic && (dynamic->role == Role::eTrigger ||
                                           dynamic->role == Role::eTableCounter);
        const int its = isCounter ? 3 : FindInSchema(eKeySetApp, key) ? 2 : dynamic ? 1 : 0;
        EXPECT_GE(its, phase) << name;
        phase = its;
    }
}

TEST_F(Transaction, CountsWhatAnnouncesTheChangesAndNothingElse) {
    const SchemaValue amount = SettingNamed("volume-leveler").Stored(1);
    const SchemaValue flag = SettingNamed("dialog-enhancer.on").Stored(1);
    const SchemaValue name = SettingNamed("name").Stored(3);
    m_store.WriteNumber(eKeySetDynamic, PresetTriggerKey(eVolumeTech), 0xFFFFFFFF);
    m_plan.values = {{amount, StoredValue::FromDword(3)},
                     {flag, StoredValue::FromDword(1)},
                     {name, StoredValue::FromText(u"x")}};
    const StoreLock lock;
    EXPECT_EQ(2u, Apply(m_plan, m_store, lock, File()).announcements);
    EXPECT_EQ(0u, m_store.Number(eKeySetDynamic, PresetTriggerKey(eVolumeTech), 7));
    EXPECT_EQ(7u, m_store.Number(eKeySetDynamic, PresetTriggerKey(eEnhancementTech), 7));
    EXPECT_EQ(1u,
              m_store.Number(eKeySetDynamic, pkey::Setting(pkey::cProfileTableCounterPid), 7));
}

TEST_F(Transaction, AFailureAtEachWriteLeavesTheOldStateAndSaysSo) {
    Prepare(3);
    const int writes = Writes();
    ASSERT_LT(40, writes);
    for (int n = 0; n < writes; ++n) {
        m_store = {};
        m_store.values = m_before;
        m_store.writesToFailure = n;
        const StoreLock lock;
        try {
            Apply(m_plan, m_store, lock, File());
            ADD_FAILURE() << At(n) << " did not fail";
        } catch (const Failure& failure) {
            EXPECT_EQ(ExitCode::eFailed, failure.Code());
            EXPECT_NE(std::string::npos, std::string(failure.what()).find("were restored"));
        }
        ExpectBefore(At(n));
        EXPECT_FALSE(HasJournal());
    }
}

TEST_F(Transaction, AnInterruptAtEachPlaceLeavesTheOldState) {
    Prepare(4);
    const int writes = Writes();
    for (int n = 0; n < writes; n += 3) {
        m_store = {};
        m_store.values = m_before;
        int left = n;
        const StoreLock lock;
        EXPECT_THROW(Apply(m_plan, m_store, lock, File(), [&left] { return left-- == 0; }),
                     Failure);
        ExpectBefore(At(n));
        EXPECT_FALSE(HasJournal());
    }
}

TEST_F(Transaction, WhenPuttingBackFailsTheJournalStaysAndMendsTheRest) {
    Prepare(5);
    const int writes = Writes();
    for (int n = 0; n < writes; n += 2) {
        m_store = {};
        m_store.values = m_before;
        m_store.writesToFailure = n;
        m_store.staysBroken = true;
        {
            const StoreLock lock;
            try {
                Apply(m_plan, m_store, lock, File());
                ADD_FAILURE() << At(n) << " did not fail";
            } catch (const Failure& failure) {
                EXPECT_NE(std::string::npos, std::string(failure.what()).find("failed, too"));
                EXPECT_NE(std::string::npos, failure.Next().find("doctor"));
            }
        }
        EXPECT_TRUE(HasJournal());
        m_store.writesToFailure = MemoryStore::cNever;
        const StoreLock lock;
        ExpectEither(At(n), Recover(m_store, lock, File()).outcome);
        EXPECT_FALSE(HasJournal());
    }
}

TEST_F(Transaction, AKillAtEachWriteIsMended) {
    Prepare(6);
    const int writes = Writes();
    int finished = 0;
    for (int n = 0; n < writes; ++n) {
        m_store = {};
        m_store.values = m_before;
        m_store.writesToDeath = n;
        {
            const StoreLock lock;
            EXPECT_THROW(Apply(m_plan, m_store, lock, File()), Died);
        }
        m_store.writesToDeath = MemoryStore::cNever;
        const StoreLock lock;
        const Recovered seen = Inspect(m_store, File());
        EXPECT_TRUE(HasJournal());
        const Recovered recovered = Recover(m_store, lock, File());
        EXPECT_EQ(recovered.outcome, seen.outcome);
        EXPECT_EQ(recovered.restored, seen.restored);
        finished += recovered.outcome == Recovery::eFinished;
        ExpectEither(At(n), recovered.outcome);
        EXPECT_FALSE(HasJournal());
        EXPECT_TRUE(recovered.foreign.empty());
    }
    // Only where nothing but announcements was missing.
    EXPECT_LT(0, finished);
    EXPECT_GT(12, finished);
}

TEST_F(Transaction, AKillWhilePuttingBackIsMended) {
    Prepare(7);
    const int writes = Writes();
    for (int n = 0; n < writes; n += 9) {
        for (int more = 0; more < n; more += 7) {
            m_store = {};
            m_store.values = m_before;
            m_store.writesToDeath = n;
            {
                const StoreLock lock;
                EXPECT_THROW(Apply(m_plan, m_store, lock, File()), Died);
            }
            {
                m_store.writesToDeath = more;
                const StoreLock lock;
                try {
                    Recover(m_store, lock, File());
                } catch (const Died&) {
                    EXPECT_TRUE(HasJournal());
                }
            }
            m_store.writesToDeath = MemoryStore::cNever;
            const StoreLock lock;
            const Recovered recovered = Recover(m_store, lock, File());
            if (recovered.outcome != Recovery::eNothing)
                ExpectEither(At(n) + ", then " + At(more), recovered.outcome);
            EXPECT_FALSE(HasJournal());
        }
    }
}

TEST_F(Transaction, WhatSomebodyElseChangedAfterTheKillStays) {
    Prepare(8);
    const int writes = Writes();
    m_store.writesToDeath = writes / 2;
    {
        const StoreLock lock;
        EXPECT_THROW(Apply(m_plan, m_store, lock, File()), Died);
    }
    m_store.writesToDeath = MemoryStore::cNever;
    Journal journal;
    ASSERT_EQ(JournalFile::State::eWhole, File().Read(journal));
    const JournalEntry& entry = journal.entries.front();
    const StoredValue foreign = StoredValue::FromText(u"somebody else's");
    m_store.Write(entry.keySet, entry.key, foreign);
    const StoreLock lock;
    const Recovered recovered = Recover(m_store, lock, File());
    EXPECT_EQ(Recovery::eUndone, recovered.outcome);
    ASSERT_EQ(1u, recovered.foreign.size());
    EXPECT_EQ(foreign, m_store.Read(entry.keySet, entry.key));
    m_store.values.erase({entry.keySet, ValueName(entry.key)});
    m_before.erase({entry.keySet, ValueName(entry.key)});
    ExpectBefore("all the others");
}

TEST_F(Transaction, NothingIsChangedOverTheJournalOfAnother) {
    Prepare(9);
    File().Write({});
    const StoreLock lock;
    try {
        Apply(m_plan, m_store, lock, File());
        FAIL() << "applied";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string::npos, failure.Next().find("doctor"));
    }
    EXPECT_EQ(m_before, m_store.values);
}

TEST_F(Transaction, NothingIsChangedWhenTheJournalCannotBeWritten) {
    Prepare(10);
    const JournalFile nowhere("Z:\\no\\such\\folder\\load.journal");
    const StoreLock lock;
    try {
        Apply(m_plan, m_store, lock, nowhere);
        FAIL() << "applied";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string::npos, std::string(failure.what()).find("Nothing was changed"));
    }
    EXPECT_EQ(m_before, m_store.values);
}

TEST_F(Transaction, AJournalThatWasCutShortMeansThatNothingWasWritten) {
    Prepare(11);
    m_store.writesToDeath = 0;
    {
        const StoreLock lock;
        EXPECT_THROW(Apply(m_plan, m_store, lock, File()), Died);
    }
    m_store.writesToDeath = MemoryStore::cNever;
    const std::string whole = ReadWholeFile(File().Path());
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, whole.size() - 1}) {
        WriteWholeFile(File().Path(), whole.substr(0, length));
        const StoreLock lock;
        EXPECT_EQ(Recovery::eNotBegun, Recover(m_store, lock, File()).outcome) << length;
        EXPECT_FALSE(HasJournal());
        EXPECT_EQ(m_before, m_store.values);
    }
    WriteWholeFile(File().Path() + ".new", whole.substr(0, 10));
    const StoreLock lock;
    EXPECT_EQ(Recovery::eNotBegun, Recover(m_store, lock, File()).outcome);
    EXPECT_FALSE(HasJournal());
}

TEST_F(Transaction, WhatIsNoJournalIsMovedAside) {
    Prepare(12);
    for (const std::string& text : {std::string(300, '\x9d'), std::string(32768, '\0'),
                                    std::string("{\"format\":\"x\"}")}) {
        WriteWholeFile(File().Path(), text);
        const StoreLock lock;
        const Recovered found = Recover(m_store, lock, File());
        EXPECT_EQ(Recovery::eUnreadable, found.outcome);
        EXPECT_EQ(text, ReadWholeFile(found.movedTo));
        EXPECT_FALSE(HasJournal());
        DeleteFileW(Widen(found.movedTo).c_str());
    }
}

TEST_F(Transaction, ALargeValueIsNotPutBackAndIsAbsentInstead) {
    const SchemaValue large = SettingNamed("volume-leveler").Stored(1);
    const SchemaValue other = SettingNamed("dialog-enhancer").Stored(1);
    m_store.Write(large.keySet, large.key, {cBinaryType, {}, 2000000});
    m_plan.values = {{large, StoredValue::FromDword(5)}, {other, StoredValue::FromDword(1)}};
    // Before the second value is written.
    m_store.writesToFailure = 1;
    const StoreLock lock;
    EXPECT_THROW(Apply(m_plan, m_store, lock, File()), Failure);
    EXPECT_FALSE(HasJournal());
    EXPECT_EQ(std::nullopt, m_store.Read(large.keySet, large.key));
    Journal journal;
    journal.entries.push_back({large.keySet, large.key, StoredValue{cBinaryType, {}, 2000000},
                               StoredValue::FromDword(5)});
    File().Write(journal);
    Journal read;
    ASSERT_EQ(JournalFile::State::eWhole, File().Read(read));
    EXPECT_EQ(journal.entries[0].before, read.entries[0].before);
}

// What can stand in the place of a journal without being one.
std::vector<std::string> TextsThatAreNoJournal(const JournalFile& file) {
    Journal strange;
    strange.entries.push_back(
        {eKeySetStatic, pkey::Setting(9999), {}, StoredValue::FromDword(1)});
    file.Write(strange);
    const std::string entry =
        "{\"format\":\"kora4-journal\",\"version\":1,\"entries\":[{\"keys\":2,"
        "\"value\":\"" +
        ValueName(pkey::Setting(3)) + "\",\"before\":";
    return {"hello\n",
            "{}\n",
            ReadWholeFile(file.Path()),
            entry + "{\"type\":4.5,\"data\":\"00\"},\"after\":null}],\"counters\":[]}\n",
            entry + "{\"type\":-4,\"data\":\"00\"},\"after\":null}],\"counters\":[]}\n",
            "{\"format\":\"kora4-journal\",\"version\":1.5,\"entries\":[],\"counters\":[]}\n",
            "{\"format\":\"kora4-journal\",\"version\":1,\"entries\":null,\"counters\":[]}\n",
            "{\"format\":\"kora4-journal\",\"version\":1,\"entries\":[],\"counters\":{}}\n",
            std::string(20000, '[') + std::string(20000, ']') + "\n"};
}

TEST_F(Transaction, AFileThatIsNoJournalIsMovedAsideAndNothingIsRestored) {
    Prepare(12);
    for (const std::string& text : TextsThatAreNoJournal(File())) {
        WriteWholeFile(File().Path(), text);
        const StoreLock lock;
        EXPECT_EQ(Recovery::eUnreadable, Inspect(m_store, File()).outcome);
        EXPECT_TRUE(HasJournal());
        const Recovered recovered = Recover(m_store, lock, File());
        EXPECT_EQ(Recovery::eUnreadable, recovered.outcome) << text.substr(0, 100);
        EXPECT_FALSE(HasJournal());
        EXPECT_EQ(m_before, m_store.values);
        EXPECT_NE(std::string::npos, recovered.InWords().find(File().Path()));
        EXPECT_EQ(text, ReadWholeFile(recovered.movedTo));
        DeleteFileW(Widen(recovered.movedTo).c_str());
    }
}

TEST_F(Transaction, AFileThatIsNoJournalHoldsUpNoChange) {
    Prepare(14);
    WriteWholeFile(File().Path(), "hello\n");
    const StoreLock lock;
    const Applied applied = Apply(m_plan, m_store, lock, File());
    ExpectAfter("over a strange file");
    EXPECT_EQ("hello\n", ReadWholeFile(applied.movedJournal));
    DeleteFileW(Widen(applied.movedJournal).c_str());
}

TEST_F(Transaction, NoJournalRestoresApplicationKeys) {
    const SchemaValue command = SettingNamed("profile-editor-command").Stored();
    ASSERT_EQ(eKeySetApp, command.keySet);
    const SchemaValue period = SettingNamed("sampling-period").Stored();
    Journal journal;
    journal.entries.push_back(
        {period.keySet, period.key, StoredValue::FromDword(40), StoredValue::FromDword(60)});
    journal.entries.push_back({command.keySet, command.key,
                               StoredValue::FromText(u"planted.exe"),
                               StoredValue::FromText(u"editor.exe")});
    // The first value was not written yet, so the load is to be undone.
    m_store.Write(period.keySet, period.key, StoredValue::FromDword(40));
    for (const auto& present : {std::optional<StoredValue>(), journal.entries[1].after}) {
        m_store.Put(command.keySet, command.key, present);
        File().Write(journal);
        const StoreLock lock;
        const Recovered recovered = Recover(m_store, lock, File());
        EXPECT_EQ(Recovery::eUndone, recovered.outcome);
        EXPECT_EQ(present, m_store.Read(command.keySet, command.key));
        EXPECT_EQ(std::vector<std::string>{"profile-editor-command"}, recovered.notRestored);
        EXPECT_NE(std::string::npos, recovered.InWords().find("profile-editor-command"));
    }
}

TEST_F(Transaction, WithoutAJournalThereIsNothingToMend) {
    Prepare(13);
    const StoreLock lock;
    EXPECT_EQ(Recovery::eNothing, Recover(m_store, lock, File()).outcome);
    EXPECT_EQ(m_before, m_store.values);
}

}  // namespace
}  // namespace kora4::tools
