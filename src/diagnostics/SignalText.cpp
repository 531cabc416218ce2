// SPDX-License-Identifier: Apache-2.0
#include "diagnostics/SignalText.h"

#include <signal.h>

namespace {

// The texts of a table stand one behind the other: pointers to them would be relocated in every process that loads the
// library.
constexpr char kSignalNames[] =
    "\0SIGHUP\0SIGINT\0SIGQUIT\0SIGILL\0SIGTRAP\0SIGABRT\0SIGBUS\0"
    "SIGFPE\0SIGKILL\0SIGUSR1\0SIGSEGV\0SIGUSR2\0SIGPIPE\0SIGALRM\0SIGTERM\0"
    "\0SIGCHLD\0SIGCONT\0SIGSTOP\0SIGTSTP\0SIGTTIN\0SIGTTOU\0SIGURG\0"
    "SIGXCPU\0SIGXFSZ\0SIGVTALRM\0SIGPROF\0SIGWINCH\0SIGIO\0SIGPWR\0SIGSYS\0";
constexpr int kSignalNameCount = 32;

struct Code {
  short signal;  // 0: every signal
  short code;
};

constexpr Code kCodes[] = {
    {0, SI_QUEUE}, {0, SI_TIMER}, {0, SI_MESGQ}, {0, SI_ASYNCIO}, {0, SI_SIGIO}, {0, SI_KERNEL}, {SIGILL, 1},
    {SIGILL, 2},   {SIGILL, 3},   {SIGILL, 4},   {SIGILL, 5},     {SIGILL, 6},   {SIGILL, 7},    {SIGILL, 8},
    {SIGTRAP, 1},  {SIGTRAP, 2},  {SIGBUS, 1},   {SIGBUS, 2},     {SIGBUS, 3},   {SIGFPE, 1},    {SIGFPE, 2},
    {SIGFPE, 3},   {SIGFPE, 4},   {SIGFPE, 5},   {SIGFPE, 6},     {SIGFPE, 7},   {SIGFPE, 8},    {SIGSEGV, 1},
    {SIGSEGV, 2},  {SIGCHLD, 1},  {SIGCHLD, 2},  {SIGCHLD, 3},    {SIGCHLD, 4},  {SIGCHLD, 5},   {SIGCHLD, 6},
    {SIGIO, 1},    {SIGIO, 2},    {SIGIO, 3},    {SIGIO, 4},      {SIGIO, 5},    {SIGIO, 6},
};
constexpr int kCodeCount = sizeof(kCodes) / sizeof(kCodes[0]);

// In the same order.
constexpr char kCodeTexts[] =
    "sigqueue\0"
    "timer expired\0"
    "real time mesq state changed\0"
    "aio completed\0"
    "queued sigio\0"
    "kernel\0"
    "illegal opcode\0"
    "illegal operand\0"
    "illegal addressing mode\0"
    "illegal trap\0"
    "privileged opcode\0"
    "privileged register\0"
    "coprocessor error\0"
    "internal stack error\0"
    "process breakpoint\0"
    "process trace trap\0"
    "invalid address alignment\0"
    "non-existent physical address\0"
    "object specific hardware error\0"
    "integer divide by zero\0"
    "integer overflow\0"
    "floating point divide by zero\0"
    "floating point overflow\0"
    "floating point underflow\0"
    "floating point inexact result\0"
    "floating point invalid operation\0"
    "subscript out of range\0"
    "address not mapped to object\0"
    "invalid perm. for mapped object\0"
    "child has exited\0"
    "child was killed\0"
    "child terminated abnormally\0"
    "traced child has trapped\0"
    "child has stopped\0"
    "stopped child has continued\0"
    "data input available\0"
    "output buffers available\0"
    "input message available\0"
    "i/o error\0"
    "high priority input available\0"
    "device disconnected\0";

const char* FindText(const char* texts, int index) {
  for (; index > 0; --index) {
    while (*texts++ != '\0') {
    }
  }
  return texts;
}

}  // namespace

const char* FindSignalName(int signal) {
  const char* name = signal > 0 && signal < kSignalNameCount ? FindText(kSignalNames, signal) : "";
  return *name != '\0' ? name : nullptr;
}

const char* FindSignalDescription(int code, int signal) {
  for (int i = 0; i < kCodeCount; ++i) {
    if (kCodes[i].code == code && (kCodes[i].signal == 0 || kCodes[i].signal == signal)) {
      return FindText(kCodeTexts, i);
    }
  }
  return nullptr;
}
