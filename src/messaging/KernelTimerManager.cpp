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
  IPL_ASSERT_SIZE(TimerRecord, 32);
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
    : m_pKernel(nullptr),
      m_pThread(nullptr),
      m_pQueue(nullptr),
      m_timerMessageID(0),
      m_pQuitMessage(nullptr),
      m_pClearMessage(nullptr),
      m_pCleared(nullptr) {}

KernelTimerManager::~KernelTimerManager() {
  if (m_pKernel == nullptr) {
    return;
  }
  // The timer thread was never started, or has ended.
  if (m_pQueue != nullptr) {
    m_pQueue->ReleaseMessage(m_pQuitMessage);
    m_pQueue->ReleaseMessage(m_pClearMessage);
  }
  m_pKernel->DestroyMessageQueue(m_pQueue);
  m_pKernel->DestroyThread(m_pThread);
  m_pKernel->DestroyEvent(m_pCleared);
}

bool KernelTimerManager::Initialize(IPLKernel* kernel) {
  m_pKernel = kernel;
  m_pThread = kernel->CreateThread();
  m_pQueue = kernel->CreateMessageQueue();
  m_timerMessageID = static_cast<uint32_t>(kernel->GetUniqueID());
  m_pCleared = kernel->CreateEvent(false);
  if (m_pThread == nullptr || m_pQueue == nullptr || m_pCleared == nullptr) {
    return false;
  }
  m_pQuitMessage = Reserve(TimerCommand_Quit, nullptr);
  m_pClearMessage = Reserve(TimerCommand_Clear, &m_reservedClear);
  if (m_pQuitMessage == nullptr || m_pClearMessage == nullptr) {
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
  return false;
}

// Before the timer thread runs. Returns null if memory is exhausted.
IPLKernel::Message* KernelTimerManager::Reserve(TimerCommand command, void* data) {
  KernelLockGuard guard(m_pQueue);
  m_pQueue->Post(command, data);
  IPLKernel::Message* message = m_pQueue->GetLength() != 0 ? m_pQueue->GetAt(0) : nullptr;
  if (message != nullptr) {
    m_pQueue->RemoveAt(0);
  }
  return message;
}

// A list that is full may find no memory to grow; but the timer thread takes command after command out of it.
void KernelTimerManager::AppendReserved(IPLKernel::Message* message) {
  for (;; m_pThread->YieldCPU()) {
    KernelLockGuard guard(m_pQueue);
    const unsigned long length = m_pQueue->GetLength();
    m_pQueue->Append(message);
    if (m_pQueue->GetLength() != length) {
      return;
    }
  }
}

void KernelTimerManager::Uninitialize() {
  AppendReserved(m_pQuitMessage);
  m_pQuitMessage = nullptr;  // the timer thread's, which releases it
  m_pThread->WaitUntilFinished(IPLKernel::Time::Forever());
  m_pQueue->ReleaseMessage(m_pClearMessage);
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
  return Schedule(TimerCommand_Schedule, MakeTracked<TimerRecord>(TimerRecord{fireTime, delay, &queue, 0, repeated}));
}

unsigned long KernelTimerManager::SetTimerGMT(const IPLKernel::Time& instant, IPLKernel::MessageQueue& queue,
                                              const IPLKernel::Time& period) {
  const bool repeated = period > IPLKernel::Time(0);
  return Schedule(TimerCommand_ScheduleGMT,
                  MakeTracked<TimerRecord>(TimerRecord{instant, period, &queue, 0, repeated}));
}

unsigned long KernelTimerManager::Schedule(TimerCommand command, TrackedPtr<TimerRecord> record) {
  if (record == nullptr) {
    return 0;
  }
  const unsigned long timerID = m_pKernel->GetUniqueID();
  record->timerID = static_cast<uint32_t>(timerID);
  const TimerRequests::Request request(m_requests, record.get());
  m_pQueue->Send(command, record.get());
  if (!request.WasMet()) {
    return 0;  // Send, or the list, found no memory
  }
  static_cast<void>(record.release());  // the timer thread's, which may have freed it already
  return timerID;
}

void KernelTimerManager::ClearTimer(unsigned long timerID, IPLKernel::MessageQueue& queue) {
  TimerClearRecord clear = {static_cast<uint32_t>(timerID), &queue};
  {
    const TimerRequests::Request request(m_requests, &clear);
    m_pQueue->Send(TimerCommand_Clear, &clear);
    if (!request.WasMet()) {
      ClearWithoutMemory(clear);
    }
  }
  WithdrawMessages(clear.timerID, queue);
}

void KernelTimerManager::ClearWithoutMemory(const TimerClearRecord& clear) {
  PosixMutexGuard guard(m_clearLock);
  m_reservedClear = clear;
  AppendReserved(m_pClearMessage);
  m_pCleared->Wait(IPLKernel::Time::Forever());
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
