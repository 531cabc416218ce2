// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_KERNELTABLE_H
#define IPL_TESTS_SUPPORT_KERNELTABLE_H

#include <string.h>

#include <array>

#include <ipl/IPLKernel.h>

/// Stands in front of the kernel object's table of operations: from construction to destruction the object uses a copy
/// of its table, in which slots can be replaced by free functions that take the kernel as their first parameter:
///
///   void* NoMemory(IPLKernel*, unsigned long, const char*, int) { return nullptr; }
///   KernelTable table(kernel);
///   table.Replace(17, &NoMemory);
///
/// Construct and destroy it while no other thread uses the kernel; Replace may be called at any time before the first
/// call of the slot that other threads can make.
class KernelTable {
 public:
  static constexpr unsigned kSlotCount = 76;

  explicit KernelTable(IPLKernel* kernel) : m_kernel(kernel) {
    memcpy(&m_original, static_cast<const void*>(m_kernel), sizeof(m_original));
    memcpy(m_words.data(), m_original - kWordsBefore, sizeof(m_words));
    SetTable(m_words.data() + kWordsBefore);
  }
  ~KernelTable() { SetTable(m_original); }
  KernelTable(const KernelTable&) = delete;
  KernelTable& operator=(const KernelTable&) = delete;

  template <typename Result, typename... Parameters>
  void Replace(unsigned slot, Result (*function)(IPLKernel*, Parameters...)) {
    m_words.at(kWordsBefore + slot) = reinterpret_cast<void*>(function);
  }

  /// Returns the function that stands in the slot without this object, to be called with the kernel first:
  /// table.Original<void*(IPLKernel*, unsigned long, const char*, int)>(17).
  template <typename Function>
  Function* Original(unsigned slot) const {
    return reinterpret_cast<Function*>(m_original[slot]);
  }

 private:
  static constexpr unsigned kWordsBefore = 2;  // offset to top, type information

  void SetTable(void* const* table) { memcpy(static_cast<void*>(m_kernel), &table, sizeof(table)); }

  IPLKernel* m_kernel;
  void* const* m_original;
  std::array<void*, kWordsBefore + kSlotCount> m_words;
};

#endif  // IPL_TESTS_SUPPORT_KERNELTABLE_H
