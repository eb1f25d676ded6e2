// SPDX-License-Identifier: MIT
// Runs the client in C on the registered library, and looks at what it left in the store.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/handles.h"
#include "support/raw_store.h"
#include "support/registry_fixture.h"
#include "support/start_process.h"

namespace kora4::test {
namespace {

constexpr DWORD cLongestRun = 60000;  // ms

// The exit code; none when it did not start or did not end.
std::optional<DWORD> RunClient() {
    const std::wstring program = ProgramFolder() + L"\\c_client.exe";
    std::wstring command = L"\"" + program + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!StartProcess([&] {
            return CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0,
                                  nullptr, nullptr, &startup, &started);
        }))
        return std::nullopt;
    const UniqueHandle thread(started.hThread);
    const UniqueHandle process(started.hProcess);
    DWORD exitCode = 0;
    if (WaitForSingleObject(process.Get(), cLongestRun) != WAIT_OBJECT_0) {
        TerminateProcess(process.Get(), 3);
        return std::nullopt;
    }
    return GetExitCodeProcess(process.Get(), &exitCode) ? std::optional(exitCode)
                                                        : std::nullopt;
}

TEST(ClientInC, DoesTheMainJob) {
    const RawStore store;
    const RegisteredLibrary registered;
    EXPECT_EQ(0u, RunClient());
    EXPECT_EQ(1u, RawStore::Number(cDynamic, SettingName(cProfilePid)));
    EXPECT_EQ(0u, RawStore::Number(cDynamic, SettingName(cEnablePid)));
    EXPECT_EQ(7u, RawStore::Number(cStatic, PatchName(RawTechnology::eVolume, 1, 3)));
    EXPECT_EQ(L"0.750000",
              RawStore::Text(cStatic, PatchName(RawTechnology::eEnhancement, 1, 3)));
    EXPECT_EQ(L"0100,0005,f400,ff80,0000,0340,0c00",
              RawStore::Text(cStatic, PatchName(RawTechnology::eStandardEQ, 1, 4)));
}

TEST(ClientInC, NoticesThatTheClassIsNotRegistered) {
    const RawStore store;
    EXPECT_EQ(1u, RunClient());
}

}  // namespace
}  // namespace kora4::test
