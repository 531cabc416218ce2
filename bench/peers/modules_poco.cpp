// SPDX-License-Identifier: Apache-2.0
#include <Poco/SharedLibrary.h>

#include "ModuleCases.h"

namespace {

class Library {
 public:
  explicit Library(const char* file) : m_library(file) {
    for (const char* entry : kModuleEntries) {
      m_isOpen &= m_library.hasSymbol(entry);
    }
  }
  ~Library() { m_library.unload(); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  bool IsOpen() const { return m_isOpen; }

 private:
  Poco::SharedLibrary m_library;
  bool m_isOpen = true;
};

const Registered s_registered([] { MeasureLibrary<Library>("poco"); });

}  // namespace
