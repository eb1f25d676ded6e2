// SPDX-License-Identifier: MIT
// What the process looked like when an API object was made, and which thread uses its
// callback lock: lines for diagnosis and nothing else.
#ifndef KORA4_API_PROCESS_TRACK_H
#define KORA4_API_PROCESS_TRACK_H

namespace kora4 {

class ProcessTrack {
  public:
    ProcessTrack();

    static void Enter();
    static void Leave();
};

}  // namespace kora4

#endif  // KORA4_API_PROCESS_TRACK_H
