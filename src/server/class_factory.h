// SPDX-License-Identifier: MIT
// The class object of a served class.
#pragma once

#include <unknwn.h>
#include <windows.h>

#include "server/class_table.h"

namespace kora4 {

// Owned by the client that asked for it. Has no state that changes: any thread may use it.
class ClassFactory : public IClassFactory {
  public:
    // A new factory of `served`, queried for `iid`.
    static HRESULT Create(const ServedClass& served, REFIID iid, void** ppv);

    // IClassFactory. CreateInstance gives CLASS_E_NOAGGREGATION with an outer object.
    STDMETHODIMP CreateInstance(IUnknown* pOuter, REFIID iid, void** ppv) override;
    // Adds to or takes from the module's lock count.
    STDMETHODIMP LockServer(BOOL lock) override;

  protected:
    ClassFactory() = default;
    ~ClassFactory() = default;

    void* FindInterface(REFIID iid);

  private:
    const ServedClass* m_served = nullptr;
};

}  // namespace kora4
