// SPDX-License-Identifier: MIT
// follow_raw: what follow.cpp does, with the interfaces themselves. One line builds it here:
//
//   x86_64-w64-mingw32-g++ -static -I../include follow_raw.cpp -o follow_raw.exe -lole32 -luuid
#define INITGUID  // this source defines the GUIDs
#include <kora4api.h>

#include <cstdio>

namespace {

void Show(LONG profile) {
    std::printf("profile %ld\n", profile);
    std::fflush(stdout);
}

// Lives on the stack of main, which outlives the registration: references are not counted.
class Follower final : public IVeltoKORA4APICallback {
  public:
    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IVeltoKORA4APICallback))
            return E_NOINTERFACE;
        *ppv = this;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP OnActiveProfileChange(LONG profileID) override {
        Show(profileID);
        return S_OK;
    }
    // What is of no interest succeeds all the same: a failing result, E_NOTIMPL too, ends all
    // notifications.
    STDMETHODIMP OnEnableStateChange(BOOL) override { return S_OK; }
    STDMETHODIMP OnCustomProfileTableChange() override { return S_OK; }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology, BOOL) override { return S_OK; }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion*) override { return S_OK; }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData*) override { return S_OK; }
};

HRESULT Follow() {
    IVeltoKORA4API* pApi = nullptr;
    HRESULT hr = CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IVeltoKORA4API, reinterpret_cast<void**>(&pApi));
    if (FAILED(hr))
        return hr;
    Follower follower;
    LONG profile = 0;
    hr = pApi->Initialize();
    if (SUCCEEDED(hr))
        hr = pApi->RegisterChangeNotifications(&follower);
    if (SUCCEEDED(hr))
        hr = pApi->GetActiveProfile(&profile);
    if (SUCCEEDED(hr)) {
        Show(profile);
        std::getchar();
        pApi->UnregisterChangeNotifications();
    }
    pApi->Release();
    return hr;
}

}  // namespace

int main() {
    HRESULT hr = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (SUCCEEDED(hr)) {
        hr = Follow();
        CoUninitialize();
    }
    if (FAILED(hr))
        std::fprintf(stderr, "follow_raw: 0x%08lX\n", static_cast<unsigned long>(hr));
    return FAILED(hr) ? 1 : 0;
}
