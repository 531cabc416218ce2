// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_DETACHEDCODE_H
#define IPL_THREADS_DETACHEDCODE_H

#include <sys/types.h>

#include "foundation/TrackedMemory.h"
#include "threads/PosixMutex.h"

/// Keeps the libraries in memory whose code a detached thread runs: its procedure's and its cleanup's.
///
/// They are opened once more when the thread is detached. The thread cannot close them itself, since it may still run
/// destructors of thread-specific data in them; it leaves them behind when it ends. Whoever loads or unloads a module
/// closes those of threads that are gone, at a point where the dynamic loader is used anyway.
class DetachedCode {
 public:
  /// Opens the libraries of two addresses, either of which may be null. Null if there is nothing to keep, as the
  /// addresses lie in the program itself; or if memory is exhausted, and they stay open for good. Takes the dynamic
  /// loader's lock.
  static TrackedPtr<DetachedCode> Open(const void* procedure, const void* cleanup);
  ~DetachedCode();
  DetachedCode(const DetachedCode&) = delete;
  DetachedCode& operator=(const DetachedCode&) = delete;

  /// Keeps them until the thread has left them behind. owner: what the thread calls Leave with. Accepts no code.
  static void Keep(TrackedPtr<DetachedCode> code, const void* owner);
  /// Called by the thread itself when it ends, while owner is no other one's yet. Does nothing if nothing was kept.
  static void Leave(const void* owner);
  /// Closes what threads that are gone have left. Takes the dynamic loader's lock: call it where a library may be
  /// closed.
  static void CloseLeft();

 private:
  friend TrackedPtr<DetachedCode> MakeTracked<DetachedCode>();

  DetachedCode() = default;

  static PosixMutex s_lock;
  static DetachedCode* s_pFirst PL_GUARDED_BY(s_lock);  // owned; a list

  void* m_hProcedureLibrary = nullptr;
  void* m_hCleanupLibrary = nullptr;
  const void* m_pOwner = nullptr;  // not owned, never used
  pid_t m_thread = 0;              // once it is left behind
  DetachedCode* m_pNext = nullptr;
};

#endif  // IPL_THREADS_DETACHEDCODE_H
