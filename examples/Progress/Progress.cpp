// SPDX-License-Identifier: Apache-2.0
// The module "Progress": shows on standard error how far TextReader is, in a line that is written over if standard
// error is a terminal. If it is not, only the option --progress makes it speak, each time in a line of its own.
#include <stdio.h>
#include <unistd.h>

#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/ModuleEntry.h>
#include <ipl/TimerEvent.h>

#include "pipeline/Options.h"
#include "pipeline/Pipeline.h"
#include "pipeline/Worker.h"

namespace pipeline {
namespace {

class Progress final : public IPLModule, private MessageHandler {
 public:
  explicit Progress(IPLKernel* kernel)
      : m_pKernel(kernel),
        m_reader(ipl::AcquireModule<ITextReader>(kernel, "TextReader")),
        m_bTerminal(isatty(STDERR_FILENO) != 0),
        m_worker(kernel, this) {}
  ~Progress() override;

  bool Start();

 private:
  void Handle(unsigned long id, void* data) override;
  void Discard(unsigned long id, void* data) override;
  void Print(const char* lineEnd);

  IPLKernel* const m_pKernel;
  ipl::ModuleOwner<ITextReader> m_reader;
  const bool m_bTerminal;
  unsigned long m_timerID = 0;  // used by the threads that load and unload
  Worker m_worker;
};

bool Progress::Start() {
  if (!m_bTerminal && !ReadOptions(m_pKernel).progress) {
    return true;
  }
  if (!m_reader || !m_worker.Start("Progress")) {
    return false;
  }
  const IPLKernel::Time period = IPLKernel::Time::Milliseconds(250);
  m_timerID = m_pKernel->SetTimer(period, *m_worker.GetQueue(), true);
  return m_timerID != 0;
}

/// The timer posts to the worker's queue, so it is cleared while the queue is there.
Progress::~Progress() {
  if (m_timerID != 0) {
    m_worker.Halt();
    m_pKernel->ClearTimer(m_timerID, *m_worker.GetQueue());
    Print("\n");
  }
  m_worker.Stop();
}

void Progress::Handle(unsigned long id, void* data) {
  if (ipl::TakeTimerEvent(m_pKernel, id, data)) {
    // The cursor goes back, so that the report's lines, which are longer, write over this one.
    Print(m_bTerminal ? "\r" : "\n");
  }
}

void Progress::Discard(unsigned long id, void* data) {
  static_cast<void>(ipl::TakeTimerEvent(m_pKernel, id, data));  // which gives it back
}

void Progress::Print(const char* lineEnd) {
  ReadProgress progress = {};
  m_reader->GetProgress(progress);
  const double seconds = static_cast<double>(progress.elapsed.GetNanoseconds()) / 1e9;
  const double rate = seconds > 0 ? static_cast<double>(progress.bytes) / seconds : 0;
  fprintf(stderr, "%s%lu/%lu files, %.0f bytes/s%s%s", m_bTerminal ? "\r" : "Progress: ", progress.filesDone,
          progress.fileCount, rate, m_bTerminal ? "\033[K" : "", lineEnd);
}

}  // namespace
}  // namespace pipeline

IPL_MODULE(Progress, pipeline::Progress);
