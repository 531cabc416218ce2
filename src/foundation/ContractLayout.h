// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_FOUNDATION_CONTRACTLAYOUT_H
#define IPL_FOUNDATION_CONTRACTLAYOUT_H

#include <stddef.h>

#include <ipl/PLExport.h>

/// Pins where the contract wants a field on 32-bit ARM. Used inside a specialisation of PLContractLayout, which the
/// class makes its friend. Offsets of classes with virtual operations are conditionally supported; both compilers that
/// this project builds with support them.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

#define IPL_ASSERT_OFFSET(type, field, offset) \
  static_assert(sizeof(void*) != 4 || offsetof(type, field) == (offset), #type "::" #field " has left its place")

/// Pins the size of a class that others create or embed.
#define IPL_ASSERT_SIZE(type, size) \
  static_assert(sizeof(void*) != 4 || sizeof(type) == (size), #type " has another size than the contract's")

#endif  // IPL_FOUNDATION_CONTRACTLAYOUT_H
