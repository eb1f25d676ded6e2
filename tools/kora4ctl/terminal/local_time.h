// SPDX-License-Identifier: MIT
// Moments of this machine's clock, in the user's time zone.
#pragma once

#include <windows.h>

#include <string>

namespace kora4::tools {

// A point in time, to the millisecond.
class Moment {
  public:
    Moment() = default;
    explicit Moment(const FILETIME& time);
    // The time of the call.
    static Moment Now();

    std::string Date() const;   // "2031-05-01"
    std::string Time() const;   // "14:03:22"
    std::string Clock() const;  // "14:03:22.123"
    // ISO 8601 with the offset: "2031-05-01T14:03:22.123+02:00"
    std::string Iso() const;
    // "20310501-140322-123", for names of files.
    std::string FileStamp() const;

  private:
    SYSTEMTIME m_local{};
    int m_offset = 0;  // minutes east of UTC
};

}  // namespace kora4::tools
