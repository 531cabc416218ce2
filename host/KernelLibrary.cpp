// SPDX-License-Identifier: Apache-2.0
#include "KernelLibrary.h"

#include <dlfcn.h>

namespace {

/// To be called right after the call that failed.
std::string LoaderError() {
  const char* text = dlerror();
  return text == nullptr ? "unknown reason" : text;
}

}  // namespace

template <typename Entry>
bool KernelLibrary::Find(const char* symbol, Entry& entry) {
  entry = reinterpret_cast<Entry>(dlsym(m_hLibrary, symbol));
  return entry != nullptr;
}

std::string KernelLibrary::Open(const std::string& path) {
  // RTLD_GLOBAL: modules that were not linked with the library find its symbols as well.
  m_hLibrary = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (m_hLibrary == nullptr) {
    return "kernel library '" + path + "' cannot be loaded: " + LoaderError();
  }
  const char* missing = nullptr;
  if (!Find("IPLModule_IPLKernel_LoadModule", m_pfnLoad)) {
    missing = "IPLModule_IPLKernel_LoadModule";
  } else if (!Find("IPLModule_IPLKernel_InitializeKernel", m_pfnInitialize)) {
    missing = "IPLModule_IPLKernel_InitializeKernel";
  } else if (!Find("IPLModule_IPLKernel_UnloadModule", m_pfnUnload)) {
    missing = "IPLModule_IPLKernel_UnloadModule";
  }
  if (missing != nullptr) {
    return "kernel library '" + path + "' lacks the entry symbol " + missing + ": " + LoaderError();
  }
  return "";
}

IPLKernel* KernelLibrary::Start(int argc, const char** argv) {
  m_pKernel = m_pfnLoad();
  m_pfnInitialize(argc, argv);
  return static_cast<IPLKernel*>(m_pKernel);
}

KernelLibrary::~KernelLibrary() {
  if (m_pKernel != nullptr) {
    m_pfnUnload(m_pKernel);
  }
  if (m_hLibrary != nullptr) {
    dlclose(m_hLibrary);
  }
}
