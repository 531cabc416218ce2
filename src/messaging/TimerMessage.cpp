// SPDX-License-Identifier: Apache-2.0
// Timer messages and the pool that they come from.
#include "messaging/KernelTimerManager.h"

namespace {

constexpr unsigned long kMaximalPoolSize = 10;

}  // namespace

PosixMutex KernelTimerManager::s_poolLock;
KernelTimerManager* KernelTimerManager::s_pLiveManager = nullptr;

const IPLKernel::Time& KernelTimerManager::TimerMessage::GetFireTimeKernel() { return fireTimeKernel; }

const IPLKernel::Time& KernelTimerManager::TimerMessage::GetFireTimeGMT() { return fireTimeGMT; }

unsigned long KernelTimerManager::TimerMessage::GetTimerID() { return timerID; }

void KernelTimerManager::TimerMessage::ReleaseTimerData() {
  PosixMutexGuard guard(s_poolLock);
  if (manager == s_pLiveManager && manager != nullptr) {
    manager->ReleaseTimerMessage(this);
  } else {
    PLTypes_ScalarDelete(this, nullptr, 0);  // does nothing to the memory when the kernel is gone
  }
}

void KernelTimerManager::AwaitReleases() { const PosixMutexGuard guard(s_poolLock); }

KernelTimerManager::TimerMessage* KernelTimerManager::CreateTimerMessage(const IPLKernel::Time& kernelTime,
                                                                         const IPLKernel::Time& gmtTime,
                                                                         unsigned long timerID) {
  {
    PosixMutexGuard guard(s_poolLock);
    const unsigned long size = m_freeMessages.GetSize();
    if (size != 0) {
      TimerMessage* message = m_freeMessages[size - 1];
      m_freeMessages.RemoveAt(size - 1);
      message->fireTimeKernel = kernelTime;
      message->fireTimeGMT = gmtTime;
      message->timerID = static_cast<uint32_t>(timerID);
      return message;
    }
  }
  return MakeTracked<TimerMessage>(kernelTime, gmtTime, static_cast<uint32_t>(timerID), this).release();
}

void KernelTimerManager::ReleaseTimerMessage(TimerMessage* message) {
  const unsigned long size = m_freeMessages.GetSize();
  if (size < kMaximalPoolSize) {
    m_freeMessages.Append(message);
  }
  if (m_freeMessages.GetSize() == size) {
    PLTypes_ScalarDelete(message, nullptr, 0);  // the pool is full, or found no memory
  }
}
