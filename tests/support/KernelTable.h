// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_KERNELTABLE_H
#define IPL_TESTS_SUPPORT_KERNELTABLE_H

#include <string.h>

#include <array>

#include <ipl/IPLKernel.h>

/// Stands in front of an object's table of operations: from construction to destruction the object uses a copy of its
/// table, in which slots can be replaced by free functions that take the object as their first parameter:
///
///   void* NoMemory(IPLKernel*, unsigned long, const char*, int) { return nullptr; }
///   KernelTable table(kernel);
///   table.Replace(17, &NoMemory);
///
/// Construct and destroy it while no other thread uses the object; Replace may be called at any time before the first
/// call of the slot that other threads can make.
template <typename Object, unsigned kSlots>
class ObjectTable {
 public:
  static constexpr unsigned kSlotCount = kSlots;

  explicit ObjectTable(Object* object) : m_object(object) {
    memcpy(&m_original, static_cast<const void*>(m_object), sizeof(m_original));
    memcpy(m_words.data(), m_original - kWordsBefore, sizeof(m_words));
    SetTable(m_words.data() + kWordsBefore);
  }
  ~ObjectTable() { SetTable(m_original); }
  ObjectTable(const ObjectTable&) = delete;
  ObjectTable& operator=(const ObjectTable&) = delete;

  template <typename Result, typename... Parameters>
  void Replace(unsigned slot, Result (*function)(Object*, Parameters...)) {
    m_words.at(kWordsBefore + slot) = reinterpret_cast<void*>(function);
  }

  /// Returns the function that stands in the slot without this table, to be called with the object first:
  /// table.Original<void*(IPLKernel*, unsigned long, const char*, int)>(17).
  template <typename Function>
  Function* Original(unsigned slot) const {
    return reinterpret_cast<Function*>(m_original[slot]);
  }

 private:
  static constexpr unsigned kWordsBefore = 2;  // offset to top, type information

  void SetTable(void* const* table) { memcpy(static_cast<void*>(m_object), &table, sizeof(table)); }

  Object* m_object;
  void* const* m_original;
  std::array<void*, kWordsBefore + kSlotCount> m_words;
};

using KernelTable = ObjectTable<IPLKernel, 76>;

#endif  // IPL_TESTS_SUPPORT_KERNELTABLE_H
