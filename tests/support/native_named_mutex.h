// SPDX-License-Identifier: MIT
// What the stand-in for the store's named mutex has seen. Test programs that link
// native_named_mutex.cpp get it in place of the platform's, on Windows too.
#ifndef KORA4_TESTS_SUPPORT_NATIVE_NAMED_MUTEX_H
#define KORA4_TESTS_SUPPORT_NATIVE_NAMED_MUTEX_H

#include <string>

namespace kora4::test {

// What was done with the store's mutex.
struct NamedMutexRecord {
    unsigned created = 0;  // successful creations since Clear
    unsigned acquired = 0;
    unsigned released = 0;
    unsigned heldNow = 0;  // depth; a platform mutex may be acquired again by its owner
    unsigned deepest = 0;
    std::u16string name;  // of the last creation
    bool failCreate = false;
    bool failRelease = false;

    bool IsHeld() const { return heldNow != 0; }
    // Starts counting again; a mutex that is held stays held.
    void Clear();
};

// Of all mutexes of this process: a test has one store.
NamedMutexRecord& StoreMutex();

}  // namespace kora4::test

#endif  // KORA4_TESTS_SUPPORT_NATIVE_NAMED_MUTEX_H
