// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_DIAGNOSTICS_KERNELFAULTHANDLERIMPL_H
#define IPL_DIAGNOSTICS_KERNELFAULTHANDLERIMPL_H

#include <signal.h>
#include <stdint.h>

#include <ipl/KernelFaultHandler.h>

/// The crash report. All static operations but GetFaultHandler are safe in a signal handler: they work on the stack,
/// allocate nothing, take no lock and call no more than write, open, read, close, getpid, getuid and abort. Its
/// functions for text are its own, and compiled so that the compiler does not turn them into calls of the C library.
class KernelFaultHandlerImpl : public KernelFaultHandler {
 public:
  struct SignalInfo {
    int signal;
    struct sigaction previousAction;
  };

  KernelFaultHandlerImpl() = default;

  void Initialise() override;
  void Uninitialise() override;

  static KernelFaultHandler* GetFaultHandler();

  static void SignalHandler(int signal, siginfo_t* info, void* context);
  /// Null for a number that has no name.
  static const char* GetSignalName(int signal);
  /// The text of a code; for one that has none, a text with both numbers in a static buffer.
  static const char* GetSignalDescription(int code, int signal);

  // The parts of the report, and what could print more of a processor's state.
  static void PrintHeading();
  static void PrintExceptionDetails(siginfo_t* info);
  static void PrintRegisters(void* context);
  static void PrintStack(void* context, int frameCount);
  static void PrintStackFrame(unsigned int frame, void* programCounter, void* stackPointer, unsigned int byteCount);
  static void PrintBuffer(unsigned int elementSize, void* address, int byteCount, char ignored);
  static void PrintObjectMap();

  /// Writes all bytes, in at most two attempts.
  static void writefd(int descriptor, void* bytes, int length);
  /// Copies the terminating zero too; returns the length without it. 0, and nothing is copied, for a null pointer.
  static unsigned int strcpy(char* destination, const char* source);
  /// 0 for null.
  static int strlen(const char* text);
  /// The ranges may overlap. Returns count; 0 if there is nothing to copy.
  static unsigned int memcpy(char* destination, const char* source, unsigned int count);
  /// Writes at most width digits of value, the most significant ones, without a terminating zero; pads with "0" if pad
  /// is not 0. radix: 1 to 16, of which 1 writes nothing. Returns the number of characters.
  static unsigned int decimaltobuffer(unsigned int value, unsigned int radix, char* buffer, unsigned int width,
                                      char pad);

 private:
  static constexpr int kSignalCount = 6;

  static const int m_signalToHandle[kSignalCount];
  static SignalInfo m_signalInfo[kSignalCount];
  static uint32_t m_exceptionCounter;  // entries into the handler since Initialise

  bool m_initialised = false;
};

#endif  // IPL_DIAGNOSTICS_KERNELFAULTHANDLERIMPL_H
