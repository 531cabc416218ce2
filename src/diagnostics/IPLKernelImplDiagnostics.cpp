// SPDX-License-Identifier: Apache-2.0
// Slots 70 to 74: assertions, the console and logging. Console output is switched off.
#include <limits.h>
#include <poll.h>
#include <stdio.h>
#include <sys/shm.h>
#include <unistd.h>

#include "diagnostics/LogLevel.h"
#include "kernel/IPLKernelImpl.h"

namespace {

// poll's time-out in milliseconds: -1 for ever; what does not fit, negative ones too, is the longest that does.
int ToPollTimeout(IPLKernel::Time timeout) {
  constexpr int64_t kNanosecondsPerMillisecond = 1000000;
  if (timeout == IPLKernel::Time::Forever()) {
    return -1;
  }
  const int64_t milliseconds = timeout.GetNanoseconds() / kNanosecondsPerMillisecond;
  return milliseconds < 0 || milliseconds > INT_MAX ? INT_MAX : static_cast<int>(milliseconds);
}

}  // namespace

void IPLKernelImpl::AssertFailed(const char* file, int line, const char*) {
  ::fprintf(stderr, "Assert failed on line %d in %s\n", line, file != nullptr ? file : "(null)");
  ::fflush(stderr);
}

bool IPLKernelImpl::ReadConsoleInputString(char* buffer, unsigned long size, Time timeout) {
  if (buffer == nullptr || size <= 1) {
    return false;
  }
  pollfd input = {};
  input.fd = ::fileno(stdin);
  input.events = POLLIN;
  if (::poll(&input, 1, ToPollTimeout(timeout)) != 1) {
    return false;
  }
  const ssize_t count = ::read(input.fd, buffer, size - 1);
  if (count <= 0) {
    return false;
  }
  buffer[count] = '\0';
  return true;
}

void IPLKernelImpl::WriteConsoleOutputString(const char*, ...) {}

void IPLKernelImpl::Kite_EnableLog(int category, int level, const char* format, ...) {
  if (KITE_ChecklogLevel(category, level)) {
    // The text is the caller's format; its arguments are not passed on.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    WriteConsoleOutputString(format);
#pragma GCC diagnostic pop
  }
}

// Nothing is kept between calls, so that what the outside tool sets holds for the next message.
bool IPLKernelImpl::KITE_ChecklogLevel(int category, int level) {
  const int id = ::shmget(LogLevelSegment::kKey, sizeof(LogLevelSegment), IPC_CREAT | LogLevelSegment::kPermissions);
  if (id < 0) {
    return false;
  }
  void* address = ::shmat(id, nullptr, 0);
  if (address == reinterpret_cast<void*>(-1)) {  // NOLINT(performance-no-int-to-ptr)
    return false;
  }
  const volatile auto* shared = static_cast<const volatile LogLevelSegment*>(address);
  const LogLevelSegment segment = {shared->category, shared->level};
  const bool enabled = IsLogLevelEnabled(segment, category, level);
  ::shmdt(address);
  return enabled;
}
