// SPDX-License-Identifier: Apache-2.0
#include <prlink.h>

#include "ModuleCases.h"

namespace {

class Library {
 public:
  explicit Library(const char* file) : m_pLibrary(PR_LoadLibrary(file)) {
    for (const char* entry : kModuleEntries) {
      m_isOpen &= PR_FindSymbol(m_pLibrary, entry) != nullptr;
    }
  }
  ~Library() { PR_UnloadLibrary(m_pLibrary); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  bool IsOpen() const { return m_isOpen; }

 private:
  PRLibrary* m_pLibrary;
  bool m_isOpen = true;
};

const Registered s_registered([] { MeasureLibrary<Library>("nspr"); });

}  // namespace
