// SPDX-License-Identifier: Apache-2.0
// From the call that starts a thread until its procedure is at its end. The curve has N other threads asleep.
#include <pthread.h>

#include <thread>
#include <vector>

#include "BenchKernel.h"
#include "ThreadCases.h"

namespace {

const RunningKernel s_kernel;
constexpr unsigned long kStackSize = 1048576;  // what the kernel gives its threads

// WaitUntilFinished pauses for 10 ms when the thread still runs, so the objects take turns: when one's turn comes again
// its run ended long ago.
class OurThread {
 public:
  OurThread() {
    for (IPLKernel::Thread*& thread : m_threads) {
      thread = s_kernel->CreateThread();
    }
  }
  ~OurThread() {
    for (IPLKernel::Thread* thread : m_threads) {
      thread->WaitUntilFinished(IPLKernel::Time::Forever());
      s_kernel->DestroyThread(thread);
    }
  }
  OurThread(const OurThread&) = delete;
  OurThread& operator=(const OurThread&) = delete;

  void Start(ThreadEnd* end) {
    m_threads[m_next]->Run(
        "bench", [](IPLKernel::Thread*, void* data) { static_cast<ThreadEnd*>(data)->Tell(); }, end);
  }
  void Join() {
    m_next = (m_next + 1) % kCount;
    m_threads[m_next]->WaitUntilFinished(IPLKernel::Time::Forever());
  }

 private:
  static constexpr int kCount = 8;
  IPLKernel::Thread* m_threads[kCount];
  int m_next = 0;
};

class PosixThread {
 public:
  void Start(ThreadEnd* end) {
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, kStackSize);
    ::pthread_create(
        &m_thread, &attributes,
        [](void* data) -> void* {
          static_cast<ThreadEnd*>(data)->Tell();
          return nullptr;
        },
        end);
    ::pthread_attr_destroy(&attributes);
  }
  void Join() { ::pthread_join(m_thread, nullptr); }

 private:
  pthread_t m_thread = 0;
};

template <typename Thread>
void Among(State& state) {
  const OneProcessor one;
  ThreadEnd end;
  std::vector<std::thread> others;
  for (int64_t i = 0; i < state.range(0); ++i) {
    others.emplace_back([&] { end.Wait(); });
  }
  RunToEnd<Thread>(state);
  for (size_t i = 0; i < others.size(); ++i) {
    end.Tell();
  }
  for (std::thread& other : others) {
    other.join();
  }
}

const Registered s_registered([] {
  MeasureThread<OurThread>("ours");
  MeasureThread<PosixThread>("limit");
  MeasureManually("RunToEnd.among/ours", 500, Among<OurThread>)->Arg(10)->Arg(100)->Arg(500);
  MeasureManually("RunToEnd.among/limit", 500, Among<PosixThread>)->Arg(10)->Arg(100)->Arg(500);
});

}  // namespace
