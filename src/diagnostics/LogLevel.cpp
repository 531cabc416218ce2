// SPDX-License-Identifier: Apache-2.0
#include "diagnostics/LogLevel.h"

bool IsLogLevelEnabled(const LogLevelSegment& segment, int category, int level) {
  return level == 0 || segment.category == LogLevelSegment::kEveryCategory ||
         (segment.category == category && level <= segment.level);
}
