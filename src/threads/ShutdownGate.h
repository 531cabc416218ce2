// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_SHUTDOWNGATE_H
#define IPL_THREADS_SHUTDOWNGATE_H

#include <pthread.h>

#include "threads/PosixMutex.h"

/// Keeps calls that may come at any time apart from shut-down.
///
/// Such a call uses the kernel only between Enter or Join and Leave. Shut-down closes the gate and waits until those
/// inside have left; a call that comes later is refused and must touch nothing that shut-down ends. A gate is static:
/// it lives as long as the process.
class ShutdownGate {
 public:
  constexpr ShutdownGate() = default;

  void Open();
  /// Refuses newcomers and returns when nobody is inside.
  void CloseAndDrain();

  /// Returns false if the gate is closed.
  bool Enter();
  /// As Enter, but returns false only if nobody is inside either: those inside may wait for who joins them. It is for
  /// calls of which only so many are to come, or shut-down would wait on and on.
  bool Join();
  void Leave();

 private:
  PosixMutex m_mutex;
  pthread_cond_t m_left = PTHREAD_COND_INITIALIZER;  // nobody is inside any more, used with m_mutex
  bool m_open PL_GUARDED_BY(m_mutex) = false;
  unsigned int m_inside PL_GUARDED_BY(m_mutex) = 0;
};

/// One passage through a gate.
class GatePassage {
 public:
  explicit GatePassage(ShutdownGate& gate) : GatePassage(gate, gate.Enter()) {}
  /// entered: what Enter or Join returned.
  GatePassage(ShutdownGate& gate, bool entered) : m_gate(gate), m_entered(entered) {}
  ~GatePassage() {
    if (m_entered) {
      m_gate.Leave();
    }
  }
  GatePassage(const GatePassage&) = delete;
  GatePassage& operator=(const GatePassage&) = delete;

  /// False: the gate refused.
  explicit operator bool() const { return m_entered; }

 private:
  ShutdownGate& m_gate;
  const bool m_entered;
};

#endif  // IPL_THREADS_SHUTDOWNGATE_H
