// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNEL_MODULERECORD_H
#define IPL_KERNEL_MODULERECORD_H

#include <stdint.h>

#include <ipl/IPLModule.h>

#include "foundation/TrackedMemory.h"
#include "kernel/ModuleKey.h"

/// One loaded module. All fields belong to the kernel's module mutex.
struct ModuleRecord {
  using UnloadEntry = void (*)(IPLModule*);

  /// Null if memory is exhausted. path may be null.
  static TrackedPtr<ModuleRecord> Make(const char* name, const char* path, void* library, UnloadEntry unload);

  ModuleRecord() = default;
  ~ModuleRecord();
  ModuleRecord(const ModuleRecord&) = delete;
  ModuleRecord& operator=(const ModuleRecord&) = delete;

  IPLKernelModuleKey GetKey() const { return {m_name, m_pPath}; }

  IPLModule* m_pModule = nullptr;  // the module's own; null until its load entry has returned
  void* m_hLibrary = nullptr;      // closed by the loader
  UnloadEntry m_pfnUnload = nullptr;
  uint32_t m_refCount = 0;  // 0 while the module is being loaded or unloaded
  char m_name[48] = {};
  char* m_pPath = nullptr;  // owned; null when no path was given
  // Behind the fields of the contract: the record that this one hides in the table by object, because another key gave
  // the same module object before.
  ModuleRecord* m_pHidden = nullptr;
};

#endif  // IPL_KERNEL_MODULERECORD_H
