// SPDX-License-Identifier: Apache-2.0
#include <gmodule.h>

#include "ModuleCases.h"

namespace {

class Library {
 public:
  explicit Library(const char* file) : m_pModule(g_module_open(file, G_MODULE_BIND_LOCAL)) {
    for (const char* entry : kModuleEntries) {
      gpointer symbol = nullptr;
      m_isOpen &= g_module_symbol(m_pModule, entry, &symbol) != FALSE;
    }
  }
  ~Library() { g_module_close(m_pModule); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  bool IsOpen() const { return m_isOpen; }

 private:
  GModule* m_pModule;
  bool m_isOpen = true;
};

const Registered s_registered([] { MeasureLibrary<Library>("glib"); });

}  // namespace
