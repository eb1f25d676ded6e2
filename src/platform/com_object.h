// The reference-counted wrapper that makes a COM object of a class.
#ifndef KORA4_PLATFORM_COM_OBJECT_H
#define KORA4_PLATFORM_COM_OBJECT_H

#include <unknwn.h>
#include <windows.h>

#include <atomic>
#include <climits>
#include <new>

#include "platform/module.h"

namespace kora4 {

// `T` derives from the interfaces it implements, leaves AddRef and Release to the wrapper
// and has `void* FindInterface(REFIID)`: the pointer for an interface (no reference
// taken), IUnknown included, or null. The wrapper holds a module lock from before the
// construction of `T` until after its destruction. A `T` with a `FinalRelease` has it called
// when the last reference has gone, before the destruction: references can still be taken
// and dropped in there, by calls that are on their way.
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
        const LONG left = m_references.fetch_sub(1) - 1;
        if (left == 0) {
            // A reference that the destruction takes and drops must not destroy again.
            m_references.store(LONG_MIN / 2);
            if constexpr (requires(T & object) { object.FinalRelease(); })
                T::FinalRelease();
            delete this;
        }
        return static_cast<ULONG>(left);
    }

  private:
    ComObject() = default;
    ~ComObject() = default;

    std::atomic<LONG> m_references{1};
};

}  // namespace kora4

#endif  // KORA4_PLATFORM_COM_OBJECT_H
