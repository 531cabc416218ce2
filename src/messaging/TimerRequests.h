// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_MESSAGING_TIMERREQUESTS_H
#define IPL_MESSAGING_TIMERREQUESTS_H

#include "threads/PosixMutex.h"

/// Requests under way to the timer thread. A queue's Send has no result, and neither has a command: this is how the
/// thread that asks learns whether its request was met, or got lost for want of memory.
class TimerRequests {
 public:
  /// One request: on the stack of the thread that asks, from before its command is sent.
  class Request {
   public:
    /// data: of the command, and of no other one meanwhile.
    Request(TimerRequests& requests, const void* data);
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    bool WasMet() const;

   private:
    friend class TimerRequests;

    TimerRequests& m_requests;
    const void* const m_pData;
    Request* m_pNext = nullptr;  // guarded, with the next, by the lock of m_requests
    bool m_bMet = false;
  };

  /// Tells the thread that asked; does nothing if nobody did with this data. Takes the lock, for that alone.
  void SetMet(const void* data);

 private:
  mutable PosixMutex m_lock;  // an innermost lock
  Request* m_pFirst PL_GUARDED_BY(m_lock) = nullptr;
};

#endif  // IPL_MESSAGING_TIMERREQUESTS_H
