// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_KERNELEVENT_H
#define IPL_THREADS_KERNELEVENT_H

#include <pthread.h>
#include <stdint.h>

#include <atomic>

#include <ipl/IPLKernel.h>

#include "foundation/ObjectTable.h"
#include "foundation/TrackedMemory.h"
#include "threads/PosixMutex.h"

class WaitDeadline;

/// A flag with a condition variable. Threads are woken after the event's mutex was given up: one that is woken earlier
/// would at once wait for the mutex, which costs two more switches between the threads.
class KernelEvent final : public IPLKernel::Event, public TrackedObject {
 public:
  explicit KernelEvent(bool manualReset);
  /// Waits for those that are still inside FinishSet, as a thread may destroy an event as soon as its Wait returns; and
  /// for those whose Wait is about to return, since the event is set.
  ~KernelEvent() override;
  KernelEvent(const KernelEvent&) = delete;
  KernelEvent& operator=(const KernelEvent&) = delete;

  void Set() override;
  bool Wait(IPLKernel::Time timeout) override;
  void Clear() override;
  bool IsSet() override;

  /// Set in two steps, for a caller that holds a lock which the woken threads want. BeginSet sets the flag. If it
  /// returns true somebody waits, and FinishSet, which wakes them, has to follow, with the lock given up.
  bool BeginSet();
  void FinishSet();

  /// Returns event if it has these two steps; null if it is of another class, or if somebody stands in front of it.
  static KernelEvent* From(IPLKernel::Event* event) {
    return TableOf(event) == s_pTable.load(std::memory_order_relaxed) ? static_cast<KernelEvent*>(event) : nullptr;
  }

 private:
  template <typename>
  friend struct PLContractLayout;

  bool IsInUse();
  void AwaitOthers();
  bool WaitUntil(WaitDeadline& deadline) PL_REQUIRES(m_mutex);

  static IPL_HIDDEN std::atomic<const void*> s_pTable;  // of all objects of this class

  PosixMutex m_mutex;
  pthread_cond_t m_cond;  // on the real-time clock; used with m_mutex
  bool m_signaled PL_GUARDED_BY(m_mutex);
  bool m_manualReset;  // never changes
  // Behind the fields of the contract: how many threads wait (a process has not the memory maps for the stacks of
  // more), and how many are between BeginSet and the end of FinishSet.
  uint16_t m_waiters PL_GUARDED_BY(m_mutex);
  std::atomic<uint32_t> m_waking;
};

#endif  // IPL_THREADS_KERNELEVENT_H
