// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_THREADS_WAITDEADLINE_H
#define IPL_THREADS_WAITDEADLINE_H

#include <sys/time.h>
#include <time.h>

#include <ipl/IPLKernel.h>

/// The end of a wait, as an absolute instant of the real-time clock. All arithmetic on time-outs is here.
class WaitDeadline {
 public:
  /// The end of a wait of timeout that begins now, by gettimeofday, which is read if the end depends on it.
  static WaitDeadline After(IPLKernel::Time timeout);
  /// The same for a wait that begins at now.
  ///
  /// Zero is the start of the clock, long past. Any other time-out is added without a sign, in 64 bits: a negative one
  /// that reaches back beyond the current second's fraction becomes centuries. What the clock's type cannot hold is
  /// the latest instant that it can.
  static WaitDeadline After(IPLKernel::Time timeout, const timeval& now);

  bool IsForever() const { return m_forever; }
  /// Meaningless if IsForever().
  const timespec& GetInstant() const { return m_instant; }

  /// Reduces the deadline to what systems with a 32-bit clock can wait for, in 2038. Returns false if it was before
  /// that.
  bool ReduceTo32Bits();

 private:
  WaitDeadline() = default;

  bool m_forever = false;
  timespec m_instant = {};
};

#endif  // IPL_THREADS_WAITDEADLINE_H
