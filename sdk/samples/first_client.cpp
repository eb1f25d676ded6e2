// SPDX-License-Identifier: MIT
// first_client: the least that a client does. It prints the number of the active profile and
// makes Music the active one. One line builds it here:
//
//   x86_64-w64-mingw32-g++ -static -I../include first_client.cpp -o first_client.exe -L../lib -lkora4_sdk_guids -lole32 -luuid
#include <kora4api.h>
#include <wrl/client.h>

#include <cstdio>

namespace {

HRESULT UseMusic() {
    Microsoft::WRL::ComPtr<IVeltoKORA4API> api;
    HRESULT hr = CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_PPV_ARGS(&api));
    if (SUCCEEDED(hr)) {
        hr = api->Initialize();  // before any other call
    }
    LONG profile = 0;
    if (SUCCEEDED(hr)) {
        hr = api->GetActiveProfile(&profile);
    }
    if (FAILED(hr)) {
        return hr;
    }
    std::printf("The active profile is %ld.\n", profile);

    hr = api->SetActiveProfile(KORA4_PROFILE_MUSIC);
    if (hr == S_OK) {
        std::printf("Music is now active; every other client is notified.\n");
    } else if (hr == KORA4_S_DEMO_MODE_ACTIVE) {
        std::printf("A demo is running, so nothing has changed.\n");
    }
    return hr;
}

}  // namespace

int main() {
    HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (SUCCEEDED(hr)) {
        hr = UseMusic();
        CoUninitialize();
    }
    if (FAILED(hr)) {
        std::fprintf(stderr, "first_client: 0x%08lx\n", static_cast<unsigned long>(hr));
        return 1;
    }
    return 0;
}
