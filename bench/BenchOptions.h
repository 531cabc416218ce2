// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_BENCHOPTIONS_H
#define IPL_BENCH_BENCHOPTIONS_H

/// The command line of a program that measures: "COUNT_NAME N" and "--check".
struct BenchOptions {
  long count;  ///< 1 or more
  bool check;  ///< exit with status 1 when a bar is missed
};

/// Ends the process with status 2 and a line on standard error if the command line has anything else.
BenchOptions ParseBenchOptions(int argc, char** argv, const char* countName, long defaultCount);

#endif  // IPL_BENCH_BENCHOPTIONS_H
