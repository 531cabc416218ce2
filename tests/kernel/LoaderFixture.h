// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_KERNEL_LOADERFIXTURE_H
#define IPL_TESTS_KERNEL_LOADERFIXTURE_H

#include <dlfcn.h>
#include <stdint.h>
#include <stdlib.h>

#include <filesystem>
#include <functional>
#include <map>

#include "support/KernelFixture.h"

/// A kernel with the test modules, which lie beside the program and tell it of each entry that runs. An entry is known
/// by the module's first letter and its own: "Ap" is Alpha's PutKernel, "Al" its ModuleLoad, "Au" its ModuleUnload.
class LoaderFixture : public KernelFixture {
 protected:
  LoaderFixture() {
    s_current = this;
    setenv("IPL_TEST_MODULE_HOOK", std::to_string(reinterpret_cast<uintptr_t>(&Hook)).c_str(), 1);
  }
  /// Begins another life of the kernel, which is not started yet.
  void LoadAgain() {
    IPLModule_IPLKernel_UnloadModule(kernel);
    kernel = static_cast<IPLKernel*>(IPLModule_IPLKernel_LoadModule());
  }
  static std::string File(const std::string& module) {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / ("lib" + module + ".so");
  }
  static bool IsOpen(const std::string& module) {
    void* handle = dlopen(File(module).c_str(), RTLD_NOW | RTLD_NOLOAD);
    return handle != nullptr && dlclose(handle) == 0;
  }

  std::string m_log;  ///< the entries that ran, each with a blank behind it
  /// What else they do. object: the entry's argument; for the load entry the result, which is the module's own at
  /// first.
  std::map<std::string, std::function<void(IPLModule*& object)>> m_actions;

 private:
  static IPLModule* Hook(const char* module, char entry, IPLModule* object) {
    const std::string key = {module[0], entry};
    s_current->m_log += key + ' ';
    if (s_current->m_actions.count(key) != 0) {
      s_current->m_actions.at(key)(object);
    }
    return object;
  }
  static inline LoaderFixture* s_current = nullptr;
};

#endif  // IPL_TESTS_KERNEL_LOADERFIXTURE_H
