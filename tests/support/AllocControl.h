// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_ALLOCCONTROL_H
#define IPL_TESTS_SUPPORT_ALLOCCONTROL_H

#include <limits.h>
#include <malloc.h>
#include <string.h>

#include <atomic>

#include "support/KernelTable.h"

/// Watches the kernel's Alloc and Free, and makes chosen calls of Alloc fail. One at a time.
///
///   AllocControl memory(kernel);
///   memory.FailAfter(2);       // two more calls succeed, then all fail
///   memory.FailAfter(2, 1);    // of the coming calls, only the third fails
///   memory.FailAfter(memory.kNever);
///
/// All its variables are relaxed atomics, so that it orders nothing between threads that the kernel does not order.
class AllocControl {
 public:
  static constexpr long kNever = LONG_MAX;

  explicit AllocControl(IPLKernel* kernel) : m_table(kernel) {
    s_current = this;
    m_alloc = m_table.Original<AllocFunction>(17);
    m_free = m_table.Original<FreeFunction>(19);
    m_table.Replace(17, &Alloc);
    m_table.Replace(19, &Free);
  }
  ~AllocControl() { s_current = nullptr; }

  void FailAfter(long successes, long failures = kNever) {
    m_coming.store(0, std::memory_order_relaxed);
    m_firstFailing.store(successes, std::memory_order_relaxed);
    m_failing.store(failures, std::memory_order_relaxed);
  }

  /// From now on memory is filled with zeros before it is given back.
  void ClearFreed() { m_clears = true; }

  long Allocations() const { return Get(m_allocations); }  ///< calls of Alloc, failed ones included
  long Failures() const { return Get(m_failures); }
  long Frees() const { return Get(m_frees); }
  long Held() const { return Allocations() - Failures() - Frees(); }  ///< blocks that were not given back

  struct Call {
    unsigned long size;  // of Alloc
    char* block;
    const char* file;
    int line;
  };
  // The last ones of this thread.
  static inline thread_local Call lastAlloc;
  static inline thread_local Call lastFree;

 private:
  typedef void* AllocFunction(IPLKernel*, unsigned long, const char*, int);
  typedef void FreeFunction(IPLKernel*, void*, const char*, int);

  static long Get(const std::atomic<long>& variable) { return variable.load(std::memory_order_relaxed); }
  static long Count(std::atomic<long>& counter) { return counter.fetch_add(1, std::memory_order_relaxed); }

  static void* Alloc(IPLKernel* kernel, unsigned long size, const char* file, int line) {
    AllocControl& self = *s_current;
    Count(self.m_allocations);
    const long number = Count(self.m_coming);
    const long first = Get(self.m_firstFailing);
    const bool fails = number >= first && number - first < Get(self.m_failing);
    void* block = fails ? nullptr : self.m_alloc(kernel, size, file, line);
    if (block == nullptr) {
      Count(self.m_failures);
    }
    lastAlloc = {size, static_cast<char*>(block), file, line};
    return block;
  }

  static void Free(IPLKernel* kernel, void* block, const char* file, int line) {
    AllocControl& self = *s_current;
    if (block != nullptr) {
      Count(self.m_frees);
    }
    lastFree = {0, static_cast<char*>(block), file, line};
    if (self.m_clears && block != nullptr) {
      memset(block, 0, malloc_usable_size(block));
    }
    self.m_free(kernel, block, file, line);
  }

  static inline AllocControl* s_current = nullptr;

  KernelTable m_table;
  std::atomic<bool> m_clears{false};
  AllocFunction* m_alloc;
  FreeFunction* m_free;
  std::atomic<long> m_coming{0};
  std::atomic<long> m_firstFailing{kNever};
  std::atomic<long> m_failing{kNever};
  std::atomic<long> m_allocations{0};
  std::atomic<long> m_failures{0};
  std::atomic<long> m_frees{0};
};

#endif  // IPL_TESTS_SUPPORT_ALLOCCONTROL_H
