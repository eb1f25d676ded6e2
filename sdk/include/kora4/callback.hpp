// SPDX-License-Identifier: MIT
// The base class of a client's callback. Include kora4.hpp.
#ifndef KORA4_CALLBACK_HPP
#define KORA4_CALLBACK_HPP

#include <wrl/client.h>

#include <atomic>
#include <utility>

#include "kora4/echo_guard.hpp"
#include "kora4/values.hpp"
#include "kora4api.h"

namespace kora4 {
inline namespace v1 {

// A COM interface has no destructor: Release destroys the object.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

// Is told of what others change. Derive from it, override the handlers of interest, make the
// object with MakeCallback and pass it to Api::RegisterChangeNotifications or
// Api::RegisterGuarded.
//
// Handlers run in the apartment in which the client registered: in a single-threaded one on its
// thread, when that takes messages; in the multithreaded one on a thread of the library's. They
// must not block, and may call every method of Api, unregister, or let the Api go. The library
// is always answered with success, so notifications never end because of a handler: an
// exception that leaves one is handed to OnException and goes no further.
class Callback : public IVeltoKORA4APICallback {
  public:
    Callback(const Callback&) = delete;
    Callback& operator=(const Callback&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) noexcept override {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        if (!IsEqualGUID(iid, __uuidof(IUnknown)) &&
            !IsEqualGUID(iid, __uuidof(IVeltoKORA4APICallback)))
            return E_NOINTERFACE;
        *ppv = static_cast<IVeltoKORA4APICallback*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

    // The values that this callback was told; see Api::RegisterGuarded.
    EchoGuard& Guard() noexcept { return m_guard; }

  protected:
    Callback() noexcept = default;
    virtual ~Callback() = default;

    // Another profile is active: read everything again. Nothing is told about single
    // technologies with it. `profile`: KORA4_PROFILE_...
    virtual void OnProfile(LONG /*profile*/) {}

    // The master enable changed: whether audio processing is on.
    virtual void OnEnable(bool /*isOn*/) {}

    // A custom profile was created, renamed or deleted: read the table again.
    virtual void OnProfileTable() {}

    // A technology of the active profile was switched.
    virtual void OnSwitch(KORA4APITechnology /*technology*/, bool /*isOn*/) {}

    // A value of the active profile was set; it may be the one that is known already.
    virtual void OnValue(const Value& /*value*/) {}

    // The graphic equalizer of the active profile was set.
    virtual void OnGraphicEq(const Bands& /*bands*/) {}

    // An exception left a handler; `throw;` raises it again to see which. Runs on the
    // handler's thread.
    virtual void OnException() noexcept {}

  private:
    STDMETHODIMP OnActiveProfileChange(LONG profileID) noexcept final {
        m_guard.Forget();
        return Run([&] { OnProfile(profileID); });
    }
    STDMETHODIMP OnEnableStateChange(BOOL onElseOff) noexcept final {
        return Run([&] { OnEnable(onElseOff != FALSE); });
    }
    STDMETHODIMP OnCustomProfileTableChange() noexcept final {
        return Run([&] { OnProfileTable(); });
    }
    STDMETHODIMP OnTechnologyOnElseOffChange(KORA4APITechnology technology,
                                             BOOL onElseOff) noexcept final {
        return Run([&] { OnSwitch(technology, onElseOff != FALSE); });
    }
    STDMETHODIMP OnSimplePatchValueChange(KORA4PatchValueUnion* pPatchValue) noexcept final {
        m_guard.Told(*pPatchValue);
        return Run([&] { OnValue(Value(*pPatchValue)); });
    }
    STDMETHODIMP OnGraphicEQChange(GraphicEQData* pGraphicData) noexcept final {
        m_guard.Told(*pGraphicData);
        return Run([&] { OnGraphicEq(ToBands(*pGraphicData)); });
    }

    template <typename Handler>
    HRESULT Run(Handler handler) noexcept {
#if defined(__cpp_exceptions)
        try {
            handler();
        } catch (...) {
            OnException();
        }
#else
        handler();
#endif
        return S_OK;
    }

    std::atomic<ULONG> m_references{1};
    EchoGuard m_guard;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

// Makes a callback of a class that derives from Callback, with what its constructor takes.
// Lives until the last reference goes: an Api holds one while it is registered. May throw what
// the constructor throws, and std::bad_alloc.
template <typename T, typename... Arguments>
Microsoft::WRL::ComPtr<T> MakeCallback(Arguments&&... arguments) {
    Microsoft::WRL::ComPtr<T> callback;
    // Takes over the first reference; the Attach of mingw-w64 would add one.
    *callback.GetAddressOf() = new T(std::forward<Arguments>(arguments)...);
    return callback;
}

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_CALLBACK_HPP
