// SPDX-License-Identifier: MIT
// A load that changes every value, and that something happens to on its way.
#ifndef KORA4_TESTS_TOOLS_KORA4CTL_BROKEN_LOAD_H
#define KORA4_TESTS_TOOLS_KORA4CTL_BROKEN_LOAD_H

#include <algorithm>
#include <string>

#include "tools/kora4ctl/store_fixture.h"

namespace kora4::test {

// kora4ctl on a store that can be told to fail; it ends itself with that exit code.
inline constexpr char cFaulty[] = "kora4ctl_faulty";
inline constexpr DWORD cDied = 99;

// An event that the faulty program shares with the test.
class Event {
  public:
    explicit Event(const wchar_t* name) : m_event(CreateEventW(nullptr, TRUE, FALSE, name)) {
        ResetEvent(m_event.Get());
    }
    bool Wait() const { return WaitForSingleObject(m_event.Get(), cToolWait) == WAIT_OBJECT_0; }
    void Set() const { SetEvent(m_event.Get()); }

  private:
    UniqueHandle m_event;
};

// A load of one random store over another that fails, dies or waits at a write.
class BrokenLoad : public StoreTest {
  protected:
    // Levels would make doctor watch for others.
    void Prepare(Scope scope) {
        m_stores = DifferentStores(31);
        for (const tools::SchemaValue& value : tools::Schema())
            if (value.role == tools::Role::eVisualization)
                for (StoreValues* const values : {&m_stores.before, &m_stores.after})
                    values->erase({value.keySet, value.Name()});
        m_load = LoadOf(m_stores.before, m_stores.after, scope);
        ASSERT_LT(200u, m_load.changes);
        ASSERT_LT(6u, m_load.counters.size());
        MakeFile(DocumentFile(), DocumentText(m_stores.after, scope));
        ReplaceStoreValues(m_stores.before);
    }

    std::string DocumentFile() const { return m_folder.File("new.json"); }

    static std::string At(const std::string& kind, std::size_t n) {
        return kind + ":" + std::to_string(n);
    }
    static Environment Faults(const std::string& steps) { return {{"KORA4_FAULTS", steps}}; }
    ToolResult LoadWith(const std::string& steps) const {
        return RunTool(cFaulty, {"load", "--stored", DocumentFile()}, {}, Faults(steps));
    }

    // What doctor says about broken-off loads; null when it says nothing.
    static const Json* FindingOfLoad(const Json& document) {
        for (const Json& finding : document["findings"])
            if (finding["check"] == "load")
                return &finding;
        return nullptr;
    }
    // The shipped doctor mends; its words.
    static std::string DoctorOnLoad() {
        const ToolResult result = RunCtl({"doctor", "--json"});
        EXPECT_TRUE(result.exitCode == cDone || result.exitCode == cFindings) << result;
        const Json document = ParsedJson(result.out);
        const Json* const finding = FindingOfLoad(document);
        if (!finding) {
            ADD_FAILURE() << "doctor says nothing of the load\n" << result;
            return {};
        }
        EXPECT_TRUE((*finding)["severity"] == "note" || (*finding)["severity"] == "ok")
            << *finding;
        return (*finding)["what"];
    }

    // After a break somewhere among the values: what was there before is there again.
    void ExpectUndone() {
        const StoreValues broken = ReadStoreValues();
        const std::string words = DoctorOnLoad();
        EXPECT_NE(std::string::npos, words.find("interrupted partway")) << words;
        ExpectRecovered(m_stores.before);
        ExpectMoved(m_load.counters, broken);
        EXPECT_FALSE(HasJournal());
    }
    // The same, when part of it was there already, by which counters had moved or had not.
    void ExpectPutBack() {
        DoctorOnLoad();
        ExpectRecovered(m_stores.before);
        EXPECT_FALSE(HasJournal());
    }
    // After a break among the counters: everything is there, and is announced.
    void ExpectFinished() {
        const StoreValues broken = ReadStoreValues();
        const std::string words = DoctorOnLoad();
        EXPECT_NE(std::string::npos, words.find("announced to the clients")) << words;
        ExpectRecovered(m_load.after);
        ExpectMoved(m_load.counters, broken);
        EXPECT_FALSE(HasJournal());
    }
    // After a break before write n, from 1 on.
    void ExpectMended(std::size_t n) {
        if (n <= m_load.changes)
            ExpectUndone();
        else
            ExpectFinished();
    }

    TwoStores m_stores;
    ExpectedLoad m_load;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_KORA4CTL_BROKEN_LOAD_H
