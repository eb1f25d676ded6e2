// SPDX-License-Identifier: MIT
// The entry points of the library.
#include <objbase.h>
#include <windows.h>

#include "contract/messages/trace_messages_store.h"
#include "platform/module.h"
#include "server/class_factory.h"
#include "server/class_table.h"
#include "server/registration.h"
#include "trace/trace.h"

namespace {

using namespace kora4;

void TraceReason(DWORD reason) {
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            KALTRACE(msg::cProcessAttach);
            break;
        case DLL_PROCESS_DETACH:
            KALTRACE(msg::cProcessDetach);
            break;
        case DLL_THREAD_ATTACH:
            KALTRACE(msg::cThreadAttach);
            break;
        case DLL_THREAD_DETACH:
            KALTRACE(msg::cThreadDetach);
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
    const trace::ExitLine exitLine(trace::cSiteOf<msg::cDllMainEntry>, __LINE__);
    KALTRACE(msg::cDllMainEntry, reason, pReserved);
    TraceReason(reason);
    if (reason == DLL_PROCESS_ATTACH)
        Module::SetInstance(instance);
    return TRUE;
}

STDAPI DllCanUnloadNow() {
    KALTRACE_RESULT(hr, S_FALSE, "DllCanUnloadNow");
    if (!Module::IsLocked())
        hr = S_OK;
    return hr;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
    KALTRACE(msg::cGetClassObjectEntry, rclsid.Data1, riid.Data1, ppv);
    const HRESULT hr = GetClassObject(rclsid, riid, ppv);
    KALTRACE(msg::cGetClassObjectExit, hr, ppv ? *ppv : nullptr);
    return hr;
}

STDAPI DllRegisterServer() {
    KALTRACE_RESULT(hr, S_OK, "DllRegisterServer");
    hr = RegisterModule();
    if (SUCCEEDED(hr))
        hr = OnRegisterServer();
    return hr;
}

STDAPI DllUnregisterServer() {
    KALTRACE_RETURN("DllUnregisterServer", UnregisterModule());
}

}  // extern "C"
