// SPDX-License-Identifier: MIT
// The interface through which the registry monitor calls its owner.
#pragma once

#include <windows.h>

namespace kora4 {

// The owner of a monitor. Not reference-counted: the owner ends the monitor before it goes.
class RegKeyMonitorClient {
  public:
    // A value under the watched key was written. Called in the owner's apartment. A
    // failure ends the monitoring.
    virtual HRESULT OnKeyChangeNotify() = 0;

  protected:
    ~RegKeyMonitorClient() = default;
};

}  // namespace kora4
