// SPDX-License-Identifier: Apache-2.0
#include "kernel/ModuleRecord.h"

#include <ipl/IPLKernel.h>

#include "foundation/ContractLayout.h"

template <>
struct PLContractLayout<ModuleRecord> {
  IPL_ASSERT_OFFSET(ModuleRecord, m_pModule, 0);
  IPL_ASSERT_OFFSET(ModuleRecord, m_hLibrary, 4);
  IPL_ASSERT_OFFSET(ModuleRecord, m_pfnUnload, 8);
  IPL_ASSERT_OFFSET(ModuleRecord, m_refCount, 12);
  IPL_ASSERT_OFFSET(ModuleRecord, m_name, 16);
  IPL_ASSERT_OFFSET(ModuleRecord, m_pPath, 64);
  IPL_ASSERT_OFFSET(ModuleRecord, m_pHidden, 68);
};

TrackedPtr<ModuleRecord> ModuleRecord::Make(const char* name, const char* path, void* library, UnloadEntry unload) {
  TrackedPtr<ModuleRecord> record = MakeTracked<ModuleRecord>();
  if (record == nullptr) {
    return nullptr;
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  record->m_hLibrary = library;
  record->m_pfnUnload = unload;
  kernel->strncpyTerm(record->m_name, name, sizeof(record->m_name));
  if (path != nullptr) {
    const auto size = static_cast<unsigned int>(kernel->strlen(path) + 1);
    record->m_pPath = static_cast<char*>(operator new(0, size, 1, nullptr, 0,
                                                      static_cast<PLMem_Selector_PL_VECTOR_NEW_DELETE*>(nullptr)));
    if (record->m_pPath == nullptr) {
      return nullptr;
    }
    kernel->memcpy(record->m_pPath, path, size);
  }
  return record;
}

ModuleRecord::~ModuleRecord() {
  operator delete(m_pPath, 0, 0, nullptr, 0, static_cast<PLMem_Selector_PL_VECTOR_NEW_DELETE*>(nullptr));
}
