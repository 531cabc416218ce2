// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_SERVICES_COMMANDOUTPUT_H
#define IPL_SERVICES_COMMANDOUTPUT_H

#include <stddef.h>

/// Runs the command "ps -A" and puts at most size - 1 bytes of its output and a terminating zero into buffer. Output
/// beyond that is not read. Waits for the command to end.
/// Returns false if it could not be run, failed, or its output could not be read. A command that ended because its
/// output was not read on has not failed. [any thread] [blocks]
bool ReadProcessList(char* buffer, size_t size);

#endif  // IPL_SERVICES_COMMANDOUTPUT_H
