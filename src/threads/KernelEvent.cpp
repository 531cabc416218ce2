// SPDX-License-Identifier: Apache-2.0
#include "threads/KernelEvent.h"

#include <errno.h>
#include <sched.h>
#include <time.h>

#include "foundation/ContractLayout.h"
#include "threads/CancelGuard.h"
#include "threads/WaitDeadline.h"
#include "threads/YieldPoint.h"

template <>
struct PLContractLayout<KernelEvent> {
  IPL_ASSERT_OFFSET(KernelEvent, m_mutex, 4);
  IPL_ASSERT_OFFSET(KernelEvent, m_cond, 32);
  IPL_ASSERT_OFFSET(KernelEvent, m_signaled, 80);
  IPL_ASSERT_OFFSET(KernelEvent, m_manualReset, 81);
  IPL_ASSERT_SIZE(KernelEvent, 88);
};

namespace {

// One of the waiting threads, for a scope that a cancelled thread leaves too.
class Waiter {
 public:
  explicit Waiter(uint16_t& count) : m_count(count) { ++m_count; }
  ~Waiter() { --m_count; }
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;

 private:
  uint16_t& m_count;
};

}  // namespace

std::atomic<const void*> KernelEvent::s_pTable{nullptr};

// Construction has no result. Where the system refuses a recursive mutex an ordinary one remains, and a condition of
// zeros, which serve: no operation takes the mutex twice. Where it refuses the condition, which the C library never
// does, the event has neither.
KernelEvent::KernelEvent(bool manualReset)
    : m_cond(), m_signaled(false), m_manualReset(manualReset), m_waiters(0), m_waking(0) {
  s_pTable.store(TableOf(this), std::memory_order_relaxed);
  if (m_mutex.InitialiseRecursive() && ::pthread_cond_init(&m_cond, nullptr) != 0) {
    m_mutex.Destroy();
  }
}

KernelEvent::~KernelEvent() {
  AwaitOthers();
  ::pthread_cond_destroy(&m_cond);
  m_mutex.Destroy();
}

bool KernelEvent::IsInUse() {
  if (m_waking.load(std::memory_order_acquire) != 0) {
    return true;
  }
  PosixMutexGuard guard(m_mutex);
  return m_signaled && m_waiters != 0;
}

// Usually nobody is there. The others are just about to leave; but they may have a lower priority than this thread,
// which then has to sleep to let them run. A destructor is no place to be cancelled in.
void KernelEvent::AwaitOthers() {
  constexpr int kSpins = 200;
  constexpr int kYields = 20;
  constexpr timespec kPause = {0, 50000};
  for (int i = 0; IsInUse(); ++i) {
    if (i >= kSpins + kYields) {
      const CancelGuard guard;
      ::nanosleep(&kPause, nullptr);
    } else if (i >= kSpins) {
      ::sched_yield();
    }
  }
}

void KernelEvent::Set() {
  if (BeginSet()) {
    FinishSet();
  }
}

bool KernelEvent::BeginSet() {
  PosixMutexGuard guard(m_mutex);
  if (m_signaled) {
    return false;
  }
  m_signaled = true;
  if (m_waiters == 0) {
    return false;
  }
  m_waking.fetch_add(1, std::memory_order_relaxed);
  return true;
}

// A thread that finds the flag set may destroy the event at once: the destructor waits for the last line here, and
// nothing is touched after it.
void KernelEvent::FinishSet() {
  YieldPoint();
  ::pthread_cond_broadcast(&m_cond);
  YieldPoint();
  m_waking.fetch_sub(1, std::memory_order_release);
}

bool KernelEvent::Wait(IPLKernel::Time timeout) {
  bool signaled = false;
  {
    PosixMutexGuard guard(m_mutex);
    if (m_signaled) {
      signaled = true;  // no clock is read for an event that is set
    } else {
      WaitDeadline deadline = WaitDeadline::After(timeout);
      const Waiter waiter(m_waiters);
      signaled = WaitUntil(deadline);
    }
    if (signaled && !m_manualReset) {
      m_signaled = false;
    }
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  if (!signaled && kernel != nullptr) {
    kernel->SetLastError(PLError_Timeout);
  }
  return signaled;
}

bool KernelEvent::WaitUntil(WaitDeadline& deadline) {
  while (!m_signaled) {
    if (deadline.IsForever()) {
      ::pthread_cond_wait(&m_cond, m_mutex.GetNative());
      YieldPoint();
      continue;
    }
    const int result = ::pthread_cond_timedwait(&m_cond, m_mutex.GetNative(), &deadline.GetInstant());
    if (result == ETIMEDOUT) {
      break;
    }
    // A system whose clock has 32 bits refuses a later deadline; waiting until the end of its clock is what it can do.
    if (result != 0 && !deadline.ReduceTo32Bits()) {
      ::sched_yield();  // no reason is known; whatever it is, the flag is looked at again
    }
  }
  return m_signaled;
}

void KernelEvent::Clear() {
  PosixMutexGuard guard(m_mutex);
  m_signaled = false;
}

bool KernelEvent::IsSet() {
  PosixMutexGuard guard(m_mutex);
  return m_signaled;
}
