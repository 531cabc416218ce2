// SPDX-License-Identifier: Apache-2.0
// iplhost: loads the kernel library and the modules that its command line names, and lets them run.
#include <time.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <ipl/IPLHost.h>
#include <ipl/IPLKernel.h>

#include "HostOptions.h"
#include "KernelLibrary.h"
#include "StopSignals.h"

namespace {

enum ExitStatus : int { kSuccess = 0, kFailure = 1, kUsage = 2, kNoKernel = 3, kNoModule = 4, kSignalBase = 128 };

int Fail(ExitStatus status, const std::string& message) {
  std::fprintf(stderr, "iplhost: %s\n", message.c_str());
  return status;
}

int Print(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  return std::fflush(stdout) == 0 ? kSuccess : Fail(kFailure, "cannot write to standard output");
}

/// The modules that were acquired. The destructor releases them in reverse order.
class AcquiredModules {
 public:
  explicit AcquiredModules(IPLKernel* kernel) : m_pKernel(kernel) {}
  AcquiredModules(const AcquiredModules&) = delete;
  AcquiredModules& operator=(const AcquiredModules&) = delete;
  ~AcquiredModules() {
    while (!m_modules.empty()) {
      m_pKernel->ReleaseModule(m_modules.back());
      m_modules.pop_back();
    }
  }

  /// Keeps the module for the release. Returns false, with a line on standard error, if it is null.
  bool Keep(IPLModule* module, const std::string& name) {
    if (module == nullptr) {
      Fail(kNoModule, "module '" + name + "' cannot be acquired");
      return false;
    }
    m_modules.push_back(module);
    return true;
  }

 private:
  IPLKernel* m_pKernel;
  std::vector<IPLModule*> m_modules;
};

std::filesystem::path ExecutableDirectory() {
  std::error_code ignored;
  return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
}

std::string KernelPath(const HostOptions& options) {
  if (!options.kernelPath.empty()) {
    return options.kernelPath;
  }
  const std::filesystem::path installed = ExecutableDirectory().parent_path() / "libIPLKernel.so";
  std::error_code ignored;
  return std::filesystem::exists(installed, ignored) ? installed.string() : "libIPLKernel.so";
}

/// The time is the system's at this moment: later changes of its clock do not reach the kernel's GMT.
void SetWallClock(IPLKernel* kernel) {
  timespec now = {};
  if (clock_gettime(CLOCK_REALTIME, &now) == 0) {
    kernel->SetTimeGMT(static_cast<int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec);
  }
}

/// Passes a stop signal on to the host's module as long as this object lives.
class StopTarget {
 public:
  StopTarget(StopWaiter& waiter, IPLHost* host) : m_waiter(waiter) {
    m_waiter.SetTarget([host] { host->RequestStop(); });
  }
  ~StopTarget() { m_waiter.SetTarget(nullptr); }
  StopTarget(const StopTarget&) = delete;
  StopTarget& operator=(const StopTarget&) = delete;

 private:
  StopWaiter& m_waiter;
};

/// Acquires the modules, waits for them, and releases them.
int RunModules(IPLKernel* kernel, const std::vector<std::string>& names, StopWaiter& waiter) {
  // Objects end in the reverse order of their declaration, and that order is what makes the end safe. First the modules
  // go: their unload entries wait for their threads, so nobody reports to the host any more. Then the waiter's thread,
  // the last one that could, no longer calls RequestStop. Only then the object that all of them report to is released.
  AcquiredModules own(kernel);
  // By its name, as modules do: a module map that names it then counts for both.
  IPLModule* module = kernel->AcquireModule("IPLHost");
  if (!own.Keep(module, "IPLHost")) {
    return kNoModule;
  }
  IPLHost* host = static_cast<IPLHost*>(module);
  const StopTarget target(waiter, host);

  AcquiredModules modules(kernel);
  for (const std::string& name : names) {
    if (!modules.Keep(kernel->AcquireModule(name.c_str()), name)) {
      return kNoModule;
    }
  }
  host->WaitUntilDone(IPLKernel::Time::Forever());
  const int signal = waiter.GetSignal();
  return signal == 0 ? host->GetStatus() : kSignalBase + signal;
}

int Run(const HostOptions& options, int argc, char** argv) {
  BlockStopSignals();  // before any thread starts
  // Until the kernel is unloaded, so that a second signal ends a host that hangs while it starts or stops.
  StopWaiter waiter;
  KernelLibrary library;
  std::string mistake = library.Open(KernelPath(options));
  if (mistake.empty() && options.faultHandler) {
    mistake = library.InstallFaultHandler();
  }
  if (!mistake.empty()) {
    return Fail(kNoKernel, mistake);
  }
  IPLKernel* kernel = library.Start(argc, const_cast<const char**>(argv));
  if (options.wallClock) {
    SetWallClock(kernel);
  }
  return RunModules(kernel, options.modules, waiter);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const HostOptions options = ParseHostOptions(argc, argv);
    switch (options.action) {
      case HostOptions::Action::ShowHelp:
        return Print(kHostHelp);
      case HostOptions::Action::ShowVersion:
        return Print("iplhost " IPL_VERSION "\n");
      case HostOptions::Action::Refuse:
        return Fail(kUsage, options.mistake);
      case HostOptions::Action::Run:
        break;
    }
    return Run(options, argc, argv);
  } catch (const std::exception& exception) {
    return Fail(kFailure, exception.what());  // no memory, or no thread
  }
}
