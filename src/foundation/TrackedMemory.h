// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_FOUNDATION_TRACKEDMEMORY_H
#define IPL_FOUNDATION_TRACKEDMEMORY_H

#include <memory>
#include <utility>

#include <ipl/PLMem.h>

/// The kernel's own use of the tracked allocation, with no file name and line 0.

struct TrackedDelete {
  template <typename T>
  void operator()(T* object) const {
    PLTypes_ScalarDelete(object, nullptr, 0);
  }
};

/// Owns an object of the scalar family.
template <typename T>
using TrackedPtr = std::unique_ptr<T, TrackedDelete>;

/// Makes an object of the scalar family; null, and nothing is constructed, when memory is exhausted.
template <typename T, typename... Arguments>
TrackedPtr<T> MakeTracked(Arguments&&... arguments) {
  return TrackedPtr<T>(new (nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr))
                           T(std::forward<Arguments>(arguments)...));
}

/// Raw bytes; null for 0 bytes and when memory is exhausted.
inline void* AllocateTrackedBytes(unsigned int byteCount) {
  return operator new(0, byteCount, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
}

inline void FreeTrackedBytes(void* bytes) {
  operator delete(bytes, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
}

struct TrackedBytesDelete {
  void operator()(void* bytes) const { FreeTrackedBytes(bytes); }
};

/// Owns a buffer of raw bytes.
template <typename T>
using TrackedBytesPtr = std::unique_ptr<T[], TrackedBytesDelete>;

/// The base of classes whose objects the kernel hands out: a plain delete of one, through its interface, frees it
/// rightly too, although the block starts before the object.
class TrackedObject {
 public:
  static void operator delete(void* object) noexcept {
    ::operator delete(object, nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
  }
};

#endif  // IPL_FOUNDATION_TRACKEDMEMORY_H
