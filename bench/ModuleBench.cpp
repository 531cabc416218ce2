// SPDX-License-Identifier: Apache-2.0
// Acquiring and releasing a module; the limit opens its file, finds three symbols and closes it. The curves have N
// other modules loaded, each from a file of its own: copies of the one.
#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "BenchKernel.h"
#include "ModuleCases.h"

namespace {

const RunningKernel s_kernel;

class PosixLibrary {
 public:
  explicit PosixLibrary(const char* file) : m_handle(::dlopen(file, RTLD_NOW)) {
    for (const char* entry : kModuleEntries) {
      m_isOpen &= ::dlsym(m_handle, entry) != nullptr;
    }
  }
  ~PosixLibrary() { ::dlclose(m_handle); }
  PosixLibrary(const PosixLibrary&) = delete;
  PosixLibrary& operator=(const PosixLibrary&) = delete;
  bool IsOpen() const { return m_isOpen; }

 private:
  void* m_handle;
  bool m_isOpen = true;
};

class OurModule {
 public:
  explicit OurModule(const char* file) : m_pModule(s_kernel->AcquireModule(kModuleName, file)) {}
  ~OurModule() { s_kernel->ReleaseModule(m_pModule); }
  OurModule(const OurModule&) = delete;
  OurModule& operator=(const OurModule&) = delete;
  bool IsOpen() const { return m_pModule != nullptr; }

 private:
  IPLModule* m_pModule;
};

/// Copies of the module, acquired for a scope.
class OtherModules {
 public:
  explicit OtherModules(int64_t count)
      : m_folder(std::filesystem::temp_directory_path() / ("ipl-bench-" + std::to_string(::getpid()))) {
    std::filesystem::create_directories(m_folder);
    for (int64_t i = 0; i < count; ++i) {
      const std::filesystem::path file = m_folder / ("lib" + std::to_string(i) + ".so");
      std::filesystem::copy_file(kModuleFile, file);
      m_modules.push_back(s_kernel->AcquireModule(kModuleName, file.c_str()));
    }
  }
  ~OtherModules() {
    for (IPLModule* module : m_modules) {
      s_kernel->ReleaseModule(module);
    }
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }
  OtherModules(const OtherModules&) = delete;
  OtherModules& operator=(const OtherModules&) = delete;

 private:
  std::filesystem::path m_folder;
  std::vector<IPLModule*> m_modules;
};

template <typename Library>
void MeasureAmong(const std::string& who) {
  const auto openAndClose = [](State& state) { TimeOne(state, [] { const Library library(kModuleFile); }); };
  const auto fresh = [openAndClose](State& state) {
    const OtherModules others(state.range(0));
    while (state.KeepRunning()) {
      openAndClose(state);
    }
  };
  const auto loaded = [fresh](State& state) {
    const Library held(kModuleFile);
    fresh(state);
  };
  MeasureManually("ModuleFresh.among/" + who, 100, fresh)->Arg(10)->Arg(100)->Arg(1000);
  MeasureManually("ModuleLoaded.among/" + who, 100, loaded)->Arg(10)->Arg(100)->Arg(1000);
}

const Registered s_registered([] {
  MeasureLibrary<OurModule>("ours");
  MeasureLibrary<PosixLibrary>("limit");
  MeasureAmong<OurModule>("ours");
  MeasureAmong<PosixLibrary>("limit");
});

}  // namespace
