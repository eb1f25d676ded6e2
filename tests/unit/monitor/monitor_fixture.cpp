// SPDX-License-Identifier: MIT
// Threads in apartments, waits that pump, the watched key, and the counts of what could leak.
#include "unit/monitor/monitor_fixture.h"

#include <objbase.h>

#include <memory>
#include <utility>

namespace kora4::test {

std::string NameOf(Apartment kind) {
    switch (kind) {
        case Apartment::eSingle:
            return "SingleThreaded";
        case Apartment::eMulti:
            return "Multithreaded";
        default:
            return "None";
    }
}

namespace {

struct ThreadBody {
    Apartment kind;
    const std::function<void()>& body;
};

DWORD WINAPI RunBody(void* pParameter) {
    const auto& thread = *static_cast<const ThreadBody*>(pParameter);
    if (thread.kind == Apartment::eNone) {
        thread.body();
        return 0;
    }
    const HRESULT hr =
        CoInitializeEx(nullptr, thread.kind == Apartment::eSingle ? COINIT_APARTMENTTHREADED
                                                                  : COINIT_MULTITHREADED);
    EXPECT_EQ(S_OK, hr);
    thread.body();
    CoUninitialize();
    return 0;
}

}  // namespace

void RunInNewThread(Apartment kind, const std::function<void()>& body) {
    ThreadBody thread{kind, body};
    const UniqueHandle handle(CreateThread(nullptr, 0, &RunBody, &thread, 0, nullptr));
    ASSERT_TRUE(handle);
    WaitForSingleObject(handle.Get(), INFINITE);
}

UniqueHandle MakeManualEvent() {
    return UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

namespace {

UniqueHandle MakeAutomaticEvent() {
    return UniqueHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
}

}  // namespace

ApartmentThread::ApartmentThread(Apartment kind)
    : m_begin(MakeAutomaticEvent()), m_done(MakeAutomaticEvent()), m_kind(kind) {
    m_thread.Reset(CreateThread(
        nullptr, 0,
        [](void* pThis) -> DWORD {
            static_cast<ApartmentThread*>(pThis)->Serve();
            return 0;
        },
        this, 0, nullptr));
}

ApartmentThread::~ApartmentThread() {
    Begin(nullptr);
    WaitForSingleObject(m_thread.Get(), INFINITE);
}

void ApartmentThread::Run(std::function<void()> body) {
    Begin(std::move(body));
    Await();
}

void ApartmentThread::Begin(std::function<void()> body) {
    m_body = std::move(body);
    SetEvent(m_begin.Get());
}

void ApartmentThread::Await() {
    WaitForSingleObject(m_done.Get(), INFINITE);
}

void ApartmentThread::Serve() {
    EXPECT_EQ(S_OK,
              CoInitializeEx(nullptr, m_kind == Apartment::eSingle ? COINIT_APARTMENTTHREADED
                                                                   : COINIT_MULTITHREADED));
    while (PumpUntilSignalled(m_begin.Get(), INFINITE) && m_body) {
        m_body();
        SetEvent(m_done.Get());
    }
    CoUninitialize();
}

void RunIn(Apartment kind, const std::function<void()>& body) {
    static std::unique_ptr<ApartmentThread> s_single;
    static std::unique_ptr<ApartmentThread> s_multi;
    if (kind == Apartment::eNone) {
        s_multi.reset();
        RunInNewThread(kind, body);
        return;
    }
    auto& thread = kind == Apartment::eSingle ? s_single : s_multi;
    if (!thread)
        thread = std::make_unique<ApartmentThread>(kind);
    thread->Run(body);
}

bool PumpUntilSignalled(HANDLE handle, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        const ULONGLONG now = GetTickCount64();
        const DWORD left = milliseconds == INFINITE ? INFINITE
                           : now < end              ? static_cast<DWORD>(end - now)
                                                    : 0;
        const DWORD result = MsgWaitForMultipleObjects(1, &handle, FALSE, left, QS_ALLINPUT);
        if (result != WAIT_OBJECT_0 + 1)
            return result == WAIT_OBJECT_0;
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
}

bool IsSignalledWithin(HANDLE handle, DWORD milliseconds) {
    return WaitForSingleObject(handle, milliseconds) == WAIT_OBJECT_0;
}

bool AwaitPendingCall() {
    // Messages for the thread itself are no calls.
    MSG message;
    while (PeekMessageW(&message, reinterpret_cast<HWND>(static_cast<INT_PTR>(-1)), 0, 0,
                        PM_REMOVE)) {
    }
    return MsgWaitForMultipleObjectsEx(0, nullptr, cPatience, QS_POSTMESSAGE,
                                       MWMO_INPUTAVAILABLE) == WAIT_OBJECT_0;
}

double Measure(const std::function<void()>& body) {
    LARGE_INTEGER frequency;
    LARGE_INTEGER begin;
    LARGE_INTEGER end;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&begin);
    body();
    QueryPerformanceCounter(&end);
    return 1000.0 * static_cast<double>(end.QuadPart - begin.QuadPart) /
           static_cast<double>(frequency.QuadPart);
}

ULONG_PTR NextHandleValue() {
    return reinterpret_cast<ULONG_PTR>(MakeManualEvent().Get());
}

TestKey::TestKey() {
    static std::atomic<int> s_number{0};
    m_path = L"SOFTWARE\\Velto\\MonitorTest\\" + std::to_wstring(GetCurrentProcessId()) + L"-" +
             std::to_wstring(++s_number);
    Write();
}

TestKey::~TestKey() {
    RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
}

DWORD TestKey::WriteTo(const std::wstring& path) {
    const DWORD value = ++m_last;
    UniqueRegKey key;
    EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0,
                                             KEY_SET_VALUE, nullptr, key.Put(), nullptr));
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetValueExW(key.Get(), L"value", 0, REG_DWORD,
                             reinterpret_cast<const BYTE*>(&value), sizeof value));
    return value;
}

DWORD TestKey::Write() {
    return WriteTo(m_path);
}

DWORD TestKey::WriteBelow(const wchar_t* subkey) {
    return WriteTo(m_path + L"\\" + subkey);
}

void TestKey::CreateBelow(const wchar_t* subkey) {
    UniqueRegKey key;
    EXPECT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_CURRENT_USER, (m_path + L"\\" + subkey).c_str(), 0, nullptr,
                              0, KEY_READ, nullptr, key.Put(), nullptr));
}

DWORD TestKey::Read() const {
    DWORD value = 0;
    DWORD size = sizeof value;
    EXPECT_EQ(ERROR_SUCCESS, RegGetValueW(HKEY_CURRENT_USER, m_path.c_str(), L"value",
                                          RRF_RT_REG_DWORD, nullptr, &value, &size));
    return value;
}

RecordingClient::RecordingClient() : m_called(CreateSemaphoreW(nullptr, 0, MAXLONG, nullptr)) {}

HRESULT RecordingClient::OnKeyChangeNotify() {
    threadId = GetCurrentThreadId();
    inMultithreadedApartment = CurrentApartment() == cMultithreadedApartment;
    ++calls;
    // Whatever the hook destroys, this object and what it signals stay.
    if (hook)
        hook();
    ReleaseSemaphore(m_called.Get(), 1, nullptr);
    return result;
}

bool RecordingClient::AwaitCall(bool pump) {
    return pump ? PumpUntilSignalled(m_called.Get()) : IsSignalledWithin(m_called.Get());
}

UniqueHandle OpenMonitor::DuplicateThread() {
    UniqueHandle copy;
    if (const MonitorSessionPtr spSession = Session())
        DuplicateHandle(GetCurrentProcess(), spSession->Thread(), GetCurrentProcess(),
                        copy.Put(), 0, FALSE, DUPLICATE_SAME_ACCESS);
    return copy;
}

MonitorOwner::MonitorOwner() {
    EXPECT_EQ(S_OK, ComObject<OpenMonitor>::Create(&m_pMonitor));
}

MonitorOwner::~MonitorOwner() {
    TearDown();
}

void MonitorOwner::TearDown() {
    if (auto* const pMonitor = std::exchange(m_pMonitor, nullptr)) {
        pMonitor->TerminateRegMonitor();
        pMonitor->Release();
    }
}

ULONG MonitorOwner::References() const {
    m_pMonitor->AddRef();
    return m_pMonitor->Release();
}

}  // namespace kora4::test
