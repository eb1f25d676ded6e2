// SPDX-License-Identifier: MIT
// What comes before the first call: an apartment, and the object from the registered library
// or from a file. Include kora4.hpp.
#ifndef KORA4_ACTIVATION_HPP
#define KORA4_ACTIVATION_HPP

#include <wrl/client.h>

#include <utility>

#include "kora4/lock_hold.hpp"
#include "kora4/result.hpp"
#include "kora4api.h"

namespace kora4 {
inline namespace v1 {

// The two kinds of apartments.
enum class ApartmentKind {
    eSingleThreaded,  // notifications come in when this thread takes messages
    eMultithreaded    // notifications come on threads of the library's
};

// The apartment of the calling thread for the length of a scope. Make it before the first Api
// and let it go after the last one, on the thread that made it.
class ApartmentGuard {
  public:
    // Status() says whether the thread is in the apartment.
    explicit ApartmentGuard(ApartmentKind kind) noexcept
        : m_status(CoInitializeEx(nullptr, kind == ApartmentKind::eSingleThreaded
                                               ? COINIT_APARTMENTTHREADED
                                               : COINIT_MULTITHREADED)) {}
    ~ApartmentGuard() {
        if (!m_status.HasFailed())
            CoUninitialize();
    }
    ApartmentGuard(const ApartmentGuard&) = delete;
    ApartmentGuard& operator=(const ApartmentGuard&) = delete;

    // Has not failed: the thread is in the apartment (S_FALSE: it was before). Otherwise the
    // thread stays where it was; RPC_E_CHANGED_MODE: in an apartment of the other kind.
    kora4::Status Status() const noexcept { return m_status; }

  private:
    kora4::Status m_status;
};

namespace detail {

// Loads of a library that could not be given back yet, because an object still lived.
struct OwedLoads {
    SRWLOCK lock = SRWLOCK_INIT;
    HMODULE module = nullptr;
    unsigned count = 0;
};
inline OwedLoads g_owedLoads;

// One load of the library from a path. It is given back when the library says that nothing
// needs its code any more, or with the last of several loads; objects that outlive them all
// keep the library in the process.
class Module {
  public:
    Module() noexcept = default;
    explicit Module(HMODULE module) noexcept : m_module(module) {}
    Module(Module&& other) noexcept : m_module(std::exchange(other.m_module, nullptr)) {}
    void Swap(Module& other) noexcept { std::swap(m_module, other.m_module); }
    ~Module() {
        using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();
        const auto pCanUnloadNow = Find<CanUnloadNow>("DllCanUnloadNow");
        if (!m_module)
            return;
        OwedLoads& owed = g_owedLoads;
        const LockHold hold(owed.lock);
        if (owed.count == 0)
            owed.module = m_module;
        if (pCanUnloadNow && pCanUnloadNow() == S_FALSE) {
            owed.count += owed.module == m_module;
            return;
        }
        for (; owed.module == m_module && owed.count > 0; --owed.count)
            FreeLibrary(m_module);
        FreeLibrary(m_module);
    }

    explicit operator bool() const noexcept { return m_module != nullptr; }

    // As GetProcAddress; null also without a library.
    template <typename Function>
    Function Find(const char* name) const noexcept {
        if (!m_module)
            return nullptr;
        return reinterpret_cast<Function>(
            reinterpret_cast<void*>(GetProcAddress(m_module, name)));
    }

    HRESULT CreateApi(IVeltoKORA4API** ppApi) const noexcept {
        using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
        const auto pGetClassObject = Find<GetClassObject>("DllGetClassObject");
        if (!pGetClassObject)
            return HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND);
        Microsoft::WRL::ComPtr<IClassFactory> factory;
        const HRESULT hr =
            pGetClassObject(__uuidof(VeltoKORA4APITestCoclass), __uuidof(IClassFactory),
                            reinterpret_cast<void**>(factory.GetAddressOf()));
        if (FAILED(hr))
            return hr;
        return factory->CreateInstance(nullptr, __uuidof(IVeltoKORA4API),
                                       reinterpret_cast<void**>(ppApi));
    }

  private:
    HMODULE m_module = nullptr;
};

}  // namespace detail

}  // namespace v1
}  // namespace kora4

#endif  // KORA4_ACTIVATION_HPP
