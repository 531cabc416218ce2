// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "LockCases.h"

namespace {

class GlibMutex {
 public:
  GlibMutex() { g_rec_mutex_init(&m_mutex); }
  ~GlibMutex() { g_rec_mutex_clear(&m_mutex); }
  void Lock() { g_rec_mutex_lock(&m_mutex); }
  void Unlock() { g_rec_mutex_unlock(&m_mutex); }

 private:
  GRecMutex m_mutex;
};

class GlibEvent {
 public:
  GlibEvent() {
    g_mutex_init(&m_mutex);
    g_cond_init(&m_condition);
  }
  ~GlibEvent() {
    g_cond_clear(&m_condition);
    g_mutex_clear(&m_mutex);
  }
  void Set() {
    g_mutex_lock(&m_mutex);
    m_set = true;
    g_mutex_unlock(&m_mutex);
    g_cond_signal(&m_condition);
  }
  void Wait() {
    g_mutex_lock(&m_mutex);
    while (!m_set) {
      g_cond_wait(&m_condition, &m_mutex);
    }
    m_set = false;
    g_mutex_unlock(&m_mutex);
  }

 private:
  GMutex m_mutex;
  GCond m_condition;
  bool m_set = false;
};

const Registered s_registered([] {
  MeasureMutex<GlibMutex>("glib");
  MeasureEvent<GlibEvent>("glib");
});

}  // namespace
