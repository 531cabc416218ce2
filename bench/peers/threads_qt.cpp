// SPDX-License-Identifier: Apache-2.0
#include <QThread>
#include <memory>

#include "ThreadCases.h"

namespace {

class Thread {
 public:
  void Start(ThreadEnd* end) {
    m_pThread.reset(QThread::create([end] { end->Tell(); }));
    m_pThread->start();
  }
  void Join() { m_pThread->wait(); }

 private:
  std::unique_ptr<QThread> m_pThread;
};

const Registered s_registered([] { MeasureThread<Thread>("qt"); });

}  // namespace
