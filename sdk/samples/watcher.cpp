// SPDX-License-Identifier: MIT
// watcher: is told of every change of the settings and prints it, and shows the engine's
// levels as a display would, until its input ends.
//
//   TIME|ready|PROCESS             the callback is registered
//   TIME|told|SETTING|VALUE        a callback came
//   TIME|levels|LEVELS|BARS        the levels are other ones than a sampling period ago
//
// One line builds it here:
//
//   x86_64-w64-mingw32-g++ -std=c++20 -static -I../include watcher.cpp sample_client.cpp -o watcher.exe -L../lib -lkora4_sdk_guids -lole32 -luuid
#include <cstdio>

#include "sample_client.h"

namespace {

using sample::Report;

// Lives on the main thread; the API object holds a reference while it is registered.
class Callback final : public IVeltoKORA4APICallback {
  public:
    explicit Callback(IVeltoKORA4API& api)
        : m_api(api), m_table(sample::ReadProfileTable(api)) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (!ppv) {
            return E_POINTER;
        }
        const bool known =
            IsEqualIID(iid, __uuidof(IUnknown)) || IsEqualIID(iid, IID_IVeltoKORA4APICallback);
        *ppv = known ? this : nullptr;
        if (!known) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    STDMETHODIMP OnActiveProfileChange(LONG profileID) override {
        return Told(sample::cActiveProfile, sample::ProfileWord(profileID));
    }
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) override {
        return Told(sample::cEnable, sample::SwitchWord(onElseOff));
    }
    // The call does not say which profile: what differs from the last table is what changed.
    STDMETHODIMP OnCustomProfileTableChange() override {
        const sample::Settings table = sample::ReadProfileTable(m_api);
        for (const auto& [setting, value] : table) {
            if (m_table[setting] != value) {
                Told(setting, value);
            }
        }
        m_table = table;
        return S_OK;
    }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) override {
        return Told(sample::SwitchName(technology), sample::SwitchWord(onElseOff));
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) override {
        return Told(sample::ValueName(pPatchValue->m_technology),
                    sample::ValueWord(*pPatchValue));
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) override {
        return Told(sample::ValueName(eGraphicEQ), sample::CurveWord(*pGraphicData));
    }

  private:
    ~Callback() = default;

    static HRESULT Told(const std::string& setting, const std::string& value) {
        Report(sample::Now(), "told", setting + "|" + value);
        return S_OK;
    }

    IVeltoKORA4API& m_api;
    sample::Settings m_table;
    ULONG m_references = 0;
};

// A display of the levels. Nobody is told of them: a display reads them, every sampling
// period.
class Display {
  public:
    explicit Display(IVeltoKORA4API& api) : m_api(api) { SetClock(); }
    ~Display() { KillTimer(nullptr, m_timer); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    void OnTimer() {
        float gains[KORA4_VISUALIZATION_BANDS];
        float excitations[KORA4_VISUALIZATION_BANDS];
        // S_FALSE: the engine has published nothing, and the arrays are not filled.
        if (m_api.GetVisualizationData(gains, excitations) == S_OK) {
            const std::string levels = sample::LevelsWord(gains, excitations);
            if (levels != m_levels) {
                Report(sample::Now(), "levels", levels + "|" + sample::LevelsBars(gains));
                m_levels = levels;
            }
        }
        SetClock();
    }

  private:
    // The period may be another one than last time.
    void SetClock() {
        ULONG milliseconds = 50;
        m_api.GetVisualizationSamplingPeriod(&milliseconds);
        m_timer = SetTimer(nullptr, m_timer, milliseconds, nullptr);
    }

    IVeltoKORA4API& m_api;
    UINT_PTR m_timer = 0;
    std::string m_levels;
};

// Waits for the end of the input and then ends the message loop of the main thread.
DWORD WINAPI WaitForEndOfInput(void* mainThread) {
    while (std::getchar() != EOF) {
    }
    PostThreadMessageW(static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(mainThread)), WM_QUIT, 0,
                       0);
    return 0;
}

int Fail(const char* what, HRESULT hr) {
    std::fprintf(stderr, "watcher: %s: 0x%08lx\n", what, static_cast<unsigned long>(hr));
    return 1;
}

// Callbacks arrive while this thread takes its messages.
void PumpUntilQuit(Display& display) {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message == WM_TIMER && !message.hwnd) {
            display.OnTimer();
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

int main() {
    const sample::Apartment apartment;
    if (FAILED(apartment.Result())) {
        return Fail("CoInitializeEx", apartment.Result());
    }
    Microsoft::WRL::ComPtr<IVeltoKORA4API> api;
    HRESULT hr = sample::CreateApi(api);
    if (FAILED(hr)) {
        return Fail("the library cannot be used (is it registered?)", hr);
    }
    const Microsoft::WRL::ComPtr<IVeltoKORA4APICallback> callback(new Callback(*api.Get()));
    hr = api->RegisterChangeNotifications(callback.Get());
    if (FAILED(hr)) {
        return Fail("RegisterChangeNotifications", hr);
    }
    const HANDLE input =
        CreateThread(nullptr, 0, WaitForEndOfInput,
                     reinterpret_cast<void*>(ULONG_PTR{GetCurrentThreadId()}), 0, nullptr);
    if (!input) {
        return Fail("CreateThread", HRESULT_FROM_WIN32(GetLastError()));
    }
    CloseHandle(input);
    Display display(*api.Get());
    Report(sample::Now(), "ready", std::to_string(GetCurrentProcessId()));
    PumpUntilQuit(display);
    api->UnregisterChangeNotifications();
    return 0;
}
