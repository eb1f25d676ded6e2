// SPDX-License-Identifier: MIT
// Counts what a loaded module asks of the platform: its import table leads through here.
#ifndef KORA4_BENCH_IMPORT_HOOK_H
#define KORA4_BENCH_IMPORT_HOOK_H

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "windows/call_list.h"

namespace kora4::bench {

struct ImportedCall {
    std::string kind;
    DWORD thread;
    std::wstring value;  // of a query: the name of the value, and where it is
    HKEY key;
};

// While it lives, calls that leave the module are noted between Start and Stop, from whatever
// thread. A function without a kind of its own in the table is noted by its name, so that
// nothing new goes uncounted; functions that never leave the process are not noted. The
// module must stay loaded.
class ImportHook {
  public:
    explicit ImportHook(HMODULE module);
    ~ImportHook();
    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    void Start();
    void Stop();
    // What was noted since the last Start, in order. A good time to ask is after Stop, or
    // when the threads in question are at rest.
    std::vector<ImportedCall> Calls() const;
    // The kinds of the calling thread's calls, in order, and those of all other threads.
    CallList OwnCalls() const;
    CallList OtherCalls() const;
    // Until the last call of another thread is a wait: an object's monitor, and nothing else
    // runs, has done what it had to. False when it takes more than ten seconds.
    bool AwaitRest() const;

  private:
    struct Thunks;

    CallList Kinds(bool own) const;

    std::unique_ptr<Thunks> m_thunks;
};

}  // namespace kora4::bench

#endif  // KORA4_BENCH_IMPORT_HOOK_H
