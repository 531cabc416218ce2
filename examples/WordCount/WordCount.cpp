// SPDX-License-Identifier: Apache-2.0
// The module "WordCount": counts the lines, words and characters of files, and how often each word occurs in all of
// them.
#include <stdio.h>

#include <ipl/IPLHost.h>
#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/ModuleEntry.h>
#include <ipl/TrackedOwners.h>

#include "WordCount/ChunkGate.h"
#include "WordCount/TextCounter.h"
#include "WordCount/WordTable.h"
#include "pipeline/Pipeline.h"
#include "pipeline/Worker.h"

namespace pipeline {
namespace {

class WordCount final : public IWordCount, private MessageHandler {
 public:
  explicit WordCount(IPLKernel* kernel)
      : m_host(ipl::AcquireModule<IPLHost>(kernel, "IPLHost")),
        m_report(ipl::AcquireModule<ITextReport>(kernel, "TextReport")),
        m_gate(kernel),
        m_words(kernel),
        m_counter(&m_words),
        m_total(),
        m_worker(kernel, this) {}
  ~WordCount() override { m_worker.Stop(); }

  bool Start() { return m_host && m_report && m_gate.IsUsable() && m_worker.Start("WordCount"); }

  bool PostText(TextChunk* chunk) override;
  IPLKernel::MessageQueue* GetQueue() override { return m_worker.GetQueue(); }

 private:
  void Handle(unsigned long id, void* data) override;
  void Discard(unsigned long id, void* data) override;

  bool EndFile(const char* name);
  bool SendSummary();

  const ipl::ModuleOwner<IPLHost> m_host;
  const ipl::ModuleOwner<ITextReport> m_report;
  ChunkGate m_gate;
  // Used by the worker's thread alone:
  WordTable m_words;
  TextCounter m_counter;
  TextCounts m_total;
  bool m_bMemoryTold = false;

  Worker m_worker;
};

bool WordCount::PostText(TextChunk* chunk) {
  m_gate.Enter();
  if (!m_worker.Post(kMessageText, chunk)) {
    m_gate.Leave();
    return false;
  }
  return true;
}

void WordCount::Handle(unsigned long id, void* data) {
  m_host->BeginWork();
  bool complete = true;
  if (id == kMessageText) {
    const ipl::TrackedOwner<TextChunk> chunk(static_cast<TextChunk*>(data));
    complete = m_counter.Add(chunk->text);
    m_gate.Leave();
  } else if (id == kMessageEndOfFile) {
    EndOfFile* end = static_cast<EndOfFile*>(data);
    complete = EndFile(end->name);
    end->handled = true;
  } else if (id == kMessageEndOfWork) {
    complete = SendSummary();
    static_cast<EndOfWork*>(data)->handled = true;
  }
  if (!complete && !m_bMemoryTold) {
    fprintf(stderr, "WordCount: memory is exhausted, the result is incomplete\n");
    m_bMemoryTold = true;
  }
  m_host->EndWork(complete ? kDone : kNoMemory);
}

void WordCount::Discard(unsigned long id, void* data) {
  if (id == kMessageText) {
    const ipl::TrackedOwner<TextChunk> chunk(static_cast<TextChunk*>(data));
    m_gate.Leave();
  }
}

bool WordCount::EndFile(const char* name) {
  bool complete = true;
  FileCounts file = {name, m_counter.EndText(complete), false};
  m_total.lines += file.counts.lines;
  m_total.words += file.counts.words;
  m_total.characters += file.counts.characters;
  m_report->GetQueue()->Send(kMessageFileCounts, &file);
  return file.handled && complete;
}

bool WordCount::SendSummary() {
  m_words.Sort();
  Summary summary = {};
  summary.total = m_total;
  while (summary.wordCount < Summary::kMaxWords && summary.wordCount < m_words.GetSize()) {
    const WordTable::Entry& entry = m_words.GetAt(summary.wordCount);
    summary.words[summary.wordCount] = {entry.word.units, entry.count};
    ++summary.wordCount;
  }
  m_report->GetQueue()->Send(kMessageSummary, &summary);
  return summary.handled;
}

}  // namespace
}  // namespace pipeline

IPL_MODULE(WordCount, pipeline::WordCount);
