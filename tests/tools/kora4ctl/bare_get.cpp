// SPDX-License-Identifier: MIT
// What a program does at the least to read one setting: the measure of `kora4ctl get`.
#include <kora4api.h>

#include <cstdio>

int wmain() {
    IVeltoKORA4API* api = nullptr;
    BOOL isOn = FALSE;
    HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (SUCCEEDED(hr))
        hr = CoCreateInstance(CLSID_VeltoKORA4APITestCoclass, nullptr, CLSCTX_INPROC_SERVER,
                              IID_IVeltoKORA4API, reinterpret_cast<void**>(&api));
    if (SUCCEEDED(hr))
        hr = api->Initialize();
    if (SUCCEEDED(hr))
        hr = api->GetVeltoEnable(&isOn);
    if (SUCCEEDED(hr))
        std::puts(isOn ? "on" : "off");
    if (api)
        api->Release();
    CoUninitialize();
    return hr == S_OK ? 0 : 1;
}
