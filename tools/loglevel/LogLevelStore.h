// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TOOLS_LOGLEVEL_LOGLEVELSTORE_H
#define IPL_TOOLS_LOGLEVEL_LOGLEVELSTORE_H

#include <optional>

#include "diagnostics/LogLevel.h"

/// The machine's log-level segment. Both throw std::system_error for what the system refuses.

/// Returns nothing if no process has created the segment yet. Does not create it.
std::optional<LogLevelSegment> ReadLogLevel();

/// Creates the segment if need be, as the kernel does.
void WriteLogLevel(const LogLevelSegment& words);

#endif  // IPL_TOOLS_LOGLEVEL_LOGLEVELSTORE_H
