// SPDX-License-Identifier: MIT
// One Initialize at a time: re-entry, callers that wait in each kind of apartment, and waits
// that fail.
#include "api/initialize_guard.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <thread>

#include "monitor/apartment.h"
#include "support/com_client.h"
#include "support/import_redirection.h"
#include "support/message_filter.h"

namespace kora4::test {
namespace {

TEST(InitializeGuard, ReturnsTheResultOfTheBringUp) {
    InitializeGuard guard;
    EXPECT_EQ(S_FALSE, guard.Run([] { return S_FALSE; }));
    EXPECT_EQ(E_OUTOFMEMORY, guard.Run([] { return E_OUTOFMEMORY; }));
    EXPECT_EQ(S_OK, guard.Run([] { return S_OK; }));
}

TEST(InitializeGuard, ReEntryOnTheSameThreadFails) {
    InitializeGuard guard;
    HRESULT inner = S_OK;
    int runs = 0;
    EXPECT_EQ(S_OK, guard.Run([&] {
        inner = guard.Run([&] {
            ++runs;
            return S_OK;
        });
        return S_OK;
    }));
    EXPECT_EQ(E_FAIL, inner);
    EXPECT_EQ(0, runs);
}

// A caller whose bring-up lasts until it may go on.
class BusyCaller {
  public:
    BusyCaller(InitializeGuard& guard, HRESULT result)
        : m_thread([this, &guard, result] {
              guard.Run([this, result] {
                  SetEvent(m_inside.Get());
                  WaitForSingleObject(m_goOn.Get(), cBoundedWait);
                  return result;
              });
          }) {}

    bool IsInside() {
        return WaitForSingleObject(m_inside.Get(), cBoundedWait) == WAIT_OBJECT_0;
    }
    void GoOn() { SetEvent(m_goOn.Get()); }

  private:
    const UniqueHandle m_inside{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const UniqueHandle m_goOn{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::jthread m_thread;
};

HANDLE WINAPI NoEvent(SECURITY_ATTRIBUTES*, BOOL, BOOL, const wchar_t*) {
    return nullptr;
}

TEST(InitializeGuard, ACallerThatHasNothingToWaitOnIsToldSo) {
    InitializeGuard guard;
    BusyCaller busy(guard, S_OK);
    ASSERT_TRUE(busy.IsInside());
    {
        const ImportRedirection events(GetModuleHandleW(nullptr), "CreateEventW", &NoEvent);
        ASSERT_TRUE(events.IsInPlace());
        EXPECT_EQ(E_OUTOFMEMORY, guard.Run([] { return S_OK; }));
    }
    busy.GoOn();
}

// A caller in an apartment of its own. Its thread takes messages nowhere but in the guard's
// wait: when a message that was sent to it has been answered, it waits.
class WaitingCaller {
  public:
    explicit WaitingCaller(InitializeGuard& guard)
        : m_ready(CreateEventW(nullptr, TRUE, FALSE, nullptr)), m_thread([this, &guard] {
              const Apartment apartment(COINIT_APARTMENTTHREADED);
              const CancellingFilter filter;
              m_window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE,
                                         nullptr, nullptr, nullptr);
              SetEvent(m_ready.Get());
              m_hr = guard.Run([] {
                  ADD_FAILURE() << "a second bring-up";
                  return S_OK;
              });
              DestroyWindow(m_window);
          }) {}

    bool Waits() {
        DWORD_PTR answer = 0;
        return WaitForSingleObject(m_ready.Get(), cBoundedWait) == WAIT_OBJECT_0 &&
               SendMessageTimeoutW(m_window, WM_NULL, 0, 0, SMTO_NORMAL, cBoundedWait,
                                   &answer) != 0;
    }
    HRESULT Result() {
        m_thread.join();
        return m_hr;
    }

  private:
    UniqueHandle m_ready;
    HWND m_window = nullptr;
    HRESULT m_hr = S_OK;
    std::jthread m_thread;
};

TEST(InitializeGuard, OtherThreadsWaitLetCallsInAndReturnTheFirstOnesResult) {
    InitializeGuard guard;
    BusyCaller first(guard, E_UNEXPECTED);
    ASSERT_TRUE(first.IsInside());
    WaitingCaller second(guard);
    WaitingCaller third(guard);
    // More than once: the waits go on when the host breaks them off.
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(second.Waits());
        EXPECT_TRUE(third.Waits());
    }
    first.GoOn();
    EXPECT_EQ(E_UNEXPECTED, second.Result());
    EXPECT_EQ(E_UNEXPECTED, third.Result());
}

TEST(InitializeGuard, AThreadWithoutAnApartmentWaitsToo) {
    InitializeGuard guard;
    BusyCaller first(guard, S_FALSE);
    ASSERT_TRUE(first.IsInside());
    HRESULT hr = E_UNEXPECTED;
    std::jthread second([&] { hr = guard.Run([] { return S_FALSE; }); });
    first.GoOn();
    second.join();
    EXPECT_EQ(S_FALSE, hr);
}

// The platform that closes the waiting thread's handle.
HRESULT WINAPI CloseAndFail(DWORD, DWORD, ULONG, HANDLE* handles, DWORD*) {
    CloseHandle(handles[0]);
    return E_UNEXPECTED;
}

TEST(InitializeGuard, AThreadWhoseWaitFailsIsForgotten) {
    InitializeGuard guard;
    HRESULT hr = S_OK;
    EXPECT_EQ(S_OK, guard.Run([&] {
        static constexpr ApartmentCalls cCalls{
            [](APTTYPE*, APTTYPEQUALIFIER*) -> HRESULT { return CO_E_NOTINITIALIZED; },
            &CloseAndFail};
        SetApartmentCalls(&cCalls);
        std::jthread([&] { hr = guard.Run([] { return S_OK; }); }).join();
        SetApartmentCalls(nullptr);
        return S_OK;
    }));
    EXPECT_EQ(E_FAIL, hr);
    EXPECT_EQ(S_FALSE, guard.Run([] { return S_FALSE; }));
}

}  // namespace
}  // namespace kora4::test
