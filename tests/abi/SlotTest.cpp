// SPDX-License-Identifier: Apache-2.0
// The tables of operations against the second list of them in kernel_slots.def.
#include <stddef.h>
#include <string.h>

#include <string_view>
#include <type_traits>

#include <gtest/gtest.h>

#include "kernel/IPLKernelImpl.h"

namespace {

// Each operation has exactly the listed signature: the cast of a pointer to member changes nothing but its class. What
// an interface declares is pure, so that a module needs no code of the library for it.
#define DESTRUCTOR(interface, slot)                                                                                 \
  static_assert(std::has_virtual_destructor<interface>::value && (slot == 0 || std::is_abstract<interface>::value), \
                #interface);
#define OPERATION(interface, slot, result, name, parameters, qualifier)                              \
  static_assert(static_cast<result(interface::*) parameters qualifier>(&interface::name) != nullptr, \
                #interface "::" #name " has another signature than the contract's");
#include "kernel_slots.def"
static_assert(std::is_abstract<IPLKernel>::value && std::is_base_of<IPLModule, IPLKernel>::value, "");
static_assert(std::is_base_of<IPLKernel::Lockable, IPLKernel::Mutex>::value, "");
static_assert(std::is_base_of<IPLKernel::Lockable, IPLKernel::MessageQueue>::value, "");

struct Row {
  std::string_view interface;
  unsigned slot, width;
};

constexpr Row kRows[] = {
#define DESTRUCTOR(interface, slot) {#interface, slot, 2},
#define OPERATION(interface, slot, result, name, parameters, qualifier) {#interface, slot, 1},
#include "kernel_slots.def"
};

/// Returns the number of slots, 0 if the list does not give each of them once and in order.
constexpr unsigned ListedSlots(std::string_view interface) {
  unsigned next = 0;
  for (const Row& row : kRows) {
    if (row.interface == interface || (interface == "IPLKernelImpl" && row.interface == "IPLKernel")) {
      if (row.slot != next) {
        return 0;
      }
      next += row.width;
    }
  }
  return next;
}
static_assert(ListedSlots("IPLKernelImpl") == 76, "the kernel has 76 operations");

// A pointer to a virtual member function keeps the operation's place in the table, in the target's own way: 32-bit ARM
// the byte offset, with a mark in the adjustment word; others the byte offset + 1.
template <typename MemberPointer>
unsigned SlotOf(MemberPointer member) {
  struct {
    uintptr_t function;
    ptrdiff_t adjustment;
  } words;
  static_assert(sizeof(words) == sizeof(member), "");
  memcpy(&words, &member, sizeof(words));
#if defined(__arm__)
  EXPECT_EQ(words.adjustment, 1) << "not virtual, or not of the first base";
  return static_cast<unsigned>(words.function / sizeof(void*));
#else
  EXPECT_EQ(words.adjustment, 0) << "not of the first base";
  EXPECT_EQ(words.function % sizeof(void*), 1U) << "not virtual";
  return static_cast<unsigned>((words.function - 1) / sizeof(void*));
#endif
}

TEST(Slots, AreThoseOfTheList) {
#define DESTRUCTOR(interface, slot)
#define OPERATION(interface, slot, result, name, parameters, qualifier)                                       \
  EXPECT_EQ(SlotOf(static_cast<result(interface::*) parameters qualifier>(&interface::name)), unsigned{slot}) \
      << #interface "::" #name #parameters;
#include "kernel_slots.def"
}

// An operation that a derived class adds stands in the first slot that the interface leaves free.
template <typename Interface>
struct Extended : Interface {
  virtual void Added() {}
};

TEST(Slots, EndWhereTheListEnds) {
  EXPECT_EQ(SlotOf(&Extended<IPLKernelImpl>::Added), 76U);
#define DESTRUCTOR(interface, slot) \
  EXPECT_EQ(SlotOf(&Extended<interface>::Added), ListedSlots(#interface)) << #interface;
#define OPERATION(interface, slot, result, name, parameters, qualifier)
#include "kernel_slots.def"
}

}  // namespace
