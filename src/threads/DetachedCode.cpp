// SPDX-License-Identifier: Apache-2.0
#include "threads/DetachedCode.h"

#include <dlfcn.h>
#include <errno.h>
#include <link.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

void* OpenLibraryOf(const void* address) {
  Dl_info information;
  void* map = nullptr;
  if (address == nullptr || ::dladdr1(address, &information, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr) {
    return nullptr;
  }
  const char* name = static_cast<link_map*>(map)->l_name;
  if (name == nullptr || name[0] == '\0') {
    return nullptr;  // the program itself has no name and is never closed
  }
  return ::dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
}

void Close(void* library) {
  if (library != nullptr) {
    ::dlclose(library);
  }
}

bool IsGone(pid_t thread) { return ::syscall(SYS_tgkill, ::getpid(), thread, 0) != 0 && errno == ESRCH; }

}  // namespace

PosixMutex DetachedCode::s_lock;
DetachedCode* DetachedCode::s_pFirst = nullptr;

TrackedPtr<DetachedCode> DetachedCode::Open(const void* procedure, const void* cleanup) {
  void* procedureLibrary = OpenLibraryOf(procedure);
  void* cleanupLibrary = OpenLibraryOf(cleanup);
  if (procedureLibrary == nullptr && cleanupLibrary == nullptr) {
    return nullptr;
  }
  TrackedPtr<DetachedCode> code = MakeTracked<DetachedCode>();
  if (code != nullptr) {
    code->m_hProcedureLibrary = procedureLibrary;
    code->m_hCleanupLibrary = cleanupLibrary;
  }
  return code;
}

DetachedCode::~DetachedCode() {
  Close(m_hProcedureLibrary);
  Close(m_hCleanupLibrary);
}

void DetachedCode::Keep(TrackedPtr<DetachedCode> code, const void* owner) {
  if (code == nullptr) {
    return;
  }
  code->m_pOwner = owner;
  PosixMutexGuard guard(s_lock);
  code->m_pNext = s_pFirst;
  s_pFirst = code.release();
}

void DetachedCode::Leave(const void* owner) {
  PosixMutexGuard guard(s_lock);
  for (DetachedCode* code = s_pFirst; code != nullptr; code = code->m_pNext) {
    if (code->m_pOwner == owner && code->m_thread == 0) {
      code->m_thread = static_cast<pid_t>(::syscall(SYS_gettid));
      return;
    }
  }
}

void DetachedCode::CloseLeft() {
  DetachedCode* gone = nullptr;
  {
    PosixMutexGuard guard(s_lock);
    DetachedCode** link = &s_pFirst;
    while (*link != nullptr) {
      DetachedCode* code = *link;
      if (code->m_thread != 0 && IsGone(code->m_thread)) {
        *link = code->m_pNext;
        code->m_pNext = gone;
        gone = code;
      } else {
        link = &code->m_pNext;
      }
    }
  }
  // Without the lock: closing a library runs its code.
  while (gone != nullptr) {
    DetachedCode* next = gone->m_pNext;
    PLTypes_ScalarDelete(gone, nullptr, 0);
    gone = next;
  }
}
