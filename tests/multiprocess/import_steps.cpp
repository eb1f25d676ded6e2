// SPDX-License-Identifier: MIT
// Wraps the functions that the library imports, and the gate that its monitor calls through.
#include "multiprocess/import_steps.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <windows.h>

#include <atomic>
#include <deque>
#include <mutex>

#include "comcallbackgate.h"
#include "support/import_redirection.h"

namespace kora4::test {
namespace {

std::atomic<bool> s_isArmed{false};
std::atomic<unsigned> s_step{0};
std::atomic<unsigned> s_wanted{0};
std::atomic<bool> s_hasRun{false};
std::mutex s_mutex;
std::function<void()> s_action;

// A moment between two calls.
void Step() {
    if (!s_isArmed || s_step.fetch_add(1) != s_wanted)
        return;
    const DWORD error = GetLastError();
    {
        const std::lock_guard hold(s_mutex);
        s_action();
    }
    s_hasRun = true;
    SetLastError(error);
}

template <auto Function, typename Type = decltype(Function)>
struct Stepped;

template <auto Function, typename Result, typename... Arguments>
struct Stepped<Function, Result(WINAPI*)(Arguments...)> {
    static Result WINAPI Call(Arguments... arguments) {
        Step();
        if constexpr (std::is_void_v<Result>) {
            Function(arguments...);
            Step();
        } else {
            const Result result = Function(arguments...);
            Step();
            return result;
        }
    }
};

class SteppedGate final : public ICOMCallbackGate {
  public:
    explicit SteppedGate(ICOMCallbackGate* pGate) : m_pGate(pGate) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        return m_pGate->QueryInterface(iid, ppv);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            Step();
            m_pGate->Release();
            Step();
            delete this;
        }
        return left;
    }
    STDMETHODIMP Callback(ULONG value) override {
        Step();
        const HRESULT hr = m_pGate->Callback(value);
        Step();
        return hr;
    }

  private:
    ~SteppedGate() = default;

    ICOMCallbackGate* const m_pGate;
    std::atomic<ULONG> m_references{1};
};

HRESULT WINAPI UnmarshalStepped(IStream* pStream, REFIID iid, void** ppv) {
    Step();
    const HRESULT hr = CoGetInterfaceAndReleaseStream(pStream, iid, ppv);
    if (SUCCEEDED(hr) && iid == __uuidof(ICOMCallbackGate))
        *ppv = new SteppedGate(static_cast<ICOMCallbackGate*>(*ppv));
    Step();
    return hr;
}

}  // namespace

struct ImportSteps::Redirections {
    template <typename Function>
    void Lead(const char* function, Function* replacement) {
        redirections.emplace_back(GetModuleHandleW(L"QXA64T.dll"), function, replacement);
        EXPECT_TRUE(redirections.back().IsInPlace()) << function;
    }

    std::deque<ImportRedirection> redirections;
};

ImportSteps::ImportSteps() : m_upRedirections(std::make_unique<Redirections>()) {
    Redirections& all = *m_upRedirections;
#define STEPPED(function) all.Lead(#function, &Stepped<&function>::Call)
    STEPPED(RegNotifyChangeKeyValue);
    STEPPED(RegOpenKeyExW);
    STEPPED(RegCreateKeyExW);
    STEPPED(RegCloseKey);
    STEPPED(RegQueryValueExW);
    STEPPED(RegSetKeyValueW);
    STEPPED(WaitForSingleObject);
    STEPPED(WaitForMultipleObjects);
    STEPPED(ReleaseMutex);
    STEPPED(CreateMutexW);
    STEPPED(CreateEventW);
    STEPPED(SetEvent);
    STEPPED(CloseHandle);
    STEPPED(CreateThread);
    STEPPED(CoInitializeEx);
    STEPPED(CoUninitialize);
    STEPPED(CoEnableCallCancellation);
    STEPPED(CoDisableCallCancellation);
    STEPPED(CoIncrementMTAUsage);
    STEPPED(CoDecrementMTAUsage);
    STEPPED(CoRegisterClassObject);
    STEPPED(CoRevokeClassObject);
    STEPPED(CoRegisterPSClsid);
    STEPPED(CoMarshalInterThreadInterfaceInStream);
    STEPPED(CoWaitForMultipleHandles);
    STEPPED(CoRegisterInitializeSpy);
    STEPPED(CoRevokeInitializeSpy);
    STEPPED(CoDisconnectObject);
#undef STEPPED
    all.Lead("CoGetInterfaceAndReleaseStream", &UnmarshalStepped);
}

ImportSteps::~ImportSteps() {
    Disarm();
}

void ImportSteps::Arm(unsigned step, std::function<void()> action) {
    {
        const std::lock_guard hold(s_mutex);
        s_action = std::move(action);
    }
    s_hasRun = false;
    s_step = 0;
    s_wanted = step;
    s_isArmed = true;
}

bool ImportSteps::Disarm() {
    s_isArmed = false;
    const std::lock_guard hold(s_mutex);
    return s_hasRun;
}

bool ImportSteps::HasRun() const {
    return s_hasRun;
}

void ImportSteps::AwaitRest() const {
    // Milliseconds. What a busy machine keeps waiting for longer is taken for rest; that only
    // matters as long as the step that is wanted may still come.
    const DWORD atRest = s_hasRun ? 5 : 50;
    unsigned before = 0;
    do {
        before = s_step;
        Sleep(atRest);
    } while (s_step != before);
}

}  // namespace kora4::test
