// SPDX-License-Identifier: MIT
// One end of one object, in whatever state its monitor is: brought about, measured, and told as
// a line of text.
#ifndef KORA4_TESTS_MULTIPROCESS_TEARDOWN_H
#define KORA4_TESTS_MULTIPROCESS_TEARDOWN_H

#include <iosfwd>
#include <string>

#include "multiprocess/apartment_thread.h"

namespace kora4::test {

// The child that ends one object: it reads a TeardownCell, answers with a TeardownResult, and
// ends.
inline constexpr char cTeardownRole[] = "teardown";

// What the object's monitor is at when its last reference goes.
enum class MonitorState {
    eIdle,
    eCallPending,     // its thread waits to be let into the owner's apartment
    eCallbackRuns,    // the client's callback runs, and returns after the release
    eCallbackFailed,  // its thread has ended because the client's callback failed
    eReleasedInside,  // the callback itself drops the reference
    eOwnerBusy,       // the owner's message filter rejects every call
    eThreadDead,      // its thread has ended because the watched key is gone
    eThreadStuck,     // its thread cannot end by itself, and is ended by force
};

struct TeardownCell {
    OwnerKind owner = OwnerKind::eMta;
    MonitorState state = MonitorState::eIdle;
    bool othersInMta = false;  // another thread keeps the multithreaded apartment
    bool released = false;     // else the process ends with the object
};

struct TeardownResult {
    double milliseconds = -1;  // from the release or, while a callback ran, from its return,
                               // until nothing was left
    double releaseMilliseconds = -1;  // what the release itself took
    unsigned terminated = 0;          // threads that the library has ended by force
    HRESULT canUnload = E_FAIL;
    bool unloaded = false;
    ULONG recorderReferences = 0;
    bool reached = false;  // the state; else the rest says nothing
};

std::ostream& operator<<(std::ostream& stream, const TeardownCell& cell);
std::istream& operator>>(std::istream& stream, TeardownCell& cell);
std::ostream& operator<<(std::ostream& stream, const TeardownResult& result);
std::istream& operator>>(std::istream& stream, TeardownResult& result);

// The role.
int RunTeardown();

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_TEARDOWN_H
