// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_KERNELTHREAD_H
#define IPL_THREADS_KERNELTHREAD_H

#include <pthread.h>

#include <atomic>

#include <ipl/IPLKernel.h>

#include "foundation/TrackedMemory.h"
#include "threads/ShutdownGate.h"

/// A thread over POSIX threads, which are created detached: nobody joins them, the finished event tells their end.
///
/// Who may destroy an object, and why that is safe:
/// - The owner, when the run has ended. The ending thread sets the finished event under s_pThreadLock and does not use
///   the object after it gave the lock up. WaitUntilFinished takes the lock once after its wait, and DestroyThread
///   takes it to see whether a run goes on, so both return from it after the ending thread has left the object.
/// - The thread itself, when the object is detached. Detach and the end of a run look at m_pfnDetachCleanup and
///   m_thread under the lock, so exactly one of them destroys the object.
/// Shut-down is kept apart from threads that begin or end by s_gate.
class KernelThread : public IPLKernel::Thread, public TrackedObject {
 public:
  KernelThread();
  ~KernelThread() override;
  KernelThread(const KernelThread&) = delete;
  KernelThread& operator=(const KernelThread&) = delete;

  bool Run(const char* name, ThreadProc procedure, void* userData) override;
  bool Detach(ThreadProc cleanup) override;
  bool WaitUntilFinished(IPLKernel::Time timeout) override;
  void YieldCPU() override;
  bool SetPriority(unsigned char priority) override;
  bool SetStackSize(unsigned long bytes) override;
  unsigned char GetPriority() override;
  unsigned long GetStackSize() override;
  void GetName(char* buffer, unsigned long size) override;

  bool IsRunning();
  // These two are called by the object's own thread alone, and take no lock.
  void SetLastErrorThread(const PLError& error);
  PLError GetLastErrorThread();

  /// Start and end thread support; called by start-up and shut-down.
  static bool InitializeKernelThreads();
  /// Refuses threads that begin or end from now on, and waits for those that just do. Comes before the end.
  static void DrainKernelThreads();
  static void UninitializeKernelThreads();
  /// The calling thread's object; null on a thread that the kernel did not create. [any thread] Takes no lock.
  static KernelThread* GetCurrentKernelThread();
  static IPLKernel::Thread* GetCurrentThread();
  /// Maps 0 (most urgent) to 255 to the range of the round-robin scheduler without its five highest priorities.
  static int PriorityToPThreadPriority(unsigned char priority);

 private:
  template <typename>
  friend struct PLContractLayout;

  class RunEnd;

  static void* StaticThreadProc(void* argument);
  static void StaticDummyDetachCleanupProc(IPLKernel::Thread* thread, void* userData);

  bool Start(const char* name, ThreadProc procedure, void* userData) PL_REQUIRES(s_pThreadLock);
  void ClearRun() PL_REQUIRES(s_pThreadLock);
  void EndRun() PL_REQUIRES(s_pThreadLock);
  void FinishRun(void* userData);
  void EndUnbegun();
  ThreadProc GetProcedure();

  /// Guards the fields of all thread objects; null while thread support is not initialised. The pointer is written by
  /// start-up and shut-down alone.
  static IPLKernel::Mutex* s_pThreadLock;
  static pthread_key_t s_threadKey;
  /// Tells whether s_threadKey exists. Read without a lock by each GetLastError and SetLastError; written with release
  /// order by start-up and shut-down.
  static std::atomic<bool> s_keyValid;
  static IPL_HIDDEN ShutdownGate s_gate;

  pthread_t m_thread PL_GUARDED_BY(s_pThreadLock);  // 0 when no run goes on
  unsigned long m_requestedStackSize PL_GUARDED_BY(s_pThreadLock);
  unsigned long m_stackSize PL_GUARDED_BY(s_pThreadLock);  // of the last run
  ThreadProc m_pfnThreadProc PL_GUARDED_BY(s_pThreadLock);
  ThreadProc m_pfnDetachCleanup PL_GUARDED_BY(s_pThreadLock);  // not null: the object is detached
  void* m_pUserData PL_GUARDED_BY(s_pThreadLock);              // not owned
  PLError m_lastError;  // used by the object's own thread alone; EndRun runs on that thread too
  IPLKernel::Event* m_pFinishedEvent PL_GUARDED_BY(s_pThreadLock);  // owned; the pointer never changes once it is set
  char m_name[24] PL_GUARDED_BY(s_pThreadLock);
  unsigned char m_priority PL_GUARDED_BY(s_pThreadLock);
};

#endif  // IPL_THREADS_KERNELTHREAD_H
