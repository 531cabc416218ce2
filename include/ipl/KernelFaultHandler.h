// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_KERNELFAULTHANDLER_H
#define IPL_KERNELFAULTHANDLER_H

#include <ipl/PLExport.h>

/// @file
/// The crash report.

/// Writes a crash report to standard error when a fatal signal arrives, and ends the process with SIGABRT. The signals
/// are SIGQUIT, SIGILL, SIGBUS, SIGFPE, SIGSEGV and SIGTERM. The kernel never installs it: a host that wants reports
/// does, from one thread, normally once. It needs no kernel object. [owner]
///
/// The report is written on the stack of the thread that took the signal, by calls that are safe in a signal handler
/// alone: it allocates nothing and takes no lock.
class KernelFaultHandler {
 public:
  /// Installs the handler for the six signals. Does nothing if it is installed. If the system refuses one of them,
  /// those already installed are put back, and it may be called again.
  virtual void Initialise() = 0;  // slot 0
  /// Puts the handlers back that were in force before. Does nothing if it is not installed.
  virtual void Uninitialise() = 0;  // slot 1
  virtual ~KernelFaultHandler() {}  // slots 2, 3

  /// Returns the one handler of the process, never null. [any thread]
  IPL_API static KernelFaultHandler* GetFaultHandler();
};

#endif  // IPL_KERNELFAULTHANDLER_H
