// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNEL_MODULELIBRARY_H
#define IPL_KERNEL_MODULELIBRARY_H

#include <utility>

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
  /// Opens the file. On failure writes a note with the module's name and the reason to standard error, and is empty.
  /// Both texts have to outlive the object.
  ModuleLibrary(const char* moduleName, const char* file);
  ~ModuleLibrary();
  ModuleLibrary(const ModuleLibrary&) = delete;
  ModuleLibrary& operator=(const ModuleLibrary&) = delete;

  /// Null if it is empty.
  void* Get() const { return m_hLibrary; }
  /// Resolves the entry symbols. Returns false at the first that is missing, after a line about it on standard error.
  bool Resolve(ModuleEntries& entries) const;
  /// Gives the handle up; the caller closes it.
  void* Release() { return std::exchange(m_hLibrary, nullptr); }

 private:
  const char* const m_moduleName;  // not owned
  const char* const m_file;        // not owned
  void* m_hLibrary;
};

/// Writes to standard error that a module was not loaded, and why.
void NoteModuleNotLoaded(const char* name, const char* reason);

#endif  // IPL_KERNEL_MODULELIBRARY_H
