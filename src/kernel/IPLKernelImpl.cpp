// SPDX-License-Identifier: Apache-2.0
// The kernel object's life, and slots 37 to 39.
#include "kernel/IPLKernelImpl.h"

#include "foundation/ContractLayout.h"
#include "foundation/TrackedMemory.h"
#include "kernel/ModuleMap.h"
#include "messaging/KernelMessageQueue.h"
#include "messaging/KernelTimerManager.h"
#include "threads/DetachedCode.h"
#include "threads/KernelThread.h"

template <>
struct PLContractLayout<IPLKernelImpl> {
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_ThreadAlreadyRunning, 4);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_ThreadCreationFailure, 44);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_ThreadCantWaitOnSelf, 84);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_ThreadSetPriority, 124);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_ThreadGenericError, 164);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_ThreadInvalidParameter, 204);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_pStateMutex, 244);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_pModuleMutex, 248);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_pModulesByKey, 252);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_pModulesByObject, 256);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_pTimerManager, 260);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_pModuleMap, 264);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_argc, 268);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_argv, 272);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_shutdownPending, 276);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_lastError, 280);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_gmtOffset, 320);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_uniqueID, 328);
  IPL_ASSERT_OFFSET(IPLKernelImpl, m_running, 332);
  static_assert(sizeof(std::atomic<bool>) == sizeof(bool) && std::atomic<bool>::is_always_lock_free,
                "an atomic flag lies where the contract has a plain one");
  static_assert(sizeof(std::atomic<void*>) == sizeof(void*) && std::atomic<void*>::is_always_lock_free,
                "an atomic pointer lies where the contract has a plain one");
};

IPLKernelImpl::IPLKernelImpl()
    : m_pStateMutex(nullptr),
      m_pModuleMutex(nullptr),
      m_pModulesByKey(nullptr),
      m_pModulesByObject(nullptr),
      m_pTimerManager(nullptr),
      m_pModuleMap(nullptr),
      m_argc(0),
      m_argv(nullptr),
      m_shutdownPending(false),
      m_lastError(PLError_OK),
      m_gmtOffset(0),
      m_uniqueID(0),
      m_running(false) {}

IPLKernelImpl::~IPLKernelImpl() = default;

// Runs on the host's thread before any other thread uses the kernel, hence without a lock.
void IPLKernelImpl::InitializeKernel(int argc, const char** argv) PL_NO_THREAD_SAFETY_ANALYSIS {
  if (m_running) {
    return;  // the tables and mutexes in use would be lost
  }
  m_running = true;
  m_argc = argc;
  m_argv = argv;

  const Time now = GetKernelTime();
  Time gmt(0);
  ReadGMTFromSystemClock(gmt);
  m_gmtOffset = now >= gmt ? Time(0) : Time(gmt.GetNanoseconds() - now.GetNanoseconds());

  m_pStateMutex = CreateMutex();
  m_pModuleMutex = CreateMutex();
  m_pModulesByKey = MakeTracked<PLHashTable<IPLKernelModuleKey, ModuleRecord*>>().release();
  m_pModulesByObject = MakeTracked<PLHashTable<IPLModule*, ModuleRecord*>>().release();
  m_pModuleMap = MakeTracked<PLArray<MapModuleFile*>>().release();
  if (argc >= 1 && argv != nullptr && m_pModuleMap != nullptr) {
    ReadModuleMap(argc, argv, *m_pModuleMap);
  }

  // Without thread support threads cannot be run, and all threads share the kernel's last error.
  static_cast<void>(KernelThread::InitializeKernelThreads());
  KernelMessageQueue::Initialize(this);
  KernelTimerManager::s_gate.Open();
}

// Runs on the host's thread after all other threads are done with the kernel; those that are just ending are waited
// for by UninitializeKernelThreads, and use the kernel object until then.
void IPLKernelImpl::UninitializeKernel() PL_NO_THREAD_SAFETY_ANALYSIS {
  m_shutdownPending.store(true, std::memory_order_release);
  KernelTimerManager::s_gate.CloseAndDrain();
  // The field is empty before the manager ends: whoever reads it has a manager that works, or none.
  KernelTimerManager* timerManager = m_pTimerManager.exchange(nullptr, std::memory_order_acq_rel);
  if (timerManager != nullptr) {
    timerManager->Uninitialize();
    PLTypes_ScalarDelete(timerManager, nullptr, 0);
  }
  KernelThread::DrainKernelThreads();  // their cleanups may still use queues
  DetachedCode::CloseLeft();
  KernelMessageQueue::Uninitialize();
  KernelThread::UninitializeKernelThreads();

  if (m_pModuleMap != nullptr) {
    for (unsigned long i = 0; i < m_pModuleMap->GetSize(); ++i) {
      PLTypes_ScalarDelete(m_pModuleMap->GetAt(i), nullptr, 0);
    }
    PLTypes_ScalarDelete(m_pModuleMap, nullptr, 0);
  }
  PLTypes_ScalarDelete(m_pModulesByObject, nullptr, 0);
  PLTypes_ScalarDelete(m_pModulesByKey, nullptr, 0);
  DestroyMutex(m_pStateMutex);
  DestroyMutex(m_pModuleMutex);

  m_pStateMutex = nullptr;
  m_pModuleMutex = nullptr;
  m_pModulesByKey = nullptr;
  m_pModulesByObject = nullptr;
  m_pModuleMap = nullptr;
  m_running = false;
}

int IPLKernelImpl::GetArgc() { return m_argc; }

const char** IPLKernelImpl::GetArgv() { return m_argv; }

bool IPLKernelImpl::IsShutdownPending() { return m_shutdownPending.load(std::memory_order_acquire); }
