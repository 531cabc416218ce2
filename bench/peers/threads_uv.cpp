// SPDX-License-Identifier: Apache-2.0
#include <uv.h>

#include "ThreadCases.h"

namespace {

class Thread {
 public:
  void Start(ThreadEnd* end) {
    uv_thread_create(
        &m_thread, [](void* data) { static_cast<ThreadEnd*>(data)->Tell(); }, end);
  }
  void Join() { uv_thread_join(&m_thread); }

 private:
  uv_thread_t m_thread = 0;
};

const Registered s_registered([] { MeasureThread<Thread>("uv"); });

}  // namespace
