// SPDX-License-Identifier: Apache-2.0
#include "kernel/ModuleLibrary.h"

#include <dlfcn.h>
#include <stdio.h>

#include <ipl/IPLKernel.h>

namespace {

char s_symbolName[256];  // guarded by the kernel object's module mutex

const char* FormatSymbolName(const char* format, const char* name) {
  IPLKernel::GetKernel()->snprintf(s_symbolName, sizeof(s_symbolName), format, name);
  return s_symbolName;
}

template <typename Entry>
bool ResolveEntry(void* library, const char* symbolName, Entry& entry) {
  entry = reinterpret_cast<Entry>(::dlsym(library, symbolName));
  return entry != nullptr;
}

}  // namespace

void NoteModuleNotLoaded(const char* name, const char* reason) {
  ::fprintf(stderr, "Note: Module %s was not loaded. Execution will continue without it (reason: %s)\n", name, reason);
}

ModuleLibrary::~ModuleLibrary() {
  if (m_hLibrary != nullptr) {
    ::dlclose(m_hLibrary);
  }
}

void* ModuleLibrary::Open(const char* name, const char* file) {
  void* handle = ::dlopen(file, RTLD_NOW);
  if (handle == nullptr) {
    const char* reason = ::dlerror();
    NoteModuleNotLoaded(name, reason != nullptr ? reason : "unknown");
  }
  return handle;
}

bool ModuleLibrary::Resolve(const char* name, const char* file, ModuleEntries& entries) const {
  const char* symbolName = "IPLModule_PLModule_PutKernel";
  if (ResolveEntry(m_hLibrary, symbolName, entries.putKernel)) {
    symbolName = FormatSymbolName("IPLModule_%s_ModuleLoad", name);
    if (ResolveEntry(m_hLibrary, symbolName, entries.load)) {
      symbolName = FormatSymbolName("IPLModule_%s_ModuleUnload", name);
      if (ResolveEntry(m_hLibrary, symbolName, entries.unload)) {
        return true;
      }
    }
  }
  ::fprintf(stderr, "Failed to load %s from %s\n", symbolName, file);
  return false;
}
