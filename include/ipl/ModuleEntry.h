// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_MODULEENTRY_H
#define IPL_MODULEENTRY_H

#include <type_traits>

#include <ipl/IPLKernel.h>
#include <ipl/IPLModule.h>
#include <ipl/PLMem.h>

/// @file
/// The entry symbols of a module, made from a class.

/// What the entries that IPL_MODULE defines do; nobody else uses it. [owner] No lock is taken. The headers alone emit
/// no symbol of it.
template <typename Class>
struct IPLModuleEntry {
  static_assert(std::is_base_of<IPLModule, Class>::value, "the class of a module object has to be an IPLModule");

  /// Destroys what was made when a start fails. [owner]
  struct Owner {
    Class* object;     ///< owned
    const char* file;  ///< the caller
    int line;          ///< the caller
    /// Destroys the object.
    ~Owner() { PLTypes_ScalarDelete(object, file, line); }
  };

  /// The load entry.
  static IPLModule* Load(IPLKernel* kernel, const char* file, int line) noexcept {
#ifdef __EXCEPTIONS
    try {
#endif
      Owner owner = {new (file, line, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr)) Class(kernel), file, line};
      if (owner.object != nullptr && owner.object->Start()) {
        Class* const object = owner.object;
        owner.object = nullptr;
        return object;
      }
#ifdef __EXCEPTIONS
    } catch (...) {  // what was made is given back by now
    }
#endif
    return nullptr;
  }

  /// The unload entry.
  static void Unload(IPLModule* module, const char* file, int line) noexcept {
    PLTypes_ScalarDelete(static_cast<Class*>(module), file, line);
  }
};

/// Defines the three entry symbols of the module NAME, whose module object is a CLASS. It stands once in a library, at
/// file scope and outside of any namespace, and takes the place of IPL_DECLARE_MODULE.
///
///     class HelloModule : public IPLModule {
///      public:
///       explicit HelloModule(IPLKernel* kernel);
///       bool Start();
///     };
///     IPL_MODULE(Hello, HelloModule);
///
/// CLASS derives from IPLModule, publicly and not virtually. The load entry makes an object of it with
/// CLASS(IPLKernel*), in tracked memory, and calls bool Start(), once. The kernel object that both can use lives longer
/// than the module.
/// Returned is the object, or null, and the module counts as not loaded: memory is exhausted, Start has returned false,
/// or the constructor or Start has thrown an exception. No exception leaves an entry, and nothing is stored as the last
/// error beyond what CLASS stores. After a false or a throwing Start the object is destroyed, so the destructor gives
/// back what half a start took.
/// The object belongs to the module. The unload entry destroys it, which must not throw. The destructor waits for the
/// module's threads, but for none that acquires or releases modules.
/// A module that is acquired by its name and by its path has an object for each.
/// All three run under the kernel's module mutex, hence one at a time; they take no other lock.
#define IPL_MODULE(NAME, CLASS)                                                        \
  IPL_DECLARE_MODULE(NAME);                                                            \
  static IPLKernel* s_pKernelOf##NAME = nullptr;                                       \
  void IPLModule_PLModule_PutKernel(IPLKernel* kernel) { s_pKernelOf##NAME = kernel; } \
  IPLModule* IPLModule_##NAME##_ModuleLoad(void) {                                     \
    return IPLModuleEntry<CLASS>::Load(s_pKernelOf##NAME, __FILE__, __LINE__);         \
  }                                                                                    \
  void IPLModule_##NAME##_ModuleUnload(IPLModule* module) {                            \
    IPLModuleEntry<CLASS>::Unload(module, __FILE__, __LINE__);                         \
  }                                                                                    \
  static_assert(sizeof(IPLModuleEntry<CLASS>) > 0, "the semicolon behind the macro ends this")

#endif  // IPL_MODULEENTRY_H
