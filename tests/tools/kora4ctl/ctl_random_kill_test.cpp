// SPDX-License-Identifier: MIT
// kora4ctl load that is killed at any moment.
//
// ctl_random_kill_test [KILLS [SEED]]
#include <cstdio>
#include <random>

#include "support/program_arguments.h"
#include "tools/kora4ctl/broken_load.h"

namespace kora4::test {
namespace {

// Milliseconds, with the parts of one.
double Now() {
    LARGE_INTEGER frequency;
    LARGE_INTEGER now;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&now);
    return static_cast<double>(now.QuadPart) * 1000 / static_cast<double>(frequency.QuadPart);
}

// Not asleep: the platform's pauses are as long as a whole load.
void SpinFor(double milliseconds) {
    const double end = Now() + milliseconds;
    while (Now() < end)
        SwitchToThread();
}

// The shipped program, ended from outside.
class RandomlyKilledLoad : public BrokenLoad {
  protected:
    void SetUp() override {
        BrokenLoad::SetUp();
        Prepare(Scope::eAll);
        MakeFile(OldFile(), DocumentText(m_stores.before, Scope::eAll));
    }
    std::string OldFile() const { return m_folder.File("old.json"); }

    // What a whole load takes, and how long of that its journal is there.
    struct Times {
        double whole = 0;
        double writing = 0;
    };
    Times Measure() {
        Times times;
        for (const std::string& file : {DocumentFile(), OldFile()}) {
            const double begin = Now();
            RunningTool tool("kora4ctl", {"load", "--stored", file});
            WaitForJournal(tool);
            const double writes = Now();
            while (Exists(JournalPath()) && tool.IsRunning())
                SwitchToThread();
            times.writing = std::max(times.writing, Now() - writes);
            EXPECT_EQ(cDone, tool.WaitForEnd().exitCode);
            times.whole = std::max(times.whole, Now() - begin);
        }
        return times;
    }
    void WaitForJournal(const RunningTool& tool) const {
        while (!Exists(JournalPath()) && tool.IsRunning())
            SwitchToThread();
    }
};

TEST_F(RandomlyKilledLoad, IsMendedByDoctorWheneverItHappens) {
    const unsigned kills = ProgramArgument(1, 200);
    const unsigned seed = SeedArgument(2);
    std::mt19937 random(seed);
    const Times times = Measure();
    std::printf("%u kills, seed %u, a load takes %.0f ms and writes for %.0f ms\n", kills, seed,
                times.whole, times.writing);
    bool isNew = false;
    unsigned journals = 0;
    unsigned undone = 0;
    unsigned finished = 0;
    for (unsigned i = 0; i < kills && !HasFailure(); ++i) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", kill " + std::to_string(i));
        const StoreValues& old = isNew ? m_stores.after : m_stores.before;
        const StoreValues& wanted = isNew ? m_stores.before : m_stores.after;
        {
            RunningTool tool("kora4ctl",
                             {"load", "--stored", isNew ? OldFile() : DocumentFile()});
            // Half of them are hit at any time, the others while they write.
            const bool whileWriting = i % 2 == 1;
            if (whileWriting)
                WaitForJournal(tool);
            const double latest = whileWriting ? times.writing : times.whole * 1.2;
            SpinFor(std::uniform_real_distribution<>(0, latest)(random));
            tool.Kill();
        }
        const bool hadJournal = HasJournal();
        journals += hadJournal;
        const std::string words = DoctorOnLoad();
        EXPECT_FALSE(HasJournal());
        EXPECT_EQ(hadJournal, words.find("none was interrupted") == std::string::npos) << words;
        const auto settings = [](const StoreValues& values) {
            return tools::WithoutAppKeys(tools::Covered(values, Scope::eAll));
        };
        const bool isDone = settings(ReadStoreValues()) == settings(wanted);
        if (!isDone) {
            EXPECT_EQ("", DifferencesOf(settings(old), settings(ReadStoreValues()))) << words;
        }
        RestoreAppKeys(isDone ? wanted : old);
        undone += words.find("partway") != std::string::npos;
        finished += words.find("announced") != std::string::npos;
        isNew = isNew != isDone;
    }
    std::printf("%u left a journal: %u undone, %u finished\n", journals, undone, finished);
    // Otherwise nothing was tried.
    EXPECT_LT(kills / 10, undone);
}

}  // namespace
}  // namespace kora4::test
