// SPDX-License-Identifier: MIT
// The methods of the API, each as a call and as the bare platform calls that it needs.
#ifndef KORA4_BENCH_CASES_H
#define KORA4_BENCH_CASES_H

#include <windows.h>

#include <cstdint>
#include <vector>

#include "veltokora4api.h"
#include "windows/bare.h"
#include "windows/client.h"

namespace kora4::bench {

// What a case works on: an initialised object in a single-threaded apartment that takes no
// messages, so that nothing else of the object runs meanwhile.
struct Scene {
    IVeltoKORA4API* pApi;
    Callback* pCallback;
    Place& place;
    Bare bare;
    // Moves with every call, so that every write changes what is stored.
    std::uint32_t round = 0;
};

struct Case {
    // As in docs/performance.md.
    const char* name;
    HRESULT expected;
    // Makes the call meet what the case says; runs before each call of either kind, and is not
    // measured. May be null.
    void (*prepare)(Scene& scene);
    HRESULT (*call)(Scene& scene);
    void (*bare)(Scene& scene);
};

// All methods but Initialize, in the order of the interface.
const std::vector<Case>& Cases();

}  // namespace kora4::bench

#endif  // KORA4_BENCH_CASES_H
