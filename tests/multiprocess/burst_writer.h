// SPDX-License-Identifier: MIT
// Another process that writes in bursts, without the library, as fast as it can.
#ifndef KORA4_TESTS_MULTIPROCESS_BURST_WRITER_H
#define KORA4_TESTS_MULTIPROCESS_BURST_WRITER_H

#include <cstdint>
#include <iosfwd>

#include "veltokora4api.h"

namespace kora4::test {

// The child that writes: for each line with a BurstOrder it makes that many bursts and answers
// with the LastWritten of all.
inline constexpr char cBurstWriterRole[] = "bursts";

// The technologies whose values come in one piece: all of them are the stamp of their burst. In
// the order in which they are told.
inline constexpr KORA4APITechnology cGroup[] = {eDialogEnhancer, eVirtualizerHP,
                                                eVirtualizerSpkr};
// Every write of it has a stamp of its own.
inline constexpr KORA4APITechnology cSingle = eVolumeLeveler;
// The client writes it as well, from 0 to cSharedBound - 1.
inline constexpr KORA4APITechnology cShared = eIntelligentEQ;
inline constexpr std::uint32_t cSharedBound = 6;

struct BurstOrder {
    unsigned bursts;
    std::uint32_t seed;
};

struct LastWritten {
    std::uint32_t group = 0;   // the stamp; stamps only grow, and start at 1
    std::uint32_t single = 0;  // the same
    bool enable = true;
    bool groupSwitch = true;  // of the first technology of the group
};

std::istream& operator>>(std::istream& stream, LastWritten& last);

// The role.
int RunBurstWriter();

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_BURST_WRITER_H
