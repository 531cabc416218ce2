// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIMEROWNER_H
#define IPL_TIMEROWNER_H

#include <ipl/IPLKernel.h>

/// @file
/// An owner of a timer.

namespace ipl {

/// Owns a timer and ends it with IPLKernel::ClearTimer: afterwards none of its messages is in its queue and none comes.
/// A timer that has fired and is not periodic may be owned and cleared as well. It ends before its queue is destroyed.
///
///   ipl::TimerOwner timer(kernel->SetTimer(IPLKernel::Time::Milliseconds(250), *queue, true), *queue);
///
/// Once the kernel object is gone it does nothing. [owner] Clearing is [any thread but the timer thread] [blocks] and
/// waits without a lock; the caller holds the lock of no queue that has timers.
class TimerOwner {
 public:
  /// An empty owner.
  IPL_ALWAYS_INLINE TimerOwner() noexcept : m_timerID(0), m_pQueue(nullptr) {}
  /// Takes over what SetTimer or SetTimerGMT returned for queue; 0 makes an empty owner.
  IPL_ALWAYS_INLINE TimerOwner(unsigned long timerID, IPLKernel::MessageQueue& queue) noexcept
      : m_timerID(timerID), m_pQueue(&queue) {}
  /// Takes over what other owns, which becomes empty.
  IPL_ALWAYS_INLINE TimerOwner(TimerOwner&& other) noexcept : m_timerID(other.release()), m_pQueue(other.m_pQueue) {}
  /// Clears what this owns, then takes over what other owns, which becomes empty. Assigning to itself does nothing.
  IPL_ALWAYS_INLINE TimerOwner& operator=(TimerOwner&& other) noexcept {
    if (this != &other) {
      reset();
      m_timerID = other.release();
      m_pQueue = other.m_pQueue;
    }
    return *this;
  }
  TimerOwner(const TimerOwner&) = delete;
  TimerOwner& operator=(const TimerOwner&) = delete;
  /// Clears the timer, if there is one.
  IPL_ALWAYS_INLINE ~TimerOwner() { reset(); }

  /// Returns the timer's identifier, 0 if there is none. It stays owned.
  IPL_ALWAYS_INLINE unsigned long get() const noexcept { return m_timerID; }
  /// Gives up the ownership. Returns the identifier, 0 if there is none; the caller clears the timer from now on.
  IPL_ALWAYS_INLINE unsigned long release() noexcept {
    const unsigned long timerID = m_timerID;
    m_timerID = 0;
    return timerID;
  }
  /// Clears the timer, if there is one.
  IPL_ALWAYS_INLINE void reset() noexcept {
    const unsigned long timerID = release();
    IPLKernel* const kernel = timerID != 0 ? IPLKernel::GetKernel() : nullptr;
    if (kernel != nullptr) {
      kernel->ClearTimer(timerID, *m_pQueue);
    }
  }
  /// Returns whether there is a timer.
  IPL_ALWAYS_INLINE explicit operator bool() const noexcept { return m_timerID != 0; }

 private:
  unsigned long m_timerID;            // owned, 0 for none
  IPLKernel::MessageQueue* m_pQueue;  // not owned
};

}  // namespace ipl

#endif  // IPL_TIMEROWNER_H
