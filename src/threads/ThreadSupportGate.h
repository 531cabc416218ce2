// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_THREADSUPPORTGATE_H
#define IPL_THREADS_THREADSUPPORTGATE_H

#include <pthread.h>

#include "threads/RecursiveMutex.h"

/// Keeps the start and the end of kernel threads apart from shut-down.
///
/// A kernel thread uses the kernel object and the lock of thread support when it begins and when it ends, at times that
/// no owner can see: a detached thread still destroys its own object after its cleanup has run. It does so only between
/// Enter and Leave. Shut-down closes the gate and waits until those inside have left; a thread that comes later is
/// refused and must touch nothing of the kernel. The gate itself lives as long as the process.
class ThreadSupportGate {
 public:
  constexpr ThreadSupportGate() = default;

  void Open();
  /// Refuses newcomers and returns when nobody is inside.
  void CloseAndDrain();

  /// Returns false if the gate is closed.
  bool Enter();
  void Leave();

 private:
  RecursiveMutex m_mutex;
  pthread_cond_t m_left = PTHREAD_COND_INITIALIZER;  // somebody left, used with m_mutex
  bool m_open PL_GUARDED_BY(m_mutex) = false;
  unsigned int m_inside PL_GUARDED_BY(m_mutex) = 0;
};

#endif  // IPL_THREADS_THREADSUPPORTGATE_H
