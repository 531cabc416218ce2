// SPDX-License-Identifier: Apache-2.0
#include "threads/KernelMutex.h"

#include "foundation/ContractLayout.h"
#include "threads/YieldPoint.h"

template <>
struct PLContractLayout<KernelMutex> {
  IPL_ASSERT_OFFSET(KernelMutex, m_mutex, 4);
  IPL_ASSERT_SIZE(KernelMutex, 28);
};

// Construction has no result. Where the system refuses a recursive mutex an ordinary one remains.
KernelMutex::KernelMutex() { static_cast<void>(m_mutex.InitialiseRecursive()); }

KernelMutex::~KernelMutex() { m_mutex.Destroy(); }

// The interface's capability is this object, the code's is the mutex inside it.
void KernelMutex::Lock() PL_NO_THREAD_SAFETY_ANALYSIS { m_mutex.Lock(); }

// The caller's last use of the mutex may be this call: whoever takes it next may destroy it.
void KernelMutex::Unlock() PL_NO_THREAD_SAFETY_ANALYSIS {
  YieldPoint();
  m_mutex.Unlock();
  YieldPoint();
}

bool KernelMutex::TryLock() PL_NO_THREAD_SAFETY_ANALYSIS { return m_mutex.TryLock(); }
