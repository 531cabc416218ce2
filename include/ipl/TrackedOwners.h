// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TRACKEDOWNERS_H
#define IPL_TRACKEDOWNERS_H

#include <utility>

#include <ipl/Owner.h>
#include <ipl/PLMem.h>

/// @file
/// Owners of tracked memory.

/// Owners of tracked memory, one for each family of PLMem.h. Any thread may use different ones; they take no lock.
namespace ipl {

/// @cond internal
/// Destroys an object of the scalar family and frees it.
template <typename T>
struct TrackedGiver {
  typedef T Object;
  IPL_ALWAYS_INLINE static void GiveBack(T* object) {
    object->~T();
    operator delete(const_cast<void*>(static_cast<const volatile void*>(object)), nullptr, 0,
                    static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
  }
};
/// @endcond
/// An object of the scalar family. Gives back as PLTypes_ScalarDelete: a polymorphic object is owned by a pointer to
/// its first base.
template <typename T>
using TrackedOwner = Owner<TrackedGiver<T>>;

/// Makes a T{arguments...} with the scalar family. Returns its owner; an empty one, and nothing was made, if memory is
/// exhausted. What T's constructor throws leaves this, with the memory given back.
template <typename T, typename... Arguments>
IPL_ALWAYS_INLINE TrackedOwner<T> MakeTracked(Arguments&&... arguments) {
  return TrackedOwner<T>(new (nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr))
                             T{std::forward<Arguments>(arguments)...});
}

/// @cond internal
/// Frees elements of the counted family, which are not destroyed.
template <typename T>
struct ElementsGiver {
  typedef T Object;
  IPL_ALWAYS_INLINE static void GiveBack(T* elements) {
    operator delete(elements, 0U, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_VECTOR_NEW_DELETE*>(nullptr));
  }
};
/// @endcond
/// The elements of the counted family, by the first one.
template <typename T>
using ElementsOwner = Owner<ElementsGiver<T>>;

/// @cond internal
/// Frees a block of the raw-bytes family.
template <typename T>
struct BytesGiver {
  typedef T Object;
  IPL_ALWAYS_INLINE static void GiveBack(T* bytes) {
    operator delete(bytes, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
  }
};
/// @endcond
/// A block of the raw-bytes family, such as the result of PLString::CopyUTF16to8: BytesOwner<char>.
template <typename T>
using BytesOwner = Owner<BytesGiver<T>>;

}  // namespace ipl

#endif  // IPL_TRACKEDOWNERS_H
