// SPDX-License-Identifier: MIT
// Threads with a COM apartment of their own, for tests that carry calls between them.
#ifndef KORA4_TESTS_CONTRACT_PROXY_APARTMENT_H
#define KORA4_TESTS_CONTRACT_PROXY_APARTMENT_H

#include <objbase.h>
#include <windows.h>
#include <wrl/client.h>

#include <functional>

namespace kora4::test {

enum class ApartmentKind { Single, Multi };

// One thread in an apartment. It runs what it is handed and, in a single-threaded
// apartment, lets COM calls in while it waits. The program ends with a message when a wait
// exceeds its bound: a hung apartment cannot be cleaned up.
class Apartment {
  public:
    // `onEnter` and `onLeave` run on the thread, inside the apartment.
    Apartment(ApartmentKind kind, std::function<void()> onEnter, std::function<void()> onLeave);
    ~Apartment();

    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

    // Runs `work` on the apartment's thread and waits for its end.
    void Run(const std::function<void()>& work);

    DWORD ThreadId() const { return m_threadId; }

  private:
    static DWORD WINAPI ThreadMain(void* self);
    void Loop();

    const ApartmentKind m_kind;
    std::function<void()> m_onEnter;
    std::function<void()> m_onLeave;
    const std::function<void()>* m_work = nullptr;
    HANDLE m_wake;
    HANDLE m_done;
    HANDLE m_thread = nullptr;
    DWORD m_threadId = 0;
    bool m_leave = false;
};

// Carries `pObject` from `owner` to `user` and gives the pointer that is valid there. It
// must be released there. Null, with a recorded failure, when marshalling fails.
IUnknown* CarryUnknown(Apartment& owner, Apartment& user, REFIID iid, IUnknown* pObject);

template <typename I>
Microsoft::WRL::ComPtr<I> Carry(Apartment& owner, Apartment& user, I* pObject) {
    Microsoft::WRL::ComPtr<I> carried;
    // Not Attach: the one of mingw-w64 takes a reference.
    *carried.GetAddressOf() =
        reinterpret_cast<I*>(CarryUnknown(owner, user, __uuidof(I), pObject));
    return carried;
}

}  // namespace kora4::test

#endif  // KORA4_TESTS_CONTRACT_PROXY_APARTMENT_H
