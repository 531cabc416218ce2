// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_TESTTHREAD_H
#define IPL_TESTS_SUPPORT_TESTTHREAD_H

#include <pthread.h>
#include <semaphore.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <list>
#include <string>

#include "support/KernelFixture.h"

using Function = std::function<void()>;

/// Nanoseconds of a clock of the system.
inline int64_t Now(clockid_t clock) {
  timespec now = {};
  clock_gettime(clock, &now);
  return static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

/// How threads of a test meet without help of what is tested.
class Semaphore {
 public:
  Semaphore() { sem_init(&m_semaphore, 0, 0); }
  ~Semaphore() { sem_destroy(&m_semaphore); }
  void Give() { sem_post(&m_semaphore); }
  /// Returns false when nobody gave it in that time.
  bool Take(int64_t milliseconds = 3600000) {
    const int64_t end = Now(CLOCK_REALTIME) + milliseconds * 1000000;
    const timespec deadline = {static_cast<time_t>(end / 1000000000), static_cast<long>(end % 1000000000)};
    return TEMP_FAILURE_RETRY(sem_timedwait(&m_semaphore, &deadline)) == 0;
  }

 private:
  sem_t m_semaphore;
};

/// A procedure for Run and Detach whose user data is a Function.
inline void CallFunction(IPLKernel::Thread*, void* function) { (*static_cast<Function*>(function))(); }

/// A kernel thread that runs a function, and ends with the scope.
class TestThread {
 public:
  explicit TestThread(const Function& body) : m_thread(IPLKernel::GetKernel()->CreateThread()) {
    m_body = [this, body] {
      m_id = gettid();
      body();
    };
    EXPECT_TRUE(m_thread->Run("TestThread", CallFunction, &m_body));
  }
  ~TestThread() {
    EXPECT_TRUE(m_thread->WaitUntilFinished(IPLKernel::Time::Forever()));
    IPLKernel::GetKernel()->DestroyThread(m_thread);
  }
  IPLKernel::Thread* operator->() const { return m_thread; }
  /// Returns when the thread waits for something in the system.
  void AwaitBlocked() const {
    for (std::string word; word != "S"; sched_yield()) {
      std::ifstream("/proc/self/task/" + std::to_string(m_id) + "/stat") >> word >> word >> word;
    }
  }

 private:
  IPLKernel::Thread* m_thread;
  Function m_body;
  std::atomic<pid_t> m_id{0};
};

class ThreadFixture : public KernelFixture {
 protected:
  static constexpr int kDone = -2;
  static constexpr int kTimeout = 2;
  static constexpr int kMark = 5;  // PLError_Usage, which no operation stores

  ThreadFixture() { kernel->SetLastError(PLError_Usage); }
  /// Returns kDone for an operation that succeeded and stored no error; else the code of the last error, which is the
  /// mark where none was stored. Leaves the mark.
  int Outcome(bool succeeded) {
    const int code = kernel->GetLastError().GetCode();
    kernel->SetLastError(PLError_Usage);
    return succeeded && code == kMark ? kDone : code;
  }

  const IPLKernel::Time kForever = IPLKernel::Time::Forever();
};

#endif  // IPL_TESTS_SUPPORT_TESTTHREAD_H
