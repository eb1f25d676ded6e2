// SPDX-License-Identifier: MIT
// Which lock guards what, in words that clang checks (-Wthread-safety). To other compilers
// they are nothing. Includes nothing, so that platform-free files can use it.
#pragma once

#if defined(__clang__)
#define KORA4_THREAD_ANNOTATION(...) __attribute__((__VA_ARGS__))
#else
#define KORA4_THREAD_ANNOTATION(...)
#endif

// On a class: its objects are locks, called `kind` in messages; or they hold a lock from their
// construction to their destruction.
#define CAPABILITY(kind) KORA4_THREAD_ANNOTATION(capability(kind))
#define SCOPED_CAPABILITY KORA4_THREAD_ANNOTATION(scoped_lockable)

// On a variable: it, or what it points to, is used with the lock held only.
#define GUARDED_BY(lock) KORA4_THREAD_ANNOTATION(guarded_by(lock))
#define PT_GUARDED_BY(lock) KORA4_THREAD_ANNOTATION(pt_guarded_by(lock))

// On a lock: it is not taken before the other one.
#define ACQUIRED_AFTER(...) KORA4_THREAD_ANNOTATION(acquired_after(__VA_ARGS__))

// On a function or a lambda: its caller holds the locks, or must not hold them.
#define REQUIRES(...) KORA4_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) KORA4_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

// On a function: it takes or releases the locks; without an argument, its own object.
#define ACQUIRE(...) KORA4_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) KORA4_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
