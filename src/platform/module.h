// SPDX-License-Identifier: MIT
// The module: its instance handle and its lock count (objects alive plus server locks).
#pragma once

#include <windows.h>

#include <atomic>

#include "platform/non_copyable.h"

namespace kora4 {

// What the module as a whole has. Any thread; the instance is set once, in DllMain.
class Module {
  public:
    static void SetInstance(HINSTANCE instance) { sm_instance = instance; }
    static HINSTANCE Instance() { return sm_instance; }

    // Counts what keeps the module loaded: objects, monitors, locks of clients.
    // DllCanUnloadNow answers by IsLocked.
    static void Lock() { sm_locks.fetch_add(1); }
    static void Unlock() { sm_locks.fetch_sub(1); }
    static bool IsLocked() { return sm_locks.load() != 0; }

  private:
    inline static HINSTANCE sm_instance = nullptr;
    inline static std::atomic<LONG> sm_locks{0};
};

// Keeps the module from being unloaded by COM while it lives.
class ModuleLock : NonCopyable {
  public:
    ModuleLock() { Module::Lock(); }
    ~ModuleLock() { Module::Unlock(); }
};

}  // namespace kora4
