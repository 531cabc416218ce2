// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_TIMERQUEUE_H
#define IPL_BENCH_TIMERQUEUE_H

#include <thread>
#include <vector>

#include "BenchKernel.h"

/// Calls set(i) for each i below count, on many threads, nearly in order: the timer thread then answers many requests
/// before it sleeps again, which is several times as fast as one after the other.
template <typename Set>
void SetTogether(int64_t count, Set set) {
  constexpr int64_t kThreads = 32;
  std::vector<std::thread> threads;
  for (int64_t first = 0; first < kThreads; ++first) {
    threads.emplace_back([=] {
      for (int64_t i = first; i < count; i += kThreads) {
        set(i);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

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

  /// Gives back all messages that are there, in a time proportional to their number, which it returns.
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

#endif  // IPL_BENCH_TIMERQUEUE_H
