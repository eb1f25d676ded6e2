// SPDX-License-Identifier: MIT
// What the process looked like when an API object was made, and which thread uses its
// callback lock: lines for diagnosis and nothing else.
#pragma once

namespace kora4 {

// Stateless. The constructor writes lines about the process, Enter and Leave about the calling
// thread. With their categories off they write nothing.
class ProcessTrack {
  public:
    ProcessTrack();

    static void Enter();
    static void Leave();
};

}  // namespace kora4
