// SPDX-License-Identifier: Apache-2.0
// The parts of the crash report.
#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "diagnostics/KernelFaultHandlerImpl.h"
#include "diagnostics/SignalText.h"

namespace {

constexpr char kPlain = 0;
constexpr char kPadded = 1;
constexpr unsigned int kDecimalDigits = 10;

// A text of limited length on the stack, written to standard error in pieces.
template <unsigned int size>
class ReportText {
 public:
  ReportText& Add(const char* text) {
    m_length += KernelFaultHandlerImpl::strcpy(m_text + m_length, text);
    return *this;
  }
  ReportText& AddNumber(unsigned int value, unsigned int radix, unsigned int width, char pad) {
    m_length += KernelFaultHandlerImpl::decimaltobuffer(value, radix, m_text + m_length, width, pad);
    return *this;
  }
  ReportText& AddDecimal(unsigned int value) { return AddNumber(value, 10, kDecimalDigits, kPlain); }
  ReportText& AddHex(unsigned int value, unsigned int digits) { return AddNumber(value, 16, digits, kPadded); }
  // The low 32 bits: what an address has on the device.
  ReportText& AddAddress(const void* address) {
    return AddHex(static_cast<unsigned int>(reinterpret_cast<uintptr_t>(address)), 8);
  }

  void Flush() {
    KernelFaultHandlerImpl::writefd(STDERR_FILENO, m_text, static_cast<int>(m_length));
    m_length = 0;
  }
  // Before each element of a dump: what comes next always fits behind that many bytes.
  void FlushIfLong() {
    constexpr unsigned int kLong = 800;
    if (m_length > kLong) {
      Flush();
    }
  }

  char* GetRest() { return m_text + m_length; }
  unsigned int GetRestSize() const { return size - m_length; }
  void Skip(unsigned int count) { m_length += count; }
  bool IsEmpty() const { return m_length == 0; }

 private:
  char m_text[size];
  unsigned int m_length = 0;
};

ssize_t ReadAgain(int descriptor, char* buffer, unsigned int size) {
  ssize_t count = 0;
  do {
    count = ::read(descriptor, buffer, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

unsigned int LittleEndian(const unsigned char* bytes, unsigned int count) {
  unsigned int value = 0;
  for (unsigned int i = count; i > 0; --i) {
    value = (value << 8) | bytes[i - 1];
  }
  return value;
}

}  // namespace

const char* KernelFaultHandlerImpl::GetSignalName(int signal) { return FindSignalName(signal); }

const char* KernelFaultHandlerImpl::GetSignalDescription(int code, int signal) {
  static char fallback[64];
  const char* text = FindSignalDescription(code, signal);
  if (text != nullptr) {
    return text;
  }
  unsigned int length = strcpy(fallback, "\nsignalNumber:");
  length += decimaltobuffer(static_cast<unsigned int>(signal), 10, fallback + length, kDecimalDigits, kPlain);
  length += strcpy(fallback + length, " signalCode:");
  length += decimaltobuffer(static_cast<unsigned int>(code), 10, fallback + length, kDecimalDigits, kPlain);
  fallback[length] = '\0';
  return fallback;
}

void KernelFaultHandlerImpl::PrintHeading() {
  static const char heading[] =
      "\n+------------------------------------------------------------------------------+"
      "\n+---  Exception Handler                                                     ---+"
      "\n+------------------------------------------------------------------------------+";
  static_assert(sizeof(heading) == 243 + 1, "three lines of 80 characters");
  writefd(STDERR_FILENO, const_cast<char*>(heading), sizeof(heading) - 1);
}

void KernelFaultHandlerImpl::PrintExceptionDetails(siginfo_t* info) {
  ReportText<512> text;
  text.Add("\nsiginal\t\t:").Add(GetSignalName(info->si_signo)).Add("\n");
  text.Add("description\t:").Add(GetSignalDescription(info->si_code, info->si_signo)).Add("\n");
  text.Add("process id\t:").AddDecimal(static_cast<unsigned int>(::getpid())).Add("\n");
  text.Add("user id\t\t:").AddDecimal(::getuid()).Add("\n");
  text.Flush();
}

void KernelFaultHandlerImpl::PrintRegisters(void*) {}

void KernelFaultHandlerImpl::PrintStack(void*, int) {}

void KernelFaultHandlerImpl::PrintStackFrame(unsigned int frame, void* programCounter, void* stackPointer,
                                             unsigned int byteCount) {
  constexpr unsigned int kWordSize = 4;
  constexpr unsigned int kLineSize = 16;
  ReportText<1024> text;
  text.Add("\nframe #").AddNumber(frame, 10, 8, kPlain);
  text.Add("\npc\t- 0x").AddAddress(programCounter);
  text.Add("\nsp\t- 0x").AddAddress(stackPointer);
  const unsigned int dumped = byteCount / kWordSize * kWordSize;
  const unsigned char* start = static_cast<const unsigned char*>(stackPointer) - dumped;
  for (unsigned int offset = 0; byteCount >= kWordSize && offset < byteCount; offset += kWordSize) {
    text.FlushIfLong();
    if (offset % kLineSize == 0) {
      text.Add("\n\t+");
    }
    text.Add(" 0x").AddHex(LittleEndian(start + offset, kWordSize), 8);
  }
  text.Flush();
}

void KernelFaultHandlerImpl::PrintBuffer(unsigned int elementSize, void* address, int byteCount, char) {
  constexpr unsigned int kLineSize = 16;
  if ((elementSize != 1 && elementSize != 2 && elementSize != 4) || address == nullptr) {
    return;
  }
  ReportText<1024> text;
  text.Add("\nmemory: 0x").AddAddress(address).Add("#").AddDecimal(static_cast<unsigned int>(byteCount));
  const auto* start = static_cast<const unsigned char*>(address);
  for (int offset = 0; offset < byteCount; offset += static_cast<int>(elementSize)) {
    text.FlushIfLong();
    if (static_cast<unsigned int>(offset) % kLineSize == 0) {
      text.Add("\n0x").AddAddress(start + offset).Add("|");
    }
    text.Add(" ").AddHex(LittleEndian(start + offset, elementSize), 2 * elementSize);
  }
  text.Add("\n").Flush();
}

void KernelFaultHandlerImpl::PrintObjectMap() {
  ReportText<1024> text;
  text.Add("\nmemory map:\n");
  const int map = ::open("/proc/self/maps", O_RDONLY);
  if (map < 0) {
    text.Add("opening memroy map failed!").Flush();
    return;
  }
  for (;;) {
    const ssize_t count = ReadAgain(map, text.GetRest(), text.GetRestSize());
    if (count <= 0) {
      break;
    }
    text.Skip(static_cast<unsigned int>(count));
    text.Flush();
  }
  text.Flush();  // the header, if nothing could be read
  ::close(map);
}
