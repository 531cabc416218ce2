// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLMEM_H
#define IPL_PLMEM_H

#include <stddef.h>

#include <ipl/PLExport.h>

/// @file
/// Tracked allocation: three families of operator new and operator delete, told apart by the type of a null pointer
/// that comes last, which all take their memory from IPLKernel::Alloc and give it back to IPLKernel::Free. Each block
/// has a header of 8 bytes before the caller's memory, whose second 32-bit word holds the element count of the block
/// (1, the requested count, or 0), so blocks can be passed between modules and freed by whoever owns them.
///
///     Widget* widget = new (__FILE__, __LINE__, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr)) Widget;
///     if (widget == nullptr) ...                       // memory was exhausted; nothing was constructed
///     PLTypes_ScalarDelete(widget, __FILE__, __LINE__);
///
/// All of them return null when no memory could be had, when the byte count is 0, when a count times an element size
/// does not fit, and when there is no kernel object; nothing is stored as the last error. Pointers are 8-byte aligned.
/// A block is freed by the same family, never by a plain delete or free. The delete operators ignore null.
/// file and line name the caller and are handed to Alloc and Free; file may be null.
/// [any thread] They take no lock of the kernel.

struct PLMem_Selector_PL_NEW_DELETE;
struct PLMem_Selector_PL_VECTOR_NEW_DELETE;
struct PLMem_Selector_PL_MALLOC_FREE;

/// @{
/// One object: size bytes, element count 1.
IPL_API void* operator new(size_t size, const char* file, int line, PLMem_Selector_PL_NEW_DELETE*) noexcept;
IPL_API void operator delete(void* p, const char* file, int line, PLMem_Selector_PL_NEW_DELETE*) noexcept;
/// @}

/// @{
/// Counted elements: count x elementSize bytes, element count count. size is ignored. Constructs nothing: call it as
/// operator new(0, count, elementSize, file, line, tag).
IPL_API void* operator new(size_t size, unsigned int count, unsigned int elementSize, const char* file, int line,
                           PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept;
IPL_API void operator delete(void* p, unsigned int count, unsigned int elementSize, const char* file, int line,
                             PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept;
/// @}

/// @{
/// Raw bytes: byteCount bytes, element count 0. size is ignored. Call it as operator new(0, byteCount, file, line,
/// tag).
IPL_API void* operator new(size_t size, unsigned int byteCount, const char* file, int line,
                           PLMem_Selector_PL_MALLOC_FREE*) noexcept;
IPL_API void operator delete(void* p, unsigned int byteCount, const char* file, int line,
                             PLMem_Selector_PL_MALLOC_FREE*) noexcept;
/// @}

/// @{
/// The array forms exist for old callers: operator new[] returns null and operator delete[] does nothing.
IPL_API void* operator new[](size_t size, const char* file, int line, PLMem_Selector_PL_NEW_DELETE*) noexcept;
IPL_API void operator delete[](void* p, const char* file, int line, PLMem_Selector_PL_NEW_DELETE*) noexcept;
IPL_API void* operator new[](size_t size, unsigned int count, unsigned int elementSize, const char* file, int line,
                             PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept;
IPL_API void operator delete[](void* p, unsigned int count, unsigned int elementSize, const char* file, int line,
                               PLMem_Selector_PL_VECTOR_NEW_DELETE*) noexcept;
IPL_API void* operator new[](size_t size, unsigned int byteCount, const char* file, int line,
                             PLMem_Selector_PL_MALLOC_FREE*) noexcept;
IPL_API void operator delete[](void* p, unsigned int byteCount, const char* file, int line,
                               PLMem_Selector_PL_MALLOC_FREE*) noexcept;
/// @}

/// Destroys an object that was allocated with the scalar family and frees its memory. Ignores null. An object of a
/// polymorphic class is destroyed by its virtual destructor, and object has to point to its start (the first base).
template <typename T>
void PLTypes_ScalarDelete(T* object, const char* file, int line) {
  if (object == nullptr) {
    return;
  }
  object->~T();
  operator delete(const_cast<void*>(static_cast<const volatile void*>(object)), file, line,
                  static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr));
}

#endif  // IPL_PLMEM_H
