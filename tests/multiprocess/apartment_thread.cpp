// SPDX-License-Identifier: MIT
// The loop of such a thread: runs tasks, and pumps messages when it is told to.
#include "multiprocess/apartment_thread.h"

namespace kora4::test {

std::string NameOf(OwnerKind kind) {
    switch (kind) {
        case OwnerKind::eStaPumping:
            return "PumpingSta";
        case OwnerKind::eStaIdle:
            return "IdleSta";
        case OwnerKind::eMta:
            return "Mta";
    }
    return "?";
}

ApartmentThread::ApartmentThread(OwnerKind kind)
    : m_kind(kind),
      m_pumping(kind == OwnerKind::eStaPumping),
      m_given(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      m_done(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
    m_thread = std::thread([this] { Main(); });
}

ApartmentThread::~ApartmentThread() {
    m_pTask = nullptr;
    SetEvent(m_given.Get());
    m_thread.join();
}

void ApartmentThread::Run(const std::function<void()>& task) {
    const std::lock_guard hold(m_callers);
    m_pTask = &task;
    SetEvent(m_given.Get());
    WaitForSingleObject(m_done.Get(), INFINITE);
}

void ApartmentThread::SetPumping(bool pumping) {
    Run([this, pumping] { m_pumping = pumping && m_kind != OwnerKind::eMta; });
}

void ApartmentThread::Main() {
    m_threadId = GetCurrentThreadId();
    const Apartment apartment(m_kind == OwnerKind::eMta ? COINIT_MULTITHREADED
                                                        : COINIT_APARTMENTTHREADED);
    do {
        AwaitTask();
    } while (RunTask());
}

void ApartmentThread::AwaitTask() {
    const HANDLE given = m_given.Get();
    if (!m_pumping) {
        WaitForSingleObject(given, INFINITE);
        return;
    }
    while (MsgWaitForMultipleObjectsEx(1, &given, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE) !=
           WAIT_OBJECT_0) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
}

bool ApartmentThread::RunTask() {
    if (!m_pTask)
        return false;
    (*m_pTask)();
    SetEvent(m_done.Get());
    return true;
}

HRESULT WatchingClient::Start(const ApiLibrary& library) {
    spApi = library.Create();
    if (!spApi)
        return E_NOINTERFACE;
    spRecorder = CallbackRecorder::Create();
    const HRESULT hr = spApi->Initialize();
    return FAILED(hr) ? hr : spApi->RegisterChangeNotifications(spRecorder.Get());
}

}  // namespace kora4::test
