// SPDX-License-Identifier: Apache-2.0
#include "diagnostics/SignalText.h"

#include <signal.h>

namespace {

// Text stands in the tables themselves: pointers would be relocated in every process that loads the library.
constexpr char kSignalNames[][10] = {
    "",        "SIGHUP",  "SIGINT",    "SIGQUIT", "SIGILL",   "SIGTRAP", "SIGABRT", "SIGBUS",
    "SIGFPE",  "SIGKILL", "SIGUSR1",   "SIGSEGV", "SIGUSR2",  "SIGPIPE", "SIGALRM", "SIGTERM",
    "",        "SIGCHLD", "SIGCONT",   "SIGSTOP", "SIGTSTP",  "SIGTTIN", "SIGTTOU", "SIGURG",
    "SIGXCPU", "SIGXFSZ", "SIGVTALRM", "SIGPROF", "SIGWINCH", "SIGIO",   "SIGPWR",  "SIGSYS",
};
constexpr int kSignalNameCount = sizeof(kSignalNames) / sizeof(kSignalNames[0]);

struct CodeText {
  short signal;  // 0: every signal
  short code;
  char text[34];
};

constexpr CodeText kCodeTexts[] = {
    {0, SI_QUEUE, "sigqueue"},
    {0, SI_TIMER, "timer expired"},
    {0, SI_MESGQ, "real time mesq state changed"},
    {0, SI_ASYNCIO, "aio completed"},
    {0, SI_SIGIO, "queued sigio"},
    {0, SI_KERNEL, "kernel"},
    {SIGILL, 1, "illegal opcode"},
    {SIGILL, 2, "illegal operand"},
    {SIGILL, 3, "illegal addressing mode"},
    {SIGILL, 4, "illegal trap"},
    {SIGILL, 5, "privileged opcode"},
    {SIGILL, 6, "privileged register"},
    {SIGILL, 7, "coprocessor error"},
    {SIGILL, 8, "internal stack error"},
    {SIGTRAP, 1, "process breakpoint"},
    {SIGTRAP, 2, "process trace trap"},
    {SIGBUS, 1, "invalid address alignment"},
    {SIGBUS, 2, "non-existent physical address"},
    {SIGBUS, 3, "object specific hardware error"},
    {SIGFPE, 1, "integer divide by zero"},
    {SIGFPE, 2, "integer overflow"},
    {SIGFPE, 3, "floating point divide by zero"},
    {SIGFPE, 4, "floating point overflow"},
    {SIGFPE, 5, "floating point underflow"},
    {SIGFPE, 6, "floating point inexact result"},
    {SIGFPE, 7, "floating point invalid operation"},
    {SIGFPE, 8, "subscript out of range"},
    {SIGSEGV, 1, "address not mapped to object"},
    {SIGSEGV, 2, "invalid perm. for mapped object"},
    {SIGCHLD, 1, "child has exited"},
    {SIGCHLD, 2, "child was killed"},
    {SIGCHLD, 3, "child terminated abnormally"},
    {SIGCHLD, 4, "traced child has trapped"},
    {SIGCHLD, 5, "child has stopped"},
    {SIGCHLD, 6, "stopped child has continued"},
    {SIGIO, 1, "data input available"},
    {SIGIO, 2, "output buffers available"},
    {SIGIO, 3, "input message available"},
    {SIGIO, 4, "i/o error"},
    {SIGIO, 5, "high priority input available"},
    {SIGIO, 6, "device disconnected"},
};

}  // namespace

const char* FindSignalName(int signal) {
  return signal > 0 && signal < kSignalNameCount && kSignalNames[signal][0] != '\0' ? kSignalNames[signal] : nullptr;
}

const char* FindSignalDescription(int code, int signal) {
  for (const CodeText& entry : kCodeTexts) {
    if (entry.code == code && (entry.signal == 0 || entry.signal == signal)) {
      return entry.text;
    }
  }
  return nullptr;
}
