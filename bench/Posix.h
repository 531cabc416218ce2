// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_POSIX_H
#define IPL_BENCH_POSIX_H

#include <pthread.h>
#include <stdint.h>
#include <stdlib.h>

/// The limits: what somebody would write by hand on pthread and malloc, and nothing more.

class PosixRecursiveMutex {
 public:
  PosixRecursiveMutex() {
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    ::pthread_mutex_init(&m_mutex, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
  }
  ~PosixRecursiveMutex() { ::pthread_mutex_destroy(&m_mutex); }
  PosixRecursiveMutex(const PosixRecursiveMutex&) = delete;
  PosixRecursiveMutex& operator=(const PosixRecursiveMutex&) = delete;

  void Lock() { ::pthread_mutex_lock(&m_mutex); }
  void Unlock() { ::pthread_mutex_unlock(&m_mutex); }
  pthread_mutex_t* Get() { return &m_mutex; }

 private:
  pthread_mutex_t m_mutex;
};

/// A flag that one waiter takes.
class PosixEvent {
 public:
  void Set() {
    ::pthread_mutex_lock(&m_mutex);
    m_set = true;
    ::pthread_mutex_unlock(&m_mutex);
    ::pthread_cond_signal(&m_cond);
  }
  void Wait() {
    ::pthread_mutex_lock(&m_mutex);
    while (!m_set) {
      ::pthread_cond_wait(&m_cond, &m_mutex);
    }
    m_set = false;
    ::pthread_mutex_unlock(&m_mutex);
  }

 private:
  pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t m_cond = PTHREAD_COND_INITIALIZER;
  bool m_set = false;
};

/// A linked list of entries from malloc.
class PosixQueue {
 public:
  PosixQueue() = default;
  ~PosixQueue() {
    while (m_pFirst != nullptr) {
      Receive();
    }
  }
  PosixQueue(const PosixQueue&) = delete;
  PosixQueue& operator=(const PosixQueue&) = delete;

  void Post(uintptr_t value) {
    auto* entry = static_cast<Entry*>(::malloc(sizeof(Entry)));
    *entry = {nullptr, value};
    ::pthread_mutex_lock(&m_mutex);
    const bool wasEmpty = m_pFirst == nullptr;
    *m_ppLast = entry;
    m_ppLast = &entry->next;
    ::pthread_mutex_unlock(&m_mutex);
    if (wasEmpty) {
      ::pthread_cond_signal(&m_cond);
    }
  }
  uintptr_t Receive() {
    ::pthread_mutex_lock(&m_mutex);
    while (m_pFirst == nullptr) {
      ::pthread_cond_wait(&m_cond, &m_mutex);
    }
    Entry* entry = m_pFirst;
    m_pFirst = entry->next;
    if (m_pFirst == nullptr) {
      m_ppLast = &m_pFirst;
    }
    ::pthread_mutex_unlock(&m_mutex);
    const uintptr_t value = entry->value;
    ::free(entry);
    return value;
  }

 private:
  struct Entry {
    Entry* next;
    uintptr_t value;
  };
  pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t m_cond = PTHREAD_COND_INITIALIZER;
  Entry* m_pFirst = nullptr;
  Entry** m_ppLast = &m_pFirst;
};

#endif  // IPL_BENCH_POSIX_H
