// SPDX-License-Identifier: MIT
// A watching client of platform calls alone: marshalled gate, watching thread, start and stop.
#include "windows/bare_client.h"

#include "proxy/proxy_factory.h"
#include "windows/bare_methods.h"

namespace kora4::bench {
namespace {

using Microsoft::WRL::ComPtr;

// Told when the apartment ends; here it only has to be there.
class Spy final : public IInitializeSpy {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IInitializeSpy);
        *ppv = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP PreInitialize(DWORD, DWORD) override { return S_OK; }
    STDMETHODIMP PostInitialize(HRESULT hr, DWORD, DWORD) override { return hr; }
    STDMETHODIMP PreUninitialize(DWORD) override { return S_OK; }
    STDMETHODIMP PostUninitialize(DWORD) override { return S_OK; }
};

Spy s_spy;

UniqueHandle MakeEvent() {
    return UniqueHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
}

}  // namespace

STDMETHODIMP BareClient::QueryInterface(REFIID iid, void** ppv) {
    const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(ICOMCallbackGate);
    *ppv = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
}

bool BareClient::IsSingleThreaded() const {
    APTTYPE type = APTTYPE_MTA;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    CoGetApartmentType(&type, &qualifier);
    return type == APTTYPE_STA || type == APTTYPE_MAINSTA;
}

DWORD BareClient::RegisterFactory() {
    const IID& iid = __uuidof(ICOMCallbackGate);
    ComPtr<IUnknown> spFactory;
    PrxDllGetClassObject(iid, IID_PPV_ARGS(&spFactory));
    DWORD cookie = 0;
    CoRegisterClassObject(iid, spFactory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                          &cookie);
    CoRegisterPSClsid(iid, iid);
    return cookie;
}

void BareClient::WaitLettingCallsIn(std::initializer_list<HANDLE> handles) {
    const UINT message = IsSingleThreaded() ? RegisterWindowMessageW(L"KORA4.Twin") : 0;
    if (message)
        PostThreadMessageW(GetCurrentThreadId(), message, 0, 0);
    DWORD index = 0;
    CoWaitForMultipleHandles(COWAIT_DEFAULT, INFINITE, static_cast<ULONG>(handles.size()),
                             const_cast<HANDLE*>(handles.begin()), &index);
    MSG taken;
    if (message)
        PeekMessageW(&taken, reinterpret_cast<HWND>(-1), message, message, PM_REMOVE);
}

void BareClient::Start() {
    m_stop = MakeEvent();
    m_exited = MakeEvent();
    m_ready = MakeEvent();
    CoIncrementMTAUsage(&m_usage);
    if (IsSingleThreaded())
        CoRegisterInitializeSpy(&s_spy, &m_spyCookie);
    m_factoryCookie = RegisterFactory();
    CoMarshalInterThreadInterfaceInStream(__uuidof(ICOMCallbackGate), this,
                                          m_spStream.ReleaseAndGetAddressOf());
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(&s_spy), &m_module);
    m_thread.Reset(CreateThread(nullptr, 0, &Watch, this, 0, nullptr));
    WaitLettingCallsIn({m_ready.Get(), m_thread.Get()});

    m_mutex.Reset(CreateMutexW(nullptr, FALSE, m_place.MutexName().c_str()));
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_place.StaticPath().c_str(), 0, nullptr, 0,
                    KEY_READ | KEY_WRITE, nullptr, m_static.Put(), nullptr);
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_place.DynamicPath().c_str(), 0, nullptr, 0,
                    KEY_READ | KEY_WRITE, nullptr, m_dynamic.Put(), nullptr);
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_place.AppPath().c_str(), 0, KEY_READ, m_app.Put());
    m_bare.Number(m_place.traceWord);
    bare::LoadAll(m_bare);
}

void BareClient::Stop() {
    SetEvent(m_stop.Get());
    GetProcAddress(GetModuleHandleW(L"ole32.dll"), "CoGetCancelObject");
    WaitLettingCallsIn({m_thread.Get(), m_exited.Get()});
    WaitForSingleObject(m_thread.Get(), INFINITE);
    if (m_factoryCookie)
        CoRevokeClassObject(m_factoryCookie);
    for (UniqueHandle* const pHandle : {&m_stop, &m_exited, &m_ready, &m_thread})
        pHandle->Reset();
    if (m_spyCookie.QuadPart != 0)
        CoRevokeInitializeSpy(m_spyCookie);
    m_spyCookie.QuadPart = 0;
    CoDecrementMTAUsage(m_usage);
    m_app.Reset();
    m_dynamic.Reset();
    m_static.Reset();
    m_mutex.Reset();
}

DWORD WINAPI BareClient::Watch(void* pClient) {
    auto* const pSelf = static_cast<BareClient*>(pClient);
    const HMODULE module = pSelf->m_module;
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    CoEnableCallCancellation(nullptr);
    pSelf->WatchKey();
    CoUninitialize();
    FreeLibraryAndExitThread(module, 0);
}

void BareClient::WatchKey() {
    const DWORD cookie = RegisterFactory();
    ComPtr<ICOMCallbackGate> spGate;
    CoGetInterfaceAndReleaseStream(m_spStream.Detach(), IID_PPV_ARGS(&spGate));
    UniqueRegKey key;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_place.DynamicPath().c_str(), 0, KEY_NOTIFY, key.Put());
    UniqueHandle changed = MakeEvent();
    const auto arm = [&] {
        RegNotifyChangeKeyValue(key.Get(), TRUE, REG_NOTIFY_CHANGE_LAST_SET, changed.Get(),
                                TRUE);
    };
    arm();
    SetEvent(m_ready.Get());
    const HANDLE handles[] = {m_stop.Get(), changed.Get()};
    while (WaitForMultipleObjects(ARRAYSIZE(handles), handles, FALSE, INFINITE) !=
           WAIT_OBJECT_0) {
        arm();
        if (WaitForSingleObject(m_stop.Get(), 0) == WAIT_OBJECT_0)
            break;
        spGate->Callback(0);
    }
    changed.Reset();
    key.Reset();
    spGate.Reset();
    if (cookie)
        CoRevokeClassObject(cookie);
    SetEvent(m_exited.Get());
}

STDMETHODIMP BareClient::Callback(ULONG) {
    bare::Analyse(m_bare, eVolumeTech);
    m_told();
    return S_OK;
}

}  // namespace kora4::bench
