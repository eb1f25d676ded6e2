// SPDX-License-Identifier: MIT
// What the trace writes its files through, and what it leaves alone.
#include "trace/log_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "support/start_process.h"
#include "support/trace_capture.h"

namespace kora4 {
namespace {

using test::TraceLog;
using testing::ElementsAre;

constexpr char cFolder[] = "C:\\KalLogs";
constexpr char cOther[] = "C:\\KalOther";
constexpr char cModuleFile[] = "C:\\KalLogs\\KORA4ASL.log";
constexpr char cSharedFile[] = "C:\\KalLogs\\KalTrace.log";

std::string ReadRaw(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool Exists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void Write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

// --- a platform that tests can shape --------------------------------------------------------

// Handles are the numbers 1, 2 and 3, in the order of the calls.
struct Platform {
    std::vector<std::string> calls;
    std::set<std::string> links;  // paths with the attribute of a reparse point
    std::set<std::string> named;  // files with a second name
    std::set<std::string> moved;  // what is opened there stands elsewhere
    std::set<std::string> mute;   // what says nothing of itself
    std::vector<std::string> opened;
};
Platform* g_pPlatform = nullptr;

const std::string& PathOf(HANDLE handle) {
    return g_pPlatform->opened[reinterpret_cast<std::uintptr_t>(handle) - 1];
}

HANDLE WINAPI Create(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD how,
                     DWORD flags, HANDLE) {
    EXPECT_EQ(DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE}, share);
    EXPECT_NE(0u, flags & FILE_FLAG_OPEN_REPARSE_POINT);
    const bool isFolder = std::string(path) == cFolder;
    EXPECT_EQ(isFolder, (flags & FILE_FLAG_BACKUP_SEMANTICS) != 0);
    EXPECT_EQ(isFolder ? DWORD{FILE_READ_ATTRIBUTES} : FILE_APPEND_DATA | FILE_READ_ATTRIBUTES,
              access);
    EXPECT_EQ(static_cast<DWORD>(isFolder ? OPEN_EXISTING : OPEN_ALWAYS), how);
    g_pPlatform->opened.push_back(path);
    g_pPlatform->calls.push_back(std::string("open ") + path);
    return reinterpret_cast<HANDLE>(g_pPlatform->opened.size());
}

BOOL WINAPI Inform(HANDLE handle, FILE_INFO_BY_HANDLE_CLASS about, LPVOID pInformation,
                   DWORD size) {
    const std::string& path = PathOf(handle);
    std::memset(pInformation, 0, size);
    if (about == FileBasicInfo) {
        auto* const pBasic = static_cast<FILE_BASIC_INFO*>(pInformation);
        pBasic->FileAttributes = g_pPlatform->links.contains(path)
                                     ? FILE_ATTRIBUTE_REPARSE_POINT
                                     : FILE_ATTRIBUTE_ARCHIVE;
    } else if (about == FileStandardInfo) {
        auto* const pStandard = static_cast<FILE_STANDARD_INFO*>(pInformation);
        pStandard->NumberOfLinks = g_pPlatform->named.contains(path) ? 2 : 1;
    } else {
        EXPECT_EQ(FileNameInfo, about);
        g_pPlatform->calls.push_back("look at " + path);
        if (g_pPlatform->mute.contains(path))
            return FALSE;
        auto* const pName = static_cast<FILE_NAME_INFO*>(pInformation);
        const std::string name =
            g_pPlatform->moved.contains(path) ? path.substr(2) + "x" : path.substr(2);
        std::copy(name.begin(), name.end(), pName->FileName);
        pName->FileNameLength = static_cast<DWORD>(2 * name.size());
        EXPECT_GE(size, pName->FileNameLength + sizeof *pName);
    }
    return TRUE;
}

BOOL WINAPI WriteText(HANDLE handle, LPCVOID text, DWORD length, LPDWORD, LPOVERLAPPED) {
    g_pPlatform->calls.push_back("write " + PathOf(handle) + " " +
                                 std::string(static_cast<const char*>(text), length));
    return TRUE;
}

BOOL WINAPI Close(HANDLE handle) {
    g_pPlatform->calls.push_back("close " + PathOf(handle));
    return TRUE;
}

class LogFileCalls : public testing::Test {
  protected:
    LogFileCalls() { g_pPlatform = &m_platform; }
    ~LogFileCalls() override { g_pPlatform = nullptr; }

    std::vector<std::string> Calls() {
        m_platform.calls.clear();
        m_platform.opened.clear();
        trace::AppendToLogs("KORA4ASL", "a\nb\n", {Create, Inform, WriteText, Close});
        return m_platform.calls;
    }

    Platform m_platform;
};

const std::string cFolderOpened = std::string("open ") + cFolder;
const std::string cFolderSeen = std::string("look at ") + cFolder;
const std::string cFolderClosed = std::string("close ") + cFolder;

std::string Of(const char* verb, const char* path) {
    return std::string(verb) + " " + path;
}
std::string Written(const char* path) {
    return std::string("write ") + path + " a\r\nb\r\n";
}

TEST_F(LogFileCalls, WriteALineInOneCallAfterALookAtFolderAndFile) {
    EXPECT_THAT(Calls(), ElementsAre(cFolderOpened, cFolderSeen, Of("open", cModuleFile),
                                     Of("look at", cModuleFile), Written(cModuleFile),
                                     Of("close", cModuleFile), Of("open", cSharedFile),
                                     Of("look at", cSharedFile), Written(cSharedFile),
                                     Of("close", cSharedFile), cFolderClosed));
}

TEST_F(LogFileCalls, OpenNothingBehindAFolderThatIsALink) {
    m_platform.links = {cFolder};
    EXPECT_THAT(Calls(), ElementsAre(cFolderOpened, cFolderSeen, cFolderClosed));
    m_platform.links = {};
    for (auto pShape : {&Platform::moved, &Platform::mute}) {
        m_platform.*pShape = {cFolder};
        EXPECT_THAT(Calls(), ElementsAre(cFolderOpened, cFolderSeen, cFolderClosed));
        m_platform.*pShape = {};
    }
}

TEST_F(LogFileCalls, WriteNothingIntoAFileThatIsALinkAndGoOnWithTheOther) {
    for (auto pShape :
         {&Platform::links, &Platform::named, &Platform::moved, &Platform::mute}) {
        m_platform.*pShape = {cModuleFile};
        EXPECT_THAT(Calls(),
                    ElementsAre(cFolderOpened, cFolderSeen, Of("open", cModuleFile),
                                Of("look at", cModuleFile), Of("close", cModuleFile),
                                Of("open", cSharedFile), Of("look at", cSharedFile),
                                Written(cSharedFile), Of("close", cSharedFile), cFolderClosed));
        m_platform.*pShape = {};
    }
}

// --- the platform itself --------------------------------------------------------------------

TEST(LogFileLinks, AFileWithAnotherNameIsLeftAlone) {
    for (const char* pPath : {cModuleFile, cSharedFile}) {
        const TraceLog log;
        Write("C:\\KalLogs\\target.bat", "rem\r\n");
        ASSERT_TRUE(CreateHardLinkA(pPath, "C:\\KalLogs\\target.bat", nullptr));
        trace::AppendToLogs("KORA4ASL", "line\n");
        EXPECT_EQ("rem\r\n", ReadRaw("C:\\KalLogs\\target.bat")) << pPath;
        const bool isModules = pPath == cModuleFile;
        EXPECT_EQ("line\r\n", ReadRaw(isModules ? cSharedFile : cModuleFile)) << pPath;
        ASSERT_TRUE(DeleteFileA("C:\\KalLogs\\target.bat"));
        trace::AppendToLogs("KORA4ASL", "line\n");
        EXPECT_EQ("rem\r\nline\r\n", ReadRaw(pPath)) << "one name is left";
        DeleteFileA(pPath);
    }
}

// A link for the length of a test; what it leads to must be there longer. Wine has no call that
// makes one, but follows those of the system below, whose own programs make and remove them.
class Link {
  public:
    Link(const std::string& path, const std::string& target, bool isFolder)
        : m_path(path), m_isFolder(isFolder) {
        if (CreateSymbolicLinkA(path.c_str(), target.c_str(),
                                isFolder ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0) &&
            Exists(path))
            return;
        RunBelow("ln", "-s " + NameBelow(target) + " " + NameBelow(path));
        WaitUntil(true);
    }
    ~Link() {
        const std::string name = NameBelow(m_path);
        if (!name.empty())
            RunBelow("rm", "-f " + name);
        else if (m_isFolder)
            RemoveDirectoryA(m_path.c_str());
        else
            DeleteFileA(m_path.c_str());
        WaitUntil(false);
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    bool IsThere() const { return Exists(m_path); }

  private:
    // The end of such a program is not shown, but what it does is.
    void WaitUntil(bool isThere) const {
        for (int i = 0; i < 500 && Exists(m_path) != isThere; ++i)
            Sleep(10);
    }

    static std::string NameBelow(const std::string& path) {
        using UnixName = char*(CDECL*)(LPCWSTR);
        const auto pUnixName = reinterpret_cast<UnixName>(reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
        if (pUnixName == nullptr)
            return {};
        char* const pName = pUnixName(std::wstring(path.begin(), path.end()).c_str());
        const std::string name = pName != nullptr ? pName : "";
        HeapFree(GetProcessHeap(), 0, pName);
        return '"' + name + '"';
    }

    static void RunBelow(const std::string& program, const std::string& arguments) {
        std::string command = program + " " + arguments;
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process{};
        if (!test::StartProcess([&] {
                return CreateProcessA(("\\\\?\\unix\\bin\\" + program).c_str(), command.data(),
                                      nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                      &process);
            }))
            return;
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }

    const std::string m_path;
    const bool m_isFolder;
};

constexpr char cNoLinks[] = "this account may make no links";

TEST(LogFileLinks, AFolderThatLeadsElsewhereIsLeftAlone) {
    { const TraceLog log; }
    ASSERT_TRUE(RemoveDirectoryA(cFolder));
    ASSERT_TRUE(CreateDirectoryA(cOther, nullptr));
    bool isThere = false;
    {
        const Link link(cFolder, cOther, true);
        isThere = link.IsThere();
        trace::AppendToLogs("KORA4ASL", "line\n");
    }
    EXPECT_TRUE(RemoveDirectoryA(cOther)) << "something was made there";
    EXPECT_TRUE(isThere) << cNoLinks;
}

TEST(LogFileLinks, AFileThatLeadsElsewhereIsLeftAlone) {
    const TraceLog log;
    constexpr char cTarget[] = "C:\\KalTarget.bat";
    Write(cTarget, "rem\r\n");
    bool isThere = false;
    {
        const Link link(cModuleFile, cTarget, false);
        isThere = link.IsThere();
        trace::AppendToLogs("KORA4ASL", "line\n");
    }
    EXPECT_EQ("rem\r\n", ReadRaw(cTarget));
    EXPECT_EQ("line\r\n", ReadRaw(cSharedFile));
    EXPECT_TRUE(DeleteFileA(cTarget));
    EXPECT_TRUE(isThere) << cNoLinks;
}

TEST(LogFiles, AreKnownWhateverTheCaseOfTheirNames) {
    const TraceLog log;
    ASSERT_TRUE(RemoveDirectoryA(cFolder));
    ASSERT_TRUE(CreateDirectoryA("C:\\kALlOGS", nullptr));
    Write("C:\\KalLogs\\kora4asl.LOG", "");
    trace::AppendToLogs("KORA4ASL", "line\n");
    EXPECT_EQ("line\r\n", ReadRaw(cModuleFile));
    EXPECT_EQ("line\r\n", ReadRaw(cSharedFile));
    DeleteFileA(cModuleFile);
    DeleteFileA(cSharedFile);
    RemoveDirectoryA(cFolder);
}

}  // namespace
}  // namespace kora4
