// SPDX-License-Identifier: Apache-2.0
#include "threads/KernelThread.h"

#include <errno.h>
#include <sched.h>
#include <string.h>
#include <time.h>

#include <algorithm>
#include <iterator>

#include "foundation/ContractLayout.h"
#include "threads/DetachedCode.h"
#include "threads/KernelLockGuard.h"
#include "threads/ThreadAttributes.h"

template <>
struct PLContractLayout<KernelThread> {
  IPL_ASSERT_OFFSET(KernelThread, m_thread, 4);
  IPL_ASSERT_OFFSET(KernelThread, m_requestedStackSize, 8);
  IPL_ASSERT_OFFSET(KernelThread, m_stackSize, 12);
  IPL_ASSERT_OFFSET(KernelThread, m_pfnThreadProc, 16);
  IPL_ASSERT_OFFSET(KernelThread, m_pfnDetachCleanup, 20);
  IPL_ASSERT_OFFSET(KernelThread, m_pUserData, 24);
  IPL_ASSERT_OFFSET(KernelThread, m_lastError, 28);
  IPL_ASSERT_OFFSET(KernelThread, m_pFinishedEvent, 68);
  IPL_ASSERT_OFFSET(KernelThread, m_name, 72);
  IPL_ASSERT_OFFSET(KernelThread, m_priority, 96);
  IPL_ASSERT_SIZE(KernelThread, 100);
};

namespace {

constexpr unsigned long kFirstStackSize = 1048576;
constexpr unsigned char kFirstPriority = 128;
constexpr int kUnusedTopPriorities = 5;
constexpr size_t kSystemNameLength = 15;  // what the system keeps of a thread's name
constexpr size_t kLongestTail = 3;        // of a UTF-8 sequence, behind its first byte

// The pause that every wait for a running thread ends with; a signal does not shorten it.
void Pause() {
  timespec rest = {0, 10000000};
  while (::nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
}

bool IsTail(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// Tells the system the calling thread's name, without half a character at its end; cuts the buffer for that. A thread
// without a name keeps what the system gave it.
void SetSystemName(char* name) {
  if (name[0] == '\0') {
    return;
  }
  if (::strnlen(name, kSystemNameLength + 1) > kSystemNameLength) {
    size_t end = kSystemNameLength;
    while (end > kSystemNameLength - kLongestTail && IsTail(name[end])) {
      --end;
    }
    name[IsTail(name[end]) ? kSystemNameLength : end] = '\0';  // no UTF-8: every byte that fits
  }
  static_cast<void>(::pthread_setname_np(::pthread_self(), name));  // a name that fits is not refused
}

}  // namespace

IPLKernel::Mutex* KernelThread::s_pThreadLock = nullptr;
pthread_key_t KernelThread::s_threadKey = 0;
std::atomic<bool> KernelThread::s_keyValid{false};
ShutdownGate KernelThread::s_gate;

bool KernelThread::InitializeKernelThreads() {
  IPLKernel* kernel = IPLKernel::GetKernel();
  s_pThreadLock = kernel->CreateMutex();
  if (s_pThreadLock == nullptr) {
    return false;
  }
  if (::pthread_key_create(&s_threadKey, nullptr) != 0) {
    kernel->DestroyMutex(s_pThreadLock);
    s_pThreadLock = nullptr;
    return false;
  }
  s_keyValid.store(true, std::memory_order_release);
  s_gate.Open();
  return true;
}

void KernelThread::DrainKernelThreads() { s_gate.CloseAndDrain(); }

void KernelThread::UninitializeKernelThreads() {
  if (s_pThreadLock == nullptr) {
    return;
  }
  DrainKernelThreads();
  s_keyValid.store(false, std::memory_order_release);
  ::pthread_key_delete(s_threadKey);
  s_threadKey = 0;
  IPLKernel::GetKernel()->DestroyMutex(s_pThreadLock);
  s_pThreadLock = nullptr;
}

KernelThread* KernelThread::GetCurrentKernelThread() {
  if (!s_keyValid.load(std::memory_order_acquire)) {
    return nullptr;
  }
  return static_cast<KernelThread*>(::pthread_getspecific(s_threadKey));
}

IPLKernel::Thread* KernelThread::GetCurrentThread() { return GetCurrentKernelThread(); }

int KernelThread::PriorityToPThreadPriority(unsigned char priority) {
  const int lowest = ::sched_get_priority_min(SCHED_RR);
  const int highest = ::sched_get_priority_max(SCHED_RR) - kUnusedTopPriorities;
  const float share = 1.0F - static_cast<float>(priority) / 255.0F;
  const int offset = static_cast<int>(static_cast<float>(highest - lowest) * share);
  const int mapped = static_cast<unsigned char>(lowest + offset);
  return std::min(std::max(mapped, lowest), highest);
}

KernelThread::KernelThread()
    : m_thread(0),
      m_requestedStackSize(kFirstStackSize),
      m_stackSize(0),
      m_pfnThreadProc(nullptr),
      m_pfnDetachCleanup(nullptr),
      m_pUserData(nullptr),
      m_lastError(PLError_OK),
      m_pFinishedEvent(nullptr),
      m_name{},
      m_priority(kFirstPriority) {}

KernelThread::~KernelThread() {
  IPLKernel* kernel = IPLKernel::GetKernel();
  if (kernel != nullptr) {
    kernel->DestroyEvent(m_pFinishedEvent);
  }
}

bool KernelThread::Run(const char* name, ThreadProc procedure, void* userData) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  const PLError* error = nullptr;
  {
    // The new thread takes this lock before it looks at the object, so it sees all that is written here.
    KernelLockGuard guard(s_pThreadLock);
    if (m_thread != 0) {
      error = &kernel->m_ThreadAlreadyRunning;
    } else if (!Start(name, procedure, userData)) {
      ClearRun();
      error = &kernel->m_ThreadCreationFailure;
    }
  }
  if (error != nullptr) {
    kernel->SetLastError(*error);
  }
  return error == nullptr;
}

bool KernelThread::Start(const char* name, ThreadProc procedure, void* userData) {
  if (procedure == nullptr || s_pThreadLock == nullptr) {
    return false;
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  if (m_pFinishedEvent == nullptr) {
    m_pFinishedEvent = kernel->CreateEvent(true);
    if (m_pFinishedEvent == nullptr) {
      return false;
    }
  }
  m_pFinishedEvent->Clear();
  ThreadAttributes attributes;
  if (!attributes.SetDetached()) {
    return false;
  }
  m_stackSize = std::min(m_requestedStackSize, attributes.GetStackSize());
  attributes.SetStackSize(m_stackSize);
  kernel->strncpyTerm(m_name, name, sizeof(m_name));
  m_pfnThreadProc = procedure;
  m_pUserData = userData;
  return ::pthread_create(&m_thread, attributes.Get(), StaticThreadProc, this) == 0;
}

void KernelThread::ClearRun() {
  m_name[0] = '\0';
  m_pfnThreadProc = nullptr;
  m_pUserData = nullptr;
  m_thread = 0;
}

// What a thread does behind its procedure, however it left that: it may have ended there, or have been cancelled. The
// cleanup may end it too, but not a second time.
class KernelThread::RunEnd {
 public:
  RunEnd(KernelThread* thread, void* userData) : m_pThread(thread), m_pUserData(userData) {}
  ~RunEnd() noexcept(false) {  // NOLINT(bugprone-exception-escape,performance-noexcept-destructor)
    const GatePassage passage(s_gate, s_gate.Join());
    if (passage) {
      m_pThread->FinishRun(m_pUserData);
    } else {
      DetachedCode::Leave(m_pThread);
    }
  }
  RunEnd(const RunEnd&) = delete;
  RunEnd& operator=(const RunEnd&) = delete;

 private:
  KernelThread* const m_pThread;
  void* const m_pUserData;
};

// Each passage through the gate covers what the thread uses of the kernel; the procedure runs outside of it, so that
// shut-down does not wait for a procedure that never returns. The code itself stays: the library is never unmapped.
void* KernelThread::StaticThreadProc(void* argument) {
  auto* self = static_cast<KernelThread*>(argument);
  ThreadProc procedure = nullptr;
  void* userData = nullptr;
  char name[sizeof(self->m_name)];
  if (!s_gate.Enter()) {
    self->EndUnbegun();
    return nullptr;
  }
  ::pthread_setspecific(s_threadKey, self);
  {
    KernelLockGuard guard(s_pThreadLock);
    procedure = self->m_pfnThreadProc;
    userData = self->m_pUserData;
    std::copy(std::begin(self->m_name), std::end(self->m_name), name);
  }
  s_gate.Leave();
  SetSystemName(name);

  const RunEnd end(self, userData);
  procedure(self, userData);
  return nullptr;
}

void KernelThread::FinishRun(void* userData) {
  ThreadProc cleanup = nullptr;
  {
    KernelLockGuard guard(s_pThreadLock);
    cleanup = m_pfnDetachCleanup;
    if (cleanup == nullptr) {
      EndRun();
      return;  // once the lock is given up the owner may destroy this object
    }
  }
  DetachedCode::Leave(this);  // a cleanup may not return; what it runs stays open until the thread is gone
  cleanup(this, userData);
  {
    KernelLockGuard guard(s_pThreadLock);
    EndRun();
  }
  IPLKernel::GetKernel()->DestroyThread(this);
}

// Shut-down has begun, and the procedure is not called any more. A thread that is just ending may wait for this one.
void KernelThread::EndUnbegun() {
  const GatePassage passage(s_gate, s_gate.Join());
  if (passage) {
    KernelLockGuard guard(s_pThreadLock);
    if (m_pfnDetachCleanup == nullptr) {
      EndRun();
      return;
    }
  }
  DetachedCode::Leave(this);
}

void KernelThread::EndRun() {
  // What runs later on this thread, such as a module's destructors of thread-specific data, must not find the object.
  ::pthread_setspecific(s_threadKey, nullptr);
  m_thread = 0;
  m_pfnThreadProc = nullptr;
  m_lastError = PLError_OK;
  m_name[0] = '\0';
  m_pFinishedEvent->Set();
}

KernelThread::ThreadProc KernelThread::GetProcedure() {
  KernelLockGuard guard(s_pThreadLock);
  return m_pfnThreadProc;
}

bool KernelThread::Detach(ThreadProc cleanup) {
  const ThreadProc wanted = cleanup != nullptr ? cleanup : StaticDummyDetachCleanupProc;
  void* userData = nullptr;
  for (;;) {
    // Libraries are opened without the lock; if another run has begun meanwhile, its procedure counts.
    const ThreadProc procedure = GetProcedure();
    TrackedPtr<DetachedCode> code;
    if (procedure != nullptr) {
      code = DetachedCode::Open(reinterpret_cast<const void*>(procedure), reinterpret_cast<const void*>(cleanup));
    }
    KernelLockGuard guard(s_pThreadLock);
    if (m_pfnDetachCleanup != nullptr) {
      return false;
    }
    if (m_pfnThreadProc != procedure) {
      continue;
    }
    m_pfnDetachCleanup = wanted;
    if (m_thread != 0) {
      DetachedCode::Keep(std::move(code), this);
      return true;  // the running thread does the rest
    }
    userData = m_pUserData;
    break;
  }
  wanted(this, userData);
  IPLKernel::GetKernel()->DestroyThread(this);
  return true;
}

void KernelThread::StaticDummyDetachCleanupProc(IPLKernel::Thread*, void*) {}

bool KernelThread::WaitUntilFinished(IPLKernel::Time timeout) {
  IPLKernel::Event* finished = nullptr;
  {
    KernelLockGuard guard(s_pThreadLock);
    finished = m_pFinishedEvent;
    if (m_thread == 0) {
      return finished == nullptr || finished->IsSet();
    }
    if (::pthread_equal(m_thread, ::pthread_self()) != 0) {
      finished = nullptr;
    }
  }
  if (finished == nullptr) {
    IPLKernel* kernel = IPLKernel::GetKernel();
    kernel->SetLastError(kernel->m_ThreadCantWaitOnSelf);
    return false;
  }
  const bool outcome = finished->Wait(timeout);
  Pause();
  // The ending thread set the event with the lock held: when the lock is free it has left the object.
  KernelLockGuard guard(s_pThreadLock);
  return outcome;
}

void KernelThread::YieldCPU() { ::sched_yield(); }

bool KernelThread::SetPriority(unsigned char priority) {
  bool refused = false;
  {
    KernelLockGuard guard(s_pThreadLock);
    if (m_thread != 0) {
      sched_param parameters = {};
      parameters.sched_priority = PriorityToPThreadPriority(priority);
      refused = ::pthread_setschedparam(m_thread, SCHED_RR, &parameters) != 0;
    }
    if (!refused) {
      m_priority = priority;
    }
  }
  if (refused) {
    IPLKernel* kernel = IPLKernel::GetKernel();
    kernel->SetLastError(kernel->m_ThreadSetPriority);
  }
  return !refused;
}

bool KernelThread::SetStackSize(unsigned long bytes) {
  KernelLockGuard guard(s_pThreadLock);
  if (m_thread != 0) {
    return false;
  }
  m_requestedStackSize = bytes;
  return true;
}

unsigned char KernelThread::GetPriority() {
  KernelLockGuard guard(s_pThreadLock);
  return m_priority;
}

unsigned long KernelThread::GetStackSize() {
  KernelLockGuard guard(s_pThreadLock);
  return m_stackSize;
}

void KernelThread::GetName(char* buffer, unsigned long size) {
  if (buffer == nullptr || size == 0) {
    return;
  }
  KernelLockGuard guard(s_pThreadLock);
  IPLKernel::GetKernel()->strncpyTerm(buffer, m_name, size);
}

bool KernelThread::IsRunning() {
  KernelLockGuard guard(s_pThreadLock);
  return m_thread != 0;
}

void KernelThread::SetLastErrorThread(const PLError& error) { m_lastError = error; }

PLError KernelThread::GetLastErrorThread() { return m_lastError; }
