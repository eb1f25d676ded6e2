// SPDX-License-Identifier: MIT
// Questions about COM: apartments, waits, cancellation, class objects, proxies, message
// filters.
#include <objbase.h>
#include <wrl/client.h>

#include <array>
#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "platform_probe/answers.h"
#include "platform_probe/question.h"

namespace kora4::probe {

namespace {

using Microsoft::WRL::ComPtr;

// An object of an interface for which every system has a proxy. Never deleted by a release.
class Target final : public IPersist {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (iid != __uuidof(IUnknown) && iid != __uuidof(IPersist)) {
            *ppv = nullptr;
            return E_NOINTERFACE;
        }
        *ppv = static_cast<IPersist*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override { return --references; }
    STDMETHODIMP GetClassID(CLSID* pClass) override {
        *pClass = {};
        ++calls;
        return S_OK;
    }

    std::atomic<ULONG> references{1};
    std::atomic<int> calls{0};
};

HRESULT Call(IPersist* pTarget) {
    CLSID clsid{};
    return pTarget->GetClassID(&clsid);
}

class Filter final : public IMessageFilter {
  public:
    explicit Filter(DWORD answer) : m_answer(answer) {}
    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(DWORD)
    HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) override {
        ++asked;
        return m_answer;
    }
    STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD, DWORD) override { return 0; }
    STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) override {
        return PENDINGMSG_WAITDEFPROCESS;
    }

    std::atomic<int> asked{0};

  private:
    const DWORD m_answer;
};

void Pump() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
}

// A single-threaded apartment on a thread of its own, with a target in it. The asking thread is
// in the multithreaded one as long as it lives.
class OtherApartment {
  public:
    // `wait`: how it waits for the event that it gets; by default it dispatches messages. What
    // is still to come in then comes in afterwards.
    explicit OtherApartment(std::function<void(HANDLE)> wait = &WaitPumping,
                            DWORD filterAnswer = SERVERCALL_ISHANDLED)
        : filter(filterAnswer), m_wait(std::move(wait)) {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        m_thread = std::thread([this] { Run(); });
        WaitForSingleObject(m_ready.Get(), INFINITE);
        CoGetInterfaceAndReleaseStream(m_stream, __uuidof(IPersist),
                                       reinterpret_cast<void**>(proxy.GetAddressOf()));
    }
    ~OtherApartment() {
        End();
        proxy.Reset();
        SetEvent(m_left.Get());
        m_thread.join();
        CoUninitialize();
    }
    OtherApartment(const OtherApartment&) = delete;
    OtherApartment& operator=(const OtherApartment&) = delete;

    static void WaitPumping(HANDLE event) {
        // Not for new input only: what an earlier wait has seen is there, too.
        while (MsgWaitForMultipleObjectsEx(1, &event, INFINITE, QS_ALLINPUT,
                                           MWMO_INPUTAVAILABLE) == WAIT_OBJECT_0 + 1)
            Pump();
    }

    // It waits no longer in its own way.
    void End() const { SetEvent(m_end.Get()); }

    // Whether a call from another thread gets in within a moment.
    bool GetsIn() {
        std::thread caller([this] { CallFromNewThread(); });
        bool isIn = false;
        for (DWORD waited = 0; !isIn && waited < cMoment; waited += cStep) {
            Sleep(cStep);
            isIn = target.calls != 0;
        }
        End();
        caller.join();
        return isIn;
    }

    void CallFromNewThread() {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        Call(proxy.Get());
        CoUninitialize();
    }

    static constexpr DWORD cStep = 10;

    Target target;
    Filter filter;
    ComPtr<IPersist> proxy;

  private:
    void Run() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        CoRegisterMessageFilter(&filter, nullptr);
        CoMarshalInterThreadInterfaceInStream(__uuidof(IPersist), &target, &m_stream);
        SetEvent(m_ready.Get());
        m_wait(m_end.Get());
        WaitPumping(m_left.Get());
        CoRegisterMessageFilter(nullptr, nullptr);
        CoDisconnectObject(&target, 0);
        CoUninitialize();
    }

    const std::function<void(HANDLE)> m_wait;
    const UniqueHandle m_ready{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const UniqueHandle m_end{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const UniqueHandle m_left{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    IStream* m_stream = nullptr;
    std::thread m_thread;
};

void WaitPlainly(HANDLE event) {
    WaitForMultipleObjects(1, &event, FALSE, INFINITE);
}

void WaitInCom(HANDLE event) {
    DWORD index = 0;
    CoWaitForMultipleHandles(0, INFINITE, 1, &event, &index);
}

// Like a host whose own loop has taken an earlier message while the call was there.
void WaitInComLater(HANDLE event) {
    PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
    Sleep(cMoment / 2);
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
    WaitInCom(event);
}

std::string PlainWait() {
    return YesOrNo(OtherApartment(&WaitPlainly).GetsIn());
}

std::string ComWait() {
    return YesOrNo(OtherApartment(&WaitInCom).GetsIn());
}

std::string OldCall() {
    return YesOrNo(OtherApartment(&WaitInComLater).GetsIn());
}

std::string Switched() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const HRESULT enabled = CoEnableCallCancellation(nullptr);
    const HRESULT disabled = CoDisableCallCancellation(nullptr);
    CoUninitialize();
    return NameOf(enabled) + ", " + NameOf(disabled);
}

using CancelSource = HRESULT(STDAPICALLTYPE*)(DWORD, REFIID, void**);

CancelSource FindCancelSource() {
    return reinterpret_cast<CancelSource>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ole32.dll"), "CoGetCancelObject")));
}

std::string ExportsCancelObject() {
    return YesOrNo(FindCancelSource());
}

std::string CancelledCall() {
    const CancelSource source = FindCancelSource();
    if (!source)
        return std::string(cCannotTell) + ": CoGetCancelObject is missing";
    OtherApartment apartment(&WaitPlainly);
    std::atomic<HRESULT> result{S_OK};
    std::thread caller([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        CoEnableCallCancellation(nullptr);
        result = Call(apartment.proxy.Get());
        CoDisableCallCancellation(nullptr);
        CoUninitialize();
    });
    const DWORD id = GetThreadId(reinterpret_cast<HANDLE>(caller.native_handle()));
    Sleep(cMoment / 2);
    ComPtr<ICancelMethodCalls> cancel;
    if (SUCCEEDED(source(id, __uuidof(ICancelMethodCalls),
                         reinterpret_cast<void**>(cancel.GetAddressOf()))))
        cancel->Cancel(0);
    Sleep(cMoment);
    apartment.End();
    caller.join();
    return NameOf(result);
}

constexpr CLSID cClass{
    0x5D5D8F7E, 0x6B0D, 0x4B57, {0x9A, 0x57, 0x0F, 0x0D, 0x4E, 0x8C, 0x3B, 0x12}};

struct TwoRegistrations {
    TwoRegistrations() {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        Register(first);
        result = Register(second);
    }
    ~TwoRegistrations() {
        CoRevokeClassObject(first);
        if (second)
            CoRevokeClassObject(second);
        CoUninitialize();
    }
    TwoRegistrations(const TwoRegistrations&) = delete;
    TwoRegistrations& operator=(const TwoRegistrations&) = delete;

    HRESULT Register(DWORD& cookie) {
        return CoRegisterClassObject(cClass, &target, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                     &cookie);
    }

    Target target;
    DWORD first = 0;
    DWORD second = 0;
    HRESULT result = E_FAIL;
};

std::string SecondRegistration() {
    const TwoRegistrations made;
    return NameOf(made.result) + (made.second ? ", its own cookie" : ", cookie 0");
}

std::string SecondServes() {
    TwoRegistrations made;
    CoRevokeClassObject(std::exchange(made.first, 0));
    ComPtr<IPersist> found;
    return YesOrNo(
        SUCCEEDED(CoGetClassObject(cClass, CLSCTX_INPROC_SERVER, nullptr, __uuidof(IPersist),
                                   reinterpret_cast<void**>(found.GetAddressOf()))));
}

std::string ProxyOfOtherApartment() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    CoRegisterPSClsid(cClass, cClass);
    CLSID found{};
    std::thread([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        CoGetPSClsid(cClass, &found);
        CoUninitialize();
    }).join();
    CoUninitialize();
    return YesOrNo(found == cClass);
}

std::string ProxyAgain() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    CoRegisterPSClsid(cClass, cClass);
    const HRESULT hr = CoRegisterPSClsid(cClass, cClass);
    CoUninitialize();
    return NameOf(hr);
}

std::string Rejected() {
    const OtherApartment apartment(&OtherApartment::WaitPumping, SERVERCALL_REJECTED);
    return NameOf(Call(apartment.proxy.Get()));
}

std::string TurnedAway() {
    const OtherApartment apartment(&OtherApartment::WaitPumping, SERVERCALL_RETRYLATER);
    return NameOf(Call(apartment.proxy.Get()));
}

std::string AskedOfRelease() {
    OtherApartment apartment(&OtherApartment::WaitPumping, SERVERCALL_REJECTED);
    apartment.proxy.Reset();
    return YesOrNo(apartment.filter.asked != 0);
}

std::string HeldApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    const HRESULT before = CoGetApartmentType(&type, &qualifier);
    CO_MTA_USAGE_COOKIE cookie{};
    CoIncrementMTAUsage(&cookie);
    const HRESULT after = CoGetApartmentType(&type, &qualifier);
    CoDecrementMTAUsage(cookie);
    return NameOf(before) + ", then " + NameOf(after);
}

std::string Disconnected() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    Target target;
    ComPtr<IStream> stream;
    CoMarshalInterThreadInterfaceInStream(__uuidof(IPersist), &target, stream.GetAddressOf());
    CoDisconnectObject(&target, 0);
    const ULONG left = target.references;
    stream.Reset();
    CoUninitialize();
    return std::to_string(left);
}

// The caller and the apartment may never end: they stay behind, with what they use.
std::string EndOfApartment() {
    struct Shared {
        Target target;
        UniqueHandle ready{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
        UniqueHandle end{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
        UniqueHandle returned{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
        IStream* stream = nullptr;
    };
    auto* const shared = new Shared;
    std::thread([shared] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        CoMarshalInterThreadInterfaceInStream(__uuidof(IPersist), &shared->target,
                                              &shared->stream);
        SetEvent(shared->ready.Get());
        WaitPlainly(shared->end.Get());
        CoUninitialize();
    }).detach();
    WaitForSingleObject(shared->ready.Get(), INFINITE);
    std::thread([shared] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        IPersist* proxy = nullptr;
        CoGetInterfaceAndReleaseStream(shared->stream, __uuidof(IPersist),
                                       reinterpret_cast<void**>(&proxy));
        Call(proxy);
        SetEvent(shared->returned.Get());
        // The end of a thread of an apartment without its last call in order can hang others.
        Sleep(INFINITE);
    }).detach();
    Sleep(cMoment);
    SetEvent(shared->end.Get());
    return IsSignalled(shared->returned.Get()) ? "returns" : "waits on";
}

constexpr char cHolder[] =
    "src/monitor/gate_stream_holder.cpp src/monitor/gate_stream_holder.h";
constexpr char cFactory[] = "src/monitor/gate_factory.cpp src/monitor/gate_factory.h";
constexpr char cApartment[] = "src/monitor/apartment.cpp";
constexpr char cBusy[] = "src/monitor/reg_key_monitor_thread.cpp";
constexpr char cMonitor[] = "src/monitor/reg_key_monitor.cpp";
constexpr char cRegisterClass[] = "CoRegisterClassObject function (combaseapi.h)";
constexpr char cRegisterProxy[] = "CoRegisterPSClsid function (combaseapi.h)";

constexpr std::array cQuestions{
    Question{"call-cancellation", "Can a thread switch call cancellation on and off?",
             "success, success", "CoEnableCallCancellation function (combaseapi.h)", cHolder,
             &Switched},
    Question{"cancel-object", "Does ole32.dll export CoGetCancelObject?", "yes",
             "CoGetCancelObject function (combaseapi.h)", cHolder, &ExportsCancelObject},
    Question{"cancelled-call", "What does a call return that is cancelled while it is pending?",
             "RPC_E_CALL_CANCELED", "ICancelMethodCalls::Cancel method (objidl.h)", cHolder,
             &CancelledCall},
    Question{"second-registration",
             "What does registering a class object give that is registered in the apartment?",
             "success, its own cookie", cRegisterClass, cFactory, &SecondRegistration},
    Question{"second-serves", "Does the second registration serve when the first is revoked?",
             "yes", cRegisterClass, cFactory, &SecondServes},
    Question{"proxy-registration",
             "Is a proxy's class known in the process's other apartments?", "yes",
             cRegisterProxy, "src/monitor/gate_factory.cpp sdk/proxies/kora4_proxies.c",
             &ProxyOfOtherApartment},
    Question{"proxy-again", "What does registering a proxy's class again give?", "success",
             cRegisterProxy, "src/monitor/gate_factory.cpp sdk/proxies/kora4_proxies.c",
             &ProxyAgain},
    Question{"rejected-call",
             "What does a call between apartments return that a message filter rejects?",
             "RPC_E_CALL_REJECTED", "IMessageFilter::RetryRejectedCall method (objidl.h)",
             cBusy, &Rejected},
    Question{"busy-call", "And one that the filter turns away for now?",
             "RPC_E_SERVERCALL_RETRYLATER", "COM Error Codes (RPC)", cBusy, &TurnedAway},
    Question{"filter-of-release", "Is the filter asked when a proxy is released?", "no", "",
             cMonitor, &AskedOfRelease},
    Question{"wait-in-com", "Does CoWaitForMultipleHandles let calls in?", "yes",
             "CoWaitForMultipleHandles function (combaseapi.h)", cApartment, &ComWait},
    Question{"plain-wait", "Does WaitForMultipleObjects let calls in?", "no",
             "WaitForMultipleObjects function (synchapi.h)", cApartment, &PlainWait},
    Question{"old-call",
             "Does CoWaitForMultipleHandles let a call in that was there when the host last "
             "looked?",
             "", "", cApartment, &OldCall},
    Question{"packaged-application", "Do calls come in while a packaged application waits?",
             "only with COWAIT_DISPATCH_CALLS", "COWAIT_FLAGS enumeration (combaseapi.h)",
             "src/monitor/apartment.h", nullptr},
    Question{"held-apartment",
             "What does a thread outside get, without and with CoIncrementMTAUsage?",
             "CO_E_NOTINITIALIZED, then success", "CoIncrementMTAUsage function (combaseapi.h)",
             "src/monitor/apartment.h", &HeldApartment},
    Question{"disconnected",
             "How many references are left after CoDisconnectObject, the owner's among them?",
             "1", "CoDisconnectObject function (combaseapi.h)", cMonitor, &Disconnected},
    Question{"end-of-apartment", "What becomes of a call that waits when its apartment ends?",
             "returns", "", "src/monitor/apartment_end.h", &EndOfApartment},
};

}  // namespace

std::span<const Question> ComQuestions() {
    return cQuestions;
}

}  // namespace kora4::probe
