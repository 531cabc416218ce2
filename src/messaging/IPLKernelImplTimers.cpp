// SPDX-License-Identifier: Apache-2.0
// Slots 29 to 32 and 75: timers. Each operation passes the gate of the timer manager, which is open while the kernel
// runs. Outside of that, and where the timer thread cannot be started, the answer is 0 and nothing is done.
#include "foundation/TrackedMemory.h"
#include "kernel/IPLKernelImpl.h"
#include "messaging/KernelTimerManager.h"
#include "threads/CancelGuard.h"
#include "threads/KernelLockGuard.h"

namespace {

// The manager for the length of one operation; null if there is none to be had. A thread that waits for the timer
// thread cannot be cancelled: that one uses what is on its stack.
class ManagerInUse {
 public:
  explicit ManagerInUse(IPLKernelImpl& kernel)
      : m_passage(KernelTimerManager::s_gate), m_pManager(m_passage ? kernel.GetTimerManager() : nullptr) {}
  KernelTimerManager* operator->() const { return m_pManager; }
  explicit operator bool() const { return m_pManager != nullptr; }

 private:
  CancelGuard m_guard;
  GatePassage m_passage;
  KernelTimerManager* m_pManager;
};

}  // namespace

unsigned long IPLKernelImpl::GetTimerMessageID() {
  const ManagerInUse manager(*this);
  return manager ? manager->GetTimerMessageID() : 0;
}

unsigned long IPLKernelImpl::SetTimer(const Time& delay, MessageQueue& queue, bool periodic) {
  const ManagerInUse manager(*this);
  return manager ? manager->SetTimer(delay, queue, periodic) : 0;
}

unsigned long IPLKernelImpl::SetTimerGMT(const Time& instant, MessageQueue& queue, const Time& period) {
  const ManagerInUse manager(*this);
  return manager ? manager->SetTimerGMT(instant, queue, period) : 0;
}

void IPLKernelImpl::ClearTimer(unsigned long timerID, MessageQueue& queue) {
  const ManagerInUse manager(*this);
  if (manager) {
    manager->ClearTimer(timerID, queue);
  }
}

void IPLKernelImpl::NotifyGMTChange() {
  const ManagerInUse manager(*this);
  if (manager) {
    manager->RecalculateGMT();
  }
}

// Tested once without the lock: the pointer is published with release order, when the manager's thread runs.
KernelTimerManager* IPLKernelImpl::GetTimerManager() {
  KernelTimerManager* manager = m_pTimerManager.load(std::memory_order_acquire);
  if (manager != nullptr) {
    return manager;
  }
  const GatePassage passage(KernelTimerManager::s_gate);  // shut-down waits for a manager that is just being made
  if (!passage) {
    return nullptr;
  }
  KernelLockGuard guard(m_pStateMutex);
  manager = m_pTimerManager.load(std::memory_order_acquire);
  if (manager == nullptr) {
    TrackedPtr<KernelTimerManager> made = MakeTracked<KernelTimerManager>();
    if (made != nullptr && made->Initialize(this)) {
      manager = made.release();
      m_pTimerManager.store(manager, std::memory_order_release);
    }
  }
  return manager;
}
