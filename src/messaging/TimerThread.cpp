// SPDX-License-Identifier: Apache-2.0
// What runs on the timer thread.
#include "foundation/ObjectTable.h"
#include "messaging/KernelTimerManager.h"
#include "messaging/TimeArithmetic.h"

namespace {

constexpr int64_t kNanosecondsPerSecond = 1000000000;
constexpr int64_t kSecondsPerHour = 3600;
constexpr int64_t kSecondsPerDay = 24 * kSecondsPerHour;
constexpr int64_t kLastHourOfDay = 23;

// Returns the time of day that seconds stands for, on the date of gmtNow or, if that is past, the day after.
IPLKernel::Time NextTimeOfDay(int64_t seconds, IPLKernel::Time gmtNow) {
  const int64_t days = gmtNow.GetNanoseconds() / kNanosecondsPerSecond / kSecondsPerDay;
  const int64_t today = days * kSecondsPerDay + seconds;
  const IPLKernel::Time fireTime = SaturatingSeconds(today);
  return fireTime < gmtNow ? SaturatingSeconds(today + kSecondsPerDay) : fireTime;
}

// Returns how long to wait at now for the first timer of a list; not less than 1 ns, so that the wait is no poll.
IPLKernel::Time WaitForFirst(const PLArray<TimerRecord*>& list, IPLKernel::Time now) {
  if (list.GetSize() == 0) {
    return IPLKernel::Time::Forever();
  }
  const IPLKernel::Time fireTime = list[0]->fireTime;
  return now < fireTime ? SaturatingSubtract(fireTime, now) : IPLKernel::Time(1);
}

// Holds the lock of the queue that messages are posted to, one after the other: their receiver would contend for it
// with each of them. With the lock held the queue's length tells what Post does not, whether it found memory.
class QueueLock {
 public:
  QueueLock() = default;
  explicit QueueLock(IPLKernel::MessageQueue* queue) { MoveTo(queue); }
  ~QueueLock() { MoveTo(nullptr); }
  QueueLock(const QueueLock&) = delete;
  QueueLock& operator=(const QueueLock&) = delete;

  void MoveTo(IPLKernel::MessageQueue* queue) PL_NO_THREAD_SAFETY_ANALYSIS {
    if (queue == m_pQueue) {
      return;
    }
    if (m_pQueue != nullptr) {
      m_pQueue->Unlock();
    }
    if (queue != nullptr) {
      queue->Lock();
    }
    m_pQueue = queue;
  }

 private:
  IPLKernel::MessageQueue* m_pQueue = nullptr;  // not owned
};

}  // namespace

void KernelTimerManager::StaticTimerThreadProc(IPLKernel::Thread*, void* manager) {
  static_cast<KernelTimerManager*>(manager)->TimerThreadProc();
}

// A command is released before the pass that follows it: the thread that sent it does not wait for the pass.
void KernelTimerManager::TimerThreadProc() {
  IPLKernel::Time wait = IPLKernel::Time::Forever();
  for (;;) {
    IPLKernel::Message* message = m_pQueue->Receive(wait);
    if (message != nullptr) {
      const bool quit = message->GetID() == TimerCommand_Quit;
      HandleCommand(message);
      if (message == m_pClearMessage) {
        m_pCleared->Set();  // it is used again
      } else {
        m_pQueue->ReleaseMessage(message);
      }
      if (quit) {
        return;
      }
    }
    DispatchTimers(wait);
  }
}

void KernelTimerManager::HandleCommand(IPLKernel::Message* message) {
  switch (message->GetID()) {
    case TimerCommand_Schedule:
      ScheduleTimer(static_cast<TimerRecord*>(message->GetData()), m_kernelTimers);
      break;
    case TimerCommand_ScheduleGMT: {
      const IPLKernel::Time kernelNow = m_pKernel->GetKernelTime();
      ScheduleTimerGMT(static_cast<TimerRecord*>(message->GetData()), kernelNow, m_pKernel->GetTimeGMT());
      break;
    }
    case TimerCommand_Clear:
      ClearTimerRecord(static_cast<TimerClearRecord*>(message->GetData()));
      m_requests.SetMet(message->GetData());
      break;
    case TimerCommand_RecalculateGMT:
      RecalculateGMTFireTimes();
      break;
    default:
      break;
  }
}

// A record is its sender's until its request is met: for want of memory, that is not done. Returns whether it was.
bool KernelTimerManager::ScheduleTimer(TimerRecord* record, PLArray<TimerRecord*>& list) {
  const bool scheduled = TimerList::Insert(list, record);
  if (scheduled) {
    m_requests.SetMet(record);
  }
  return scheduled;
}

void KernelTimerManager::ScheduleTimerGMT(TimerRecord* record, const IPLKernel::Time& kernelNow,
                                          const IPLKernel::Time& gmtNow) {
  if (gmtNow < record->fireTime) {
    ScheduleTimer(record, m_gmtTimers);
    return;
  }
  const int64_t seconds = record->fireTime.GetNanoseconds() / kNanosecondsPerSecond;
  if (seconds / kSecondsPerHour <= kLastHourOfDay) {
    record->fireTime = NextTimeOfDay(seconds, gmtNow);
    ScheduleTimer(record, m_gmtTimers);
    return;
  }
  // A date that has passed fires now, and from now on in its period.
  if (record->periodic) {
    record->fireTime = SaturatingAdd(record->interval, gmtNow);
    if (ScheduleTimer(record, m_gmtTimers)) {
      const QueueLock lock(record->queue);
      PostTimerMessage(*record, kernelNow, gmtNow);
    }
    return;
  }
  const QueueLock lock(record->queue);
  if (PostTimerMessage(*record, kernelNow, gmtNow)) {
    m_requests.SetMet(record);  // while its address cannot be another record's yet
    PLTypes_ScalarDelete(record, nullptr, 0);
  }
}

void KernelTimerManager::DispatchTimers(IPLKernel::Time& wait) {
  const IPLKernel::Time kernelNow = m_pKernel->GetKernelTime();
  const IPLKernel::Time gmtNow = m_pKernel->GetTimeGMT();
  FireDue(m_kernelTimers, kernelNow, kernelNow, gmtNow);
  FireDue(m_gmtTimers, gmtNow, kernelNow, gmtNow);
  const IPLKernel::Time kernelWait = WaitForFirst(m_kernelTimers, m_pKernel->GetKernelTime());
  const IPLKernel::Time gmtWait = WaitForFirst(m_gmtTimers, m_pKernel->GetTimeGMT());
  wait = gmtWait < kernelWait ? gmtWait : kernelWait;
}

// A record that is re-armed fires after now, hence not again in this pass: it is enough to look at those due when the
// pass begins. A single periodic one only moves to its new place. A few are taken out first, as the list is then right
// when a client sees its message; many stay until all have fired, and the gap that they leave is closed once.
void KernelTimerManager::FireDue(PLArray<TimerRecord*>& list, IPLKernel::Time now, IPLKernel::Time kernelNow,
                                 IPLKernel::Time gmtNow) {
  constexpr unsigned long kFew = 16;
  const unsigned long due = TimerList::CountDue(list, now);
  if (due == 0) {
    return;
  }
  QueueLock lock;
  TimerRecord* first = list[0];
  if (due == 1 && first->periodic) {
    first->fireTime = SaturatingAdd(first->interval, now);
    TimerList::RearmFirst(list);
    lock.MoveTo(first->queue);
    PostTimerMessage(*first, kernelNow, gmtNow);
    return;
  }
  if (due <= kFew) {
    TimerRecord* few[kFew];
    for (unsigned long i = 0; i < due; ++i) {
      few[i] = list[i];
    }
    TimerList::RemoveFront(list, due);
    for (unsigned long i = 0; i < due; ++i) {
      lock.MoveTo(few[i]->queue);
      Fire(few[i], list, now, kernelNow, gmtNow);
    }
    return;
  }
  TimerRecord* kept = nullptr;
  TimerRecord** link = &kept;
  unsigned long keptCount = 0;
  for (unsigned long i = 0; i < due; ++i) {
    TimerRecord* record = list[i];
    lock.MoveTo(record->queue);
    PostTimerMessage(*record, kernelNow, gmtNow);
    if (record->periodic) {
      record->fireTime = SaturatingAdd(record->interval, now);
      *link = record;
      link = &record->next;
      ++keptCount;
    } else {
      PLTypes_ScalarDelete(record, nullptr, 0);
    }
  }
  *link = nullptr;
  TimerList::Rearm(list, due, kept, keptCount);
}

// Fires a record that was taken out of the list, which therefore has room for it.
void KernelTimerManager::Fire(TimerRecord* record, PLArray<TimerRecord*>& list, IPLKernel::Time now,
                              IPLKernel::Time kernelNow, IPLKernel::Time gmtNow) {
  PostTimerMessage(*record, kernelNow, gmtNow);
  if (record->periodic) {
    record->fireTime = SaturatingAdd(record->interval, now);
    static_cast<void>(TimerList::Insert(list, record));
  } else {
    PLTypes_ScalarDelete(record, nullptr, 0);
  }
}

// With the lock of the record's queue held. Without memory this firing is lost, and nothing else. Returns false then.
// A queue that is not of the kernel's own class is trusted: it may have passed the message on already. One that drops
// it has to release its data.
bool KernelTimerManager::PostTimerMessage(const TimerRecord& record, IPLKernel::Time kernelNow,
                                          IPLKernel::Time gmtNow) {
  TimerMessage* data = CreateTimerMessage(kernelNow, gmtNow, record.timerID);
  if (data == nullptr) {
    return false;
  }
  const unsigned long length = record.queue->GetLength();
  record.queue->Post(m_timerMessageID, static_cast<IPLKernel::TimerMessageData*>(data));
  const bool posted = record.queue->GetLength() != length || TableOf(record.queue) != TableOf(m_pQueue);
  if (!posted) {
    data->ReleaseTimerData();
  }
  return posted;
}

void KernelTimerManager::ClearTimerRecord(TimerClearRecord* clear) {
  PLArray<TimerRecord*>* list = &m_kernelTimers;
  unsigned long index = TimerList::Find(*list, clear->timerID);
  if (index == list->GetSize()) {
    list = &m_gmtTimers;
    index = TimerList::Find(*list, clear->timerID);
  }
  if (index != list->GetSize() && (*list)[index]->queue == clear->queue) {
    PLTypes_ScalarDelete((*list)[index], nullptr, 0);
    list->RemoveAt(index);
  }
}
