// SPDX-License-Identifier: MIT
// Reports that the calling thread is about to leave its single-threaded apartment for good.
#pragma once

#include <objidl.h>
#include <windows.h>
#include <wrl/client.h>

#include "platform/non_copyable.h"

namespace kora4 {

// Is notified of the end of an apartment. Not reference-counted: it outlives its ApartmentEnd.
class ApartmentEndListener {
  public:
    // On the apartment's thread, which can still let calls in.
    virtual void OnApartmentEnd() = 0;

  protected:
    ~ApartmentEndListener() = default;
};

// Calls that wait to enter an apartment may be lost when it ends, and their callers then wait
// for ever (seen under Wine 8). So an object that has callers there is notified in time.
//
// Used on the apartment's thread. Does nothing in other kinds of apartment.
class ApartmentEnd : NonCopyable {
  public:
    ApartmentEnd();
    ~ApartmentEnd();

    // E_OUTOFMEMORY, or the result of the platform. Harmless when already watching.
    HRESULT Watch(ApartmentEndListener* pListener);

    // Stops watching; the listener is no longer notified. Harmless when not watching.
    void Unwatch();

  private:
    class Spy;

    Microsoft::WRL::ComPtr<Spy> m_spSpy;
    ULARGE_INTEGER m_cookie{};
};

}  // namespace kora4
