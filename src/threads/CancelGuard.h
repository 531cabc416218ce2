// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_CANCELGUARD_H
#define IPL_THREADS_CANCELGUARD_H

#include <pthread.h>

/// Puts off the cancellation of the calling thread for a scope.
class CancelGuard {
 public:
  CancelGuard() { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before); }
  ~CancelGuard() { ::pthread_setcancelstate(m_before, nullptr); }
  CancelGuard(const CancelGuard&) = delete;
  CancelGuard& operator=(const CancelGuard&) = delete;

 private:
  int m_before = 0;
};

#endif  // IPL_THREADS_CANCELGUARD_H
