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
std::string KernelLibrary::Find(const char* symbol, Entry& entry) {
  entry = reinterpret_cast<Entry>(dlsym(m_hLibrary, symbol));
  if (entry == nullptr) {
    return "kernel library '" + m_path + "' lacks the entry symbol " + symbol + ": " + LoaderError();
  }
  return "";
}

std::string KernelLibrary::Open(const std::string& path) {
  m_path = path;
  // RTLD_GLOBAL: modules that were not linked with the library find its symbols as well.
  m_hLibrary = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (m_hLibrary == nullptr) {
    return "kernel library '" + path + "' cannot be loaded: " + LoaderError();
  }
  std::string mistake = Find("IPLModule_IPLKernel_LoadModule", m_pfnLoad);
  if (mistake.empty()) {
    mistake = Find("IPLModule_IPLKernel_InitializeKernel", m_pfnInitialize);
  }
  if (mistake.empty()) {
    mistake = Find("IPLModule_IPLKernel_UnloadModule", m_pfnUnload);
  }
  return mistake;
}

std::string KernelLibrary::InstallFaultHandler() {
  // KernelFaultHandler::GetFaultHandler(), a static operation without arguments. Its exported name follows the C++ ABI,
  // the same one on every target, as do the slots through which the handler is called.
  KernelFaultHandler* (*getFaultHandler)() = nullptr;
  std::string mistake = Find("_ZN18KernelFaultHandler15GetFaultHandlerEv", getFaultHandler);
  if (mistake.empty()) {
    m_pFaultHandler = getFaultHandler();
    m_pFaultHandler->Initialise();
  }
  return mistake;
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
  if (m_pFaultHandler != nullptr) {
    m_pFaultHandler->Uninitialise();
  }
  if (m_hLibrary != nullptr) {
    dlclose(m_hLibrary);
  }
}
