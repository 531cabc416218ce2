// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLTHREADANNOTATIONS_H
#define IPL_PLTHREADANNOTATIONS_H

/// @file
/// Lock annotations for clang's -Wthread-safety; empty for every other compiler. They have no effect on the code.

#if defined(__clang__)
/// What the others are made of.
#define PL_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define PL_THREAD_ATTRIBUTE(attribute)
#endif

/// A class whose objects are locks.
#define PL_CAPABILITY(name) PL_THREAD_ATTRIBUTE(capability(name))
/// A class whose constructor takes a lock and whose destructor gives it back.
#define PL_SCOPED_CAPABILITY PL_THREAD_ATTRIBUTE(scoped_lockable)
/// A field that is read and written only with the lock held.
#define PL_GUARDED_BY(lock) PL_THREAD_ATTRIBUTE(guarded_by(lock))
/// A pointer whose target is read and written only with the lock held.
#define PL_PT_GUARDED_BY(lock) PL_THREAD_ATTRIBUTE(pt_guarded_by(lock))
/// A function that its caller calls with the lock held.
#define PL_REQUIRES(...) PL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
/// A function that returns with the lock held.
#define PL_ACQUIRE(...) PL_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
/// A function that gives the lock back.
#define PL_RELEASE(...) PL_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
/// A function that returns the given value when it took the lock.
#define PL_TRY_ACQUIRE(...) PL_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
/// A function whose body is not analysed: the reason stands beside it.
#define PL_NO_THREAD_SAFETY_ANALYSIS PL_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif  // IPL_PLTHREADANNOTATIONS_H
