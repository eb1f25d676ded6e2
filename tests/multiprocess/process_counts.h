// SPDX-License-Identifier: MIT
// What a process has open.
#ifndef KORA4_TESTS_MULTIPROCESS_PROCESS_COUNTS_H
#define KORA4_TESTS_MULTIPROCESS_PROCESS_COUNTS_H

#include <windows.h>

#include <ostream>

namespace kora4::test {

// What of a process grows when something leaks.
struct ProcessCounts {
    std::size_t handles;
    std::size_t threads;
    DWORD nextTlsIndex;  // indices are given out lowest first

    static ProcessCounts Now();                // this process
    static ProcessCounts Of(DWORD processId);  // another one, whose TLS index is not seen
    // Waits a bounded while for threads that are about to end; gives what is left then.
    static ProcessCounts AtMost(const ProcessCounts& expected);

    friend bool operator==(const ProcessCounts&, const ProcessCounts&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const ProcessCounts& counts) {
        return stream << counts.handles << " handles, " << counts.threads
                      << " threads, next TLS index " << counts.nextTlsIndex;
    }
};

// The bytes in use in all heaps of this process: what grows when memory leaks, to the byte.
std::size_t HeapBytes();

// Whether the bytes must be as many as before once the library is unloaded. Unoptimised, it
// links the C++ runtime's exceptions, whose reserve stays in the host; then the function says
// so.
bool MustGiveMemoryBack();

}  // namespace kora4::test

#endif  // KORA4_TESTS_MULTIPROCESS_PROCESS_COUNTS_H
