// SPDX-License-Identifier: Apache-2.0
#include "kernel/ModuleLibrary.h"

#include <dlfcn.h>
#include <stdio.h>

#include <ipl/IPLKernel.h>

namespace {

// The name of an entry symbol, cut to 255 bytes.
class SymbolName {
 public:
  const char* Set(const char* format, const char* moduleName) {
    IPLKernel::GetKernel()->snprintf(m_text, sizeof(m_text), format, moduleName);
    return m_text;
  }

 private:
  char m_text[256];
};

template <typename Entry>
bool ResolveEntry(void* library, const char* symbol, Entry& entry) {
  entry = reinterpret_cast<Entry>(::dlsym(library, symbol));
  return entry != nullptr;
}

}  // namespace

void NoteModuleNotLoaded(const char* name, const char* reason) {
  ::fprintf(stderr, "Note: Module %s was not loaded. Execution will continue without it (reason: %s)\n", name, reason);
}

ModuleLibrary::ModuleLibrary(const char* moduleName, const char* file)
    : m_moduleName(moduleName), m_file(file), m_hLibrary(::dlopen(file, RTLD_NOW)) {
  if (m_hLibrary == nullptr) {
    const char* reason = ::dlerror();
    NoteModuleNotLoaded(moduleName, reason != nullptr ? reason : "unknown");
  }
}

ModuleLibrary::~ModuleLibrary() {
  if (m_hLibrary != nullptr) {
    ::dlclose(m_hLibrary);
  }
}

bool ModuleLibrary::Resolve(ModuleEntries& entries) const {
  SymbolName name;
  const char* symbol = "IPLModule_PLModule_PutKernel";
  if (ResolveEntry(m_hLibrary, symbol, entries.putKernel)) {
    symbol = name.Set("IPLModule_%s_ModuleLoad", m_moduleName);
    if (ResolveEntry(m_hLibrary, symbol, entries.load)) {
      symbol = name.Set("IPLModule_%s_ModuleUnload", m_moduleName);
      if (ResolveEntry(m_hLibrary, symbol, entries.unload)) {
        return true;
      }
    }
  }
  ::fprintf(stderr, "Failed to load %s from %s\n", symbol, m_file);
  return false;
}
