// SPDX-License-Identifier: Apache-2.0
#include <uv.h>

#include "ModuleCases.h"

namespace {

class Library {
 public:
  explicit Library(const char* file) {
    m_isOpen = uv_dlopen(file, &m_library) == 0;
    for (const char* entry : kModuleEntries) {
      void* symbol = nullptr;
      m_isOpen &= uv_dlsym(&m_library, entry, &symbol) == 0;
    }
  }
  ~Library() { uv_dlclose(&m_library); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  bool IsOpen() const { return m_isOpen; }

 private:
  uv_lib_t m_library;
  bool m_isOpen = true;
};

const Registered s_registered([] { MeasureLibrary<Library>("uv"); });

}  // namespace
