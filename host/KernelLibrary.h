// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_HOST_KERNELLIBRARY_H
#define IPL_HOST_KERNELLIBRARY_H

#include <string>

#include <ipl/IPLKernel.h>
#include <ipl/KernelEntry.h>
#include <ipl/KernelFaultHandler.h>

/// The kernel library, opened at run time, and the kernel in it while it runs. The destructor stops the kernel and
/// closes the library.
class KernelLibrary {
 public:
  KernelLibrary() = default;
  ~KernelLibrary();
  KernelLibrary(const KernelLibrary&) = delete;
  KernelLibrary& operator=(const KernelLibrary&) = delete;

  /// Opens the library and finds its entry symbols. Returns what went wrong in one line, or an empty text.
  std::string Open(const std::string& path);

  /// Installs the library's crash report, which stays until this object ends. Follows a successful Open; the kernel
  /// need not run yet. Returns what went wrong in one line, or an empty text.
  std::string InstallFaultHandler();

  /// Creates and starts the kernel. argv has to stay valid as long as this object. Follows a successful Open.
  IPLKernel* Start(int argc, const char** argv);

 private:
  /// Returns what went wrong in one line, or an empty text.
  template <typename Entry>
  std::string Find(const char* symbol, Entry& entry);

  std::string m_path;
  void* m_hLibrary = nullptr;
  IPLModule* m_pKernel = nullptr;
  IPLKernelLoadModuleEntry m_pfnLoad = nullptr;
  IPLKernelInitializeEntry m_pfnInitialize = nullptr;
  IPLKernelUnloadModuleEntry m_pfnUnload = nullptr;
  KernelFaultHandler* m_pFaultHandler = nullptr;  // the library's; null when it was not installed
};

#endif  // IPL_HOST_KERNELLIBRARY_H
