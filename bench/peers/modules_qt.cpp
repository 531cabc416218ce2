// SPDX-License-Identifier: Apache-2.0
#include <QLibrary>

#include "ModuleCases.h"

namespace {

// For a loaded file it costs as much as for a fresh one, so it was not held open: there is no figure for that.
class Library {
 public:
  explicit Library(const char* file) : m_library(file) {
    m_library.load();
    for (const char* entry : kModuleEntries) {
      m_isOpen &= m_library.resolve(entry) != nullptr;
    }
  }
  ~Library() { m_library.unload(); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  bool IsOpen() const { return m_isOpen; }

 private:
  QLibrary m_library;
  bool m_isOpen = true;
};

const Registered s_registered([] { MeasureLibrary<Library>("qt", false); });

}  // namespace
