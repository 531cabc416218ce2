// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <thread>
#include <tuple>

#include "support/AllocControl.h"
#include "support/TestThread.h"
#include "threads/modules/Lingerer.h"

// Takes the place of the C library's: the pause behind a wait must not be what makes anything safe.
extern "C" IPL_API int nanosleep(const timespec*, timespec*) { return 0; }

using Thread = IPLKernel::Thread;

static long CountEntries(const char* directory) {
  return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
}

static std::string ReadMappings() {
  std::ifstream file("/proc/self/maps");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Returns when no thread is left but those of before: one leaves the process a moment after its run has ended.
static void AwaitThreads() {
  static const long s_before = [] {
    std::string entry;  // a sanitizer starts a thread of its own together with the first one
    std::thread([&] { entry = "/proc/self/task/" + std::to_string(gettid()); }).join();
    while (access(entry.c_str(), F_OK) == 0) {
      sched_yield();
    }
    return CountEntries("/proc/self/task");
  }();
  while (CountEntries("/proc/self/task") != s_before) {
    sched_yield();
  }
}

static Semaphore s_go;
static Semaphore s_ended;
static std::atomic<int> s_runs{0};
static std::atomic<int> s_cleanups{0};
static std::tuple<Thread*, void*, Thread*> s_cleaned;

static void CountRun(Thread*, void*) { ++s_runs; }
static void WaitForGo(Thread*, void*) { s_go.Take(); }
static void GiveEnded(Thread*, void*) { s_ended.Give(); }
static void Exit(Thread*, void*) { pthread_exit(nullptr); }
static void CancelSelf(Thread*, void*) {
  pthread_cancel(pthread_self());
  pthread_testcancel();
}
static void Cleanup(Thread* thread, void* userData) {
  s_cleaned = {thread, userData, IPLKernel::GetKernel()->GetCurrentThread()};
  ++s_cleanups;
}

static void ExitFromCleanup(Thread*, void*) { s_ended.Give(), pthread_exit(nullptr); }
static void WaitFromCleanup(Thread*, void* other) {
  s_ended.Give();
  static_cast<Thread*>(other)->WaitUntilFinished(IPLKernel::Time::Forever());
}
static void AwaitShutDown(Thread*, void*) {
  while (!IPLKernel::GetKernel()->IsShutdownPending()) {
    sched_yield();
  }
  usleep(30000);  // no thread is let in any more by then
}

// A thread that comes too late leaves its object behind; what these hold is not taken for a leak.
static auto& s_kept = *new std::vector<Thread*>;

class LifetimeTest : public ThreadFixture {
 protected:
  LifetimeTest() {
    AwaitThreads();
    s_runs = 0;
    s_cleanups = 0;
    s_cleaned = {};
  }
  Thread* Start(Thread::ThreadProc procedure) {
    Thread* thread = kernel->CreateThread();
    EXPECT_TRUE(thread->Run("thread", procedure, this));
    return thread;
  }
  /// Returns when all threads are gone. One thread more orders what they did before what follows.
  static void AwaitThreadsInOrder() {
    AwaitThreads();
    TestThread([] {});
    AwaitThreads();
  }
};

TEST_F(LifetimeTest, DetachedObjectsEndByThemselves) {
  AllocControl memory(kernel);
  for (const bool runs : {false, true}) {
    Thread* thread = runs ? Start(WaitForGo) : kernel->CreateThread();
    EXPECT_EQ(Outcome(thread->Detach(Cleanup)), kDone);
    EXPECT_EQ(s_cleanups, 1);
    if (runs) {
      EXPECT_EQ(Outcome(thread->Detach(nullptr)), kMark);
      s_go.Give();
    }
    AwaitThreadsInOrder();
    EXPECT_EQ(s_cleanups, runs ? 2 : 1);
    EXPECT_EQ(s_cleaned, std::make_tuple(thread, runs ? this : nullptr, runs ? thread : nullptr));
    EXPECT_EQ(memory.Held(), 0);
  }
}

// Each round ends an object in one of four ways, while its run is about to end by itself.
TEST_F(LifetimeTest, EveryObjectIsDestroyedOnce) {
  AllocControl memory(kernel);
  const auto countMappings = [] {
    const std::string mappings = ReadMappings();
    return std::count(mappings.begin(), mappings.end(), '\n');
  };
  const long descriptors = CountEntries("/proc/self/fd");
  const long mappings = countMappings();
  for (int round = 1; round <= 800; ++round) {
    Thread* thread = Start(CountRun);
    EXPECT_TRUE(round % 4 < 2 || thread->WaitUntilFinished(kForever));
    if (round % 2 == 0) {
      EXPECT_TRUE(thread->Detach(Cleanup));
    } else {
      kernel->DestroyThread(thread);
    }
    AwaitThreadsInOrder();
    EXPECT_EQ(s_runs, round);
    EXPECT_EQ(s_cleanups, round / 2);
    EXPECT_EQ(std::get<1>(s_cleaned), round == 1 ? nullptr : this);
    EXPECT_EQ(memory.Held(), 0);
  }
  EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
  // The C library keeps some stacks, and a sanitizer makes mappings of its own, but not one in each round.
  EXPECT_LT(countMappings(), mappings + 200);
}

// The kernel goes, and another one comes, while a detached thread is behind its cleanup, behind its procedure, or
// about to begin.
TEST(ShutDownTest, ThreadsMayBeJustEnding) {
  AwaitThreads();
  for (int round = 0; round < 600; ++round) {
    const RunningKernel running;
    Thread* thread = running.kernel->CreateThread();
    s_kept.push_back(round % 3 == 0 ? nullptr : thread);
    EXPECT_TRUE(thread->Run("thread", round % 3 == 1 ? GiveEnded : CountRun, nullptr));
    EXPECT_TRUE(thread->Detach(round % 3 == 0 ? GiveEnded : nullptr));
    EXPECT_TRUE(round % 3 == 2 || s_ended.Take());
  }
  AwaitThreads();
}

TEST_F(LifetimeTest, AProcedureMayEndItsThread) {
  AllocControl memory(kernel);
  for (const Thread::ThreadProc end : {Exit, CancelSelf}) {
    Thread* thread = Start(end);
    EXPECT_TRUE(thread->WaitUntilFinished(kForever));
    EXPECT_TRUE(thread->Run("again", CountRun, nullptr));
    EXPECT_TRUE(thread->WaitUntilFinished(kForever));
    kernel->DestroyThread(thread);
    EXPECT_TRUE(Start(end)->Detach(Cleanup));
    AwaitThreadsInOrder();
    EXPECT_EQ(s_cleanups, s_runs);
    EXPECT_EQ(memory.Held(), 0);
  }
}

TEST(ShutDownTest, ACleanupMayEndItsThreadOrWaitForAnother) {
  AwaitThreads();
  for (const Thread::ThreadProc cleanup : {ExitFromCleanup, WaitFromCleanup}) {
    const RunningKernel running;
    Thread* other = running.kernel->CreateThread();
    if (cleanup == WaitFromCleanup) {
      EXPECT_TRUE(other->Run("other", AwaitShutDown, nullptr));
    }
    Thread* thread = running.kernel->CreateThread();
    s_kept.insert(s_kept.end(), {thread, other});
    EXPECT_TRUE(thread->Run("thread", WaitForGo, other));
    EXPECT_TRUE(thread->Detach(cleanup));
    s_go.Give();
    s_ended.Take();
  }
  AwaitThreads();
}

TEST(ShutDownTest, ALibraryDoesNotStayForAThreadThatEndedTooLate) {
  AwaitThreads();
  IPLKernel::Event* go = nullptr;
  {
    const RunningKernel running;
    auto* module = static_cast<Lingerer*>(running.kernel->AcquireModule("Lingerer", IPL_LINGERER_FILE));
    ASSERT_NE(module, nullptr);
    go = module->go;
    s_kept.push_back(module->thread);
    running.kernel->ReleaseModule(module);
  }
  EXPECT_NE(ReadMappings().find("libLingerer.so"), std::string::npos);
  go->Set();
  AwaitThreads();
  const RunningKernel running;
  EXPECT_EQ(running.kernel->AcquireModule("Nobody", "/nobody.so"), nullptr);
  EXPECT_EQ(ReadMappings().find("libLingerer.so"), std::string::npos);
  running.kernel->DestroyEvent(go);
}

TEST_F(LifetimeTest, ALibraryStaysWhileADetachedThreadRunsIt) {
  for (int round = 0; round < 20; ++round) {
    auto* module = static_cast<Lingerer*>(kernel->AcquireModule("Lingerer", IPL_LINGERER_FILE));
    ASSERT_NE(module, nullptr);
    IPLKernel::Event* go = module->go;
    kernel->ReleaseModule(module);
    EXPECT_NE(ReadMappings().find("libLingerer.so"), std::string::npos);
    go->Set();
    AwaitThreadsInOrder();
    EXPECT_EQ(kernel->AcquireModule("Nobody", "/nobody.so"), nullptr) << "libraries are closed along with such work";
    EXPECT_EQ(ReadMappings().find("libLingerer.so"), std::string::npos);
    kernel->DestroyEvent(go);
  }
}
