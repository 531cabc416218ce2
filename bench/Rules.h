// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_RULES_H
#define IPL_BENCH_RULES_H

#include <pthread.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>

#include "Posix.h"

/// "rules" in the results: what the contract asks of the kernel, written by hand on pthread and malloc and nothing
/// more. Where the limit does less than the contract wants, this is what the kernel's own share is told by.

/// Memory and its moves are had through a table that somebody may exchange. Who asks for memory tells its place.
struct RulesTable {
  void* (*alloc)(size_t, const char* file, int line);
  void (*free)(void*, const char* file, int line);
  void* (*memmove)(void*, const void*, size_t);
  void* (*memset)(void*, int, size_t);
};

inline std::atomic<const RulesTable*>& GetRulesTable() {
  static const RulesTable table = {[](size_t size, const char*, int) { return ::malloc(size); },
                                   [](void* block, const char*, int) { ::free(block); }, ::memmove, ::memset};
  static std::atomic<const RulesTable*> current{&table};
  return current;
}

/// Blocks have a header of eight bytes with a count. Those who want one call a function, as they lie in other
/// libraries.
__attribute__((noinline)) inline void* AllocateByRules(size_t size, const char* file = nullptr, int line = 0) {
  const RulesTable* table = GetRulesTable().load(std::memory_order_relaxed);
  auto* block = size != 0 ? static_cast<uint32_t*>(table->alloc(size + 8, file, line)) : nullptr;
  if (block == nullptr) {
    return nullptr;
  }
  block[1] = 1;
  return block + 2;
}

__attribute__((noinline)) inline void FreeByRules(void* block, const char* file = nullptr, int line = 0) {
  if (block != nullptr) {
    GetRulesTable().load(std::memory_order_relaxed)->free(static_cast<char*>(block) - 8, file, line);
  }
}

/// A recursive mutex that guards a number.
class RulesCounter {
 public:
  unsigned long Next() {
    m_mutex.Lock();
    const unsigned long next = ++m_last;
    m_mutex.Unlock();
    return next;
  }

 private:
  PosixRecursiveMutex m_mutex;
  unsigned long m_last = 0;
};

/// A recursive mutex behind a table of operations.
class RulesMutex {
 public:
  struct Operations {
    void (*lock)(RulesMutex&);
    void (*unlock)(RulesMutex&);
  };

  RulesMutex() : m_operations(GetOperations()) {}
  void Lock() { m_operations.load(std::memory_order_relaxed)->lock(*this); }
  void Unlock() { m_operations.load(std::memory_order_relaxed)->unlock(*this); }

 private:
  static const Operations* GetOperations() {
    static const Operations operations = {[](RulesMutex& mutex) { mutex.m_mutex.Lock(); },
                                          [](RulesMutex& mutex) { mutex.m_mutex.Unlock(); }};
    return &operations;
  }

  std::atomic<const Operations*> m_operations;
  PosixRecursiveMutex m_mutex;
};

/// A flag that stays set until it is cleared, with a recursive mutex of its own.
class RulesEvent {
 public:
  void Set() {
    if (BeginSet()) {
      FinishSet();
    }
  }
  /// Returns whether somebody has to be woken, with all locks given up.
  bool BeginSet() {
    m_mutex.Lock();
    const bool wasSet = m_set;
    m_set = true;
    const bool wakes = !wasSet && m_waiters != 0;
    m_mutex.Unlock();
    return wakes;
  }
  void FinishSet() { ::pthread_cond_broadcast(&m_cond); }
  void Clear() {
    m_mutex.Lock();
    m_set = false;
    m_mutex.Unlock();
  }
  void Wait() {
    m_mutex.Lock();
    ++m_waiters;
    while (!m_set) {
      ::pthread_cond_wait(&m_cond, m_mutex.Get());
    }
    --m_waiters;
    m_mutex.Unlock();
  }

 private:
  PosixRecursiveMutex m_mutex;
  pthread_cond_t m_cond = PTHREAD_COND_INITIALIZER;
  bool m_set = false;
  int m_waiters = 0;
};

/// An array of messages, each a block of its own; taking the first moves up the others. The event is set exactly while
/// there are messages.
class RulesQueue {
 public:
  RulesQueue() = default;
  ~RulesQueue() {
    while (m_size != 0) {
      Receive();
    }
    FreeByRules(m_messages);
  }
  RulesQueue(const RulesQueue&) = delete;
  RulesQueue& operator=(const RulesQueue&) = delete;

  void Lock() { m_mutex.Lock(); }
  void Unlock() { m_mutex.Unlock(); }
  void Post(uintptr_t value, void* data = nullptr) {
    auto* message = static_cast<Message*>(AllocateByRules(sizeof(Message)));
    *message = {nullptr, value, data, nullptr};
    m_mutex.Lock();
    if (m_size == m_capacity) {
      Grow();
    }
    m_messages[m_size++] = message;
    const bool isFirst = m_size == 1 && m_event.BeginSet();
    m_mutex.Unlock();
    if (isFirst) {
      m_event.FinishSet();
    }
  }
  uintptr_t Receive(void** data = nullptr) {
    m_mutex.Lock();
    if (m_size == 0) {
      m_mutex.Unlock();
      m_event.Wait();
      m_mutex.Lock();
    }
    Message* message = m_messages[0];
    --m_size;
    const RulesTable* table = GetRulesTable().load(std::memory_order_acquire);
    if (m_size != 0) {
      table->memmove(m_messages, m_messages + 1, m_size * sizeof(*m_messages));
    }
    table->memset(m_messages + m_size, 0, sizeof(*m_messages));
    if (m_size == 0) {
      m_event.Clear();
    }
    m_mutex.Unlock();
    const uintptr_t value = message->value;
    if (data != nullptr) {
      *data = message->data;
    }
    FreeByRules(message);
    return value;
  }

 private:
  struct Message {
    const void* table;
    uintptr_t value;
    void* data;
    void* replyEvent;
  };

  void Grow() {
    m_capacity = m_capacity == 0 ? 8 : 2 * m_capacity;
    void* messages = AllocateByRules(m_capacity * sizeof(*m_messages));
    if (m_size != 0) {
      ::memcpy(messages, m_messages, m_size * sizeof(*m_messages));
    }
    FreeByRules(m_messages);
    m_messages = static_cast<Message**>(messages);
  }

  PosixRecursiveMutex m_mutex;
  RulesEvent m_event;
  Message** m_messages = nullptr;  // owned, and so are the messages
  size_t m_size = 0;
  size_t m_capacity = 0;
};

#endif  // IPL_BENCH_RULES_H
