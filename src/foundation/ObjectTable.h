// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_FOUNDATION_OBJECTTABLE_H
#define IPL_FOUNDATION_OBJECTTABLE_H

#include <string.h>

/// Returns the table of an object's virtual operations. Objects of one class share theirs; an object that somebody
/// stands in front of has another.
inline const void* TableOf(const void* object) {
  const void* table = nullptr;
  memcpy(&table, object, sizeof(table));
  return table;
}

#endif  // IPL_FOUNDATION_OBJECTTABLE_H
