// SPDX-License-Identifier: Apache-2.0
#include "threads/PosixMutex.h"

bool PosixMutex::InitialiseRecursive() {
  pthread_mutexattr_t attributes;
  if (::pthread_mutexattr_init(&attributes) != 0) {
    return false;
  }
  const bool initialised = ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                           ::pthread_mutex_init(&m_native, &attributes) == 0;
  ::pthread_mutexattr_destroy(&attributes);
  return initialised;
}
