// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_ARRAYRANGE_H
#define IPL_ARRAYRANGE_H

#include <ipl/PLArray.h>

/// @file
/// Lets a range-based for walk over a PLArray:
///
///     for (int& number : numbers) ...
///
/// These functions stand outside of namespace ipl, where the language looks for those of a PLArray. The pointers are
/// valid until the array's size changes: the body of the loop inserts and removes nothing. [owner] They take no lock.

/// Returns the first element; null, as does end, for an empty array.
template <typename T>
IPL_ALWAYS_INLINE T* begin(PLArray<T>& array) {
  return array.GetSize() != 0 ? &array[0] : nullptr;
}
/// Returns where the elements end.
template <typename T>
IPL_ALWAYS_INLINE T* end(PLArray<T>& array) {
  return array.GetSize() != 0 ? &array[0] + array.GetSize() : nullptr;
}
/// As for an array that may be changed.
template <typename T>
IPL_ALWAYS_INLINE const T* begin(const PLArray<T>& array) {
  return array.GetSize() != 0 ? &array[0] : nullptr;
}
/// As for an array that may be changed.
template <typename T>
IPL_ALWAYS_INLINE const T* end(const PLArray<T>& array) {
  return array.GetSize() != 0 ? &array[0] + array.GetSize() : nullptr;
}

#endif  // IPL_ARRAYRANGE_H
