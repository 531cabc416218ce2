// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_GATES_GATEMETER_H
#define IPL_BENCH_GATES_GATEMETER_H

#include <stdio.h>
#include <string.h>
#include <sys/resource.h>
#include <unistd.h>

#ifdef IPL_GATES_CALLGRIND
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(name)
#endif

#include "GateClock.h"
#include "GateConverter.h"
#include "GateMemory.h"

/// The rounds of each operation, and the mark: closing a descriptor that cannot exist. The operations are numbered in
/// their order; -1000 - 2 * number begins one, the next lower number ends it. What the process counts of itself is
/// printed.
class Meter {
 public:
  Meter(const char* wanted, unsigned rounds) : m_wanted(wanted), m_rounds(rounds) {}

  /// How often Measure calls an operation.
  unsigned GetCalls() const { return 2 * m_rounds; }

  template <typename Operation>
  void Measure(const char* name, Operation operation) {
    if (*m_wanted != '\0' && strcmp(m_wanted, name) != 0) {
      return;
    }
    for (unsigned i = 0; i < m_rounds; ++i) {
      operation();  // pools, caches and lazily bound calls
    }
    const Counts before;
    CALLGRIND_ZERO_STATS;
    close(-1000 - 2 * m_number);
    for (unsigned i = 0; i < m_rounds; ++i) {
      operation();
    }
    close(-1001 - 2 * m_number);
    CALLGRIND_DUMP_STATS_AT(name);
    const Counts after;
    printf("%d %s allocations %ld switches %ld clocks %ld deadlines %ld converters %ld\n", m_number, name,
           after.allocations - before.allocations, after.switches - before.switches, after.clocks - before.clocks,
           after.deadlines - before.deadlines, after.converters - before.converters);
    ++m_number;
  }

 private:
  /// Of the whole process, until now.
  struct Counts {
    long allocations = GateMemory::Count();
    long clocks = GateClock::CountTimes();
    long deadlines = GateClock::CountDeadlines();
    long converters = GateConverter::Count();
    long switches = CountSwitches();
  };

  static long CountSwitches() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
  }

  const char* m_wanted;
  unsigned m_rounds;
  int m_number = 0;
};

#endif  // IPL_BENCH_GATES_GATEMETER_H
