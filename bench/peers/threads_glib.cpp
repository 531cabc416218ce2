// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "ThreadCases.h"

namespace {

class Thread {
 public:
  void Start(ThreadEnd* end) {
    m_pThread = g_thread_new(
        "bench",
        [](gpointer data) -> gpointer {
          static_cast<ThreadEnd*>(data)->Tell();
          return nullptr;
        },
        end);
  }
  void Join() { g_thread_join(m_pThread); }

 private:
  GThread* m_pThread = nullptr;
};

const Registered s_registered([] { MeasureThread<Thread>("glib"); });

}  // namespace
