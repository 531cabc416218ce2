// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_BENCHKERNEL_H
#define IPL_BENCH_BENCHKERNEL_H

#include <stdint.h>

#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>

/// A running kernel for a scope. Its timer thread runs from the start on, so no measurement pays for starting it, and
/// none is made in a process with one thread, where the C library leaves out its atomic operations.
class RunningKernel {
 public:
  RunningKernel() : m_pKernel(static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule())) {
    static const char* arguments[] = {"bench", nullptr};
    IPLModule_IPLKernel_InitializeKernel(1, arguments);
    static_cast<void>(m_pKernel->GetTimerMessageID());
  }
  ~RunningKernel() { IPLModule_IPLKernel_UnloadModule(m_pKernel); }
  RunningKernel(const RunningKernel&) = delete;
  RunningKernel& operator=(const RunningKernel&) = delete;

  IPLKernel* operator->() const { return m_pKernel; }
  int64_t Now() const { return m_pKernel->GetKernelTime().GetNanoseconds(); }

 private:
  IPLKernel* m_pKernel;
};

/// A queue that nothing but timers post to. Those still pending when it is destroyed must be far away: the kernel has
/// to be gone before one is due.
class TimerQueue {
 public:
  explicit TimerQueue(const RunningKernel& kernel) : m_kernel(kernel), m_pQueue(kernel->CreateMessageQueue()) {}
  ~TimerQueue() {
    DiscardAll();
    m_kernel->DestroyMessageQueue(m_pQueue);
  }
  TimerQueue(const TimerQueue&) = delete;
  TimerQueue& operator=(const TimerQueue&) = delete;

  IPLKernel::MessageQueue& Get() const { return *m_pQueue; }

  /// Waits for a message and gives it back. Returns the kernel's time of the pass that fired the timer.
  int64_t Receive() {
    IPLKernel::Message* message = m_pQueue->Receive(IPLKernel::Time::Forever());
    const int64_t fireTime = Data(message)->GetFireTimeKernel().GetNanoseconds();
    GiveBack(message);
    return fireTime;
  }

  /// Gives back all messages that are there, and returns their number, in a time proportional to it.
  unsigned long DiscardAll() {
    m_pQueue->Lock();
    const unsigned long length = m_pQueue->GetLength();
    for (unsigned long i = 0; i < length; ++i) {
      GiveBack(m_pQueue->GetAt(i));
    }
    m_pQueue->RemoveAll();
    m_pQueue->Unlock();
    return length;
  }

 private:
  static IPLKernel::TimerMessageData* Data(IPLKernel::Message* message) {
    return static_cast<IPLKernel::TimerMessageData*>(message->GetData());
  }
  void GiveBack(IPLKernel::Message* message) {
    Data(message)->ReleaseTimerData();
    m_pQueue->ReleaseMessage(message);
  }

  const RunningKernel& m_kernel;
  IPLKernel::MessageQueue* m_pQueue;  // owned
};

#endif  // IPL_BENCH_BENCHKERNEL_H
