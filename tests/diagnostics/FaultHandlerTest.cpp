// SPDX-License-Identifier: Apache-2.0
// Installing the crash report, and what it is made with.
#include <dlfcn.h>
#include <errno.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <map>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "diagnostics/KernelFaultHandlerImpl.h"

using Handler = KernelFaultHandlerImpl;
using Results = std::vector<ssize_t>;
static int s_refused = -1;           // the signal that sigaction refuses
static std::string* s_text;          // takes what is written to standard error
static Results s_results;            // of the first writes; the others write all
static std::vector<size_t> s_sizes;  // of all writes

extern "C" IPL_API int sigaction(int signal, const struct sigaction* action, struct sigaction* previous) __THROW {
  const auto next = reinterpret_cast<decltype(&sigaction)>(dlsym(RTLD_NEXT, "sigaction"));
  return signal == s_refused ? -1 : next(signal, action, previous);
}

extern "C" IPL_API ssize_t write(int descriptor, const void* bytes, size_t size) {
  if (s_text == nullptr || descriptor != STDERR_FILENO) {
    return syscall(SYS_write, descriptor, bytes, size);
  }
  const ssize_t result = s_sizes.size() < s_results.size() ? s_results[s_sizes.size()] : static_cast<ssize_t>(size);
  s_sizes.push_back(size);
  s_text->append(static_cast<const char*>(bytes), static_cast<size_t>(result < 0 ? 0 : result));
  return result < 0 ? (errno = static_cast<int>(-result), -1) : result;
}

template <typename Function, typename... Arguments>
static std::string Print(Function function, Arguments... arguments) {
  std::string text;
  s_sizes.clear();
  s_text = &text;
  function(arguments...);
  s_text = nullptr;
  return text;
}

static std::map<int, std::pair<void*, int>> GetActions() {
  std::map<int, std::pair<void*, int>> actions;
  for (int signal = 1; signal < 32; ++signal) {
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    const int flags = action.sa_flags & ~0x04000000;  // which the C library adds
    actions[signal] = {reinterpret_cast<void*>(action.sa_sigaction), sigisemptyset(&action.sa_mask) ? flags : ~flags};
  }
  return actions;
}

TEST(FaultHandlerTest, InstallsSixOrNoneAndPutsBackWhatWas) {
  KernelFaultHandler* handler = KernelFaultHandler::GetFaultHandler();
  const int signals[] = {SIGQUIT, SIGILL, SIGBUS, SIGFPE, SIGSEGV, SIGTERM};
  auto installed = GetActions();
  for (const int number : signals) {
    signal(number, number % 2 == 0 ? SIG_IGN : SIG_DFL);
    installed[number] = {reinterpret_cast<void*>(&Handler::SignalHandler), SA_SIGINFO | SA_NODEFER};
  }
  const auto before = GetActions();
  for (const int signal : signals) {
    s_refused = signal;
    handler->Initialise();
    s_refused = -1;
    handler->Uninitialise();
    EXPECT_EQ(GetActions(), before);
    handler->Initialise();
    handler->Initialise();
    EXPECT_EQ(GetActions(), installed);
    handler->Uninitialise();
    EXPECT_EQ(GetActions(), before);
  }
  ::signal(SIGTERM, SIG_DFL);
  handler->Uninitialise();
  EXPECT_EQ(GetActions()[SIGTERM].first, nullptr) << "not its own any more";
}

TEST(FaultHandlerTest, TextAndNumbers) {
  const auto number = [](unsigned int value, unsigned int radix, unsigned int width, char pad) {
    std::string buffer(16, '~');
    const unsigned int length = Handler::decimaltobuffer(value, radix, buffer.data(), width, pad);
    EXPECT_EQ(buffer.find('~'), length);
    return buffer.substr(0, length) + " ";
  };
  EXPECT_EQ(number(0x1A, 16, 8, 1) + number(0x1A, 16, 8, 0) + number(123456789, 10, 8, 0) + number(0, 10, 10, 0) +
                number(0, 16, 4, ' ') + number(~0U, 10, 10, 1) + number(0xDEADBEEF, 16, 3, 1) + number(21, 2, 6, 1),
            "0000001A 1A 12345678 0 0000 4294967295 DEA 010101 ");
  EXPECT_EQ(number(7, 17, 8, 1) + number(7, 0, 8, 1) + number(7, 1, 8, 1) + number(7, 10, 0, 1), "    ");
  char text[] = "0123456789";
  EXPECT_EQ(Handler::decimaltobuffer(7, 10, nullptr, 8, 1) + Handler::strcpy(text, nullptr), 0U);
  EXPECT_EQ(Handler::strcpy(nullptr, text) + Handler::memcpy(nullptr, text, 1) + Handler::memcpy(text, nullptr, 1), 0U);
  EXPECT_TRUE(Handler::memcpy(text + 2, text, 6) == 6 && Handler::memcpy(text, text + 1, 3) == 3);
  EXPECT_EQ(Handler::memcpy(text, text, 6) + Handler::memcpy(text, text + 1, 0), 0U);
  EXPECT_STREQ(text, "1011234589");
  EXPECT_TRUE(Handler::strcpy(text, "ab") == 2 && text[2] == '\0' && text[3] == '1');
  EXPECT_EQ(Handler::strlen(text) - Handler::strlen(nullptr) - Handler::strlen(""), 2);
  const std::tuple<int, Results, const char*, size_t> writes[] = {
      {0, {}, "", 0},        {-1, {}, "", 0},      {5, {}, "hello", 1},       {5, {2}, "hello", 2},
      {5, {2, 1}, "hel", 2}, {5, {0}, "hello", 2}, {5, {-EINTR}, "hello", 2}, {5, {-EINTR, -EINTR}, "", 2},
      {5, {-EAGAIN}, "", 1}};
  for (const auto& [length, results, written, calls] : writes) {
    s_results = results;
    EXPECT_EQ(Print(Handler::writefd, STDERR_FILENO, const_cast<char*>("hello"), length), written);
    EXPECT_EQ(s_sizes.size(), calls);
  }
  s_results.clear();
}

TEST(FaultHandlerTest, NamesAndDescriptions) {
  const auto number = [](int value) { return std::to_string(static_cast<unsigned int>(value)); };
  std::string texts;
  for (int signal = -1; signal < 40; ++signal) {
    const char* libc = signal == SIGIO ? "IO" : signal == 16 || signal > 31 ? nullptr : sigabbrev_np(signal);
    const char* name = Handler::GetSignalName(signal);
    EXPECT_EQ(name == nullptr ? "" : std::string(name), libc == nullptr ? "" : std::string("SIG") + libc);
    for (int code = -6; code <= SI_KERNEL; ++code) {
      const std::string text = Handler::GetSignalDescription(code, signal);
      const bool isCommon = signal != SIGHUP && text == Handler::GetSignalDescription(code, SIGHUP);
      const bool isUnknown = text == "\nsignalNumber:" + number(signal) + " signalCode:" + number(code);
      texts += isCommon || isUnknown ? "" : text + ";";
    }
  }
  EXPECT_EQ(texts,
            "queued sigio;aio completed;real time mesq state changed;timer expired;sigqueue;kernel;illegal opcode;"
            "illegal operand;illegal addressing mode;illegal trap;privileged opcode;privileged register;coprocessor "
            "error;internal stack error;process breakpoint;process trace trap;invalid address alignment;non-existent "
            "physical address;object specific hardware error;integer divide by zero;integer overflow;floating point "
            "divide by zero;floating point overflow;floating point underflow;floating point inexact result;floating "
            "point invalid operation;subscript out of range;address not mapped to object;invalid perm. for mapped "
            "object;child has exited;child was killed;child terminated abnormally;traced child has trapped;child has "
            "stopped;stopped child has continued;data input available;output buffers available;input message "
            "available;i/o error;high priority input available;device disconnected;");
}

static std::string Hex(const void* at, unsigned int size) {
  unsigned int value = 0;
  memcpy(&value, at, size);  // both targets are little-endian
  char text[9] = {};
  snprintf(text, sizeof(text), "%0*X", static_cast<int>(2 * size), value);
  return text;
}

TEST(FaultHandlerTest, Dumps) {
  unsigned char memory[2049];
  std::iota(memory, memory + sizeof(memory), static_cast<unsigned char>(7));
  unsigned char* middle = memory + 1025;
  for (const unsigned int count : {0U, 3U, 4U, 6U, 16U, 37U, 1001U}) {
    std::string wanted = "\nframe #1234567\npc\t- 0xDEADBEEF\nsp\t- 0x" + Hex(&middle, 4);
    for (unsigned int offset = 0; count >= 4 && offset < count; offset += 4) {
      wanted += (offset % 16 == 0 ? "\n\t+ 0x" : " 0x") + Hex(middle - count / 4 * 4 + offset, 4);
    }
    EXPECT_EQ(Print(Handler::PrintStackFrame, 1234567, reinterpret_cast<void*>(0xDEADBEEF), middle, count), wanted);
    EXPECT_TRUE(s_sizes.size() == 1 || (s_sizes[0] > 800 && s_sizes[0] < 830)) << s_sizes[0];
    for (const unsigned int size : {1U, 2U, 4U}) {
      wanted = "\nmemory: 0x" + Hex(&middle, 4) + "#" + std::to_string(count);
      for (unsigned char* at = middle; at < middle + count; at += size) {
        wanted += ((at - middle) % 16 == 0 ? "\n0x" + Hex(&at, 4) + "| " : " ") + Hex(at, size);
      }
      EXPECT_EQ(Print(Handler::PrintBuffer, size, middle, static_cast<int>(count), '*'), wanted + "\n");
      EXPECT_TRUE(s_sizes.size() == 1 || (s_sizes[0] > 800 && s_sizes[0] < 830)) << s_sizes[0];
    }
  }
  EXPECT_EQ(Print(Handler::PrintBuffer, 4, middle, -1, 0), "\nmemory: 0x" + Hex(&middle, 4) + "#4294967295\n");
  EXPECT_EQ(Print(Handler::PrintBuffer, 3, middle, 4, 0) + Print(Handler::PrintBuffer, 4, nullptr, 4, 0), "");
}
