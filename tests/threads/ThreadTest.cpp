// SPDX-License-Identifier: Apache-2.0
#include <sys/resource.h>
#include <sys/syscall.h>

#include <algorithm>

#include "support/AllocControl.h"
#include "support/TestThread.h"

constexpr size_t kMiB = 1048576;

class ThreadTest : public ThreadFixture {
 protected:
  ~ThreadTest() override { kernel->DestroyThread(thread); }
  std::string Name(unsigned long size = 64) {
    char buffer[64] = "untouched";
    thread->GetName(buffer, size);
    return buffer;
  }
  void RunToEnd(Function body) {
    ASSERT_TRUE(thread->Run("run", CallFunction, &body));
    EXPECT_EQ(Outcome(thread->WaitUntilFinished(kForever)), kDone);
  }

  IPLKernel::Thread* thread = kernel->CreateThread();
};

TEST_F(ThreadTest, RunsOnceAtATimeAndAgain) {
  EXPECT_EQ(thread->GetPriority(), 128);
  EXPECT_EQ(thread->GetStackSize(), 0U);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Outcome(thread->WaitUntilFinished(0)), kDone) << "it never ran";
  EXPECT_EQ(kernel->GetCurrentThread(), nullptr);
  Semaphore finish;
  int runs = 0;
  Function body = [&] {
    EXPECT_EQ(kernel->GetCurrentThread(), thread);
    EXPECT_EQ(Outcome(true), 0) << "nothing stays from the run before";
    EXPECT_EQ(Outcome(thread->WaitUntilFinished(kForever)), kernel->m_ThreadCantWaitOnSelf.GetCode());
    thread->YieldCPU();
    finish.Take();
    ++runs;
  };
  const char* names[] = {"abcdefghijklmnopqrstuvwxyz1234", nullptr};
  for (int run = 1; run <= 2; ++run) {
    EXPECT_EQ(Outcome(thread->Run(names[run - 1], CallFunction, &body)), kDone);
    EXPECT_EQ(Outcome(thread->Run("second", nullptr, nullptr)), kernel->m_ThreadAlreadyRunning.GetCode());
    EXPECT_EQ(Outcome(thread->SetStackSize(3 * kMiB)), kMark);
    const int64_t begin = Now(CLOCK_MONOTONIC);
    EXPECT_EQ(Outcome(thread->WaitUntilFinished(0)), kTimeout);
    EXPECT_GE(Now(CLOCK_MONOTONIC) - begin, 10000000);
    EXPECT_EQ(Name(), run == 1 ? "abcdefghijklmnopqrstuvw" : "");
    EXPECT_EQ(Name(5), run == 1 ? "abcd" : "");
    EXPECT_EQ(Name(0), "untouched");
    thread->GetName(nullptr, 5);
    finish.Give();
    EXPECT_EQ(Outcome(thread->WaitUntilFinished(kForever)), kDone);
    EXPECT_EQ(Outcome(thread->WaitUntilFinished(0)), kDone);
    EXPECT_EQ(runs, run);
    EXPECT_EQ(Name(), "");
  }
}

TEST_F(ThreadTest, StackSizes) {
  pthread_attr_t attributes;
  size_t standard = 0;
  pthread_attr_init(&attributes);
  pthread_attr_getstacksize(&attributes, &standard);
  for (const size_t wanted : {kMiB, kMiB / 2, standard + kMiB}) {
    EXPECT_TRUE(wanted == kMiB || thread->SetStackSize(wanted)) << "1 MiB is what it has at first";
    size_t size = 0;
    RunToEnd([&] {
      pthread_getattr_np(pthread_self(), &attributes);
      pthread_attr_getstacksize(&attributes, &size);
      pthread_attr_destroy(&attributes);
    });
    EXPECT_EQ(thread->GetStackSize(), std::min(wanted, standard));
    EXPECT_GE(size, thread->GetStackSize());
    EXPECT_LE(size, 2 * thread->GetStackSize()) << "the C library may give an old stack that is somewhat larger";
  }
}

TEST_F(ThreadTest, RefusedRunLeavesAnIdleObject) {
  const auto expectRefused = [&](IPLKernel::Thread::ThreadProc procedure) {
    EXPECT_EQ(Outcome(thread->Run("name", procedure, nullptr)), kernel->m_ThreadCreationFailure.GetCode());
    EXPECT_EQ(Name(), "");
    EXPECT_TRUE(thread->SetStackSize(SIZE_MAX)) << "it is idle";
  };
  expectRefused(nullptr);
  {
    AllocControl memory(kernel);
    memory.FailAfter(0);
    expectRefused(CallFunction);
    EXPECT_EQ(kernel->CreateThread(), nullptr);
    EXPECT_EQ(kernel->CreateMutex(), nullptr);
    EXPECT_EQ(kernel->CreateEvent(true), nullptr);
  }
  EXPECT_EQ(Outcome(thread->WaitUntilFinished(kForever)), kDone) << "it never ran";
  RunToEnd([] {});
  pthread_attr_t standard;
  pthread_getattr_default_np(&standard);
  pthread_attr_t huge = standard;
  pthread_attr_setstacksize(&huge, SIZE_MAX / kMiB * kMiB);  // for which no system has memory
  ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
  expectRefused(CallFunction);
  pthread_setattr_default_np(&standard);
  EXPECT_EQ(Outcome(thread->WaitUntilFinished(kForever)), kMark);
  RunToEnd([] {});
}

TEST_F(ThreadTest, Priorities) {
  EXPECT_TRUE(thread->SetPriority(7));
  Semaphore started;
  Semaphore finish;
  pid_t id = 0;
  Function body = [&] {
    id = gettid();
    started.Give();
    finish.Take();
  };
  EXPECT_TRUE(thread->Run("priorities", CallFunction, &body));
  started.Take();
  const auto expectPriority = [&](bool applied, int native, int priority) {
    sched_param parameters = {};
    EXPECT_EQ(sched_getscheduler(id), applied ? SCHED_RR : SCHED_OTHER);
    EXPECT_EQ(sched_getparam(id, &parameters), 0);
    EXPECT_EQ(parameters.sched_priority, applied ? native : 0);
    EXPECT_EQ(thread->GetPriority(), applied ? priority : 7);
    EXPECT_EQ(Outcome(applied), applied ? kDone : kernel->m_ThreadSetPriority.GetCode());
  };
  // This thread alone becomes a user who may not: the C library's seteuid would change them all.
  const rlimit none = {0, RLIM_INFINITY};
  setrlimit(RLIMIT_RTPRIO, &none);
  syscall(SYS_setresuid, -1, 65534, -1);
  expectPriority(thread->SetPriority(0), -1, -1);  // what was set before the run is not applied either
  syscall(SYS_setresuid, -1, getuid(), -1);
  expectPriority(thread->SetPriority(0), sched_get_priority_max(SCHED_RR) - 5, 0);
  expectPriority(thread->SetPriority(255), sched_get_priority_min(SCHED_RR), 255);
  finish.Give();
  EXPECT_TRUE(thread->WaitUntilFinished(kForever));
}

// What top, gdb and perf show. At most 15 bytes, and no half character.
TEST_F(ThreadTest, TheSystemKnowsTheName) {
  std::string found;
  Function body = [&found] {
    std::getline(std::ifstream("/proc/self/task/" + std::to_string(gettid()) + "/comm"), found);
  };
  const std::string tails(20, '\x80');
  const std::pair<const char*, std::string> cases[] = {
      {"exactly 15 long", "exactly 15 long"},       {"abcdefghijklmnopqrstuvwxyz", "abcdefghijklmno"},
      {"a clef: 01234\U0001D11E", "a clef: 01234"}, {"a clef: 012\U0001D11E!", "a clef: 012\U0001D11E"},
      {tails.c_str(), tails.substr(0, 15)},
  };
  for (const auto& [name, expected] : cases) {
    ASSERT_TRUE(thread->Run(name, CallFunction, &body));
    ASSERT_TRUE(thread->WaitUntilFinished(kForever));
    EXPECT_EQ(found, expected);
  }
}

// The system clears thread-specific data in the order of its keys; this one is made before the kernel's.
static pthread_key_t s_atExit;
static const int s_noKey = pthread_key_create(&s_atExit, [](void* function) { CallFunction(nullptr, function); });

TEST_F(ThreadTest, DestructorsOfThreadDataFindNoObject) {
  ASSERT_EQ(s_noKey, 0);
  Semaphore done;
  Function atExit = [&] {
    EXPECT_EQ(kernel->GetCurrentThread(), nullptr) << "the object is gone";
    EXPECT_EQ(Outcome(true), kDone) << "the last error is that of foreign threads";
    done.Give();
  };
  Function body = [&] { pthread_setspecific(s_atExit, &atExit); };
  EXPECT_TRUE(thread->Run("detached", CallFunction, &body));
  EXPECT_TRUE(thread->Detach(nullptr));
  thread = nullptr;
  done.Take();
}
