// SPDX-License-Identifier: Apache-2.0
// Small operations: memory, identifiers, the clock, whether a message is logged.
#include <stdlib.h>
#include <sys/shm.h>
#include <time.h>

#include <atomic>

#include <ipl/PLMem.h>

#include "Bench.h"
#include "BenchKernel.h"
#include "Rules.h"

namespace {

const RunningKernel s_kernel;
constexpr unsigned long kBlockSize = 64;
constexpr int kLogKey = 42343;  // of the segment that holds the machine's log level

const Registered s_registered([] {
  Measure("AllocFree/ours", [](State& state) {
    Each(state, [] {
      void* block = s_kernel->Alloc(kBlockSize, nullptr, 0);
      benchmark::DoNotOptimize(block);
      s_kernel->Free(block, nullptr, 0);
    });
  });
  Measure("NewDelete/ours", [](State& state) {
    Each(state, [] {
      void* block = operator new(kBlockSize, nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
      benchmark::DoNotOptimize(block);
      operator delete(block, nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
    });
  });
  for (const char* name : {"AllocFree/limit", "NewDelete/limit"}) {
    Measure(name, [](State& state) {
      Each(state, [] {
        void* block = ::malloc(kBlockSize);
        benchmark::DoNotOptimize(block);
        ::free(block);
      });
    });
  }
  Measure("NewDelete/rules", [](State& state) {
    Each(state, [] {
      void* block = AllocateByRules(kBlockSize);
      benchmark::DoNotOptimize(block);
      FreeByRules(block);
    });
  });
  Measure("UniqueID/ours",
          [](State& state) { Each(state, [] { benchmark::DoNotOptimize(s_kernel->GetUniqueID()); }); });
  Measure("UniqueID/limit", [](State& state) {
    std::atomic<unsigned int> counter{0};
    Each(state, [&] { benchmark::DoNotOptimize(++counter); });
  });
  Measure("UniqueID/rules", [](State& state) {
    RulesCounter counter;
    Each(state, [&] { benchmark::DoNotOptimize(counter.Next()); });
  });
  Measure("KernelTime/ours",
          [](State& state) { Each(state, [] { benchmark::DoNotOptimize(s_kernel->GetKernelTime()); }); });
  Measure("KernelTime/limit", [](State& state) {
    Each(state, [] {
      timespec now = {};
      ::clock_gettime(CLOCK_MONOTONIC, &now);
      benchmark::DoNotOptimize(now);
    });
  });
  Measure("LogCheck/ours", [](State& state) { Each(state, [] { s_kernel->Kite_EnableLog(1, 7, "text"); }); });
  Measure("LogCheck/limit", [](State& state) {
    Each(state, [] {
      void* address = ::shmat(::shmget(kLogKey, 8, IPC_CREAT | 0666), nullptr, 0);
      benchmark::DoNotOptimize(*static_cast<volatile int*>(address));
      ::shmdt(address);
    });
  });
});

}  // namespace
