// SPDX-License-Identifier: MIT
// A client of the built library: the DLL beside the program, its objects, its callback.
#ifndef KORA4_BENCH_CLIENT_H
#define KORA4_BENCH_CLIENT_H

#include <windows.h>
#include <wrl/client.h>

#include <string>

#include "veltokora4api.h"

namespace kora4::bench {

// The library, loaded from the program's own folder. It stays loaded.
class Library {
  public:
    Library();

    HMODULE Module() const { return m_module; }
    const std::wstring& Path() const { return m_path; }
    // An object that is not initialised.
    Microsoft::WRL::ComPtr<IVeltoKORA4API> Create() const;
    Microsoft::WRL::ComPtr<IVeltoKORA4API> Initialized() const;

  private:
    std::wstring m_path;
    HMODULE m_module = nullptr;
    Microsoft::WRL::ComPtr<IClassFactory> m_spFactory;
};

// The callback of a client that only wants to know when it is called. It lives as long as
// whoever made it says: references are not counted.
class Callback : public IVeltoKORA4APICallback {
  public:
    virtual ~Callback() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP OnActiveProfileChange(LONG) override { return Called(); }
    STDMETHODIMP OnEnableStateChange(BOOL) override { return Called(); }
    STDMETHODIMP OnCustomProfileTableChange() override { return Called(); }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology, BOOL) override {
        return Called();
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion*) override { return Called(); }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData*) override { return Called(); }

  protected:
    virtual HRESULT Called() = 0;
};

// Takes messages, COM calls among them, until the event is set or the time is over.
bool PumpUntil(HANDLE event, DWORD milliseconds);

}  // namespace kora4::bench

#endif  // KORA4_BENCH_CLIENT_H
