// SPDX-License-Identifier: MIT
// Brings a monitor into each state, releases its object, and looks at what is left.
#include "multiprocess/teardown.h"

#include <iostream>
#include <memory>
#include <thread>

#include "support/import_redirection.h"
#include "support/message_filter.h"
#include "support/raw_store.h"

namespace kora4::test {
namespace {

constexpr wchar_t cLibrary[] = L"QXA64T.dll";
// Milliseconds. An end that is slower than this is as good as none.
constexpr DWORD cEndWait = 8000;

// What the library asks of the platform.
std::atomic<unsigned> s_terminated{0};
std::atomic<unsigned> s_armed{0};
UniqueHandle s_monitorThread;

BOOL WINAPI CountTermination(HANDLE thread, DWORD exitCode) {
    ++s_terminated;
    return TerminateThread(thread, exitCode);
}

LSTATUS WINAPI CountArming(HKEY key, BOOL subtree, DWORD filter, HANDLE event,
                           BOOL asynchronous) {
    const LSTATUS status = RegNotifyChangeKeyValue(key, subtree, filter, event, asynchronous);
    ++s_armed;
    return status;
}

HANDLE WINAPI KeepThread(LPSECURITY_ATTRIBUTES attributes, SIZE_T stack,
                         LPTHREAD_START_ROUTINE procedure, void* pParameter, DWORD flags,
                         DWORD* pId) {
    const HANDLE thread = CreateThread(attributes, stack, procedure, pParameter, flags, pId);
    if (!s_monitorThread)
        DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), s_monitorThread.Put(),
                        0, FALSE, DUPLICATE_SAME_ACCESS);
    return thread;
}

double Now() {
    LARGE_INTEGER now;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// A wait that lets nothing into the calling thread.
bool WaitPlainly(const std::function<bool()>& done) {
    const ULONGLONG end = GetTickCount64() + cBoundedWait;
    while (!done()) {
        if (GetTickCount64() >= end)
            return false;
        Sleep(2);
    }
    return true;
}

bool HasEnded(HANDLE thread) {
    return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0;
}

// A busy owner.
class RejectingFilter final : public MessageFilter {
  public:
    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        ++rejected;
        // Windows knows SERVERCALL_RETRYLATER too; Wine 8 lets such a call in.
        return SERVERCALL_REJECTED;
    }

    std::atomic<unsigned> rejected{0};
};

// A thread of the multithreaded apartment that does nothing.
class OtherMtaThread {
  public:
    OtherMtaThread()
        : m_end(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_ready(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_thread([this] {
              const Apartment apartment(COINIT_MULTITHREADED);
              SetEvent(m_ready.Get());
              WaitForSingleObject(m_end.Get(), INFINITE);
          }) {
        WaitForSingleObject(m_ready.Get(), INFINITE);
    }
    ~OtherMtaThread() {
        SetEvent(m_end.Get());
        m_thread.join();
    }
    OtherMtaThread(const OtherMtaThread&) = delete;
    OtherMtaThread& operator=(const OtherMtaThread&) = delete;

  private:
    const UniqueHandle m_end;
    const UniqueHandle m_ready;
    std::thread m_thread;
};

class Teardown {
  public:
    explicit Teardown(const TeardownCell& cell) : m_cell(cell), m_owner(cell.owner) {}

    void Run();
    const TeardownResult& Result() const { return m_result; }
    void Finish();

  private:
    bool IsMta() const { return m_cell.owner == OwnerKind::eMta; }

    void Start();
    void Reach();
    void AwaitCall();
    void ReleaseDuringCall();
    void RunCallback();
    void AwaitCallback(HRESULT hr);
    void BeBusy();
    void LoseTheKey();
    // On the owner's thread.
    void Release();
    void AwaitEnd();

    static void Write() { RawStore::SetNumber(cDynamic, SettingName(cEnablePid), 0); }
    static void CALLBACK ReleaseByTimer(HWND, UINT, UINT_PTR id, DWORD);

    static Teardown* s_pInTimer;

    const TeardownCell m_cell;
    TeardownResult m_result;
    std::unique_ptr<ApiLibrary> m_upLibrary = std::make_unique<ApiLibrary>();
    ApartmentThread m_owner;
    WatchingClient m_client;
    std::unique_ptr<RejectingFilter> m_upFilter;
    double m_since = 0;  // the time counts from here
    std::atomic<bool> m_isInCallback{false};
    std::atomic<bool> m_isReleased{false};
};

Teardown* Teardown::s_pInTimer = nullptr;

void Teardown::Start() {
    m_owner.Run([this] {
        m_result.reached = SUCCEEDED(m_client.Start(*m_upLibrary)) && s_monitorThread;
    });
}

// The monitor thread has found a change and is about to call, or calls.
void Teardown::AwaitCall() {
    const unsigned before = s_armed;
    Write();
    m_result.reached = WaitPlainly([before] { return s_armed > before; });
    Sleep(20);
}

// Nothing gets into a single-threaded apartment meanwhile. In the multithreaded one the call is
// in the midst of the analysis until the store's mutex is free.
void Teardown::ReleaseDuringCall() {
    {
        const RawTransaction hold;
        AwaitCall();
        if (m_cell.released)
            Release();
    }
    if (IsMta())
        m_since = Now();
}

// The callback returns that once, and what comes of it is over.
void Teardown::AwaitCallback(HRESULT hr) {
    m_client.spRecorder->React("OnEnableStateChange", [hr] { return hr; });
    m_owner.SetPumping(true);
    Write();
    m_result.reached = WaitPlainly([] { return HasEnded(s_monitorThread.Get()); });
    m_owner.SetPumping(m_cell.owner == OwnerKind::eStaPumping);
}

void CALLBACK Teardown::ReleaseByTimer(HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    s_pInTimer->Release();
}

// A callback that lets messages in, as one that shows a message box does, and one of them
// releases the object; in the multithreaded apartment another thread does.
void Teardown::RunCallback() {
    m_client.spRecorder->React("OnEnableStateChange", [this] {
        m_isInCallback = true;
        if (IsMta() || !m_cell.released) {
            WaitPlainly([this] { return m_isReleased.load(); });
        } else {
            s_pInTimer = this;
            SetTimer(nullptr, 0, 1, &ReleaseByTimer);
            PumpUntil([this] { return m_isReleased.load(); });
        }
        m_since = Now();
        m_isInCallback = false;
        return S_OK;
    });
    m_owner.SetPumping(true);
    Write();
    m_result.reached =
        WaitPlainly([this] { return m_isInCallback.load() || m_isReleased.load(); });
    if (!m_cell.released)
        return;
    if (IsMta())
        m_owner.Run([this] { Release(); });
    m_result.reached &=
        WaitPlainly([this] { return m_isReleased.load() && !m_isInCallback.load(); });
}

void Teardown::BeBusy() {
    m_owner.Run([this] { m_upFilter = std::make_unique<RejectingFilter>(); });
    AwaitCall();
    // Whoever does not pump is not asked.
    if (m_cell.owner == OwnerKind::eStaPumping)
        m_result.reached &= WaitPlainly([this] { return m_upFilter->rejected >= 2; });
}

// The thread finds the key gone when it arms again. It is kept from that until the key is
// gone: a deletion itself wakes it on Windows only.
void Teardown::LoseTheKey() {
    SuspendThread(s_monitorThread.Get());
    Write();
    RawStore::DeleteKeys();
    ResumeThread(s_monitorThread.Get());
    m_owner.SetPumping(true);
    m_result.reached = WaitPlainly([] { return HasEnded(s_monitorThread.Get()); });
    m_owner.SetPumping(m_cell.owner == OwnerKind::eStaPumping);
}

void Teardown::Reach() {
    switch (m_cell.state) {
        case MonitorState::eIdle:
            break;
        case MonitorState::eCallPending:
            m_owner.Run([this] { ReleaseDuringCall(); });
            break;
        case MonitorState::eCallbackRuns:
            RunCallback();
            break;
        case MonitorState::eCallbackFailed:
            AwaitCallback(E_FAIL);
            break;
        case MonitorState::eReleasedInside:
            m_client.spRecorder->React("OnEnableStateChange", [this] {
                Release();
                return S_OK;
            });
            m_owner.SetPumping(true);
            Write();
            m_result.reached = WaitPlainly([this] { return m_isReleased.load(); });
            break;
        case MonitorState::eOwnerBusy:
            // The multithreaded apartment has no filter: a client that fails as if.
            if (IsMta())
                AwaitCallback(RPC_E_CALL_REJECTED);
            else
                BeBusy();
            break;
        case MonitorState::eThreadDead:
            LoseTheKey();
            break;
        case MonitorState::eThreadStuck:
            SuspendThread(s_monitorThread.Get());
            break;
    }
}

void Teardown::Release() {
    const double begin = Now();
    m_client.spApi.Reset();
    m_since = m_cell.state == MonitorState::eReleasedInside ? Now() : begin;
    m_result.releaseMilliseconds = Now() - begin;
    m_isReleased = true;
}

void Teardown::AwaitEnd() {
    PumpUntil(
        [this] {
            m_result.canUnload = m_upLibrary->CanUnloadNow();
            return m_result.canUnload == S_OK && HasEnded(s_monitorThread.Get());
        },
        s_monitorThread.Get(), cEndWait);
    m_result.milliseconds = Now() - m_since;
    m_upFilter.reset();
}

void Teardown::Run() {
    Start();
    if (!m_result.reached)
        return;
    Reach();
    if (!m_cell.released)
        return;
    if (!m_isReleased)
        m_owner.Run([this] { Release(); });
    m_owner.Run([this] { AwaitEnd(); });
    m_result.terminated = s_terminated;
    m_result.recorderReferences = m_client.spRecorder->References();
}

// The library goes, and says so itself.
void Teardown::Finish() {
    m_upLibrary.reset();
    m_result.unloaded = GetModuleHandleW(cLibrary) == nullptr;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const TeardownCell& cell) {
    return stream << static_cast<int>(cell.owner) << ' ' << static_cast<int>(cell.state) << ' '
                  << cell.othersInMta << ' ' << cell.released;
}

std::istream& operator>>(std::istream& stream, TeardownCell& cell) {
    int owner = 0;
    int state = 0;
    stream >> owner >> state >> cell.othersInMta >> cell.released;
    cell.owner = static_cast<OwnerKind>(owner);
    cell.state = static_cast<MonitorState>(state);
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const TeardownResult& result) {
    return stream << result.reached << ' ' << result.milliseconds << ' '
                  << result.releaseMilliseconds << ' ' << result.terminated << ' '
                  << result.canUnload << ' ' << result.unloaded << ' '
                  << result.recorderReferences;
}

std::istream& operator>>(std::istream& stream, TeardownResult& result) {
    return stream >> result.reached >> result.milliseconds >> result.releaseMilliseconds >>
           result.terminated >> result.canUnload >> result.unloaded >>
           result.recorderReferences;
}

int RunTeardown() {
    TeardownCell cell;
    if (!(std::cin >> cell))
        return 2;
    std::unique_ptr<OtherMtaThread> upOther;
    if (cell.othersInMta)
        upOther = std::make_unique<OtherMtaThread>();
    // Held by nobody, so that a process can end with it.
    auto* const pTeardown = new Teardown(cell);
    {
        const HMODULE library = GetModuleHandleW(cLibrary);
        const ImportRedirection terminate(library, "TerminateThread", &CountTermination);
        const ImportRedirection arm(library, "RegNotifyChangeKeyValue", &CountArming);
        const ImportRedirection create(library, "CreateThread", &KeepThread);
        if (!terminate.IsInPlace() || !arm.IsInPlace() || !create.IsInPlace())
            return 3;
        pTeardown->Run();
        if (!cell.released) {
            std::cout << pTeardown->Result() << std::endl;
            ExitProcess(0);
        }
    }
    pTeardown->Finish();
    std::cout << pTeardown->Result() << std::endl;
    delete pTeardown;
    return 0;
}

}  // namespace kora4::test
