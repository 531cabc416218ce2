// SPDX-License-Identifier: Apache-2.0
#include <Poco/Thread.h>

#include "ThreadCases.h"

namespace {

class Thread {
 public:
  void Start(ThreadEnd* end) {
    m_thread.start([](void* data) { static_cast<ThreadEnd*>(data)->Tell(); }, end);
  }
  void Join() { m_thread.join(); }

 private:
  Poco::Thread m_thread;
};

const Registered s_registered([] { MeasureThread<Thread>("poco"); });

}  // namespace
