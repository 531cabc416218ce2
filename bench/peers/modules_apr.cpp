// SPDX-License-Identifier: Apache-2.0
#include <apr_dso.h>
#include <apr_general.h>

#include "ModuleCases.h"

namespace {

class Library {
 public:
  explicit Library(const char* file) {
    apr_pool_create(&m_pPool, nullptr);
    m_isOpen = apr_dso_load(&m_pHandle, file, m_pPool) == APR_SUCCESS;
    for (const char* entry : kModuleEntries) {
      apr_dso_handle_sym_t symbol = nullptr;
      m_isOpen &= apr_dso_sym(&symbol, m_pHandle, entry) == APR_SUCCESS;
    }
  }
  ~Library() { apr_pool_destroy(m_pPool); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  bool IsOpen() const { return m_isOpen; }

 private:
  apr_pool_t* m_pPool = nullptr;
  apr_dso_handle_t* m_pHandle = nullptr;
  bool m_isOpen = true;
};

const Registered s_registered([] {
  apr_initialize();
  MeasureLibrary<Library>("apr");
});

}  // namespace
