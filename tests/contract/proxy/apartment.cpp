// SPDX-License-Identifier: MIT
// The thread behind an apartment, with the message loop of a single-threaded one, and the
// carrying of a pointer from one apartment to another.
#include "contract/proxy/apartment.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace kora4::test {
namespace {

constexpr DWORD cLongestWait = 30000;  // ms

void WaitOrDie(HANDLE handle, const char* what) {
    if (WaitForSingleObject(handle, cLongestWait) == WAIT_OBJECT_0)
        return;
    std::fprintf(stderr, "apartment test: %s took more than %lu ms\n", what, cLongestWait);
    std::abort();
}

}  // namespace

Apartment::Apartment(ApartmentKind kind, std::function<void()> onEnter,
                     std::function<void()> onLeave)
    : m_kind(kind),
      m_onEnter(std::move(onEnter)),
      m_onLeave(std::move(onLeave)),
      m_wake(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      m_done(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    m_thread = CreateThread(nullptr, 0, ThreadMain, this, 0, &m_threadId);
    WaitOrDie(m_done, "entering");
}

Apartment::~Apartment() {
    m_leave = true;
    SetEvent(m_wake);
    WaitOrDie(m_thread, "leaving");
    CloseHandle(m_thread);
    CloseHandle(m_done);
    CloseHandle(m_wake);
}

void Apartment::Run(const std::function<void()>& work) {
    m_work = &work;
    SetEvent(m_wake);
    WaitOrDie(m_done, "a piece of work");
}

DWORD WINAPI Apartment::ThreadMain(void* self) {
    static_cast<Apartment*>(self)->Loop();
    return 0;
}

void Apartment::Loop() {
    const HRESULT hr =
        CoInitializeEx(nullptr, m_kind == ApartmentKind::Single ? COINIT_APARTMENTTHREADED
                                                                : COINIT_MULTITHREADED);
    EXPECT_EQ(S_OK, hr);
    m_onEnter();
    SetEvent(m_done);
    for (;;) {
        const DWORD woken = MsgWaitForMultipleObjects(1, &m_wake, FALSE, INFINITE, QS_ALLINPUT);
        if (woken == WAIT_OBJECT_0) {
            if (m_leave)
                break;
            (*m_work)();
            SetEvent(m_done);
        }
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
    m_onLeave();
    CoUninitialize();
}

IUnknown* CarryUnknown(Apartment& owner, Apartment& user, REFIID iid, IUnknown* pObject) {
    IStream* pStream = nullptr;
    owner.Run([&] {
        EXPECT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(iid, pObject, &pStream));
    });
    void* pCarried = nullptr;
    if (pStream) {
        user.Run(
            [&] { EXPECT_EQ(S_OK, CoGetInterfaceAndReleaseStream(pStream, iid, &pCarried)); });
    }
    return static_cast<IUnknown*>(pCarried);
}

}  // namespace kora4::test
