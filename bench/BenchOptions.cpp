// SPDX-License-Identifier: Apache-2.0
#include "BenchOptions.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

BenchOptions ParseBenchOptions(int argc, char** argv, const char* countName, long defaultCount) {
  BenchOptions options = {defaultCount, false};
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--check") == 0) {
      options.check = true;
      continue;
    }
    char* end = nullptr;
    if (std::strcmp(argv[i], countName) == 0 && i + 1 < argc) {
      options.count = std::strtol(argv[++i], &end, 10);
    }
    if (end == nullptr || *end != '\0' || options.count < 1) {
      std::fprintf(stderr, "usage: %s [%s N] [--check]\n", argv[0], countName);
      std::exit(2);
    }
  }
  return options;
}
