// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_IPLMODULE_H
#define IPL_IPLMODULE_H

#include <ipl/PLExport.h>

class IPLKernel;

/// @file
/// What every module has.

/// The base of every object that a module hands out as its module object.
///
/// The destructor is defined here, so each module carries its own copy of this class's table and needs nothing from
/// the kernel library for it.
class IPLModule {
 public:
  virtual ~IPLModule() {}  // slots 0, 1
};

/// Declares the three entry symbols of the module NAME. IPL_MODULE (ipl/ModuleEntry.h) defines them as well.
///
/// A module is a shared library that exports three entry symbols with C names. NAME stands for the module's name, the
/// text that is given to IPLKernel::AcquireModule; a name has at most 47 bytes.
///
///     extern "C" IPL_API void IPLModule_PLModule_PutKernel(IPLKernel* kernel);
///
/// is called first, once per load, with the kernel object;
///
///     extern "C" IPL_API IPLModule* IPLModule_NAME_ModuleLoad(void);
///
/// second: it returns the module object, which stays the module's own, or null to refuse;
///
///     extern "C" IPL_API void IPLModule_NAME_ModuleUnload(IPLModule* module);
///
/// once, with the module object, when the last reference is released.
///
/// The kernel holds its module mutex while one of them runs: they may acquire and release other modules, and another
/// thread that does so waits meanwhile. So an unload entry must not wait for a thread that acquires or releases
/// modules. After the unload entry has returned the library is closed: each thread that runs the module's code must
/// have ended by then (IPLKernel::Thread::WaitUntilFinished) or be detached, in which case the library stays in memory
/// until that thread has ended. A thread that was waited for may still run destructors of thread-specific data: a
/// module that has such destructors detaches its threads.
#define IPL_DECLARE_MODULE(NAME)                                   \
  extern "C" {                                                     \
  IPL_API void IPLModule_PLModule_PutKernel(IPLKernel* kernel);    \
  IPL_API IPLModule* IPLModule_##NAME##_ModuleLoad(void);          \
  IPL_API void IPLModule_##NAME##_ModuleUnload(IPLModule* module); \
  }                                                                \
  static_assert(sizeof(#NAME) <= 48, "a module name has at most 47 characters")

#endif  // IPL_IPLMODULE_H
