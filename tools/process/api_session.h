// SPDX-License-Identifier: MIT
// The library, as any client uses it.
#ifndef KORA4_PROCESS_API_SESSION_H
#define KORA4_PROCESS_API_SESSION_H

#include <kora4api.h>
#include <wrl/client.h>

namespace kora4::tools {

// A single-threaded apartment and an initialised object in it. Belongs to the thread that
// made it.
class ApiSession {
  public:
    // Failure with eNotReady when the class is not registered, its file cannot be loaded, or
    // the object cannot be initialised.
    ApiSession();
    ~ApiSession();
    ApiSession(const ApiSession&) = delete;
    ApiSession& operator=(const ApiSession&) = delete;

    IVeltoKORA4API* operator->() const { return m_api.Get(); }

    // The initialised object, for as long as the session lives; no reference is added.
    IVeltoKORA4API* Get() const { return m_api.Get(); }

  private:
    // Entered first, left last.
    struct Apartment {
        Apartment();
        ~Apartment();
    } m_apartment;
    Microsoft::WRL::ComPtr<IVeltoKORA4API> m_api;
};

}  // namespace kora4::tools

#endif  // KORA4_PROCESS_API_SESSION_H
