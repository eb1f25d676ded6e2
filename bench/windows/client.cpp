// SPDX-License-Identifier: MIT
// Loads the library beside the program, makes objects and receives their notifications.
#include "windows/client.h"

#include <bit>

#include "windows/place.h"

namespace kora4::bench {

using Microsoft::WRL::ComPtr;

Library::Library() {
    wchar_t path[MAX_PATH * 4];
    const DWORD length = GetModuleFileNameW(nullptr, path, ARRAYSIZE(path));
    m_path.assign(path, length);
    m_path.replace(m_path.find_last_of(L'\\') + 1, std::wstring::npos, L"QXA64T.dll");
    m_module = LoadLibraryW(m_path.c_str());
    using Get = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const FARPROC function = m_module ? GetProcAddress(m_module, "DllGetClassObject") : nullptr;
    if (!function || FAILED(std::bit_cast<Get>(function)(CLSID_VeltoKORA4APITestCoclass,
                                                         IID_PPV_ARGS(&m_spFactory))))
        Fail("QXA64T.dll is not beside the program, or does not work");
}

ComPtr<IVeltoKORA4API> Library::Create() const {
    ComPtr<IVeltoKORA4API> spApi;
    if (FAILED(m_spFactory->CreateInstance(nullptr, IID_PPV_ARGS(&spApi))))
        Fail("no object can be created");
    return spApi;
}

ComPtr<IVeltoKORA4API> Library::Initialized() const {
    ComPtr<IVeltoKORA4API> spApi = Create();
    if (spApi->Initialize() != S_OK)
        Fail("an object cannot be initialised");
    return spApi;
}

STDMETHODIMP Callback::QueryInterface(REFIID iid, void** ppv) {
    if (!ppv)
        return E_POINTER;
    const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IVeltoKORA4APICallback);
    *ppv = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
}

bool PumpUntil(HANDLE event, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        const ULONGLONG now = GetTickCount64();
        const DWORD left = now < end ? static_cast<DWORD>(end - now) : 0;
        const DWORD result =
            MsgWaitForMultipleObjectsEx(1, &event, left, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        if (result != WAIT_OBJECT_0 + 1)
            return result == WAIT_OBJECT_0;
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
}

}  // namespace kora4::bench
