// SPDX-License-Identifier: MIT
// The spy on COM initialisation that notices the last CoUninitialize of a single-threaded
// apartment before it takes effect.
#include "monitor/apartment_end.h"

#include <objbase.h>

#include <atomic>
#include <new>

#include "monitor/apartment.h"
#include "monitor/gate_factory.h"
#include "platform/module.h"

namespace kora4 {

class ApartmentEnd::Spy final : public IInitializeSpy {
  public:
    explicit Spy(ApartmentEndListener* pListener) : m_pListener(pListener) {}

    void Forget() { m_pListener = nullptr; }

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (!ppv)
            return E_POINTER;
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IInitializeSpy);
        *ppv = known ? static_cast<IInitializeSpy*>(this) : nullptr;
        if (!known)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override {
        return static_cast<ULONG>(m_references.fetch_add(1) + 1);
    }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG left = m_references.fetch_sub(1) - 1;
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }

    STDMETHODIMP PreInitialize(DWORD, DWORD) override { return S_OK; }
    STDMETHODIMP PostInitialize(HRESULT hr, DWORD, DWORD) override { return hr; }
    STDMETHODIMP PreUninitialize(DWORD entered) override {
        const Microsoft::WRL::ComPtr<Spy> spSelf(this);
        if (entered != 1)
            return S_OK;
        if (m_pListener)
            m_pListener->OnApartmentEnd();
        // What a monitor left that was dropped on a thread which is not the apartment's.
        GateFactoryRegistration::RevokeLeft();
        return S_OK;
    }
    STDMETHODIMP PostUninitialize(DWORD) override { return S_OK; }

  private:
    ~Spy() = default;

    // The platform may keep it longer than the monitor does, which dropped it on a thread
    // that is not the apartment's.
    ModuleLock m_moduleLock;
    ApartmentEndListener* m_pListener;
    std::atomic<LONG> m_references{1};
};

ApartmentEnd::ApartmentEnd() = default;

ApartmentEnd::~ApartmentEnd() {
    Unwatch();
}

HRESULT ApartmentEnd::Watch(ApartmentEndListener* pListener) {
    if (m_spSpy || CurrentApartment() != GetCurrentThreadId())
        return S_OK;
    *m_spSpy.GetAddressOf() = new (std::nothrow) Spy(pListener);
    if (!m_spSpy)
        return E_OUTOFMEMORY;
    const HRESULT hr = CoRegisterInitializeSpy(m_spSpy.Get(), &m_cookie);
    if (FAILED(hr))
        m_spSpy.Reset();
    return hr;
}

void ApartmentEnd::Unwatch() {
    if (!m_spSpy)
        return;
    m_spSpy->Forget();
    CoRevokeInitializeSpy(m_cookie);
    m_spSpy.Reset();
}

}  // namespace kora4
