// SPDX-License-Identifier: Apache-2.0
#include <uv.h>

#include "LockCases.h"

namespace {

class UvMutex {
 public:
  UvMutex() { uv_mutex_init_recursive(&m_mutex); }
  ~UvMutex() { uv_mutex_destroy(&m_mutex); }
  void Lock() { uv_mutex_lock(&m_mutex); }
  void Unlock() { uv_mutex_unlock(&m_mutex); }

 private:
  uv_mutex_t m_mutex;
};

class UvEvent {
 public:
  UvEvent() { uv_sem_init(&m_semaphore, 0); }
  ~UvEvent() { uv_sem_destroy(&m_semaphore); }
  void Set() { uv_sem_post(&m_semaphore); }
  void Wait() { uv_sem_wait(&m_semaphore); }

 private:
  uv_sem_t m_semaphore;
};

const Registered s_registered([] {
  MeasureMutex<UvMutex>("uv");
  MeasureEvent<UvEvent>("uv");
});

}  // namespace
