// SPDX-License-Identifier: MIT
// The unpacked kit as a person runs it. The first argument is its folder.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "base/text.h"
#include "contract/registry_paths.h"
#include "platform/handles.h"
#include "selftest/program_run.h"
#include "selftest/saved_state.h"
#include "support/key_security.h"
#include "support/registry_fixture.h"

namespace kora4::test {
namespace {

std::filesystem::path g_kit;

std::string TextOf(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// "selftest.cmd ARGUMENTS" in the shell, with what it prints in a file.
class Kit {
  public:
    explicit Kit(const std::wstring& arguments) {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        const UniqueHandle output(CreateFileW(Output().c_str(), GENERIC_WRITE,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = start.hStdError = output.Get();
        std::wstring line = L"cmd.exe /d /c \"\"" + (g_kit / L"selftest.cmd").wstring() +
                            L"\" " + arguments + L"\"";
        PROCESS_INFORMATION made{};
        EXPECT_TRUE(CreateProcessW(L"C:\\windows\\system32\\cmd.exe", line.data(), nullptr,
                                   nullptr, TRUE, CREATE_NO_WINDOW, nullptr, nullptr, &start,
                                   &made));
        CloseHandle(made.hThread);
        m_process.Reset(made.hProcess);
    }

    DWORD ExitCode() const {
        constexpr DWORD cWait = 120000;
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(m_process.Get(), cWait)) << Said();
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(m_process.Get(), &code);
        return code;
    }
    static std::string Said() { return TextOf(Output()); }
    static std::string Report() { return TextOf(g_kit / "report.txt"); }

  private:
    static std::filesystem::path Output() { return g_kit / "said.txt"; }

    UniqueHandle m_process;
};

std::string EverythingSaved() {
    std::string dump;
    for (const std::wstring& key : selftest::SavedKeys()) {
        const HKEY root =
            key.starts_with(L"HKEY_CURRENT_USER") ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
        dump += tools::Narrow(key) + "\n" + DumpKey(root, key.substr(key.find(L'\\') + 1));
    }
    return dump;
}

class SelfTest : public testing::Test {
  protected:
    SelfTest() { Clear(); }
    ~SelfTest() override { Clear(); }

    static void Clear() {
        std::error_code none;
        for (const char* left : {"report.txt", "saved.state", "results"})
            std::filesystem::remove_all(g_kit / left, none);
        RemoveStore();
    }
};

// A store with what a registry file or a settings document would not keep.
void FillStore() {
    ResetStore();
    const std::wstring key = cDynamicKeysPath;
    WriteValue(HKEY_LOCAL_MACHINE, key, L"unterminated", REG_SZ, L"abcZ", 6);
    WriteValue(HKEY_LOCAL_MACHINE, key, L"odd \"name\"\n= %x%", REG_BINARY, "\0\1\2", 3);
    WriteValue(HKEY_LOCAL_MACHINE, key, L"empty", REG_BINARY, "", 0);
    WriteValue(HKEY_LOCAL_MACHINE, key, L"", 77, "type", 4);
    WriteValue(HKEY_LOCAL_MACHINE, key + L"\\Sub key", L"\u00E4", REG_DWORD, "1234", 4);
    SetDacl(cDynamicKeysPath, L"D:(A;;KA;;;BA)(A;;KR;;;WD)");
}

TEST_F(SelfTest, RunsTheChosenProgramsAndReports) {
    const std::string before = EverythingSaved();
    const Kit kit(L"codec_test typelib_test c_client_test trace_lines_test platform_probe");
    EXPECT_EQ(0u, kit.ExitCode()) << Kit::Said() << Kit::Report();
    const std::string said = Kit::Said();
    EXPECT_TRUE(Has(said, "] codec_test ... passed, ")) << said;
    EXPECT_TRUE(Has(said, "[5/5] ")) << said;
    EXPECT_TRUE(Has(said, "0 of 5 programs failed")) << said;
    const std::string report = Kit::Report();
    EXPECT_TRUE(Has(report, "Microsoft Windows")) << report;
    EXPECT_TRUE(Has(report, "QXA64T.dll 7.")) << report;
    EXPECT_TRUE(Has(report, "kora4ctl.exe 7.")) << report;
    EXPECT_TRUE(Has(report, "c_client_test: passed, ")) << report;
    EXPECT_TRUE(Has(report, "identical-write: ")) << report;
    EXPECT_TRUE(Has(report, "left out: manuals_test: ")) << report;
    EXPECT_TRUE(Has(report, "result: 0 of 5 programs failed\r\n")) << report;
    EXPECT_EQ(before, EverythingSaved());
    EXPECT_FALSE(std::filesystem::exists(g_kit / "saved.state"));
}

TEST_F(SelfTest, RefusesAMachineWhereTheLibraryIsRegistered) {
    const RegisteredLibrary library;
    FillStore();
    const std::string before = EverythingSaved();
    const Kit kit(L"codec_test");
    EXPECT_EQ(3u, kit.ExitCode());
    EXPECT_TRUE(Has(Kit::Said(), "registered or has settings")) << Kit::Said();
    EXPECT_TRUE(Has(Kit::Said(), "/force")) << Kit::Said();
    EXPECT_FALSE(std::filesystem::exists(g_kit / "report.txt"));
    EXPECT_EQ(before, EverythingSaved());
}

TEST_F(SelfTest, ForcedGivesBackRegistrationAndSettingsToTheByte) {
    const RegisteredLibrary library;
    FillStore();
    const std::string before = EverythingSaved();
    const std::wstring list = DaclOf(cDynamicKeysPath);
    const Kit kit(L"/force sdk_constants_test c_client_test");
    EXPECT_EQ(0u, kit.ExitCode()) << Kit::Said() << Kit::Report();
    EXPECT_EQ(before, EverythingSaved());
    EXPECT_EQ(list, DaclOf(cDynamicKeysPath));
}

TEST_F(SelfTest, GivesFoldersBack) {
    const std::filesystem::path folder = L"C:\\KalLogs";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "KalTrace.log", std::ios::binary) << "a line of before\n";
    const Kit kit(L"trace_test");
    EXPECT_EQ(0u, kit.ExitCode()) << Kit::Said() << Kit::Report();
    EXPECT_EQ("a line of before\n", TextOf(folder / "KalTrace.log"));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder), {}));
    std::filesystem::remove_all(folder);
}

TEST_F(SelfTest, NamesTheTestsThatFail) {
    const std::filesystem::path library = g_kit / "veltokora4api.tlb";
    std::filesystem::rename(library, g_kit / "away.tlb");
    const Kit kit(L"typelib_test codec_test");
    EXPECT_EQ(1u, kit.ExitCode());
    std::filesystem::rename(g_kit / "away.tlb", library);
    EXPECT_TRUE(Has(Kit::Said(), "1 of 2 programs failed")) << Kit::Said();
    const std::string report = Kit::Report();
    EXPECT_TRUE(Has(report, "typelib_test: FAILED (exit code 1), ")) << report;
    EXPECT_TRUE(Has(report, "    failed: TypeLibrary.ApiHasItsThirtyThreeSlots\r\n")) << report;
    EXPECT_TRUE(Has(report, "codec_test: passed, ")) << report;
}

TEST_F(SelfTest, CountsAProgramThatCannotBeRunAsFailed) {
    std::filesystem::rename(g_kit / "kora4_selftest.exe", g_kit / "away.exe");
    const Kit kit(L":run codec_test");
    EXPECT_EQ(1u, kit.ExitCode());
    std::filesystem::rename(g_kit / "away.exe", g_kit / "kora4_selftest.exe");
    EXPECT_TRUE(Has(Kit::Said(), "1 of 1 programs failed")) << Kit::Said();
    EXPECT_TRUE(Has(Kit::Report(), "codec_test: FAILED, not run: ")) << Kit::Report();
}

TEST_F(SelfTest, SaysThatItNeedsAnAdministrator) {
    constexpr wchar_t cTrial[] = L"SOFTWARE\\Kora4SelfTest";
    CreateKey(HKEY_LOCAL_MACHINE, cTrial);
    {
        const DeniedKey denied(cTrial);
        const Kit kit(L"codec_test");
        EXPECT_EQ(3u, kit.ExitCode());
        EXPECT_TRUE(Has(Kit::Said(), "needs administrator rights")) << Kit::Said();
    }
    RemoveKey(HKEY_LOCAL_MACHINE, cTrial);
}

TEST_F(SelfTest, RefusesAProgramThatItDoesNotHave) {
    const Kit kit(L"codec_test no_such_test");
    EXPECT_EQ(2u, kit.ExitCode());
    EXPECT_TRUE(Has(Kit::Said(), "There is no program 'no_such_test'")) << Kit::Said();
}

// What an earlier run that was ended by force has left.
TEST_F(SelfTest, RestoresWhatAnInterruptedRunHasSaved) {
    FillStore();
    const std::string before = EverythingSaved();
    ASSERT_TRUE(selftest::SaveState((g_kit / "saved.state").wstring()));
    ResetStore();
    {
        const Kit kit(L"/force codec_test");
        EXPECT_EQ(3u, kit.ExitCode());
        EXPECT_TRUE(Has(Kit::Said(), "selftest.cmd /restore")) << Kit::Said();
    }
    const Kit kit(L"/restore");
    EXPECT_EQ(0u, kit.ExitCode()) << Kit::Said();
    EXPECT_EQ(before, EverythingSaved());
    EXPECT_FALSE(std::filesystem::exists(g_kit / "saved.state"));
}

TEST(SelfTestKit, HasBatchFilesWithTheLineEndsOfThePlatform) {
    for (const char* name : {"selftest.cmd", "programs.txt"}) {
        const std::string text = TextOf(g_kit / name);
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'),
                  std::count(text.begin(), text.end(), '\r'))
            << name;
        EXPECT_LT(50, std::count(text.begin(), text.end(), '\r')) << name;
    }
}

TEST(ProgramRun, CountsTestsAndNamesWhatFailedOrWasSkipped) {
    selftest::ProgramRun run;
    selftest::ReadTests(
        "[==========] Running 3 tests from 1 test suite.\r\n"
        "[  FAILED  ] A.Fails (3 ms)\r\n"
        "[  SKIPPED ] A.Skips (0 ms)\r\n"
        "[==========] 3 tests from 1 test suite ran. (3 ms total)\r\n"
        "[  PASSED  ] 1 test.\r\n"
        "[  FAILED  ] 1 test, listed below:\r\n"
        "[  FAILED  ] A.Fails\r\n",
        run);
    EXPECT_EQ(3, run.tests);
    EXPECT_EQ(std::vector<std::string>{"A.Fails"}, run.failed);
    EXPECT_EQ(std::vector<std::string>{"A.Skips"}, run.skipped);
    EXPECT_FALSE(run.HasPassed());
    EXPECT_EQ("FAILED (exit code 0), 1 of 3 tests, 0.0 s", selftest::InWords(run));
}

// Ctrl-C ends the program; what it leaves tells the batch file to stop.
TEST(ProgramRun, TellsCtrlCFromAFailure) {
    selftest::ProgramRun run;
    run.exitCode = 0xC000013A;
    EXPECT_TRUE(run.IsInterrupted());
    EXPECT_EQ("FAILED (exit code 0xC000013A), 0 of 0 tests, 0.0 s", selftest::InWords(run));
}

}  // namespace
}  // namespace kora4::test

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    if (count != 2) {
        std::fprintf(stderr, "usage: selftest_test FOLDER: an unpacked kit\n");
        return 2;
    }
    wchar_t folder[MAX_PATH] = L"";
    MultiByteToWideChar(CP_ACP, 0, arguments[1], -1, folder, MAX_PATH);
    kora4::test::g_kit = folder;
    return RUN_ALL_TESTS();
}
