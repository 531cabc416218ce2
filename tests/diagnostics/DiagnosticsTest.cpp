// SPDX-License-Identifier: Apache-2.0
// The kernel's operations: stack traces, assertions, logging and the console.
#include <dlfcn.h>
#include <execinfo.h>
#include <limits.h>
#include <poll.h>
#include <sched.h>
#include <sys/shm.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <new>

#include "support/KernelFixture.h"
#include "support/KernelTable.h"

static int s_timeout = 0;  // of the last call of poll

extern "C" IPL_API int poll(pollfd* files, nfds_t count, int timeout) {
  s_timeout = timeout;
  return reinterpret_cast<decltype(&poll)>(dlsym(RTLD_NEXT, "poll"))(files, count, timeout);
}

static bool s_hasMemory = true;  // for arrays

IPL_API void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return s_hasMemory ? ::operator new[](size) : nullptr;
}

using DiagnosticsTest = KernelFixture;
using Trace = IPLKernel::Stacktrace;

static unsigned long WithoutThumb(const void* address) {
#ifdef __arm__
  return reinterpret_cast<unsigned long>(address) & ~1UL;
#else
  return reinterpret_cast<unsigned long>(address);
#endif
}

static __attribute__((noinline)) void Recurse(int levels, const std::function<void()>& leaf) {
  levels == 0 ? leaf() : Recurse(levels - 1, leaf);
  asm volatile("");  // the calls above are not the last thing that is done
}

// A sanitizer's own backtrace is a frame more, here and in the kernel: what is compared begins with the leaf's caller.
TEST_F(DiagnosticsTest, TraceDepthAndSkip) {
  int shallow = 0;
  for (const int levels : {0, 1, 20, 1000}) {
    Recurse(levels, [&] {
      void* frames[64];
      const int count = backtrace(frames, 64);
      shallow = levels == 0 ? count : shallow;
      EXPECT_EQ(count, std::min(shallow + levels, 64)) << "every level is a frame";
      const unsigned long caller = WithoutThumb(frames[1]) == WithoutThumb(__builtin_return_address(0)) ? 1 : 2;
      EXPECT_EQ(WithoutThumb(frames[caller]), WithoutThumb(__builtin_return_address(0)));
      for (const unsigned long maximum : {0UL, 1UL, 2UL, 3UL, 4UL, 5UL, 31UL, 32UL, 33UL, 1000UL, ULONG_MAX}) {
        for (const unsigned long skip : {0UL, 1UL, 2UL, 7UL, 28UL, 29UL, ULONG_MAX - 2, ULONG_MAX}) {
          Trace* trace = kernel->CreateStacktrace(maximum, skip);
          const unsigned long kept = std::min({maximum, 32UL, 3UL + static_cast<unsigned long>(count)});
          const unsigned long depth = kept > 3 && kept - 3 > skip ? kept - 3 - skip : 0;
          EXPECT_EQ(trace->GetDepth(), depth) << maximum << " without " << skip;
          EXPECT_EQ(trace->GetAddress(depth) + trace->GetAddress(ULONG_MAX), 0U);
          EXPECT_STREQ(trace->GetFrameString(depth), "");
          for (unsigned long i = 0; i < depth; ++i) {
            EXPECT_TRUE(i + skip < caller || trace->GetAddress(i) == reinterpret_cast<unsigned long>(frames[i + skip]));
          }
          kernel->DestroyStacktrace(trace);
        }
      }
    });
  }
  kernel->DestroyStacktrace(nullptr);
  s_hasMemory = false;
  Trace* trace = kernel->CreateStacktrace(32, 0);
  s_hasMemory = true;
  EXPECT_TRUE(trace->GetDepth() == 0 && trace->GetAddress(0) == 0 && trace->GetFrameString(0)[0] == '\0');
  kernel->DestroyStacktrace(trace);
}

TEST_F(DiagnosticsTest, FrameStrings) {
  void* symbol = dlsym(dlopen(TEST_MODULE, RTLD_NOW), "TraceModule_Take");
  Trace* trace = reinterpret_cast<Trace* (*)(IPLKernel*)>(symbol)(kernel);
  const unsigned long start = WithoutThumb(symbol);
  const unsigned long frame = trace->GetAddress(0) - start < 256 ? 0 : 1;  // a sanitizer's comes first
  const unsigned long address = trace->GetAddress(frame), outer = trace->GetAddress(frame + 1);
  const auto text = [](const char* format, auto... values) {
    char buffer[128];
    snprintf(buffer, sizeof(buffer), format, values...);
    return std::string(buffer);
  };
  const char* found = trace->GetFrameString(frame);
  EXPECT_EQ(found, text("%s(TraceModule_Take+0x%lx) [0x%lx]", TEST_MODULE, address - start, address));
  EXPECT_EQ(trace->GetFrameString(frame + 1), found) << "one buffer";
  // This program's functions are not exported.
  EXPECT_NE(std::string(found).find(text("Test(%s+0x%lx) [0x%lx]", "???", outer, outer)), std::string::npos) << found;
  kernel->DestroyStacktrace(trace);
}

// What the two words of the segment enable, tests/tools asks.
TEST_F(DiagnosticsTest, LogLevels) {
  if (unshare(CLONE_NEWIPC) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWIPC) != 0) {
    GTEST_SKIP() << "this system gives no shared memory of one's own";
  }
  KernelTable table(kernel);
  const auto isEnabled = table.Original<bool(IPLKernel*, int, int)>(74);
  for (int life = 0; life < 2; ++life) {
    EXPECT_TRUE(isEnabled(kernel, 0, 0)) << "there is a new segment";
    EXPECT_FALSE(isEnabled(kernel, 0, 1) || isEnabled(kernel, 3, -1));
    const int segment = shmget(42343, 0, 0);
    shmid_ds status = {};
    ASSERT_EQ(shmctl(segment, IPC_STAT, &status), 0);
    EXPECT_TRUE((status.shm_perm.mode & 0777) == 0666 && status.shm_segsz == 8 && status.shm_nattch == 0);
    EXPECT_EQ(shmctl(segment, IPC_RMID, nullptr), 0);
  }
  ASSERT_GE(shmget(42343, 4, IPC_CREAT), 0);
  EXPECT_FALSE(isEnabled(kernel, 0, 0)) << "the segment is too small";
}

static int s_written = 0;
static void CountWrite(IPLKernel*, const char* format) { s_written += format[0]; }
static bool IsFiveAtSix(IPLKernel*, int category, int level) { return category == 5 && level == 6; }

TEST_F(DiagnosticsTest, Output) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  kernel->WriteConsoleOutputString("text %d", 1);
  kernel->AssertFailed("a/b", 12, "x == y");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Assert failed on line 12 in a/b\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  KernelTable table(kernel);
  table.Replace(72, &CountWrite);
  table.Replace(74, &IsFiveAtSix);
  kernel->Kite_EnableLog(6, 5, "no");
  kernel->Kite_EnableLog(5, 6, "yes");
  EXPECT_EQ(s_written, 'y');
}

class ConsoleTest : public KernelFixture {
 protected:
  /// Reads once for each size. Null stands for failure with the buffer as it was.
  void ExpectReads(std::initializer_list<std::pair<unsigned long, const char*>> reads, int64_t timeout = INT64_MAX) {
    for (const auto& [size, text] : reads) {
      char buffer[17] = "~";
      EXPECT_EQ(kernel->ReadConsoleInputString(buffer, size, timeout), text != nullptr);
      EXPECT_STREQ(buffer, text != nullptr ? text : "~");
    }
  }
};

TEST_F(ConsoleTest, Pipe) {
  int ends[2] = {};
  ASSERT_TRUE(pipe(ends) == 0 && dup2(ends[0], STDIN_FILENO) == STDIN_FILENO);
  ExpectReads({{16, nullptr}}, 0);
  const itimerval often = {{0, 1000}, {0, 1000}}, never = {};
  signal(SIGALRM, [](int) {});
  setitimer(ITIMER_REAL, &often, nullptr);
  ExpectReads({{16, nullptr}});  // a signal ends the wait
  setitimer(ITIMER_REAL, &never, nullptr);
  ASSERT_EQ(write(ends[1], "abc\nde", 6), 6);
  EXPECT_FALSE(kernel->ReadConsoleInputString(nullptr, 16, INT64_MAX));
  ExpectReads({{0, nullptr}, {1, nullptr}, {3, "ab"}, {2, "c"}, {16, "\nde"}});
  EXPECT_EQ(s_timeout, -1);
  for (const int64_t time : {0LL, 1LL, INT_MAX - 1LL, INT_MAX + 0LL, INT_MAX + 1LL, 1LL << 32, -1LL, -(1LL << 40)}) {
    for (const int64_t rest : {0, time <= 0 ? -999999 : 999999}) {
      ASSERT_EQ(write(ends[1], "x", 1), 1);
      ExpectReads({{16, "x"}}, time * 1000000 + rest);
      EXPECT_EQ(s_timeout, time < 0 ? INT_MAX : std::min<int64_t>(time, INT_MAX)) << time << " ms";
    }
  }
  close(ends[1]);
  ExpectReads({{16, nullptr}});  // the end of input
  close(STDIN_FILENO);
  ExpectReads({{16, nullptr}});
}
