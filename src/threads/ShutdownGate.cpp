// SPDX-License-Identifier: Apache-2.0
#include "threads/ShutdownGate.h"

void ShutdownGate::Open() {
  PosixMutexGuard guard(m_mutex);
  m_open = true;
}

void ShutdownGate::CloseAndDrain() {
  PosixMutexGuard guard(m_mutex);
  m_open = false;
  while (m_inside != 0) {
    ::pthread_cond_wait(&m_left, m_mutex.GetNative());
  }
}

bool ShutdownGate::Enter() {
  PosixMutexGuard guard(m_mutex);
  if (!m_open) {
    return false;
  }
  ++m_inside;
  return true;
}

bool ShutdownGate::Join() {
  PosixMutexGuard guard(m_mutex);
  if (!m_open && m_inside == 0) {
    return false;
  }
  ++m_inside;
  return true;
}

void ShutdownGate::Leave() {
  PosixMutexGuard guard(m_mutex);
  --m_inside;
  if (m_inside == 0) {
    ::pthread_cond_broadcast(&m_left);
  }
}
