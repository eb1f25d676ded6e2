// SPDX-License-Identifier: MIT
// One Initialize at a time: re-entry, callers that wait in each kind of apartment, and waits
// that fail.
#include "api/initialize_guard.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <thread>

#include "monitor/apartment.h"
#include "support/com_client.h"

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

// A host's message filter that breaks off every wait in which a message comes.
class CancellingFilter final : public IMessageFilter {
  public:
    CancellingFilter() { EXPECT_EQ(S_OK, CoRegisterMessageFilter(this, nullptr)); }
    ~CancellingFilter() { EXPECT_EQ(S_OK, CoRegisterMessageFilter(nullptr, nullptr)); }
    CancellingFilter(const CancellingFilter&) = delete;
    CancellingFilter& operator=(const CancellingFilter&) = delete;

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        return SERVERCALL_ISHANDLED;
    }
    STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD, DWORD) override { return 0; }
    STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override {
        return PENDINGMSG_CANCELCALL;
    }
};

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
    const UniqueHandle inside(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle goOn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::jthread first([&] {
        guard.Run([&] {
            SetEvent(inside.Get());
            WaitForSingleObject(goOn.Get(), cBoundedWait);
            return E_UNEXPECTED;
        });
    });
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(inside.Get(), cBoundedWait));
    WaitingCaller second(guard);
    WaitingCaller third(guard);
    // More than once: the waits go on when the host breaks them off.
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(second.Waits());
        EXPECT_TRUE(third.Waits());
    }
    SetEvent(goOn.Get());
    EXPECT_EQ(E_UNEXPECTED, second.Result());
    EXPECT_EQ(E_UNEXPECTED, third.Result());
}

TEST(InitializeGuard, AThreadWithoutAnApartmentWaitsToo) {
    InitializeGuard guard;
    const UniqueHandle inside(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle goOn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::jthread first([&] {
        guard.Run([&] {
            SetEvent(inside.Get());
            WaitForSingleObject(goOn.Get(), cBoundedWait);
            return S_FALSE;
        });
    });
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(inside.Get(), cBoundedWait));
    HRESULT hr = E_UNEXPECTED;
    std::jthread second([&] { hr = guard.Run([] { return S_FALSE; }); });
    SetEvent(goOn.Get());
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
