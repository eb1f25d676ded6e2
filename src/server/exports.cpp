// SPDX-License-Identifier: MIT
// The entry points of the library.
#include <objbase.h>
#include <windows.h>

#include "platform/module.h"
#include "server/class_factory.h"
#include "server/class_table.h"
#include "server/registration.h"
#include "trace/trace.h"

namespace {

using namespace kora4;

constexpr const char* cTag = "KORA4ASLDLL";

void TraceReason(const trace::Site& site, DWORD reason) {
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            KALTRACE(trace::eModuleEvents, site, "DLL_PROCESS_ATTACH\n");
            break;
        case DLL_PROCESS_DETACH:
            KALTRACE(trace::eModuleEvents, site, "DLL_PROCESS_DETACH\n");
            break;
        case DLL_THREAD_ATTACH:
            KALTRACE(trace::eModuleEvents, site, "DLL_THREAD_ATTACH\n");
            break;
        case DLL_THREAD_DETACH:
            KALTRACE(trace::eModuleEvents, site, "DLL_THREAD_DETACH\n");
            break;
        default:
            break;
    }
}

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** ppv) {
    if (!ppv)
        return E_POINTER;
    *ppv = nullptr;
    const ServedClass* const pServed = FindServedClass(clsid);
    return pServed ? ClassFactory::Create(*pServed, iid, ppv) : CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* pReserved) {
    static constexpr trace::Site cSite{cTag, "DllMain"};
    KALTRACE(trace::eModuleEntry, cSite, ">> dwReason: 0x%08x lpReserved: %p\n",
             static_cast<unsigned>(reason), pReserved);
    TraceReason(cSite, reason);
    KALTRACE(trace::eModuleEntry, cSite, "<<\n");
    if (reason == DLL_PROCESS_ATTACH)
        Module::SetInstance(instance);
    return TRUE;
}

STDAPI DllCanUnloadNow() {
    static constexpr trace::Site cSite{cTag, "DllCanUnloadNow"};
    HRESULT hr = S_FALSE;
    trace::Scope scope(cSite, __LINE__, trace::eModuleEntry, trace::eModuleExitResult, &hr);
    if (!Module::IsLocked())
        hr = S_OK;
    return hr;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
    static constexpr trace::Site cSite{cTag, "DllGetClassObject"};
    KALTRACE(trace::eModuleEntry, cSite, ">> rclsid: 0x%08x, riid: 0x%08x ppv: %p\n",
             static_cast<unsigned>(rclsid.Data1), static_cast<unsigned>(riid.Data1),
             static_cast<void*>(ppv));
    const HRESULT hr = GetClassObject(rclsid, riid, ppv);
    KALTRACE(trace::eModuleExitResult, cSite, "<< hr: 0x%08x *ppv: %p\n",
             static_cast<unsigned>(hr), ppv ? *ppv : nullptr);
    return hr;
}

STDAPI DllRegisterServer() {
    static constexpr trace::Site cSite{cTag, "DllRegisterServer"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eModuleEntry, trace::eModuleExitResult, &hr);
    hr = RegisterModule();
    if (SUCCEEDED(hr))
        hr = OnRegisterServer();
    return hr;
}

STDAPI DllUnregisterServer() {
    static constexpr trace::Site cSite{cTag, "DllUnregisterServer"};
    HRESULT hr = S_OK;
    trace::Scope scope(cSite, __LINE__, trace::eModuleEntry, trace::eModuleExitResult, &hr);
    return hr = UnregisterModule();
}

}  // extern "C"
