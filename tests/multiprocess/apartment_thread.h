// SPDX-License-Identifier: MIT
// A thread with an apartment, as the owner of API objects.
#ifndef KORA4_TESTS_MULTIPROCESS_APARTMENT_THREAD_H
#define KORA4_TESTS_MULTIPROCESS_APARTMENT_THREAD_H

#include <windows.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "platform/handles.h"
#include "support/com_client.h"

namespace kora4::test {

// The apartment in which an object's owner lives, and how it lets calls in.
enum class OwnerKind {
    eStaPumping,  // lets calls in all the time
    eStaIdle,     // lets calls in only when the test says so
    eMta,
};

// For the names of tests.
std::string NameOf(OwnerKind kind);

// Runs what it is given, one after the other, on its thread; in between it waits, in its
// kind's way. Ends with the object, after it has left the apartment.
//
// A test program may use about 60 single-threaded apartments in all: Wine opens a pipe for
// each that is called into, keeps it for good and waits for all at once, which ends at 64;
// whoever marshals next then waits forever.
class ApartmentThread {
  public:
    explicit ApartmentThread(OwnerKind kind);
    ~ApartmentThread();
    ApartmentThread(const ApartmentThread&) = delete;
    ApartmentThread& operator=(const ApartmentThread&) = delete;

    // Returns when `task` has run. The wait of the caller lets no calls in.
    void Run(const std::function<void()>& task);

    // The return means that the thread has changed its way of waiting. Without effect in
    // the multithreaded apartment, which needs no pump.
    void SetPumping(bool pumping);

    DWORD Id() const { return m_threadId; }

  private:
    void Main();
    void AwaitTask();
    bool RunTask();

    const OwnerKind m_kind;
    bool m_pumping;  // of the thread alone
    std::mutex m_callers;
    const std::function<void()>* m_pTask = nullptr;  // null ends the thread
    UniqueHandle m_given;
    UniqueHandle m_done;
    std::atomic<DWORD> m_threadId{0};
    std::thread m_thread;
};

// An object with its registered recorder. Made, used and released on its owner's thread.
struct WatchingClient {
    Microsoft::WRL::ComPtr<IVeltoKORA4API> spApi;
    Microsoft::WRL::ComPtr<CallbackRecorder> spRecorder;

    // The first failure of creation, Initialize and registration.
    HRESULT Start(const ApiLibrary& library);
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_APARTMENT_THREAD_H
