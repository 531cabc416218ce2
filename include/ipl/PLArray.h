// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLARRAY_H
#define IPL_PLARRAY_H

#include <stdint.h>

#include <type_traits>

#include <ipl/IPLKernel.h>
#include <ipl/PLMem.h>

/// @file
/// An array.

/// For PLArray alone, and the same for every element type: moves the used elements of data to a buffer for size
/// elements or more, frees data and returns the buffer, its unused part zero, and their number in capacity. Null, and
/// nothing is done, if memory is exhausted or a size does not fit 32 bits. It is seldom called, so it is kept out of
/// the way of what is not. [owner] Takes no lock.
IPL_HIDDEN IPL_NEVER_INLINE inline void* PLArray_Grow(void* data, uint32_t used, uint32_t& capacity, unsigned long size,
                                                      unsigned long elementSize, bool plainData) {
  uint64_t count = size;
  if (capacity != 0) {
    const uint64_t step = 2 * static_cast<uint64_t>(capacity);
    count = step * (size / step + 1);
  }
  if (count > (UINT32_MAX - 8) / elementSize) {
    return nullptr;
  }
  const unsigned long byteCount = static_cast<unsigned long>(count) * elementSize;
  void* const memory = operator new(0, static_cast<unsigned int>(byteCount), nullptr, 0,
                                    static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
  if (memory == nullptr) {
    return nullptr;
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  unsigned char* const bytes = static_cast<unsigned char*>(memory);
  const unsigned long usedBytes = used * elementSize;
  if (plainData) {
    if (data != nullptr) {
      kernel->memcpy(bytes, data, capacity * elementSize);
    }
    kernel->memset(bytes + usedBytes, 0, byteCount - usedBytes);
  } else {
    kernel->memset(bytes, 0, byteCount);
    for (unsigned long i = 0; i < usedBytes; ++i) {
      bytes[i] = static_cast<const unsigned char*>(data)[i];
    }
  }
  operator delete(data, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
  capacity = static_cast<uint32_t>(count);
  return memory;
}

/// A growable array of pointers, numbers or other trivially copyable values.
///
/// It takes its memory from the tracked allocation and moves and clears it with the kernel's memcpy, memmove and
/// memset, so it is used only while the kernel object exists. The capacity grows by doubling and never shrinks.
/// Elements are not destroyed: an owner of what they point to frees that first.
///
/// No operation reports a failure. When memory is exhausted, or a size does not fit 32 bits, the operation changes
/// nothing: compare GetSize() before and after where that matters. Indexes are the caller's responsibility.
/// [owner] No lock is taken: an array is not shared between threads without its owner's lock.
template <typename T>
class PLArray {
  static_assert(std::is_trivially_copyable<T>::value, "elements are moved as raw memory");

 public:
  /// An empty array with room for 8 elements.
  PLArray() : m_pData(nullptr), m_size(0), m_capacity(0), m_bPlainData(true) {
    SetSize(8);
    SetSize(0);
  }

  virtual ~PLArray() {  // slots 0, 1
    operator delete(m_pData, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
  }

  PLArray(const PLArray&) = delete;
  PLArray& operator=(const PLArray&) = delete;

  /// Sets the number of elements. New elements are zero after the buffer has grown; within the capacity they are
  /// whatever was there before.
  void SetSize(unsigned long size) {
    if (size > m_capacity && !Grow(size)) {
      return;
    }
    m_size = static_cast<uint32_t>(size);
  }

  /// Inserts value before the element at index, or extends the array to index + 1 elements. value may be an element of
  /// this array.
  void InsertAt(unsigned long index, const T& value) {
    const T copy = value;  // value may lie in the buffer that is moved or freed below
    const uint32_t oldSize = m_size;
    if (index >= oldSize) {
      if (index < UINT32_MAX) {
        SetSize(index + 1);
      }
      if (m_size == oldSize) {
        return;
      }
    } else {
      SetSize(static_cast<unsigned long>(oldSize) + 1);
      if (m_size == oldSize) {
        return;
      }
      if (m_bPlainData) {
        IPLKernel* kernel = IPLKernel::GetKernel();
        kernel->memmove(m_pData + index + 1, m_pData + index, ByteCount(oldSize - index));
        kernel->memset(m_pData + index, 0, ByteCount(1));
      } else {
        for (uint32_t i = oldSize; i > index; --i) {
          m_pData[i] = m_pData[i - 1];
        }
      }
    }
    m_pData[index] = copy;
  }

  /// Removes the element at index; those behind it move down by one. An index outside the array removes nothing.
  void RemoveAt(unsigned long index) {
    if (index >= m_size) {
      return;
    }
    const uint32_t last = m_size - 1;
    IPLKernel* kernel = IPLKernel::GetKernel();
    if (index < last) {
      if (m_bPlainData) {
        kernel->memmove(m_pData + index, m_pData + index + 1, ByteCount(last - index));
      } else {
        for (unsigned long i = index; i < last; ++i) {
          m_pData[i] = m_pData[i + 1];
        }
      }
    }
    kernel->memset(m_pData + last, 0, ByteCount(1));
    m_size = last;
  }

  /// Inserts value at the end.
  void Append(const T& value) {
    const T copy = value;
    const uint32_t oldSize = m_size;
    SetSize(static_cast<unsigned long>(oldSize) + 1);  // a size is less than the greatest number by 8 or more
    if (m_size != oldSize) {
      m_pData[oldSize] = copy;
    }
  }

  /// Returns the number of elements.
  unsigned long GetSize() const { return m_size; }
  /// Returns the number of elements for which memory is there.
  unsigned long GetCapacity() const { return m_capacity; }
  /// Returns the element at index. Requires index < GetSize(). The reference is valid until the array grows.
  T& GetAt(unsigned long index) { return m_pData[index]; }
  /// As above.
  const T& GetAt(unsigned long index) const { return m_pData[index]; }
  /// As GetAt.
  T& operator[](unsigned long index) { return m_pData[index]; }
  /// As GetAt.
  const T& operator[](unsigned long index) const { return m_pData[index]; }

 private:
  template <typename>
  friend struct PLContractLayout;

  static unsigned long ByteCount(unsigned long count) { return static_cast<unsigned long>(count * sizeof(T)); }

  /// Makes room for size elements or more.
  bool Grow(unsigned long size) {
    void* const memory = PLArray_Grow(m_pData, m_size, m_capacity, size, sizeof(T), m_bPlainData);
    if (memory == nullptr) {
      return false;
    }
    m_pData = static_cast<T*>(memory);
    return true;
  }

  T* m_pData;           // owned; null until the first allocation
  uint32_t m_size;      // elements in use
  uint32_t m_capacity;  // elements allocated

 protected:
  /// Elements are moved and cleared by the kernel's operations for raw memory; true in every array of the kernel. Where
  /// a derived class sets it to false they are copied one by one.
  bool m_bPlainData;
};

#endif  // IPL_PLARRAY_H
