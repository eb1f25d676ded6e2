// SPDX-License-Identifier: MIT
// The class object: makes objects of its class and counts server locks.
#include "server/class_factory.h"

#include <wrl/client.h>

#include "platform/com_object.h"
#include "platform/module.h"
#include "trace/trace.h"

namespace kora4 {

HRESULT ClassFactory::Create(const ServedClass& served, REFIID iid, void** ppv) {
    Microsoft::WRL::ComPtr<ComObject<ClassFactory>> spFactory;
    const HRESULT hr = ComObject<ClassFactory>::Create(spFactory.GetAddressOf());
    if (FAILED(hr))
        return hr;
    spFactory->m_served = &served;
    return spFactory->QueryInterface(iid, ppv);
}

HRESULT ClassFactory::CreateInstance(IUnknown* pOuter, REFIID iid, void** ppv) {
    KALTRACE_RESULT(hr, E_POINTER, "ClassFactory::CreateInstance");
    if (!ppv)
        return hr;
    *ppv = nullptr;
    hr = pOuter ? CLASS_E_NOAGGREGATION : m_served->create(iid, ppv);
    return hr;
}

HRESULT ClassFactory::LockServer(BOOL lock) {
    KALTRACE_RESULT(hr, S_OK, "ClassFactory::LockServer");
    if (lock)
        Module::Lock();
    else
        Module::Unlock();
    return hr;
}

void* ClassFactory::FindInterface(REFIID iid) {
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory))
        return static_cast<IClassFactory*>(this);
    return nullptr;
}

}  // namespace kora4
