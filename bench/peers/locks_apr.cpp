// SPDX-License-Identifier: Apache-2.0
#include <apr_general.h>
#include <apr_thread_cond.h>
#include <apr_thread_mutex.h>

#include "LockCases.h"

namespace {

class AprPool {
 public:
  AprPool() { apr_pool_create(&m_pPool, nullptr); }
  ~AprPool() { apr_pool_destroy(m_pPool); }
  apr_pool_t* Get() const { return m_pPool; }

 private:
  apr_pool_t* m_pPool = nullptr;
};

class AprMutex {
 public:
  AprMutex() { apr_thread_mutex_create(&m_pMutex, APR_THREAD_MUTEX_NESTED, m_pool.Get()); }
  void Lock() { apr_thread_mutex_lock(m_pMutex); }
  void Unlock() { apr_thread_mutex_unlock(m_pMutex); }

 private:
  AprPool m_pool;
  apr_thread_mutex_t* m_pMutex = nullptr;
};

class AprEvent {
 public:
  AprEvent() {
    apr_thread_mutex_create(&m_pMutex, APR_THREAD_MUTEX_UNNESTED, m_pool.Get());
    apr_thread_cond_create(&m_pCondition, m_pool.Get());
  }
  void Set() {
    apr_thread_mutex_lock(m_pMutex);
    m_set = true;
    apr_thread_mutex_unlock(m_pMutex);
    apr_thread_cond_signal(m_pCondition);
  }
  void Wait() {
    apr_thread_mutex_lock(m_pMutex);
    while (!m_set) {
      apr_thread_cond_wait(m_pCondition, m_pMutex);
    }
    m_set = false;
    apr_thread_mutex_unlock(m_pMutex);
  }

 private:
  AprPool m_pool;
  apr_thread_mutex_t* m_pMutex = nullptr;
  apr_thread_cond_t* m_pCondition = nullptr;
  bool m_set = false;
};

const Registered s_registered([] {
  apr_initialize();
  MeasureMutex<AprMutex>("apr");
  MeasureEvent<AprEvent>("apr");
});

}  // namespace
