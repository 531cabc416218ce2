// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADSTART_H
#define IPL_THREADSTART_H

#include <type_traits>
#include <utility>

#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/TrackedOwners.h>

/// @file
/// Threads that run a callable.

namespace ipl {

/// @cond internal
/// What a thread tells the one who waits for it. Read when the run has ended.
struct ThreadOutcome {
  bool threw;
};
/// @endcond

/// @cond internal
/// What a thread runs. The thread destroys the callable, its owner frees the memory.
template <typename Callable>
struct ThreadTask : ThreadOutcome {
  template <typename Source>
  IPL_ALWAYS_INLINE explicit ThreadTask(Source&& source)
      : ThreadOutcome(ThreadOutcome{false}), callable(std::forward<Source>(source)) {}
  IPL_ALWAYS_INLINE ~ThreadTask() {}
  ThreadTask(const ThreadTask&) = delete;
  ThreadTask& operator=(const ThreadTask&) = delete;

  union {
    Callable callable;
  };
};
/// @endcond

/// @cond internal
/// Destroys a callable at the end of a scope.
template <typename Callable>
struct CallableEnd {
  Callable& callable;
  IPL_ALWAYS_INLINE ~CallableEnd() { callable.~Callable(); }
};
/// @endcond

/// The procedure of the thread that runs a callable. The kernel needs its address, so it is the one function of the
/// layer that a module contains; it has internal linkage, hence a local symbol.
template <typename Callable>
static void RunCallable(IPLKernel::Thread*, void* userData) {
  ThreadTask<Callable>* const task = static_cast<ThreadTask<Callable>*>(userData);
#ifdef __EXCEPTIONS
  try {
#endif
    const CallableEnd<Callable> end = {task->callable};
    task->callable();
#ifdef __EXCEPTIONS
  } catch (...) {
    task->threw = true;
  }
#endif
}

/// A thread that runs a callable, made by StartThread. Whoever destroys it waits until the run has ended, so a module
/// that holds it is not unloaded under it. It is not to be destroyed on its own thread: then that thread is detached,
/// and a few bytes are never freed. [owner] Each operation takes the lock that all thread objects share.
class RunningThread {
 public:
  /// Without a thread.
  IPL_ALWAYS_INLINE RunningThread() noexcept : m_bThrew(false) {}
  /// For StartThread: takes over a thread that runs, and its outcome.
  IPL_ALWAYS_INLINE RunningThread(ThreadOwner&& thread, TrackedOwner<ThreadOutcome>&& outcome) noexcept
      : m_outcome(std::move(outcome)), m_thread(std::move(thread)), m_bThrew(false) {}
  /// Takes over the thread of other, which is without one afterwards.
  IPL_ALWAYS_INLINE RunningThread(RunningThread&& other) noexcept
      : m_outcome(std::move(other.m_outcome)), m_thread(std::move(other.m_thread)), m_bThrew(other.m_bThrew) {}
  /// Waits for the thread that this has, then takes over that of other. [blocks]
  IPL_ALWAYS_INLINE RunningThread& operator=(RunningThread&& other) noexcept {
    if (this != &other) {
      End();
      m_outcome = std::move(other.m_outcome);
      m_thread = std::move(other.m_thread);
      m_bThrew = other.m_bThrew;
    }
    return *this;
  }
  RunningThread(const RunningThread&) = delete;
  RunningThread& operator=(const RunningThread&) = delete;
  /// Waits for the thread. [blocks]
  IPL_ALWAYS_INLINE ~RunningThread() { End(); }

  /// Waits until the callable has returned and was destroyed, then gives the thread object back; true at once if there
  /// is none. timeout: as for Event::Wait. What the thread wrote is visible afterwards. Returns false, and keeps the
  /// thread, if Thread::WaitUntilFinished does, with the error that it stores. [blocks]
  IPL_ALWAYS_INLINE bool Join(IPLKernel::Time timeout = IPLKernel::Time::Forever()) noexcept {
    if (!m_thread) {
      return true;
    }
    if (!m_thread->WaitUntilFinished(timeout)) {
      return false;
    }
    m_bThrew = m_outcome->threw;
    m_thread.reset();
    m_outcome.reset();
    return true;
  }
  /// Returns whether the callable ended by an exception. False until Join has returned true.
  IPL_ALWAYS_INLINE bool HasThrown() const noexcept { return m_bThrew; }
  /// Returns the thread object, null without a thread and after a Join that returned true. It stays owned.
  IPL_ALWAYS_INLINE IPLKernel::Thread* GetThread() const noexcept { return m_thread.get(); }
  /// Returns whether there is a thread that was not joined.
  IPL_ALWAYS_INLINE explicit operator bool() const noexcept { return static_cast<bool>(m_thread); }

 private:
  IPL_ALWAYS_INLINE void End() noexcept {
    if (!Join()) {
      static_cast<void>(m_outcome.release());  // the thread still uses it
    }
  }

  TrackedOwner<ThreadOutcome> m_outcome;
  ThreadOwner m_thread;
  bool m_bThrew;
};

/// Runs callable() on a thread object, which may have been given a priority or a stack size. name: as for Thread::Run.
/// callable: moved, or copied from an lvalue, into tracked memory; what it returns is dropped. It is destroyed once: on
/// the new thread when it has returned, or on this one when the thread cannot be started. An exception that leaves it
/// ends the run and no more, see RunningThread::HasThrown; one that leaves its destructor ends the process.
/// Returns the running thread. One without a thread if the start failed: thread was empty or memory is exhausted, then
/// PLError_NoMemory is stored and callable was not moved from; or Thread::Run has refused, with the error that it
/// stores. [any thread] [running] Takes the lock that all thread objects share.
template <typename Source>
static IPL_ALWAYS_INLINE RunningThread StartThread(ThreadOwner&& thread, const char* name, Source&& callable) {
  typedef typename std::decay<Source>::type Callable;
  typedef ThreadTask<Callable> Task;
  static_assert(alignof(Task) <= 8, "tracked memory is aligned to 8 bytes");
  ThreadOwner owner(std::move(thread));
  Task* const task = !owner ? nullptr
                            : new (nullptr, 0, static_cast<PLMem_Selector_PL_NEW_DELETE*>(nullptr))
                                  Task(std::forward<Source>(callable));
  if (task == nullptr) {
    IPLKernel::GetKernel()->SetLastError(PLError_NoMemory);
    return RunningThread();
  }
  TrackedOwner<ThreadOutcome> outcome(task);  // at the start of the block
  if (!owner->Run(name, &RunCallable<Callable>, task)) {
    const CallableEnd<Callable> end = {task->callable};
    return RunningThread();
  }
  return RunningThread(std::move(owner), std::move(outcome));
}

/// The same on a new thread object.
template <typename Source>
static IPL_ALWAYS_INLINE RunningThread StartThread(IPLKernel* kernel, const char* name, Source&& callable) {
  return StartThread(ThreadOwner(kernel->CreateThread()), name, std::forward<Source>(callable));
}

}  // namespace ipl

#endif  // IPL_THREADSTART_H
