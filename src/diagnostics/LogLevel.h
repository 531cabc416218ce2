// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_DIAGNOSTICS_LOGLEVEL_H
#define IPL_DIAGNOSTICS_LOGLEVEL_H

#include <stdint.h>

/// The shared-memory segment that says which log messages are enabled, for every process of the machine. The first
/// process that looks for it creates it, filled with zeros; an outside tool sets it.
struct LogLevelSegment {
  static constexpr int kKey = 42343;
  static constexpr int kPermissions = 0666;
  static constexpr int32_t kEveryCategory = 8;

  int32_t category;  // the enabled one, or kEveryCategory
  int32_t level;     // the highest that is enabled for it
};

static_assert(sizeof(LogLevelSegment) == 8, "shared with other programs");

/// Returns whether messages of a category and level are enabled. Level 0 always is.
bool IsLogLevelEnabled(const LogLevelSegment& segment, int category, int level);

#endif  // IPL_DIAGNOSTICS_LOGLEVEL_H
