// SPDX-License-Identifier: MIT
// kora4ctl as a person runs it, on a registered library and a store of its own, with another
// client of the library beside it.
#ifndef KORA4_TESTS_TOOLS_KORA4CTL_CTL_FIXTURE_H
#define KORA4_TESTS_TOOLS_KORA4CTL_CTL_FIXTURE_H

#include <gtest/gtest.h>
#include <kora4api.h>
#include <wrl/client.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/com_client.h"
#include "support/registry_fixture.h"
#include "tools/support/json_shape.h"
#include "tools/support/tool_process.h"

namespace kora4::test {

// The exit codes of the tool; they are part of its contract.
inline constexpr DWORD cDone = 0;
inline constexpr DWORD cFailed = 1;
inline constexpr DWORD cUsage = 2;
inline constexpr DWORD cRefused = 3;
inline constexpr DWORD cNotReady = 4;
inline constexpr DWORD cBadInput = 5;

using Words = std::vector<std::string>;

// Each test begins with the store as registration leaves it.
class CtlTest : public testing::Test {
  protected:
    void SetUp() override {
        RemoveStore();
        ASSERT_EQ(S_OK, m_registrar.RegisterServer());
    }
    void TearDown() override {
        m_client.Reset();
        // Whatever a test has made of the registration: whole again, so that all of it goes.
        EXPECT_EQ(S_OK, m_registrar.RegisterServer());
        Unregister();
        RemoveStore();
    }

    // Another program's object, initialised when first asked for.
    IVeltoKORA4API& Client() {
        if (!m_client) {
            m_client = m_library.Create();
            EXPECT_TRUE(m_client);
            EXPECT_EQ(S_OK, m_client->Initialize());
        }
        return *m_client.Get();
    }

    void Unregister() { EXPECT_EQ(S_OK, m_registrar.UnregisterServer()); }

    // Runs it to its end; the test fails unless it is done. What it printed.
    static std::string Done(const Words& arguments, std::string_view input = {}) {
        const ToolResult result = RunCtl(arguments, input);
        EXPECT_EQ(cDone, result.exitCode) << result;
        return WithoutReturns(result.out);
    }
    static Json DoneJson(Words arguments, std::string_view input = {}) {
        arguments.push_back("--json");
        return ParsedJson(Done(arguments, input));
    }
    // Runs it; the test fails unless it ends with that code, with nothing on standard output
    // and the text among its messages.
    static void Refused(const Words& arguments, DWORD code, std::string_view text,
                        std::string_view input = {}) {
        const ToolResult result = RunCtl(arguments, input);
        EXPECT_EQ(code, result.exitCode) << result;
        EXPECT_EQ("", result.out) << result;
        EXPECT_NE(std::string::npos, result.err.find(text)) << result;
    }
    // The same, and the store is what it was.
    static void RefusedUnchanged(const Words& arguments, DWORD code, std::string_view text,
                                 std::string_view input = {}) {
        const std::string before = StoreSnapshot();
        Refused(arguments, code, text, input);
        EXPECT_EQ(before, StoreSnapshot());
    }

    static std::string WithoutReturns(std::string text) {
        std::erase(text, '\r');
        return text;
    }

  private:
    Apartment m_apartment{COINIT_APARTMENTTHREADED};
    LoadedLibrary m_registrar;
    ApiLibrary m_library;
    Microsoft::WRL::ComPtr<IVeltoKORA4API> m_client;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_TOOLS_KORA4CTL_CTL_FIXTURE_H
