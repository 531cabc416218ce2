// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_GATES_GATEMEMORY_H
#define IPL_BENCH_GATES_GATEMEMORY_H

/// Counts the allocations of the whole process.
namespace GateMemory {

long Count();

}  // namespace GateMemory

#endif  // IPL_BENCH_GATES_GATEMEMORY_H
