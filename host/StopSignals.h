// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_HOST_STOPSIGNALS_H
#define IPL_HOST_STOPSIGNALS_H

#include <csignal>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// Blocks SIGINT and SIGTERM in the calling thread and in all threads that are started from now on, so that they reach
/// no thread but StopWaiter's. Also undoes that they are ignored, as they are for a shell's background jobs.
void BlockStopSignals();

/// Waits for the first SIGINT or SIGTERM on a thread of its own, where it arrives though a handler is installed for it.
/// From then on a second one does what it does without this class: it ends the process, or runs the handler, on that
/// thread. So a host that hangs can be stopped. The destructor ends the thread.
class StopWaiter {
 public:
  StopWaiter();
  ~StopWaiter();
  StopWaiter(const StopWaiter&) = delete;
  StopWaiter& operator=(const StopWaiter&) = delete;

  /// onStop is called once, on the waiting thread, if a signal arrives; or here, if one has arrived. A null function
  /// takes the last one back: when this returns it is not called any more.
  void SetTarget(std::function<void()> onStop);

  /// Returns the signal that arrived, 0 if none did. It is known before onStop is called.
  int GetSignal();

 private:
  void Wait();

  std::mutex m_mutex;  // guards the three below; held while m_onStop runs
  std::function<void()> m_onStop;
  int m_signal = 0;
  bool m_bEnding = false;
  std::condition_variable m_endingChanged;
  std::thread m_thread;  // last: it uses all of the above
};

#endif  // IPL_HOST_STOPSIGNALS_H
