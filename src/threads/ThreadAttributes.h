// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_THREADATTRIBUTES_H
#define IPL_THREADS_THREADATTRIBUTES_H

#include <pthread.h>

/// Owns a POSIX thread-attribute object.
class ThreadAttributes {
 public:
  ThreadAttributes() : m_initialised(::pthread_attr_init(&m_native) == 0) {}
  ~ThreadAttributes() {
    if (m_initialised) {
      ::pthread_attr_destroy(&m_native);
    }
  }
  ThreadAttributes(const ThreadAttributes&) = delete;
  ThreadAttributes& operator=(const ThreadAttributes&) = delete;

  /// Returns false if the object could not be initialised or the system refuses.
  bool SetDetached() { return m_initialised && ::pthread_attr_setdetachstate(&m_native, PTHREAD_CREATE_DETACHED) == 0; }
  /// Bytes; at first the system's default.
  unsigned long GetStackSize() const {
    size_t bytes = 0;
    ::pthread_attr_getstacksize(&m_native, &bytes);
    return bytes;
  }
  /// A size that the system refuses leaves the old one.
  void SetStackSize(unsigned long bytes) { ::pthread_attr_setstacksize(&m_native, bytes); }

  const pthread_attr_t* Get() const { return &m_native; }

 private:
  pthread_attr_t m_native;
  const bool m_initialised;
};

#endif  // IPL_THREADS_THREADATTRIBUTES_H
