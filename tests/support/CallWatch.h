// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_CALLWATCH_H
#define IPL_TESTS_SUPPORT_CALLWATCH_H

#include <array>
#include <functional>
#include <utility>

#include "support/KernelTable.h"

/// Stands in front of some operations of the kernel's table and tells of each call before it goes on. One at a time.
/// Serves for operations whose operands are at most five words: they are passed on as they came.
template <unsigned... kSlots>
class CallWatch {
 public:
  CallWatch(IPLKernel* kernel, std::function<void(unsigned slot)> onCall) : m_table(kernel) {
    s_onCall = std::move(onCall);
    ((s_originals[kSlots] = m_table.Original<Operation>(kSlots)), ...);
    (m_table.Replace(kSlots, &Front<kSlots>), ...);
  }

 private:
  using Operation = void*(IPLKernel*, void*, void*, void*, void*, void*);

  template <unsigned kSlot>
  static void* Front(IPLKernel* kernel, void* first, void* second, void* third, void* fourth, void* fifth) {
    s_onCall(kSlot);
    return s_originals[kSlot](kernel, first, second, third, fourth, fifth);
  }

  static inline std::function<void(unsigned slot)> s_onCall;
  static inline std::array<Operation*, KernelTable::kSlotCount> s_originals = {};
  KernelTable m_table;
};

#endif  // IPL_TESTS_SUPPORT_CALLWATCH_H
