// SPDX-License-Identifier: Apache-2.0
#include <prthread.h>

#include "ThreadCases.h"

namespace {

class Thread {
 public:
  void Start(ThreadEnd* end) {
    m_pThread = PR_CreateThread(
        PR_USER_THREAD, [](void* data) { static_cast<ThreadEnd*>(data)->Tell(); }, end, PR_PRIORITY_NORMAL,
        PR_GLOBAL_THREAD, PR_JOINABLE_THREAD, 0);
  }
  void Join() { PR_JoinThread(m_pThread); }

 private:
  PRThread* m_pThread = nullptr;
};

const Registered s_registered([] { MeasureThread<Thread>("nspr"); });

}  // namespace
