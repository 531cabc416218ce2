// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_KERNELLOCKGUARD_H
#define IPL_THREADS_KERNELLOCKGUARD_H

#include <ipl/IPLKernel.h>

/// Holds a lock of the kernel for a scope. A null lock is accepted and not taken: before start-up, after shut-down and
/// where a mutex could not be created there is none.
template <typename Lock>
class PL_SCOPED_CAPABILITY KernelLockGuard {
 public:
  explicit KernelLockGuard(Lock* lock) PL_ACQUIRE(lock) : m_pLock(lock) {
    if (m_pLock != nullptr) {
      m_pLock->Lock();
    }
  }
  ~KernelLockGuard() PL_RELEASE() {
    if (m_pLock != nullptr) {
      m_pLock->Unlock();
    }
  }
  KernelLockGuard(const KernelLockGuard&) = delete;
  KernelLockGuard& operator=(const KernelLockGuard&) = delete;

 private:
  Lock* const m_pLock;  // not owned
};

#endif  // IPL_THREADS_KERNELLOCKGUARD_H
