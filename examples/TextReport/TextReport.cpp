// SPDX-License-Identifier: Apache-2.0
// The module "TextReport": prints what was counted on standard output.
#include <errno.h>
#include <inttypes.h>
#include <stdio.h>
#include <string.h>

#include <ipl/IPLHost.h>
#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/ModuleEntry.h>
#include <ipl/PLString.h>

#include "pipeline/LocalTime.h"
#include "pipeline/Options.h"
#include "pipeline/Pipeline.h"
#include "pipeline/Worker.h"

namespace pipeline {
namespace {

class TextReport final : public ITextReport, private MessageHandler {
 public:
  explicit TextReport(IPLKernel* kernel)
      : m_pKernel(kernel),
        m_host(ipl::AcquireModule<IPLHost>(kernel, "IPLHost")),
        m_bStamp(ReadOptions(kernel).stamp),
        m_worker(kernel, this) {}
  ~TextReport() override { m_worker.Stop(); }

  bool Start() { return m_host && m_worker.Start("TextReport"); }

  IPLKernel::MessageQueue* GetQueue() override { return m_worker.GetQueue(); }

 private:
  void Handle(unsigned long id, void* data) override;
  void Discard(unsigned long /*id*/, void* /*data*/) override {}  // all messages are sent: their data is the sender's

  void PrintCounts(const TextCounts& counts, const char* name);
  Status PrintSummary(const Summary& summary);

  IPLKernel* const m_pKernel;
  const ipl::ModuleOwner<IPLHost> m_host;
  const bool m_bStamp;
  bool m_bHeadPrinted = false;  // used by the worker's thread alone
  Worker m_worker;
};

void TextReport::Handle(unsigned long id, void* data) {
  m_host->BeginWork();
  Status status = kDone;
  if (id == kMessageFileCounts) {
    FileCounts* file = static_cast<FileCounts*>(data);
    PrintCounts(file->counts, file->name);
    file->handled = true;
  } else if (id == kMessageSummary) {
    Summary* summary = static_cast<Summary*>(data);
    status = PrintSummary(*summary);
    summary->handled = true;
  }
  m_host->EndWork(status);
}

void TextReport::PrintCounts(const TextCounts& counts, const char* name) {
  if (!m_bHeadPrinted) {
    if (m_bStamp) {
      printf("Local time: %s\n\n", LocalTime(m_pKernel, m_pKernel->GetTimeLocal()).GetText());
    }
    printf("%10s %10s %12s  %s\n", "lines", "words", "characters", "file");
    m_bHeadPrinted = true;
  }
  printf("%10" PRIu64 " %10" PRIu64 " %12" PRIu64 "  %s\n", counts.lines, counts.words, counts.characters, name);
}

Status TextReport::PrintSummary(const Summary& summary) {
  if (!m_bHeadPrinted) {
    return kDone;  // no file could be read
  }
  Status status = kDone;
  PrintCounts(summary.total, "total");
  if (summary.wordCount > 0) {
    printf("\n%10s  %s\n", "count", "word");
  }
  for (unsigned int i = 0; i < summary.wordCount; ++i) {
    PLString word;
    word.Append(summary.words[i].word);
    const char* text = word.GetUTF8();
    if (*text == '\0') {  // no word is empty
      fprintf(stderr, "TextReport: memory is exhausted, a word is missing\n");
      status = kNoMemory;
      continue;
    }
    printf("%10" PRIu64 "  %s\n", summary.words[i].count, text);
  }
  errno = EIO;  // in case that an earlier write failed
  if (fflush(stdout) != 0 || ferror(stdout) != 0) {
    fprintf(stderr, "TextReport: cannot write the result: %s\n", strerror(errno));
    return kFailed;
  }
  return status;
}

}  // namespace
}  // namespace pipeline

IPL_MODULE(TextReport, pipeline::TextReport);
