// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_KERNELEVENT_H
#define IPL_THREADS_KERNELEVENT_H

#include <pthread.h>

#include <ipl/IPLKernel.h>

#include "foundation/TrackedMemory.h"
#include "threads/PosixMutex.h"

class WaitDeadline;

/// A flag with a condition variable.
class KernelEvent : public IPLKernel::Event, public TrackedObject {
 public:
  explicit KernelEvent(bool manualReset);
  ~KernelEvent() override;
  KernelEvent(const KernelEvent&) = delete;
  KernelEvent& operator=(const KernelEvent&) = delete;

  void Set() override;
  bool Wait(IPLKernel::Time timeout) override;
  void Clear() override;
  bool IsSet() override;

 private:
  template <typename>
  friend struct PLContractLayout;

  bool WaitUntil(WaitDeadline& deadline) PL_REQUIRES(m_mutex);

  PosixMutex m_mutex;
  pthread_cond_t m_cond;  // on the real-time clock; used with m_mutex
  bool m_signaled PL_GUARDED_BY(m_mutex);
  bool m_manualReset;  // never changes
};

#endif  // IPL_THREADS_KERNELEVENT_H
