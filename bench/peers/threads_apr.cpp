// SPDX-License-Identifier: Apache-2.0
#include <apr_general.h>
#include <apr_thread_proc.h>

#include "ThreadCases.h"

namespace {

class Thread {
 public:
  Thread() { apr_pool_create(&m_pPool, nullptr); }
  ~Thread() { apr_pool_destroy(m_pPool); }
  void Start(ThreadEnd* end) {
    apr_thread_create(
        &m_pThread, nullptr,
        [](apr_thread_t* thread, void* data) -> void* {
          static_cast<ThreadEnd*>(data)->Tell();
          apr_thread_exit(thread, APR_SUCCESS);
          return nullptr;
        },
        end, m_pPool);
  }
  void Join() {
    apr_status_t result = APR_SUCCESS;
    apr_thread_join(&result, m_pThread);
  }

 private:
  apr_pool_t* m_pPool = nullptr;
  apr_thread_t* m_pThread = nullptr;
};

const Registered s_registered([] {
  apr_initialize();
  MeasureThread<Thread>("apr");
});

}  // namespace
