// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_DIAGNOSTICS_SIGNALTEXT_H
#define IPL_DIAGNOSTICS_SIGNALTEXT_H

/// The names of signals and the meanings of their codes, as tables. [signal-safe]

/// Returns null for a number that has no name.
const char* FindSignalName(int signal);

/// Returns null for a code that has no text of its own.
const char* FindSignalDescription(int code, int signal);

#endif  // IPL_DIAGNOSTICS_SIGNALTEXT_H
