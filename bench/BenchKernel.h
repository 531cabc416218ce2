// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_BENCHKERNEL_H
#define IPL_BENCH_BENCHKERNEL_H

#include <stdint.h>

#include <thread>

#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>

/// A running kernel for a scope, its timer thread too, so that no measurement pays for starting it.
class RunningKernel {
 public:
  RunningKernel() : m_pKernel(static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule())) {
    static const char* arguments[] = {"bench", nullptr};
    IPLModule_IPLKernel_InitializeKernel(1, arguments);
    static_cast<void>(m_pKernel->GetTimerMessageID());
  }
  ~RunningKernel() { IPLModule_IPLKernel_UnloadModule(m_pKernel); }
  RunningKernel(const RunningKernel&) = delete;
  RunningKernel& operator=(const RunningKernel&) = delete;

  IPLKernel* operator->() const { return m_pKernel; }
  int64_t Now() const { return m_pKernel->GetKernelTime().GetNanoseconds(); }

 private:
  IPLKernel* m_pKernel;
};

/// A thread that receives from a queue and releases at once, until its scope ends.
class Replier {
 public:
  explicit Replier(const RunningKernel& kernel) : m_kernel(kernel), m_pQueue(kernel->CreateMessageQueue()) {
    m_thread = std::thread([this] {
      unsigned long id = 1;
      while (id != 0) {
        IPLKernel::Message* message = m_pQueue->Receive(IPLKernel::Time::Forever());
        id = message->GetID();
        m_pQueue->ReleaseMessage(message);
      }
    });
  }
  ~Replier() {
    m_pQueue->Post(0, nullptr);
    m_thread.join();
    m_kernel->DestroyMessageQueue(m_pQueue);
  }
  Replier(const Replier&) = delete;
  Replier& operator=(const Replier&) = delete;

  void RoundTrip() { m_pQueue->Send(1, nullptr); }

 private:
  const RunningKernel& m_kernel;
  IPLKernel::MessageQueue* m_pQueue;  // owned
  std::thread m_thread;
};

#endif  // IPL_BENCH_BENCHKERNEL_H
