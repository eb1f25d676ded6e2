// SPDX-License-Identifier: MIT
// The reference-counted wrapper that makes a COM object of a class.
#pragma once

#include <unknwn.h>
#include <windows.h>

#include <atomic>
#include <climits>
#include <new>

#include "platform/module.h"

namespace kora4 {

// True for a count that AddRef returns after the last reference has gone.
constexpr bool IsGoing(ULONG references) {
    return references > static_cast<ULONG>(LONG_MAX);
}

// `T` derives from the interfaces it implements, leaves AddRef and Release to the wrapper
// and has `void* FindInterface(REFIID)`: the pointer for an interface (no reference
// taken), IUnknown included, or null. The wrapper holds a module lock from before the
// construction of `T` until after its destruction. A `T` with a `FinalRelease` has it called
// when the last reference has gone, before the destruction: references can still be taken
// and dropped in there, by calls that are on their way. AddRef then answers with a count
// for which IsGoing is true.
template <typename T>
class ComObject final : private ModuleLock, public T {
  public:
    // Hands out the object with one reference; E_OUTOFMEMORY without memory.
    static HRESULT Create(ComObject** ppObject) {
        *ppObject = new (std::nothrow) ComObject;
        return *ppObject ? S_OK : E_OUTOFMEMORY;
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override {
        if (!ppv)
            return E_POINTER;
        *ppv = T::FindInterface(iid);
        if (!*ppv)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    STDMETHODIMP_(ULONG) AddRef() override {
        return static_cast<ULONG>(m_references.fetch_add(1) + 1);
    }

    STDMETHODIMP_(ULONG) Release() override {
        // From the last reference to the destruction in one step: a reference that another
        // thread takes and drops meanwhile, or the destruction itself, must not destroy again.
        LONG before = m_references.load();
        while (!m_references.compare_exchange_weak(before, before == 1 ? cGoing : before - 1)) {
        }
        if (before == 1) {
            if constexpr (requires(T & object) { object.FinalRelease(); })
                T::FinalRelease();
            delete this;
        }
        return static_cast<ULONG>(before - 1);
    }

  private:
    ComObject() = default;
    ~ComObject() = default;

    // Far from 0 in both directions.
    static constexpr LONG cGoing = LONG_MIN / 2;

    std::atomic<LONG> m_references{1};
};

}  // namespace kora4
