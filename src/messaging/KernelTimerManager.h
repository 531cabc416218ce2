// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_MESSAGING_KERNELTIMERMANAGER_H
#define IPL_MESSAGING_KERNELTIMERMANAGER_H

#include <stdint.h>

#include <ipl/IPLKernel.h>
#include <ipl/PLArray.h>

#include "foundation/TrackedMemory.h"
#include "messaging/TimerList.h"
#include "messaging/TimerRequests.h"
#include "threads/PosixMutex.h"
#include "threads/ShutdownGate.h"

/// Turns timer requests into messages. The schedule belongs to one thread, "TimerManager"; requests reach it as
/// commands on a queue of its own, and the thread that asks waits in Send until its command was taken.
class KernelTimerManager {
 public:
  using TimerRecord = ::TimerRecord;

  enum TimerCommand : unsigned long {
    TimerCommand_Schedule = 0,        // data: TimerRecord*
    TimerCommand_ScheduleGMT = 1,     // data: TimerRecord*
    TimerCommand_Clear = 2,           // data: TimerClearRecord*
    TimerCommand_RecalculateGMT = 3,  // no data
    TimerCommand_Quit = 4,            // no data
  };

  /// On the stack of the thread that clears.
  struct TimerClearRecord {
    uint32_t timerID;
    IPLKernel::MessageQueue* queue;
  };

  /// What a timer's message points to. Objects return to the manager's pool; one that its receiver gives back when the
  /// manager is gone is freed, and left alone when the kernel is gone.
  class TimerMessage : public IPLKernel::TimerMessageData, public TrackedObject {
   public:
    TimerMessage(IPLKernel::Time kernelTime, IPLKernel::Time gmtTime, uint32_t id, KernelTimerManager* owner)
        : fireTimeKernel(kernelTime), fireTimeGMT(gmtTime), timerID(id), manager(owner) {}

    void ReleaseTimerData() override;
    const IPLKernel::Time& GetFireTimeKernel() override;
    const IPLKernel::Time& GetFireTimeGMT() override;
    unsigned long GetTimerID() override;

    IPLKernel::Time fireTimeKernel;
    IPLKernel::Time fireTimeGMT;
    uint32_t timerID;
    KernelTimerManager* manager;  // not owned
  };

  KernelTimerManager();
  virtual ~KernelTimerManager();
  KernelTimerManager(const KernelTimerManager&) = delete;
  KernelTimerManager& operator=(const KernelTimerManager&) = delete;

  /// Starts the timer thread. Returns false if that fails: then only the destructor may follow.
  bool Initialize(IPLKernel* kernel);
  /// Ends the timer thread, waits for it and drops what is pending. No operation may be going on: see s_gate.
  void Uninitialize();

  // [any thread but the timer thread] [blocks] The first two return 0, and do nothing, when memory is exhausted.
  // ClearTimer needs none.
  unsigned long SetTimer(const IPLKernel::Time& delay, IPLKernel::MessageQueue& queue, bool periodic);
  unsigned long SetTimerGMT(const IPLKernel::Time& instant, IPLKernel::MessageQueue& queue,
                            const IPLKernel::Time& period);
  void ClearTimer(unsigned long timerID, IPLKernel::MessageQueue& queue);
  /// Has the GMT timers looked at again, after the GMT clock was set.
  void RecalculateGMT();

  unsigned long GetTimerMessageID() const { return m_timerMessageID; }

  /// Every timer operation passes this gate, and shut-down closes it before it ends the manager: nobody waits for the
  /// timer thread once it was told to quit.
  static IPL_HIDDEN ShutdownGate s_gate;
  /// Returns when each release of a timer message that has begun is over. Takes the lock of the pool.
  static void AwaitReleases();

 private:
  template <typename>
  friend struct PLContractLayout;

  // On the timer thread only.
  static void StaticTimerThreadProc(IPLKernel::Thread* thread, void* manager);
  void TimerThreadProc();
  void HandleCommand(IPLKernel::Message* message);
  void DispatchTimers(IPLKernel::Time& wait);
  void FireDue(PLArray<TimerRecord*>& list, IPLKernel::Time now, IPLKernel::Time kernelNow, IPLKernel::Time gmtNow);
  void Fire(TimerRecord* record, PLArray<TimerRecord*>& list, IPLKernel::Time now, IPLKernel::Time kernelNow,
            IPLKernel::Time gmtNow);
  bool PostTimerMessage(const TimerRecord& record, IPLKernel::Time kernelNow, IPLKernel::Time gmtNow);
  bool ScheduleTimer(TimerRecord* record, PLArray<TimerRecord*>& list);
  void ScheduleTimerGMT(TimerRecord* record, const IPLKernel::Time& kernelNow, const IPLKernel::Time& gmtNow);
  void ClearTimerRecord(TimerClearRecord* clear);
  TimerMessage* CreateTimerMessage(const IPLKernel::Time& kernelTime, const IPLKernel::Time& gmtTime,
                                   unsigned long timerID);
  void RecalculateGMTFireTimes() {}  // the pass that follows looks at the GMT timers with the new clock

  // On the threads of callers.
  unsigned long Schedule(TimerCommand command, TrackedPtr<TimerRecord> record);
  void ReleaseTimerMessage(TimerMessage* message) PL_REQUIRES(s_poolLock);  // to the pool, or frees it
  void WithdrawMessages(uint32_t timerID, IPLKernel::MessageQueue& queue);
  void ClearWithoutMemory(const TimerClearRecord& clear);
  IPLKernel::Message* Reserve(TimerCommand command, void* data);
  void AppendReserved(IPLKernel::Message* message);
  void FreeRecords(PLArray<TimerRecord*>& list);

  /// Guards the pool and s_pLiveManager; the innermost lock, held for a pool operation only.
  static IPL_HIDDEN PosixMutex s_poolLock;
  /// The manager that takes timer messages back; null when there is none.
  static IPL_HIDDEN KernelTimerManager* s_pLiveManager PL_GUARDED_BY(s_poolLock);

  IPLKernel* m_pKernel;                                             // not owned
  IPLKernel::Thread* m_pThread;                                     // owned
  IPLKernel::MessageQueue* m_pQueue;                                // owned; the commands
  uint32_t m_timerMessageID;                                        // never changes once it was drawn
  PLArray<TimerRecord*> m_kernelTimers;                             // and their records: owned by the timer thread
  PLArray<TimerRecord*> m_gmtTimers;                                // and their records: owned by the timer thread
  PLArray<TimerMessage*> m_freeMessages PL_GUARDED_BY(s_poolLock);  // owned
  // Behind the fields of the contract. Commands that are made beforehand, so that shut-down and ClearTimer need no
  // memory:
  IPLKernel::Message* m_pQuitMessage;     // owned
  IPLKernel::Message* m_pClearMessage;    // owned; its data is m_reservedClear
  IPLKernel::Event* m_pCleared;           // owned; set by the timer thread when it is through with it
  PosixMutex m_clearLock;                 // held by the one caller that uses them, while it waits
  TimerClearRecord m_reservedClear = {};  // written under m_clearLock, read by the timer thread
  TimerRequests m_requests;
};

#endif  // IPL_MESSAGING_KERNELTIMERMANAGER_H
