// What the process looked like when an API object was made, and which thread uses its
// callback lock: lines for diagnosis, nothing reads the members back.
#ifndef KORA4_API_PROCESS_TRACK_H
#define KORA4_API_PROCESS_TRACK_H

#include <windows.h>

namespace kora4 {

class ProcessTrack {
  public:
    ProcessTrack();

    void Enter() const;
    void Leave() const;

    DWORD ProcessID() const { return m_processID; }
    DWORD HandleCount() const { return m_handleCount; }

  private:
    DWORD m_processID;
    DWORD m_handleCount = 0;  // open handles of the process; 0 when it would not say
};

}  // namespace kora4

#endif  // KORA4_API_PROCESS_TRACK_H
