// SPDX-License-Identifier: MIT
// The registration of the gate's proxy/stub factory in an apartment.
#pragma once

#include <windows.h>

#include "monitor/apartment.h"
#include "platform/non_copyable.h"

namespace kora4 {

// One monitor's share in the registration of the factory of ICOMCallbackGate in one apartment.
// The interface is not in the system's interface table, so every apartment that marshals or
// unmarshals the gate needs the factory registered there.
//
// All monitors of the process share one registration per apartment, counted in a table of the
// module: Wine 8 keeps only one class object per class and apartment (Windows keeps several),
// and a monitor that ends must not take the factory from one that starts. No other lock is
// taken under the table's lock.
//
// Register and Revoke are called on a thread of the apartment. If Revoke is called elsewhere,
// it gives up the share, but the registration stays for the apartment's next monitor, or until
// the apartment ends (RevokeLeft). It points into the module, which stays locked meanwhile.
class GateFactoryRegistration : NonCopyable {
  public:
    ~GateFactoryRegistration() { Revoke(); }

    // Gives up an earlier share, then registers in the calling thread's apartment.
    HRESULT Register();

    // Gives the share up; with the last one of an apartment the registration ends. Harmless
    // without a share.
    void Revoke();

    // Ends a registration that was left in the calling thread's apartment without a share.
    static void RevokeLeft();

    // Whether this holds a share.
    bool IsRegistered() const { return m_registered; }
    // Meaningful only while registered.
    ApartmentId Apartment() const { return m_apartment; }

  private:
    bool m_registered = false;
    ApartmentId m_apartment = cMultithreadedApartment;
    DWORD m_generation = 0;
};

}  // namespace kora4
