// SPDX-License-Identifier: MIT
// What the contract tests of the API object share: a store of their own, an apartment, the
// library, and the trace files.
#ifndef KORA4_TESTS_CONTRACT_API_FIXTURE_H
#define KORA4_TESTS_CONTRACT_API_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "kora4api_codes.h"
#include "support/com_client.h"
#include "support/raw_store.h"
#include "support/trace_capture.h"

namespace kora4::test {

using Lines = std::vector<std::string>;
using Microsoft::WRL::ComPtr;

// Every listed category, and the log files.
inline constexpr DWORD cTraceAll = 0x01018F35;

// As the lines of the library print a pointer.
inline std::string PointerText(const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof text, "%016llX",
                  static_cast<unsigned long long>(reinterpret_cast<UINT_PTR>(pointer)));
    return text;
}

// Each test leaves the library so that it can be unloaded. What stayed loaded would keep its
// trace word, and a test that writes without pause would fill the log files.
class UnloadCheck {
  public:
    UnloadCheck() = default;
    ~UnloadCheck() { EXPECT_EQ(nullptr, GetModuleHandleW(L"QXA64T.dll")); }
    UnloadCheck(const UnloadCheck&) = delete;
    UnloadCheck& operator=(const UnloadCheck&) = delete;
};

// An empty store, an apartment and the library.
class ApiTest : public testing::Test {
  protected:
    explicit ApiTest(DWORD model = COINIT_APARTMENTTHREADED) : m_apartment(model) {}

    void SetUp() override { ASSERT_TRUE(m_library.IsLoaded()) << "QXA64T.dll"; }

    ComPtr<IVeltoKORA4API> Created() {
        ComPtr<IVeltoKORA4API> spApi = m_library.Create();
        EXPECT_TRUE(spApi);
        return spApi;
    }

    ComPtr<IVeltoKORA4API> Initialized() {
        ComPtr<IVeltoKORA4API> spApi = Created();
        EXPECT_EQ(S_OK, spApi->Initialize());
        return spApi;
    }

    RawStore m_store;
    Apartment m_apartment;
    UnloadCheck m_unloadCheck;
    ApiLibrary m_library;
};

// A client in the multithreaded apartment.
class ApiMtaTest : public ApiTest {
  protected:
    ApiMtaTest() : ApiTest(COINIT_MULTITHREADED) {}
};

// All lines are on: the word is loaded by an object that is gone again before the test.
class ApiTraceTest : public ApiTest {
  protected:
    void SetUp() override {
        ApiTest::SetUp();
        RawStore::SetNumber(cStatic, SettingName(cTraceWordPid), cTraceAll);
        Initialized();
        m_log.Clear();
    }

    // The messages of one method of the object.
    Lines LinesOf(const std::string& method) {
        return MessagesOf(m_log.Read("KORA4ASL"), "CKORA4ASL::" + method);
    }

    TraceLog m_log;
};

// The same with an object, of which nothing is in the log yet.
class ApiObjectTraceTest : public ApiTraceTest {
  protected:
    void SetUp() override {
        ApiTraceTest::SetUp();
        m_spApi = Initialized();
        m_log.Clear();
    }

    ComPtr<IVeltoKORA4API> m_spApi;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_API_FIXTURE_H
