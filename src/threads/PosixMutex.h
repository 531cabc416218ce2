// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_POSIXMUTEX_H
#define IPL_THREADS_POSIXMUTEX_H

#include <pthread.h>

#include <ipl/PLThreadAnnotations.h>

/// A POSIX mutex, and nothing beside it: an object of this class lies where the contract has a pthread_mutex_t.
/// It is an ordinary mutex until InitialiseRecursive has made it a recursive one. It has no destructor, so that a
/// static one serves until the process is gone; whoever embeds one calls Destroy.
class PL_CAPABILITY("mutex") PosixMutex {
 public:
  constexpr PosixMutex() = default;
  PosixMutex(const PosixMutex&) = delete;
  PosixMutex& operator=(const PosixMutex&) = delete;

  /// Returns false, and leaves the mutex as it was, if the system refuses. Called once, before any other use.
  bool InitialiseRecursive();
  void Destroy() { ::pthread_mutex_destroy(&m_native); }

  // The bodies are POSIX's, which carries no annotations.
  void Lock() PL_ACQUIRE() PL_NO_THREAD_SAFETY_ANALYSIS { ::pthread_mutex_lock(&m_native); }
  void Unlock() PL_RELEASE() PL_NO_THREAD_SAFETY_ANALYSIS { ::pthread_mutex_unlock(&m_native); }
  bool TryLock() PL_TRY_ACQUIRE(true) PL_NO_THREAD_SAFETY_ANALYSIS { return ::pthread_mutex_trylock(&m_native) == 0; }

  /// For waiting on a condition.
  pthread_mutex_t* GetNative() { return &m_native; }

 private:
  pthread_mutex_t m_native = PTHREAD_MUTEX_INITIALIZER;
};

/// Holds the mutex for a scope.
class PL_SCOPED_CAPABILITY PosixMutexGuard {
 public:
  explicit PosixMutexGuard(PosixMutex& mutex) PL_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
  ~PosixMutexGuard() PL_RELEASE() { m_mutex.Unlock(); }
  PosixMutexGuard(const PosixMutexGuard&) = delete;
  PosixMutexGuard& operator=(const PosixMutexGuard&) = delete;

 private:
  PosixMutex& m_mutex;
};

static_assert(sizeof(PosixMutex) == sizeof(pthread_mutex_t), "lies where the contract has a pthread_mutex_t");

#endif  // IPL_THREADS_POSIXMUTEX_H
