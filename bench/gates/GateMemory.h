// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_GATES_GATEMEMORY_H
#define IPL_TESTS_GATES_GATEMEMORY_H

/// Counts the allocations of the whole process.
namespace GateMemory {

long Count();

}  // namespace GateMemory

#endif  // IPL_TESTS_GATES_GATEMEMORY_H
