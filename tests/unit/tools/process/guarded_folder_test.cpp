// SPDX-License-Identifier: MIT
// The folder of the tools' own files: what is planted there does no harm. Several users and
// most links stand behind the seam; hard links are real.
#include <gtest/gtest.h>
#include <windows.h>

#include <sddl.h>

#include <map>

#include "base/failure.h"
#include "base/text.h"
#include "process/files.h"
#include "process/guarded_folder.h"

namespace kora4::tools {
namespace {

// The platform, but for the files and folders of which a test says otherwise.
class TrialSecurity : public FileSecurity {
  public:
    bool IsForMachine() const override { return isForMachine; }
    FileFacts FactsOf(HANDLE file, const std::string& path) const override {
        asked.push_back(path);
        FileFacts facts = FileSecurity::FactsOf(file, path);
        if (const auto change = changes.find(path); change != changes.end())
            change->second(facts);
        return facts;
    }

    bool isForMachine = true;
    std::map<std::string, void (*)(FileFacts&)> changes;
    mutable std::vector<std::string> asked;
};

void OwnedByAnother(FileFacts& facts) {
    facts.hasTrustedOwner = false;
}
void Linked(FileFacts& facts) {
    facts.isLink = true;
}
void OpenToOthers(FileFacts& facts) {
    facts.isOpenToOthers = true;
}

bool Exists(const std::string& path) {
    return GetFileAttributesW(Widen(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void RemoveAll(const std::string& path) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(Widen(path + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::string name = Narrow(found.cFileName);
        if (name == "." || name == "..")
            continue;
        if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            RemoveAll(path + "\\" + name);
        else
            DeleteFileW(Widen(path + "\\" + name).c_str());
    } while (FindNextFileW(search, &found));
    FindClose(search);
    RemoveDirectoryW(Widen(path).c_str());
}

class TrialFolder : public testing::Test {
  protected:
    TrialFolder() {
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        m_root = Narrow(folder) + "kora4-guard-" + std::to_string(GetCurrentProcessId());
        RemoveAll(m_root);
        CreateDirectoryW(Widen(m_root).c_str(), nullptr);
        m_folder.emplace(Path(), m_security);
    }
    ~TrialFolder() override { RemoveAll(m_root); }

    std::string Path() const { return m_root + "\\KORA4"; }
    std::string Victim() const { return m_root + "\\victim"; }
    GuardedFolder& Folder() { return *m_folder; }

    TrialSecurity m_security;

  private:
    std::string m_root;
    std::optional<GuardedFolder> m_folder;
};

TEST_F(TrialFolder, ComesWithTheFirstFile) {
    EXPECT_EQ(Standing::eAbsent, Folder().Find("a"));
    Folder().Write("a", "text");
    EXPECT_EQ(Standing::eTrusted, Folder().Find("a"));
    EXPECT_EQ("text", Folder().Read("a"));
    Folder().Write("a", "other text");
    EXPECT_EQ("other text", Folder().Read("a"));
    Folder().Remove("a");
    Folder().Remove("a");
    EXPECT_EQ(Standing::eAbsent, Folder().Find("a"));
    EXPECT_EQ("", Folder().Prepare());
}

TEST_F(TrialFolder, IsLookedAtBeforeEachUseAndSoIsTheFile) {
    Folder().Write("a", "text");
    using Paths = std::vector<std::string>;
    const Paths both = {Path(), Folder().PathOf("a")};
    m_security.asked.clear();
    Folder().Read("a");
    EXPECT_EQ(both, m_security.asked);
    m_security.asked.clear();
    Folder().Remove("a");
    EXPECT_EQ(both, m_security.asked);
    m_security.asked.clear();
    Folder().Find("a");
    EXPECT_EQ(Paths{Path()}, m_security.asked);
}

TEST_F(TrialFolder, OfAnotherOrThroughALinkOrOpenToOthersIsMovedAsideAsAWhole) {
    for (void (*const change)(FileFacts&) : {OwnedByAnother, Linked}) {
        Folder().Write("a", "planted");
        m_security.changes = {{Path(), change}};
        EXPECT_EQ(Standing::eStrange, Folder().Find("a"));
        EXPECT_THROW(Folder().Read("a"), Failure);
        // The new folder of the same name is judged like the old one.
        EXPECT_THROW(Folder().Write("a", "own"), Failure);
        m_security.changes.clear();
        EXPECT_EQ(Standing::eAbsent, Folder().Find("a"));
    }
    Folder().Write("a", "planted");
    m_security.changes = {{Path(), OpenToOthers}};
    const std::string moved = Folder().MoveAside("a");
    EXPECT_EQ(0u, moved.find(Path() + ".moved-")) << moved;
    EXPECT_EQ("planted", ReadWholeFile(moved + "\\a"));
    EXPECT_FALSE(Exists(Path()));
}

TEST_F(TrialFolder, FilesOfOthersAreMovedAsideUnread) {
    Folder().Write("a", "planted");
    m_security.changes = {{Folder().PathOf("a"), OwnedByAnother}};
    EXPECT_EQ(Standing::eStrange, Folder().Find("a"));
    EXPECT_THROW(Folder().Read("a"), Failure);
    EXPECT_TRUE(Folder().Names("a").empty());
    const std::string moved = Folder().MoveAside("a");
    EXPECT_EQ("planted", ReadWholeFile(moved));
    EXPECT_EQ(Standing::eAbsent, Folder().Find("a"));
}

TEST_F(TrialFolder, AHardLinkNeverLosesWhatItLeadsTo) {
    Folder().Prepare();
    WriteWholeFile(Victim(), "precious");
    for (const char* name : {"a", "a.new"}) {
        ASSERT_TRUE(CreateHardLinkW(Widen(Folder().PathOf(name)).c_str(),
                                    Widen(Victim()).c_str(), nullptr));
        EXPECT_EQ(Standing::eStrange, Folder().Find(name));
        Folder().Write("a", "own");
        EXPECT_EQ("own", Folder().Read("a"));
        EXPECT_EQ("precious", ReadWholeFile(Victim()));
        Folder().Remove("a");
    }
    ASSERT_TRUE(
        CreateHardLinkW(Widen(Folder().PathOf("a")).c_str(), Widen(Victim()).c_str(), nullptr));
    Folder().Remove("a");
    EXPECT_EQ(Standing::eAbsent, Folder().Find("a"));
    EXPECT_EQ("precious", ReadWholeFile(Victim()));
}

TEST_F(TrialFolder, AFolderInThePlaceOfAFileIsNone) {
    Folder().Prepare();
    CreateDirectoryW(Widen(Folder().PathOf("a")).c_str(), nullptr);
    EXPECT_EQ(Standing::eStrange, Folder().Find("a"));
    Folder().Write("a", "own");
    EXPECT_EQ("own", Folder().Read("a"));
}

TEST_F(TrialFolder, NamesOwnFilesInTheirOrder) {
    for (const char* name : {"b-2", "b-1", "c-1"})
        Folder().Write(name, "");
    EXPECT_EQ((std::vector<std::string>{"b-1", "b-2"}), Folder().Names("b-"));
    EXPECT_TRUE(GuardedFolder(Path() + "-absent").Names("b-").empty());
}

// ---- Whose folder -----------------------------------------------------------------------

TEST_F(TrialFolder, OfAdministratorsIsTheMachinesAndOfOthersTheirOwn) {
    const auto isBelow = [](const std::string& path, const char* variable) {
        wchar_t folder[MAX_PATH] = L"";
        GetEnvironmentVariableW(Widen(variable).c_str(), folder, MAX_PATH);
        return Lower(path) == Lower(Narrow(folder) + "\\KORA4");
    };
    EXPECT_TRUE(isBelow(DataFolder(m_security), "ProgramData")) << DataFolder(m_security);
    m_security.isForMachine = false;
    EXPECT_TRUE(isBelow(DataFolder(m_security), "LOCALAPPDATA")) << DataFolder(m_security);
}

TEST_F(TrialFolder, IsWhereTheUsersEnvironmentDoesNotSay) {
    const std::string before = DataFolder(m_security);
    SetEnvironmentVariableW(L"ProgramData", L"C:\\elsewhere");
    EXPECT_EQ(before, DataFolder(m_security));
    SetEnvironmentVariableW(L"ProgramData", L"C:\\ProgramData");
}

TEST_F(TrialFolder, OfTheMachineIsWrittenByAdministratorsAndReadByEveryone) {
    EXPECT_EQ(L"O:BAD:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)(A;OICI;FRFX;;;WD)",
              m_security.ListForNew());
    m_security.isForMachine = false;
    const std::wstring own = m_security.ListForNew();
    EXPECT_EQ(0u, own.find(L"D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)(A;OICI;FA;;;S-1-5-21-"));
    EXPECT_EQ(std::wstring::npos, own.find(L"WD"));
}

}  // namespace
}  // namespace kora4::tools
