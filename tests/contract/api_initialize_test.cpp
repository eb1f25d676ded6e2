// SPDX-License-Identifier: MIT
// Bringing an API object up and down, and the registration of callbacks.
#include <thread>

#include "contract/api_fixture.h"

namespace kora4::test {
namespace {

using ApiInitialize = ApiTest;
using ApiInitializeTrace = ApiTraceTest;

class ApiMtaInitializeTrace : public ApiTraceTest {
  protected:
    // The fixture's apartment is left for the multithreaded one.
    void SetUp() override {
        ApiTraceTest::SetUp();
        CoUninitialize();
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    }
};

std::size_t MonitorStarts(const TraceLog& log) {
    std::size_t starts = 0;
    for (const TraceLine& line : log.Read("RegKeyMonitor")) {
        if (line.message.starts_with("CreateThread : "))
            ++starts;
    }
    return starts;
}

TEST_F(ApiInitializeTrace, ASecondCallDoesNothing) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    EXPECT_EQ(S_OK, spApi->Initialize());
    EXPECT_EQ(1u, MonitorStarts(m_log));
    EXPECT_EQ((Lines{">>", "<< hr: 0x00000000", ">>", "<< hr: 0x00000000"}),
              LinesOf("Initialize"));
}

TEST_F(ApiInitialize, WithoutTheWatchedKeyItFailsAtOnceAndCreatesNothing) {
    RawStore::DeleteKeys();
    ComPtr<IVeltoKORA4API> spApi = Created();
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(E_FAIL, spApi->Initialize());
    EXPECT_GT(2000u, GetTickCount64() - start);
    EXPECT_FALSE(RawStore::KeyExists(cStatic));
    EXPECT_FALSE(RawStore::KeyExists(cDynamic));
    EXPECT_FALSE(RawStore::KeyExists(cApp));
    LONG profile = -1;
    EXPECT_EQ(APOERR_NOT_INITIALIZED, spApi->GetActiveProfile(&profile));
}

TEST_F(ApiInitialize, AFailedCallCanBeTriedAgain) {
    RawStore::DeleteKeys();
    ComPtr<IVeltoKORA4API> spApi = Created();
    EXPECT_EQ(E_FAIL, spApi->Initialize());
    EXPECT_EQ(E_FAIL, spApi->Initialize());
    RawStore::CreateKeys();
    EXPECT_EQ(S_OK, spApi->Initialize());
    LONG profile = -1;
    EXPECT_EQ(S_OK, spApi->GetActiveProfile(&profile));
}

// The static keys cannot be created for good below a parent that is not kept.
TEST_F(ApiInitializeTrace, AfterALateFailureItGoesOnWithTheRunningMonitor) {
    RawStore::DeleteKeys();
    UniqueRegKey base;
    UniqueRegKey dynamic;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4", 0,
                                             nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                                             nullptr, base.Put(), nullptr));
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(base.Get(), cDynamic, 0, nullptr, REG_OPTION_VOLATILE, KEY_READ,
                              nullptr, dynamic.Put(), nullptr));
    ComPtr<IVeltoKORA4API> spApi = Created();
    EXPECT_EQ(E_FAIL, spApi->Initialize());
    LONG profile = -1;
    EXPECT_EQ(APOERR_NOT_INITIALIZED, spApi->GetActiveProfile(&profile));
    UniqueRegKey statics;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(base.Get(), cStatic, 0, nullptr, REG_OPTION_VOLATILE, KEY_READ,
                              nullptr, statics.Put(), nullptr));
    EXPECT_EQ(S_OK, spApi->Initialize());
    EXPECT_EQ(1u, MonitorStarts(m_log));
}

TEST_F(ApiInitialize, TheStoreNeedsNoAppKeys) {
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Velto\\KORA4\\AppKeys");
    EXPECT_EQ(S_OK, Created()->Initialize());
    EXPECT_FALSE(RawStore::KeyExists(cApp));
}

TEST_F(ApiMtaInitializeTrace, ConcurrentCallsShareOneBringUp) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    m_log.Clear();
    HRESULT results[4] = {E_FAIL, E_FAIL, E_FAIL, E_FAIL};
    {
        std::vector<std::jthread> threads;
        for (HRESULT& hr : results) {
            threads.emplace_back([&] {
                const Apartment apartment(COINIT_MULTITHREADED);
                hr = spApi->Initialize();
            });
        }
    }
    EXPECT_THAT(results, testing::Each(S_OK));
    EXPECT_EQ(1u, MonitorStarts(m_log));
}

// The load waits for the store's mutex, which this test holds, while the monitor runs.
TEST_F(ApiMtaInitializeTrace, ANotificationDuringTheLoadDoesNotEndTheMonitoring) {
    ComPtr<IVeltoKORA4API> spApi = Created();
    m_log.Clear();
    HRESULT hr = E_UNEXPECTED;
    std::jthread initializer;
    {
        const RawTransaction transaction;
        initializer = std::jthread([&] {
            const Apartment apartment(COINIT_MULTITHREADED);
            hr = spApi->Initialize();
        });
        ASSERT_TRUE(PumpUntil([&] { return MonitorStarts(m_log) == 1; }));
        ASSERT_TRUE(PumpUntil([&] {
            RawStore::Bump(SettingName(cTablePid));
            return !LinesOf("OnKeyChangeNotify").empty();
        }));
        EXPECT_EQ((Lines{">>", "<< hr: 0x00000000"}), [&] {
            Lines lines = LinesOf("OnKeyChangeNotify");
            lines.resize(2);
            return lines;
        }());
    }
    initializer.join();
    EXPECT_EQ(S_OK, hr);
    ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
    EXPECT_EQ(S_OK, spApi->RegisterChangeNotifications(spRecorder.Get()));
    RawStore::SetNumber(cDynamic, SettingName(cProfilePid), 2);
    EXPECT_TRUE(spRecorder->WaitForLine("OnActiveProfileChange(2)"));
}

TEST_F(ApiInitialize, RegisteringNothingIsRefusedInAnyState) {
    EXPECT_EQ(E_INVALIDARG, Created()->RegisterChangeNotifications(nullptr));
    EXPECT_EQ(E_INVALIDARG, Initialized()->RegisterChangeNotifications(nullptr));
}

TEST_F(ApiInitialize, RegisteringBeforeInitializeTakesNoReference) {
    ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
    EXPECT_EQ(APOERR_NOT_INITIALIZED, Created()->RegisterChangeNotifications(spRecorder.Get()));
    EXPECT_EQ(1u, spRecorder->References());
}

TEST_F(ApiInitialize, RegisteringReplaces) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    ComPtr<CallbackRecorder> spFirst = CallbackRecorder::Create();
    ComPtr<CallbackRecorder> spSecond = CallbackRecorder::Create();
    EXPECT_EQ(S_OK, spApi->RegisterChangeNotifications(spFirst.Get()));
    EXPECT_EQ(2, spFirst->References());
    EXPECT_EQ(S_OK, spApi->RegisterChangeNotifications(spSecond.Get()));
    EXPECT_EQ(1, spFirst->References());
    EXPECT_EQ(2, spSecond->References());
    EXPECT_EQ(S_OK, spApi->UnregisterChangeNotifications());
    EXPECT_EQ(1, spSecond->References());
    EXPECT_EQ(S_OK, spApi->UnregisterChangeNotifications());
}

TEST_F(ApiInitialize, DestroyingAnObjectReleasesItsCallback) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
    spApi->RegisterChangeNotifications(spRecorder.Get());
    spApi.Reset();
    EXPECT_EQ(1u, spRecorder->References());
}

TEST_F(ApiInitialize, DestroyingAnObjectWithANotificationOnItsWayDoesNotBlock) {
    for (DWORD round = 0; round < 10; ++round) {
        ComPtr<IVeltoKORA4API> spApi = Initialized();
        ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
        spApi->RegisterChangeNotifications(spRecorder.Get());
        RawStore::SetNumber(cDynamic, SettingName(cProfilePid), round % 2 + 1);
        const ULONGLONG start = GetTickCount64();
        spApi.Reset();
        EXPECT_GT(1000u, GetTickCount64() - start);
        EXPECT_EQ(S_OK, m_library.CanUnloadNow());
    }
}

TEST_F(ApiInitializeTrace, RegistrationIsTold) {
    ComPtr<IVeltoKORA4API> spApi = Initialized();
    ComPtr<CallbackRecorder> spRecorder = CallbackRecorder::Create();
    m_log.Clear();
    spApi->UnregisterChangeNotifications();
    spApi->RegisterChangeNotifications(spRecorder.Get());
    spApi->UnregisterChangeNotifications();
    spApi->RegisterChangeNotifications(nullptr);
    IVeltoKORA4APICallback* const pCallback = spRecorder.Get();
    const std::string entry = ">> pICallback: " + PointerText(pCallback);
    const std::string nullEntry = ">> pICallback: " + PointerText(nullptr);
    char success[64];
    std::snprintf(success, sizeof success, "(0x%x)success",
                  static_cast<unsigned>(reinterpret_cast<UINT_PTR>(pCallback)));
    const std::string ok = "<< hr: 0x00000000";
    EXPECT_EQ((Lines{entry, success, ok, nullEntry, "**** Error: NULL == pICallback",
                     "<< hr: 0x80070057"}),
              LinesOf("RegisterChangeNotifications"));
    EXPECT_EQ(
        (Lines{">>", ok, ">>",
               " Successfully unregistered callback and set m_spIASLCallback = Null", ok}),
        LinesOf("UnregisterChangeNotifications"));
}

}  // namespace
}  // namespace kora4::test
