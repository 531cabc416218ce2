// SPDX-License-Identifier: Apache-2.0
#include "StopSignals.h"

#include <pthread.h>

#include <utility>

namespace {

sigset_t StopSignalSet() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  return set;
}

}  // namespace

void BlockStopSignals() {
  const sigset_t set = StopSignalSet();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);
}

StopWaiter::StopWaiter() : m_thread([this] { Wait(); }) {}

StopWaiter::~StopWaiter() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bEnding = true;
    // A thread that has taken no signal sits in sigwait, or will look at m_bEnding before it does anything else. One
    // that has taken a signal waits for the condition, and must not get another: it would end the process.
    if (m_signal == 0) {
      pthread_kill(m_thread.native_handle(), SIGTERM);  // NOLINT(bugprone-bad-signal-to-kill-thread): sigwait takes it
    }
  }
  m_endingChanged.notify_one();
  m_thread.join();
}

void StopWaiter::SetTarget(std::function<void()> onStop) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_onStop = std::move(onStop);
  if (m_signal != 0 && m_onStop) {
    m_onStop();
  }
}

int StopWaiter::GetSignal() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_signal;
}

void StopWaiter::Wait() {
  const sigset_t set = StopSignalSet();
  int signal = 0;
  sigwait(&set, &signal);
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_bEnding) {
      return;
    }
    m_signal = signal;
    if (m_onStop) {
      m_onStop();
    }
  }
  // The mask is a thread's own: the next signal finds this thread, as the only one that does not block it, and takes
  // its default action or runs a handler. So the thread has to stay until the host is through.
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
  std::unique_lock<std::mutex> lock(m_mutex);
  m_endingChanged.wait(lock, [this] { return m_bEnding; });
}
