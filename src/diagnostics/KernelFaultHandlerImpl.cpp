// SPDX-License-Identifier: Apache-2.0
// Installing the handler, and the handler.
#include "diagnostics/KernelFaultHandlerImpl.h"

#include <stdlib.h>

#include <new>

const int KernelFaultHandlerImpl::m_signalToHandle[kSignalCount] = {SIGQUIT, SIGILL, SIGBUS, SIGFPE, SIGSEGV, SIGTERM};
KernelFaultHandlerImpl::SignalInfo KernelFaultHandlerImpl::m_signalInfo[kSignalCount];
uint32_t KernelFaultHandlerImpl::m_exceptionCounter = 0;

KernelFaultHandler* KernelFaultHandler::GetFaultHandler() { return KernelFaultHandlerImpl::GetFaultHandler(); }

namespace {

// It is never destroyed: signals arrive until the process is gone.
alignas(KernelFaultHandlerImpl) unsigned char s_handlerStorage[sizeof(KernelFaultHandlerImpl)];
KernelFaultHandler* const s_pHandler = new (static_cast<void*>(s_handlerStorage)) KernelFaultHandlerImpl;

}  // namespace

KernelFaultHandler* KernelFaultHandlerImpl::GetFaultHandler() { return s_pHandler; }

void KernelFaultHandlerImpl::Initialise() {
  if (m_initialised) {
    return;
  }
  for (int i = 0; i < kSignalCount; ++i) {
    m_signalInfo[i].signal = m_signalToHandle[i];
    struct sigaction action = {};
    action.sa_sigaction = SignalHandler;
    ::sigemptyset(&action.sa_mask);
    action.sa_flags = SA_SIGINFO | SA_NODEFER;  // a fault while the report is written comes in again
    if (::sigaction(m_signalInfo[i].signal, &action, &m_signalInfo[i].previousAction) != 0) {
      while (--i >= 0) {
        ::sigaction(m_signalInfo[i].signal, &m_signalInfo[i].previousAction, nullptr);
      }
      return;
    }
  }
  m_initialised = true;
  m_exceptionCounter = 0;
}

void KernelFaultHandlerImpl::Uninitialise() {
  if (!m_initialised) {
    return;
  }
  for (const SignalInfo& info : m_signalInfo) {
    ::sigaction(info.signal, &info.previousAction, nullptr);
  }
  m_initialised = false;
}

// A fault inside the report enters again: the second entry tries once more, the third gives up.
void KernelFaultHandlerImpl::SignalHandler(int, siginfo_t* info, void* context) {
  constexpr uint32_t kEntryWithoutReport = 3;
  constexpr int kStackFrames = 16;
  ++m_exceptionCounter;
  if (m_exceptionCounter != kEntryWithoutReport) {
    PrintHeading();
    PrintExceptionDetails(info);
    PrintRegisters(context);
    PrintStack(context, kStackFrames);
    PrintObjectMap();
  }
  ::abort();
}
