// SPDX-License-Identifier: Apache-2.0
#include "services/CommandOutput.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

namespace {

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Get() const { return m_descriptor; }
  void Close() {
    if (m_descriptor >= 0) {
      ::close(std::exchange(m_descriptor, -1));
    }
  }

 private:
  int m_descriptor;
};

// Runs in the child of a process with many threads: only what is safe in a signal handler may be called.
[[noreturn]] void RunProcessList(int readEnd, int writeEnd) {
  ::close(readEnd);
  if (writeEnd == STDOUT_FILENO) {
    // The process runs without a standard output and the pipe took its place: it must outlast the exec.
    if (::fcntl(writeEnd, F_SETFD, 0) != 0) {
      ::_exit(1);
    }
  } else if (::dup2(writeEnd, STDOUT_FILENO) < 0) {
    ::_exit(1);
  }
  // The process may ignore or block the signal that ends a command whose output is not read on; exec keeps both.
  ::signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  ::execlp("ps", "ps", "-A", static_cast<char*>(nullptr));
  ::_exit(1);
}

bool ReadAll(int descriptor, char* buffer, size_t size, bool& full) {
  size_t length = 0;
  while (length < size - 1) {
    const ssize_t count = ::read(descriptor, buffer + length, size - 1 - length);
    if (count < 0) {
      return false;
    }
    if (count == 0) {
      break;
    }
    length += static_cast<size_t>(count);
  }
  buffer[length] = '\0';
  full = length == size - 1;
  return true;
}

// Waits until the child has ended; somebody else's handler of SIGCHLD may have taken its status, which is a failure.
// mayBreak: its output was not read to the end, so it may have ended for that, or say so for a child of its own, as a
// shell does.
bool EndedWell(pid_t child, bool mayBreak) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      return false;
    }
  }
  const bool broken = (WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) ||
                      (WIFEXITED(status) && WEXITSTATUS(status) == 128 + SIGPIPE);
  return status == 0 || (mayBreak && broken);
}

}  // namespace

bool ReadProcessList(char* buffer, size_t size) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    return false;
  }
  Descriptor readEnd(ends[0]);
  Descriptor writeEnd(ends[1]);
  const pid_t child = ::fork();
  if (child < 0) {
    return false;
  }
  if (child == 0) {
    RunProcessList(readEnd.Get(), writeEnd.Get());
  }
  writeEnd.Close();
  bool full = false;
  const bool readWell = ReadAll(readEnd.Get(), buffer, size, full);
  readEnd.Close();  // a command that still writes is ended by this
  return EndedWell(child, full) && readWell;
}
