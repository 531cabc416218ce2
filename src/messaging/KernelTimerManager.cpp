// SPDX-License-Identifier: Apache-2.0
// The manager's life, and what callers do.
#include "messaging/KernelTimerManager.h"

#include "foundation/ContractLayout.h"
#include "messaging/TimeArithmetic.h"
#include "threads/KernelLockGuard.h"

using TimerMessage = KernelTimerManager::TimerMessage;
using TimerClearRecord = KernelTimerManager::TimerClearRecord;

template <>
struct PLContractLayout<TimerRecord> {
  IPL_ASSERT_OFFSET(TimerRecord, fireTime, 0);
  IPL_ASSERT_OFFSET(TimerRecord, interval, 8);
  IPL_ASSERT_OFFSET(TimerRecord, queue, 16);
  IPL_ASSERT_OFFSET(TimerRecord, timerID, 20);
  IPL_ASSERT_OFFSET(TimerRecord, periodic, 24);
};

template <>
struct PLContractLayout<TimerClearRecord> {
  IPL_ASSERT_OFFSET(TimerClearRecord, timerID, 0);
  IPL_ASSERT_OFFSET(TimerClearRecord, queue, 4);
};

template <>
struct PLContractLayout<TimerMessage> {
  IPL_ASSERT_OFFSET(TimerMessage, fireTimeKernel, 8);
  IPL_ASSERT_OFFSET(TimerMessage, fireTimeGMT, 16);
  IPL_ASSERT_OFFSET(TimerMessage, timerID, 24);
  IPL_ASSERT_OFFSET(TimerMessage, manager, 28);
};

template <>
struct PLContractLayout<KernelTimerManager> {
  IPL_ASSERT_OFFSET(KernelTimerManager, m_pKernel, 4);
  IPL_ASSERT_OFFSET(KernelTimerManager, m_pThread, 8);
  IPL_ASSERT_OFFSET(KernelTimerManager, m_pQueue, 12);
  IPL_ASSERT_OFFSET(KernelTimerManager, m_timerMessageID, 16);
  IPL_ASSERT_OFFSET(KernelTimerManager, m_kernelTimers, 20);
  IPL_ASSERT_OFFSET(KernelTimerManager, m_gmtTimers, 40);
  IPL_ASSERT_OFFSET(KernelTimerManager, m_freeMessages, 60);
};

namespace {

constexpr unsigned char kTimerThreadPriority = 1;

}  // namespace

ShutdownGate KernelTimerManager::s_gate;

KernelTimerManager::KernelTimerManager()
    : m_pKernel(nullptr), m_pThread(nullptr), m_pQueue(nullptr), m_timerMessageID(0), m_pQuitMessage(nullptr) {}

KernelTimerManager::~KernelTimerManager() {
  if (m_pKernel != nullptr) {  // the timer thread was never started, or has ended
    m_pKernel->DestroyMessageQueue(m_pQueue);
    m_pKernel->DestroyThread(m_pThread);
  }
}

bool KernelTimerManager::Initialize(IPLKernel* kernel) {
  m_pKernel = kernel;
  m_pThread = kernel->CreateThread();
  m_pQueue = kernel->CreateMessageQueue();
  m_timerMessageID = static_cast<uint32_t>(kernel->GetUniqueID());
  if (m_pThread == nullptr || m_pQueue == nullptr || !ReserveQuitMessage()) {
    return false;
  }
  {
    PosixMutexGuard guard(s_poolLock);
    s_pLiveManager = this;
  }
  m_pThread->SetPriority(kTimerThreadPriority);
  if (m_pThread->Run("TimerManager", StaticTimerThreadProc, this)) {
    return true;
  }
  PosixMutexGuard guard(s_poolLock);
  s_pLiveManager = nullptr;
  m_pQueue->ReleaseMessage(m_pQuitMessage);
  return false;
}

bool KernelTimerManager::ReserveQuitMessage() {
  m_pQueue->Post(TimerCommand_Quit, nullptr);
  m_pQuitMessage = m_pQueue->Receive(0);
  return m_pQuitMessage != nullptr;
}

void KernelTimerManager::Uninitialize() {
  {
    // The queue is empty, since nobody is inside the gate, so this takes no memory.
    KernelLockGuard guard(m_pQueue);
    m_pQueue->Append(m_pQuitMessage);
  }
  m_pThread->WaitUntilFinished(IPLKernel::Time::Forever());
  m_pKernel->DestroyMessageQueue(m_pQueue);
  m_pKernel->DestroyThread(m_pThread);
  m_pQueue = nullptr;
  m_pThread = nullptr;
  FreeRecords(m_kernelTimers);
  FreeRecords(m_gmtTimers);
  PosixMutexGuard guard(s_poolLock);
  s_pLiveManager = nullptr;
  for (unsigned long i = m_freeMessages.GetSize(); i > 0; --i) {
    PLTypes_ScalarDelete(m_freeMessages[i - 1], nullptr, 0);
  }
  m_freeMessages.SetSize(0);
}

void KernelTimerManager::FreeRecords(PLArray<TimerRecord*>& list) {
  for (unsigned long i = 0; i < list.GetSize(); ++i) {
    PLTypes_ScalarDelete(list[i], nullptr, 0);
  }
  list.SetSize(0);
}

unsigned long KernelTimerManager::SetTimer(const IPLKernel::Time& delay, IPLKernel::MessageQueue& queue,
                                           bool periodic) {
  const IPLKernel::Time fireTime = SaturatingAdd(m_pKernel->GetKernelTime(), delay);
  // A period of zero or less would be due again in the pass that fired it, without end: it is not repeated.
  const bool repeated = periodic && delay > IPLKernel::Time(0);
  return Schedule(TimerCommand_Schedule,
                  MakeTracked<TimerRecord>(TimerRecord{fireTime, delay, &queue, 0, repeated, nullptr}));
}

unsigned long KernelTimerManager::SetTimerGMT(const IPLKernel::Time& instant, IPLKernel::MessageQueue& queue,
                                              const IPLKernel::Time& period) {
  const bool repeated = period > IPLKernel::Time(0);
  return Schedule(TimerCommand_ScheduleGMT,
                  MakeTracked<TimerRecord>(TimerRecord{instant, period, &queue, 0, repeated, nullptr}));
}

unsigned long KernelTimerManager::Schedule(TimerCommand command, TrackedPtr<TimerRecord> record) {
  if (record == nullptr) {
    return 0;
  }
  bool taken = false;
  const unsigned long timerID = m_pKernel->GetUniqueID();
  record->timerID = static_cast<uint32_t>(timerID);
  record->taken = &taken;
  m_pQueue->Send(command, record.get());
  if (!taken) {
    return 0;  // Send, or the list, found no memory
  }
  static_cast<void>(record.release());  // the timer thread's, which may have freed it already
  return timerID;
}

void KernelTimerManager::ClearTimer(unsigned long timerID, IPLKernel::MessageQueue& queue) {
  TimerClearRecord clear = {static_cast<uint32_t>(timerID), &queue};
  m_pQueue->Send(TimerCommand_Clear, &clear);
  WithdrawMessages(clear.timerID, queue);
}

// Takes the timer's messages out in one walk: what stays moves to the front, then the tail is cut.
void KernelTimerManager::WithdrawMessages(uint32_t timerID, IPLKernel::MessageQueue& queue) {
  KernelLockGuard guard(&queue);
  const unsigned long length = queue.GetLength();
  unsigned long kept = 0;
  for (unsigned long i = 0; i < length; ++i) {
    IPLKernel::Message* message = queue.GetAt(i);
    auto* data = static_cast<IPLKernel::TimerMessageData*>(message->GetData());
    if (message->GetID() == m_timerMessageID && data != nullptr && data->GetTimerID() == timerID) {
      data->ReleaseTimerData();
      queue.ReleaseMessage(message);
      continue;
    }
    if (kept != i) {
      queue.SetAt(kept, message);
    }
    ++kept;
  }
  for (unsigned long i = length; i > kept; --i) {
    queue.RemoveAt(i - 1);
  }
}

void KernelTimerManager::RecalculateGMT() { m_pQueue->Send(TimerCommand_RecalculateGMT, nullptr); }
