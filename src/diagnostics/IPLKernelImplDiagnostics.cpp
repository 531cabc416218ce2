// SPDX-License-Identifier: Apache-2.0
// Slots 15, 16 and 70 to 74: stack traces, logging, assertions and console, none of which is served yet.
#include "kernel/IPLKernelImpl.h"

IPLKernel::Stacktrace* IPLKernelImpl::CreateStacktrace(unsigned long, unsigned long) { return nullptr; }

void IPLKernelImpl::DestroyStacktrace(Stacktrace*) {}

void IPLKernelImpl::AssertFailed(const char*, int, const char*) {}

bool IPLKernelImpl::ReadConsoleInputString(char*, unsigned long, Time) { return false; }

void IPLKernelImpl::WriteConsoleOutputString(const char*, ...) {}

void IPLKernelImpl::Kite_EnableLog(int, int, const char*, ...) {}

bool IPLKernelImpl::KITE_ChecklogLevel(int, int) { return false; }
