// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_SCOPEDLOCK_H
#define IPL_SCOPEDLOCK_H

#include <ipl/IPLKernel.h>
#include <ipl/PLThreadAnnotations.h>

/// @file
/// Locks held for a scope.

namespace ipl {

/// Chooses the constructor of ScopedLock that takes no lock.
struct AdoptLock {};

/// Holds a mutex or the lock of a queue for a scope, as std::lock_guard does. The lock lives as long as this. Clang's
/// lock analysis knows it. [owner] The lock is the only one that it takes.
class PL_SCOPED_CAPABILITY ScopedLock {
 public:
  /// Returns when the calling thread holds the lock. It cannot fail; waiting with a limit is no operation of Lockable.
  /// [any thread] [blocks]
  IPL_ALWAYS_INLINE explicit ScopedLock(IPLKernel::Lockable& lock) PL_ACQUIRE(lock) : m_lock(lock) { m_lock.Lock(); }
  /// For a lock that the calling thread holds already, after a TryLock that returned true for example.
  IPL_ALWAYS_INLINE ScopedLock(IPLKernel::Lockable& lock, AdoptLock) PL_REQUIRES(lock) : m_lock(lock) {}
  /// Gives the lock back once, on the thread that took it.
  IPL_ALWAYS_INLINE ~ScopedLock() PL_RELEASE() { m_lock.Unlock(); }
  ScopedLock(const ScopedLock&) = delete;
  ScopedLock& operator=(const ScopedLock&) = delete;

 private:
  IPLKernel::Lockable& m_lock;
};

/// Holds a mutex for a scope if it can be had without waiting.
///
///   ipl::ScopedTryLock guard(*mutex);
///   if (!guard) ...                      // another thread holds it
///
/// Clang's lock analysis cannot follow it: where that is used, call TryLock and adopt the lock. [owner] The mutex is
/// the only lock that it takes.
class ScopedTryLock {
 public:
  /// Takes the mutex if that needs no waiting. Stores no error. [any thread]
  IPL_ALWAYS_INLINE explicit ScopedTryLock(IPLKernel::Mutex& mutex) PL_NO_THREAD_SAFETY_ANALYSIS
      : m_pMutex(mutex.TryLock() ? &mutex : nullptr) {}
  /// Gives the mutex back once if it was taken, on the thread that took it.
  IPL_ALWAYS_INLINE ~ScopedTryLock() PL_NO_THREAD_SAFETY_ANALYSIS {
    if (m_pMutex != nullptr) {
      m_pMutex->Unlock();
    }
  }
  ScopedTryLock(const ScopedTryLock&) = delete;
  ScopedTryLock& operator=(const ScopedTryLock&) = delete;

  /// Returns whether the mutex is held.
  IPL_ALWAYS_INLINE explicit operator bool() const noexcept { return m_pMutex != nullptr; }

 private:
  IPLKernel::Mutex* const m_pMutex;  // null if it was not taken
};

}  // namespace ipl

#endif  // IPL_SCOPEDLOCK_H
