// SPDX-License-Identifier: Apache-2.0
#include "threads/ThreadSupportGate.h"

void ThreadSupportGate::Open() {
  RecursiveMutexGuard guard(m_mutex);
  m_open = true;
}

void ThreadSupportGate::CloseAndDrain() {
  RecursiveMutexGuard guard(m_mutex);
  m_open = false;
  while (m_inside != 0) {
    ::pthread_cond_wait(&m_left, m_mutex.GetNative());
  }
}

bool ThreadSupportGate::Enter() {
  RecursiveMutexGuard guard(m_mutex);
  if (!m_open) {
    return false;
  }
  ++m_inside;
  return true;
}

void ThreadSupportGate::Leave() {
  RecursiveMutexGuard guard(m_mutex);
  --m_inside;
  if (m_inside == 0) {
    ::pthread_cond_broadcast(&m_left);
  }
}
