// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_LIBRARYPIN_H
#define IPL_THREADS_LIBRARYPIN_H

#include <utility>

/// Keeps the library that holds an address in memory. Empty if the address lies in no library that can be closed.
/// Making and dropping one takes the dynamic loader's lock: do neither with a lock of the kernel held that a module's
/// static construction may want.
class LibraryPin {
 public:
  LibraryPin() = default;
  explicit LibraryPin(const void* address);
  ~LibraryPin();
  LibraryPin(LibraryPin&& other) noexcept : m_hLibrary(std::exchange(other.m_hLibrary, nullptr)) {}
  LibraryPin& operator=(LibraryPin&& other) noexcept {
    std::swap(m_hLibrary, other.m_hLibrary);
    return *this;
  }

 private:
  void* m_hLibrary = nullptr;
};

#endif  // IPL_THREADS_LIBRARYPIN_H
