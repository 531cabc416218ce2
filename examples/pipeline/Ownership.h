// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_PIPELINE_OWNERSHIP_H
#define IPL_EXAMPLES_PIPELINE_OWNERSHIP_H

#include <memory>
#include <utility>

#include <ipl/IPLKernel.h>
#include <ipl/PLMem.h>
#include <ipl/PLThreadAnnotations.h>

namespace pipeline {

/// Owns an object that was made with the scalar tracked new.
struct TrackedDelete {
  template <typename T>
  void operator()(T* object) const {
    PLTypes_ScalarDelete(object, __FILE__, __LINE__);
  }
};
template <typename T>
using TrackedPtr = std::unique_ptr<T, TrackedDelete>;

/// Makes an object with the scalar tracked new; null if memory is exhausted.
template <typename T, typename... Arguments>
TrackedPtr<T> MakeTracked(Arguments&&... arguments) {
  return TrackedPtr<T>(new (__FILE__, __LINE__, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr))
                           T{std::forward<Arguments>(arguments)...});
}

/// An acquisition of a module whose object is a T; null if the module cannot be acquired.
template <typename T>
class ModuleReference {
 public:
  ModuleReference(IPLKernel* kernel, const char* name) : m_pKernel(kernel), m_pModule(kernel->AcquireModule(name)) {}
  ~ModuleReference() { m_pKernel->ReleaseModule(m_pModule); }
  ModuleReference(const ModuleReference&) = delete;
  ModuleReference& operator=(const ModuleReference&) = delete;

  explicit operator bool() const { return m_pModule != nullptr; }
  T* operator->() const { return static_cast<T*>(m_pModule); }

 private:
  IPLKernel* m_pKernel;
  IPLModule* m_pModule;
};

/// Holds a mutex or the lock of a queue.
class PL_SCOPED_CAPABILITY LockGuard {
 public:
  explicit LockGuard(IPLKernel::Lockable* lock) PL_ACQUIRE(lock) : m_pLock(lock) { m_pLock->Lock(); }
  ~LockGuard() PL_RELEASE() { m_pLock->Unlock(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  IPLKernel::Lockable* m_pLock;
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_PIPELINE_OWNERSHIP_H
