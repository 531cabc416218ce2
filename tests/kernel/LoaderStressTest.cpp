// SPDX-License-Identifier: Apache-2.0
// The loader, and the kernel around it, with memory that runs out, under contention and for a long time.
#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <thread>

#include <ipl/PLString.h>

#include "LoaderFixture.h"
#include "support/AllocControl.h"

namespace {

using Time = IPLKernel::Time;

struct Exchange {
  IPLKernel::MessageQueue* queue;
  unsigned long sum = 0;
  std::atomic<bool> over{false};
};

void ReceiveAll(IPLKernel::Thread*, void* userData) {
  auto& exchange = *static_cast<Exchange*>(userData);
  for (bool last = false; !last;) {
    last = exchange.over.load();
    IPLKernel::Message* message = exchange.queue->Receive(Time::Milliseconds(1));
    if (message != nullptr) {
      last = false;
      exchange.sum += message->GetID();
      exchange.queue->ReleaseMessage(message);
    }
  }
}

class LoaderStressTest : public LoaderFixture {
 protected:
  // Returns whether all of it succeeded; what fails has to fail in the documented way.
  bool UseAll() {
    IPLModule* module = kernel->AcquireModule("Alpha");
    EXPECT_EQ(IsOpen("Alpha"), module != nullptr);
    Exchange exchange{kernel->CreateMessageQueue()};
    IPLKernel::Thread* thread = kernel->CreateThread();
    const bool made = exchange.queue != nullptr && thread != nullptr;
    if (made && thread->Run("receiver", ReceiveAll, &exchange)) {
      exchange.queue->Post(1, nullptr);
      exchange.queue->Send(2, nullptr);
      exchange.over.store(true);
      EXPECT_TRUE(thread->WaitUntilFinished(Time::Forever()));
    } else {
      EXPECT_TRUE(!made || kernel->GetLastError() == kernel->m_ThreadCreationFailure);
    }
    kernel->DestroyThread(thread);
    kernel->DestroyMessageQueue(exchange.queue);
    PLString text;
    for (const unsigned long length : {0UL, 4UL, 8UL}) {
      text.AppendUTF8("grün", 5);
      EXPECT_TRUE(text.GetLength() <= length + 4 && text.GetLength() % 4 == 0);
    }
    const std::string utf8 = text.GetUTF8();
    EXPECT_TRUE(utf8.empty() || utf8.size() == text.GetLength() / 4 * 5) << utf8;
    kernel->ReleaseModule(module);
    EXPECT_FALSE(IsOpen("Alpha"));
    return module != nullptr && exchange.sum == 3 && utf8 == "grüngrüngrün";
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

// Bytes of the heap, descriptors, threads, mappings.
std::array<long, 4> Resources() {
  const auto count = [](const char* folder) {
    return static_cast<long>(std::distance(std::filesystem::directory_iterator(folder), {}));
  };
  std::ifstream maps("/proc/self/maps");
  const auto lines = std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
  return {static_cast<long>(mallinfo2().uordblks), count("/proc/self/fd"), count("/proc/self/task"),
          static_cast<long>(lines)};
}

TEST_F(LoaderStressTest, ThousandsOfCyclesLeaveNothingBehind) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int kCycles = 2000;
#else
  constexpr int kCycles = 10000;
#endif
  const AllocControl memory(kernel);
  std::array<long, 4> before = {};
  for (int cycle = 0; cycle < kCycles + 100; ++cycle) {
    if (cycle == 0 || cycle == 100) {  // the first time, the C library's caches are filled
      before = Resources();
    }
    m_log.clear();
    kernel->ReleaseModule(kernel->AcquireModule("Alpha"));
    ASSERT_EQ(m_log, "Ap Al Au ");
  }
  const std::array<long, 4> after = Resources();
  EXPECT_TRUE(after[1] == before[1] && after[2] == before[2]) << after[1] << " descriptors, " << after[2] << " threads";
  // Caches of the C library and a sanitizer's allocator may differ by a little; what a cycle leaves comes again with
  // each.
  EXPECT_LT(after[0] - before[0], 1000) << "bytes of the heap";
  EXPECT_LT(after[3] - before[3], 10) << "mappings";
  EXPECT_EQ(memory.Held(), 0);
}

}  // namespace
