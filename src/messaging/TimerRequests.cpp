// SPDX-License-Identifier: Apache-2.0
#include "messaging/TimerRequests.h"

TimerRequests::Request::Request(TimerRequests& requests, const void* data) : m_requests(requests), m_pData(data) {
  PosixMutexGuard guard(m_requests.m_lock);
  m_pNext = m_requests.m_pFirst;
  m_requests.m_pFirst = this;
}

TimerRequests::Request::~Request() {
  PosixMutexGuard guard(m_requests.m_lock);
  Request** link = &m_requests.m_pFirst;
  while (*link != this) {
    link = &(*link)->m_pNext;
  }
  *link = m_pNext;
}

bool TimerRequests::Request::WasMet() const {
  PosixMutexGuard guard(m_requests.m_lock);
  return m_bMet;
}

void TimerRequests::SetMet(const void* data) {
  PosixMutexGuard guard(m_lock);
  for (Request* request = m_pFirst; request != nullptr; request = request->m_pNext) {
    if (request->m_pData == data) {
      request->m_bMet = true;
      return;
    }
  }
}
