// SPDX-License-Identifier: Apache-2.0
#include "BenchKernel.h"
#include "LockCases.h"
#include "Posix.h"
#include "QueueCases.h"
#include "Rules.h"

namespace {

const RunningKernel s_kernel;

class OurQueue {
 public:
  OurQueue() : m_pQueue(s_kernel->CreateMessageQueue()) {}
  ~OurQueue() { s_kernel->DestroyMessageQueue(m_pQueue); }
  OurQueue(const OurQueue&) = delete;
  OurQueue& operator=(const OurQueue&) = delete;

  void Post(uintptr_t value) { m_pQueue->Post(value, nullptr); }
  uintptr_t Receive() {
    IPLKernel::Message* message = m_pQueue->Receive(IPLKernel::Time::Forever());
    const uintptr_t value = message->GetID();
    m_pQueue->ReleaseMessage(message);
    return value;
  }

 private:
  IPLKernel::MessageQueue* m_pQueue;  // owned
};

void OurSendReply(State& state) {
  const OneProcessor one;
  Replier replier(s_kernel);
  while (state.KeepRunning()) {
    replier.RoundTrip();
  }
}

const Registered s_registered([] {
  MeasureQueue<OurQueue>("ours");
  MeasureQueue<PosixQueue>("limit");
  MeasureQueue<RulesQueue>("rules");
  Measure("SendReply/ours", OurSendReply);
  Measure("SendReply/limit", PingPong<PosixEvent>);
});

}  // namespace
