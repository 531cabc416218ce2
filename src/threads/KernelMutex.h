// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_KERNELMUTEX_H
#define IPL_THREADS_KERNELMUTEX_H

#include <ipl/IPLKernel.h>

#include "foundation/TrackedMemory.h"
#include "threads/PosixMutex.h"

/// A recursive POSIX mutex.
class KernelMutex final : public IPLKernel::Mutex, public TrackedObject {
 public:
  KernelMutex();
  ~KernelMutex() override;
  KernelMutex(const KernelMutex&) = delete;
  KernelMutex& operator=(const KernelMutex&) = delete;

  void Lock() override PL_ACQUIRE();
  void Unlock() override PL_RELEASE();
  bool TryLock() override PL_TRY_ACQUIRE(true);

 private:
  template <typename>
  friend struct PLContractLayout;

  PosixMutex m_mutex;
};

#endif  // IPL_THREADS_KERNELMUTEX_H
