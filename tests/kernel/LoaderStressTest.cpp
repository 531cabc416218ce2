// SPDX-License-Identifier: Apache-2.0
// The loader, and the kernel around it, with memory that runs out, under contention and for a long time.
#include <malloc.h>

#include <thread>

#include "LoaderFixture.h"
#include "support/AllocControl.h"

class LoaderStressTest : public LoaderFixture {
 protected:
  // Returns whether a module, a queue and a thread serve; what fails has to fail in the documented way.
  bool UseAll() {
    IPLModule* module = kernel->AcquireModule("Alpha");
    EXPECT_EQ(IsOpen("Alpha"), module != nullptr);
    IPLKernel::MessageQueue* queue = kernel->CreateMessageQueue();
    IPLKernel::Thread* thread = kernel->CreateThread();
    const auto post = [](IPLKernel::Thread*, void* to) { static_cast<IPLKernel::MessageQueue*>(to)->Post(1, nullptr); };
    bool works = module != nullptr && queue != nullptr && thread != nullptr;
    if (works) {
      works = thread->Run("poster", post, queue) && thread->WaitUntilFinished(IPLKernel::Time::Forever());
      EXPECT_TRUE(works || kernel->GetLastError() == kernel->m_ThreadCreationFailure);
      IPLKernel::Message* message = queue->Receive(0);
      works = works && message != nullptr;
      queue->ReleaseMessage(message);
    }
    kernel->DestroyThread(thread);
    kernel->DestroyMessageQueue(queue);
    kernel->ReleaseModule(module);
    EXPECT_FALSE(IsOpen("Alpha"));
    return works;
  }

  // A whole life in which allocations fail; returns how many did.
  long Live(long successes, long failures) {
    SCOPED_TRACE(successes);
    LoadAgain();
    const std::string map = "Alpha:" + File("Alpha");
    const char* argv[18];  // the map has to grow
    for (int i = 0; i < 18; ++i) {
      argv[i] = i % 2 == 0 ? "--modulemap" : map.c_str();
    }
    AllocControl memory(kernel);
    memory.FailAfter(successes, failures);
    IPLModule_IPLKernel_InitializeKernel(18, argv);
    const bool started = memory.Failures() == 0;
    EXPECT_TRUE(UseAll() || memory.Failures() != 0);
    memory.FailAfter(memory.kNever);
    EXPECT_TRUE(UseAll() || !started) << "what failed once does not work again";
    IPLModule_IPLKernel_UnloadModule(kernel);
    EXPECT_EQ(memory.Held(), 0);
    return memory.Failures();
  }
};

TEST_F(LoaderStressTest, EachAllocationMayFail) {
  int loaded = 0;
  m_actions = {{"Al", [&](IPLModule*&) { ++loaded; }}, {"Au", [&](IPLModule*&) { --loaded; }}};
  for (const long failures : {1L, AllocControl::kNever}) {
    testing::internal::CaptureStderr();
    long successes = 0;
    while (Live(successes, failures) != 0) {
      ++successes;
    }
    const std::string output = testing::internal::GetCapturedStderr();
    EXPECT_GT(successes, 30);
    EXPECT_EQ(output.find("reason: ./"), std::string::npos) << "an entry of the map has lost its path";
  }
  EXPECT_EQ(loaded, 0);
}

TEST_F(LoaderStressTest, WithoutMemoryForItsFileNothingElseIsOpened) {
  AllocControl memory(kernel);
  testing::internal::CaptureStderr();
  for (long successes = 0; memory.Failures() == successes; ++successes) {
    memory.FailAfter(successes, 1);
    IPLModule* module = kernel->AcquireModule("Alpha");
    EXPECT_EQ(IsOpen("Alpha"), module != nullptr) << successes;
    kernel->ReleaseModule(module);
  }
  EXPECT_GT(memory.Failures(), 4);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LoaderStressTest, ThreadsThatAcquireAndReleaseDoNotDisturbEachOther) {
  const char* const names[] = {"Alpha", "Beta"};
  std::atomic<int> holders[2] = {};
  std::atomic<int> inside(0);
  for (const std::string entry : {"Ap", "Al", "Au", "Bp", "Bl", "Bu"}) {
    m_actions[entry] = [&, which = entry[0] - 'A'](IPLModule*&) {
      EXPECT_EQ(inside++ + holders[which], 0) << "another entry runs, or the module is in use";
      std::this_thread::yield();
      --inside;
    };
  }
  const auto work = [&](int number) {
    for (int i = 0; i < 400; ++i) {
      const int which = (number + i / 3) % 2;
      IPLModule* module = kernel->AcquireModule(names[which]);
      ++holders[which];
      EXPECT_NE(module, nullptr);
      std::this_thread::yield();
      --holders[which];
      kernel->ReleaseModule(module);
    }
  };
  for (std::thread& thread :
       std::array<std::thread, 3>{std::thread(work, 0), std::thread(work, 0), std::thread(work, 1)}) {
    thread.join();
  }
  EXPECT_FALSE(IsOpen("Alpha") || IsOpen("Beta"));
}

// A leak comes again with each cycle; what the C library and a sanitizer keep for themselves does not.
TEST_F(LoaderStressTest, ThousandsOfCyclesLeaveNothingBehind) {
  const AllocControl memory(kernel);
  const auto countDescriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
  const auto descriptors = countDescriptors();
  size_t heap = 0;
  for (int cycle = 0; cycle < 5000; ++cycle) {
    m_log.clear();
    kernel->ReleaseModule(kernel->AcquireModule("Alpha"));
    ASSERT_EQ(m_log, "Ap Al Au ");
    heap = cycle < 100 ? mallinfo2().uordblks : heap;
  }
  EXPECT_LT(mallinfo2().uordblks, heap + 1000);
  EXPECT_EQ(countDescriptors(), descriptors);
  EXPECT_EQ(memory.Held(), 0);
}
