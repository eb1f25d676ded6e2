// SPDX-License-Identifier: MIT
// The spy on COM initialisation that notices the last CoUninitialize of a single-threaded
// apartment before it takes effect.
#include "monitor/apartment_end.h"

#include <objbase.h>

#include "monitor/apartment.h"
#include "monitor/gate_factory.h"
#include "platform/com_object.h"

namespace kora4 {

// The platform may keep it longer than a monitor that was released on a thread outside the
// apartment.
class ApartmentEnd::Spy : public IInitializeSpy {
  public:
    // Null: nobody is notified.
    void SetListener(ApartmentEndListener* pListener) { m_pListener = pListener; }

    void* FindInterface(REFIID iid) {
        const bool isKnown = iid == __uuidof(IUnknown) || iid == __uuidof(IInitializeSpy);
        return isKnown ? static_cast<IInitializeSpy*>(this) : nullptr;
    }

    STDMETHODIMP PreInitialize(DWORD, DWORD) override { return S_OK; }
    STDMETHODIMP PostInitialize(HRESULT hr, DWORD, DWORD) override { return hr; }
    STDMETHODIMP PreUninitialize(DWORD entered) override {
        const Microsoft::WRL::ComPtr<Spy> spSelf(this);
        if (entered != 1)
            return S_OK;
        if (m_pListener)
            m_pListener->OnApartmentEnd();
        // The registration left by a monitor that was released on a thread outside the
        // apartment.
        GateFactoryRegistration::RevokeLeft();
        return S_OK;
    }
    STDMETHODIMP PostUninitialize(DWORD) override { return S_OK; }

  protected:
    ~Spy() = default;

  private:
    ApartmentEndListener* m_pListener = nullptr;
};

ApartmentEnd::ApartmentEnd() = default;

ApartmentEnd::~ApartmentEnd() {
    Unwatch();
}

HRESULT ApartmentEnd::Watch(ApartmentEndListener* pListener) {
    if (m_spSpy || CurrentApartment() != GetCurrentThreadId())
        return S_OK;
    ComObject<Spy>* pSpy = nullptr;
    HRESULT hr = ComObject<Spy>::Create(&pSpy);
    if (FAILED(hr))
        return hr;
    *m_spSpy.GetAddressOf() = pSpy;
    pSpy->SetListener(pListener);
    hr = CoRegisterInitializeSpy(pSpy, &m_cookie);
    if (FAILED(hr))
        m_spSpy.Reset();
    return hr;
}

void ApartmentEnd::Unwatch() {
    if (!m_spSpy)
        return;
    m_spSpy->SetListener(nullptr);
    CoRevokeInitializeSpy(m_cookie);
    m_spSpy.Reset();
}

}  // namespace kora4
