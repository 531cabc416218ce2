// SPDX-License-Identifier: Apache-2.0
// Slots 9 and 10: the last error. A kernel thread has a slot of its own, which only that thread reaches here; all
// other threads share the kernel object's.
#include "kernel/IPLKernelImpl.h"
#include "threads/KernelLockGuard.h"
#include "threads/KernelThread.h"

PLError IPLKernelImpl::GetLastError() {
  KernelThread* thread = KernelThread::GetCurrentKernelThread();
  if (thread != nullptr) {
    return thread->GetLastErrorThread();
  }
  KernelLockGuard guard(m_pStateMutex);
  return m_lastError;
}

void IPLKernelImpl::SetLastError(const PLError& error) {
  KernelThread* thread = KernelThread::GetCurrentKernelThread();
  if (thread != nullptr) {
    thread->SetLastErrorThread(error);
    return;
  }
  KernelLockGuard guard(m_pStateMutex);
  m_lastError = error;
}
