// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_GATES_GATECONVERTER_H
#define IPL_BENCH_GATES_GATECONVERTER_H

/// Counts the converters of character sets that the process opens.
namespace GateConverter {

long Count();

}  // namespace GateConverter

#endif  // IPL_BENCH_GATES_GATECONVERTER_H
