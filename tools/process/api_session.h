// SPDX-License-Identifier: MIT
// The library, as any client uses it.
#pragma once

#include <kora4.hpp>

namespace kora4::tools {

// A single-threaded apartment and an initialised object in it. Belongs to the thread that
// made it.
class ApiSession {
  public:
    // Failure with eNotReady when the class is not registered, its file cannot be loaded, or
    // the object cannot be initialised.
    ApiSession();
    ApiSession(const ApiSession&) = delete;
    ApiSession& operator=(const ApiSession&) = delete;

    Api& operator*() { return m_api; }
    Api* operator->() { return &m_api; }

  private:
    // Entered first, left last.
    const ApartmentGuard m_apartment;
    Api m_api;
};

}  // namespace kora4::tools
