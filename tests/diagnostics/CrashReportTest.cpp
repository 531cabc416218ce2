// SPDX-License-Identifier: Apache-2.0
// What a process that dies writes, byte for byte. From the moment a child dies, any use of its heap ends it otherwise.
#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include <gtest/gtest.h>
#include <ipl/KernelFaultHandler.h>

namespace {

constexpr size_t kSize = 1 << 17;
// The memory map of the child at its end.
char* const s_map = static_cast<char*>(mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
bool s_dying = false;
enum { kNothing, kHeap, kOpen } s_broken = kNothing;
const char* s_reads = nullptr;  // results of read: (I)nterrupted, (E)rror, a full (B)lock; then the end of the file
volatile int s_number = 0;
volatile char* volatile s_null = nullptr;

void Read() { static_cast<void>(*s_null); }

void PrepareToDie() {
  const long map = syscall(SYS_openat, AT_FDCWD, "/proc/self/maps", O_RDONLY);
  for (long end = 0, count = 1; count > 0; end += count) {
    count = syscall(SYS_read, map, s_map + end, kSize - 1 - static_cast<size_t>(end));
  }
  s_dying = true;
}

}  // namespace

extern "C" {
void* __libc_malloc(size_t);
IPL_API void* malloc(size_t size) __THROW {
  if (s_dying) {
    s_broken == kHeap ? (s_broken = kNothing, Read()) : _exit(99);
  }
  return __libc_malloc(size);
}
IPL_API int open(const char* path, int flags, ...) {
  return s_broken == kOpen ? errno = EACCES, -1 : static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags));
}
IPL_API ssize_t read(int descriptor, void* buffer, size_t size) {
  if (s_reads == nullptr || *s_reads == '\0') {
    return s_reads != nullptr ? 0 : syscall(SYS_read, descriptor, buffer, size);
  }
  memset(buffer, 'm', size);
  errno = *s_reads == 'I' ? EINTR : EIO;
  return *s_reads++ == 'B' ? static_cast<ssize_t>(size) : -1;
}
}

namespace {

/// Returns what a child writes to standard error, a file, with PID for its number and MAP for its memory map.
std::string DieBy(void (*way)()) {
  const int file = memfd_create("report", 0);
  memset(s_map, 0, kSize);
  const pid_t child = fork();
  if (child == 0) {
    const rlimit noCore = {};
    setrlimit(RLIMIT_CORE, &noCore);
    dup2(file, STDERR_FILENO);
    KernelFaultHandler::GetFaultHandler()->Initialise();
    PrepareToDie();
    way();
    _exit(98);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << "ended with " << std::hex << status;
  std::string text(kSize, '\0');
  text.resize(static_cast<size_t>(pread(file, text.data(), kSize, 0)));
  close(file);
  text = text.substr(0, text.find("qemu: uncaught target signal"));  // the emulator's own last word
  for (const auto& [from, to] : {std::pair(":" + std::to_string(child) + "\n", ":PID\n"), {s_map, "MAP"}}) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos;) {
      text.replace(at, from.size(), to);
    }
  }
  return text;
}

const std::string kBorder = "\n+" + std::string(78, '-') + "+";
const std::string kHeading = kBorder + "\n+---  Exception Handler" + std::string(53, ' ') + "---+" + kBorder;

std::string Report(int signal, const std::string& description, const std::string& map = "MAP") {
  return kHeading + "\nsiginal\t\t:SIG" + sigabbrev_np(signal) + "\ndescription\t:" + description +
         "\nprocess id\t:PID\nuser id\t\t:" + std::to_string(getuid()) + "\n\nmemory map:\n" + map;
}
std::string RaisedReport(int signal) {
  return Report(signal, "\nsignalNumber:" + std::to_string(signal) + " signalCode:4294967290");
}
std::string NullReport(const std::string& map = "MAP") { return Report(SIGSEGV, "address not mapped to object", map); }

TEST(CrashReportTest, Signals) {
  for (const int signal : {SIGQUIT, SIGILL, SIGBUS, SIGFPE, SIGSEGV, SIGTERM}) {
    s_number = signal;
    EXPECT_EQ(DieBy([] { raise(s_number); }), RaisedReport(signal));
    EXPECT_EQ(DieBy([] { sigqueue(getpid(), s_number, {}); }), Report(signal, "sigqueue"));
  }
  EXPECT_EQ(DieBy([] { kill(getpid(), SIGTERM); }), Report(SIGTERM, "\nsignalNumber:15 signalCode:0"));
  EXPECT_EQ(DieBy(Read), NullReport());
  EXPECT_EQ(DieBy([] { __builtin_trap(); }), Report(SIGILL, "illegal operand"));
#ifndef __arm__  // which divides by zero without a fault
  EXPECT_EQ(DieBy([] { s_number = 0, s_number = 100 / s_number; }), Report(SIGFPE, "integer divide by zero"));
#endif
}

void DieOnSmallestStack() {
  s_dying = false;
  pthread_attr_t attributes;
  pthread_t thread = {};
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, static_cast<size_t>(PTHREAD_STACK_MIN));
  const auto die = [](void*) { return PrepareToDie(), Read(), static_cast<void*>(nullptr); };
  pthread_create(&thread, &attributes, die, nullptr);
  pthread_join(thread, nullptr);
}

TEST(CrashReportTest, BadPlaces) {
  EXPECT_EQ(DieBy(DieOnSmallestStack), NullReport());
  EXPECT_EQ(DieBy([] { s_broken = kHeap, s_null = static_cast<char*>(malloc(1)); }), NullReport());
  EXPECT_EQ(DieBy([] { close(STDERR_FILENO), Read(); }), "");
  static int s_pipe[2];
  ASSERT_EQ(pipe2(s_pipe, O_NONBLOCK), 0);
  EXPECT_EQ(DieBy([] { dup2(s_pipe[1], STDERR_FILENO), Read(); }), "");
  std::string text(kSize, '\0');
  EXPECT_TRUE(read(s_pipe[0], text.data(), kSize) > 0 && text.find(kHeading) == 0 && text.find(s_map) != text.npos);
  while (write(s_pipe[1], "x", 1) == 1) {
  }
  EXPECT_EQ(DieBy([] { dup2(s_pipe[1], STDERR_FILENO), Read(); }), "") << "the pipe is full";

  EXPECT_GT(strlen(s_map), 1024U) << "one read is enough for it";
  EXPECT_EQ(DieBy([] { s_broken = kOpen, Read(); }), NullReport("opening memroy map failed!"));
  EXPECT_EQ(DieBy([] { s_reads = "IBIBEB", Read(); }), NullReport(std::string(1011 + 1024, 'm')));
  EXPECT_EQ(DieBy([] { s_reads = "E", Read(); }), NullReport(""));
  EXPECT_EQ(DieBy([] { s_reads = "", Read(); }), NullReport(""));
}

void UseNoInformation() {
  struct sigaction action = {};
  sigaction(SIGTERM, nullptr, &action);
  action.sa_sigaction(SIGTERM, nullptr, nullptr);
}

void EnterAgain(int) {
  static const int s_signals[] = {0, SIGBUS, SIGQUIT, SIGTERM};  // from the last on
  static int s_left = 3;
  s_left == 0 ? 0 : raise(s_signals[s_left--]);
}

TEST(CrashReportTest, ThirdEntryWritesNothing) {
  EXPECT_EQ(DieBy(UseNoInformation), kHeading + NullReport());
  EXPECT_EQ(DieBy([] { signal(SIGABRT, EnterAgain), Read(); }),
            NullReport() + RaisedReport(SIGTERM) + RaisedReport(SIGBUS));
}

}  // namespace
