// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNEL_MODULELIBRARY_H
#define IPL_KERNEL_MODULELIBRARY_H

#include <ipl/IPLModule.h>

/// A module's three entry symbols.
struct ModuleEntries {
  void (*putKernel)(IPLKernel* kernel) = nullptr;
  IPLModule* (*load)() = nullptr;
  void (*unload)(IPLModule* module) = nullptr;
};

/// Owns the handle of a module's library until it is released.
class ModuleLibrary {
 public:
  explicit ModuleLibrary(void* handle) : m_hLibrary(handle) {}
  ~ModuleLibrary();
  ModuleLibrary(const ModuleLibrary&) = delete;
  ModuleLibrary& operator=(const ModuleLibrary&) = delete;

  /// Opens a library; on failure writes a note with the module's name and the reason to standard error and is empty.
  static void* Open(const char* name, const char* file);

  /// Resolves the entry symbols of the module name. Returns false at the first that is missing, after a line about it
  /// on standard error. file is named in that line. Uses a static buffer: call it with the module mutex held.
  bool Resolve(const char* name, const char* file, ModuleEntries& entries) const;

  void* Get() const { return m_hLibrary; }
  void Release() { m_hLibrary = nullptr; }

 private:
  void* m_hLibrary;
};

/// Writes to standard error that a module was not loaded, and why.
void NoteModuleNotLoaded(const char* name, const char* reason);

#endif  // IPL_KERNEL_MODULELIBRARY_H
