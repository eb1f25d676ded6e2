// SPDX-License-Identifier: MIT
// A client of the built library: loads the DLL that lies beside the test program, makes API
// objects through its class object, and records what its callback is told.
#ifndef KORA4_TESTS_SUPPORT_COM_CLIENT_H
#define KORA4_TESTS_SUPPORT_COM_CLIENT_H

#include <windows.h>
#include <wrl/client.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "kora4api.h"
#include "platform/handles.h"
#include "support/counted.h"

namespace kora4::test {

inline constexpr DWORD cBoundedWait = 10000;  // milliseconds

// The apartment of the current thread for the length of a scope.
class Apartment {
  public:
    // COINIT_APARTMENTTHREADED or COINIT_MULTITHREADED.
    explicit Apartment(DWORD model);
    ~Apartment();
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

// Lets window messages and COM calls in until `done` says so; false after `milliseconds`.
// `hint` (may be null) is an event that is set when something has happened.
bool PumpUntil(const std::function<bool()>& done, HANDLE hint = nullptr,
               DWORD milliseconds = cBoundedWait);

// The DLL, loaded for the length of a scope. It stays loaded when it still says that it must
// after a bounded wait.
class ApiLibrary {
  public:
    ApiLibrary();
    ~ApiLibrary();
    ApiLibrary(const ApiLibrary&) = delete;
    ApiLibrary& operator=(const ApiLibrary&) = delete;

    bool IsLoaded() const { return m_module != nullptr; }
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** ppv) const;
    HRESULT CanUnloadNow() const;

    // An object that is not initialised; null when the library refuses.
    Microsoft::WRL::ComPtr<IVeltoKORA4API> Create() const;

  private:
    template <typename Function>
    Function* Find(const char* name) const;

    HMODULE m_module = nullptr;
};

// A client's callback. Appends a line for each call to its log, for example
// "OnEnableStateChange(1)"; runs what the test has hung to the call, and returns its result.
class CallbackRecorder final : public Counted<IVeltoKORA4APICallback> {
  public:
    static Microsoft::WRL::ComPtr<CallbackRecorder> Create();

    // `reaction` runs in each call of `method`, after the line is in the log.
    void React(const std::string& method, std::function<HRESULT()> reaction);

    std::vector<std::string> Log() const;
    void ClearLog();
    // Waits, letting calls in, until the log has `count` lines; false when it never has.
    bool WaitForLines(std::size_t count, DWORD milliseconds = cBoundedWait);
    // The same until a line equals `line`.
    bool WaitForLine(const std::string& line, DWORD milliseconds = cBoundedWait);

    // The thread of the last call.
    DWORD CallThread() const { return m_callThread; }
    // Set when the last reference goes; the pointer must live longer than this object.
    void TellDestruction(std::atomic<bool>* pDestroyed) { m_pDestroyed = pDestroyed; }

    STDMETHODIMP OnActiveProfileChange(LONG profileID) override;
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) override;
    STDMETHODIMP OnCustomProfileTableChange() override;
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) override;
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) override;
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) override;

  private:
    CallbackRecorder();
    ~CallbackRecorder();

    HRESULT Record(const std::string& method, const std::string& arguments);

    mutable std::mutex m_mutex;
    std::vector<std::string> m_log;
    std::map<std::string, std::function<HRESULT()>> m_reactions;
    UniqueHandle m_called;
    std::atomic<DWORD> m_callThread{0};
    std::atomic<bool>* m_pDestroyed = nullptr;
};

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_COM_CLIENT_H
