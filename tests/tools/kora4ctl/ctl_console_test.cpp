// SPDX-License-Identifier: MIT
// kora4ctl levels on a console: what it draws, and that it follows the size of the window.
#include <gmock/gmock.h>

#include "platform/handles.h"
#include "tools/kora4ctl/ctl_fixture.h"

namespace kora4::test {
namespace {

// A console of the test's own, which nobody sees.
class Console {
  public:
    Console() {
        FreeConsole();
        AllocConsole();
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        m_screen.Reset(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                   OPEN_EXISTING, 0, nullptr));
    }
    ~Console() { FreeConsole(); }

    HANDLE Screen() const { return m_screen.Get(); }
    // The window fills its buffer.
    bool Resize(SHORT width, SHORT height) const {
        const SMALL_RECT least{0, 0, 0, 0};
        const SMALL_RECT all{0, 0, static_cast<SHORT>(width - 1),
                             static_cast<SHORT>(height - 1)};
        return SetConsoleWindowInfo(Screen(), TRUE, &least) &&
               SetConsoleScreenBufferSize(Screen(), {width, height}) &&
               SetConsoleWindowInfo(Screen(), TRUE, &all);
    }
    // Line by line, without the blanks at the ends.
    std::wstring Text() const {
        CONSOLE_SCREEN_BUFFER_INFO info{};
        EXPECT_TRUE(GetConsoleScreenBufferInfo(Screen(), &info));
        std::wstring text;
        for (SHORT row = 0; row < info.dwSize.Y; ++row) {
            std::wstring line(static_cast<std::size_t>(info.dwSize.X), L' ');
            DWORD read = 0;
            ReadConsoleOutputCharacterW(Screen(), line.data(), static_cast<DWORD>(line.size()),
                                        {0, row}, &read);
            line.resize(line.find_last_not_of(L' ') + 1);
            text += line + L'\n';
        }
        return text;
    }
    bool Shows(const std::wstring& line, DWORD milliseconds) const {
        const ULONGLONG end = GetTickCount64() + milliseconds;
        while (Text().find(line) == std::wstring::npos) {
            if (GetTickCount64() > end)
                return false;
            Sleep(20);
        }
        return true;
    }

  private:
    UniqueHandle m_screen;
};

class CtlConsole : public CtlTest {
  protected:
    void TearDown() override {
        if (m_process)
            TerminateProcess(m_process.Get(), 1);
        CtlTest::TearDown();
    }
    void Start(const std::vector<std::string>& arguments) {
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = m_console.Screen();
        const std::wstring path = ProgramFolder() + L"\\kora4ctl.exe";
        std::wstring command = CommandLineOf(path, arguments);
        PROCESS_INFORMATION process{};
        ASSERT_TRUE(CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, 0,
                                   nullptr, nullptr, &startup, &process));
        CloseHandle(process.hThread);
        m_process.Reset(process.hProcess);
    }

    Console m_console;
    UniqueHandle m_process;
};

// The frequencies below bars in 80 and in 120 columns.
constexpr wchar_t cNarrow[] = L" Hz  65 136   332   634   1.1k  1.8k  2.9k  4.6k  7.2k";
constexpr wchar_t cWide[] = L" Hz  65   136  223  332  467  634  841  1.1k 1.4k 1.8k";

TEST_F(CtlConsole, LevelsFollowTheSizeOfTheWindowBetweenTwoPictures) {
    ASSERT_TRUE(m_console.Resize(80, 25));
    EXPECT_EQ(cDone, RunTool("kora4sim", {"--for", "0.1"}).exitCode);
    // The next picture comes when the test is over.
    Done({"set", "sampling-period", "60000"});
    Start({"levels"});
    EXPECT_TRUE(m_console.Shows(cNarrow, 20000)) << testing::PrintToString(m_console.Text());
    ASSERT_TRUE(m_console.Resize(120, 40));
    EXPECT_TRUE(m_console.Shows(cWide, 2000)) << testing::PrintToString(m_console.Text());
    ASSERT_TRUE(m_console.Resize(80, 25));
    EXPECT_TRUE(m_console.Shows(cNarrow, 2000)) << testing::PrintToString(m_console.Text());
}

TEST_F(CtlConsole, LevelsThatStandStillAreToldBelowTheBars) {
    ASSERT_TRUE(m_console.Resize(80, 25));
    EXPECT_EQ(cDone, RunTool("kora4sim", {"--for", "0.1"}).exitCode);
    Start({"levels"});
    EXPECT_TRUE(
        m_console.Shows(L"unchanged for 1 s: nothing plays, or the engine has stopped", 20000));
}

}  // namespace
}  // namespace kora4::test
