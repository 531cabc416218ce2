// SPDX-License-Identifier: Apache-2.0
// The module "TextReader": reads the files that the command line names behind "--" and passes their text on.
#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <ipl/IPLHost.h>
#include <ipl/IPLKernel.h>
#include <ipl/KernelOwners.h>
#include <ipl/ModuleEntry.h>
#include <ipl/TrackedOwners.h>

#include "TextReader/CharsetDecoder.h"
#include "TextReader/ReadMeter.h"
#include "TextReader/TextFile.h"
#include "pipeline/Options.h"
#include "pipeline/Pipeline.h"

namespace pipeline {
namespace {

class TextReader final : public ITextReader {
 public:
  explicit TextReader(IPLKernel* kernel)
      : m_pKernel(kernel),
        m_host(ipl::AcquireModule<IPLHost>(kernel, "IPLHost")),
        m_wordCount(ipl::AcquireModule<IWordCount>(kernel, "WordCount")),
        m_options(ReadOptions(kernel)),
        m_meter(kernel, m_options.fileCount),
        m_stopDescriptor(eventfd(0, EFD_CLOEXEC)),
        m_decoder(kernel, m_options.charSet),
        m_file(m_stopDescriptor, m_options.charSet == nullptr ? nullptr : &m_decoder),
        m_pThread(kernel->CreateThread()) {}
  ~TextReader() override;

  bool Start();

  void GetProgress(ReadProgress& progress) override { progress = m_meter.Get(); }

 private:
  enum class Then { Go, Stop };

  void Run();
  bool CheckOptions();
  Then ReadFiles();
  Then ReadFile(const char* name);
  Then PassOn(TextFile::Result& result);
  void Report(const char* name, const char* problem, Status status);

  IPLKernel* const m_pKernel;
  const ipl::ModuleOwner<IPLHost> m_host;
  const ipl::ModuleOwner<IWordCount> m_wordCount;
  const Options m_options;
  ReadMeter m_meter;
  const int m_stopDescriptor;  // owned; readable once the thread shall stop
  CharsetDecoder m_decoder;    // this and the next two: used by the thread alone
  TextFile m_file;
  Status m_status = kDone;
  IPLKernel::Thread* const m_pThread;  // owned
};

bool TextReader::Start() {
  if (!m_host || !m_wordCount || !m_meter.IsUsable() || m_stopDescriptor < 0 || m_pThread == nullptr) {
    return false;
  }
  // Begun here, where the host certainly does not wait yet; ended by the thread.
  m_host->BeginWork();
  const bool started = m_pThread->Run(
      "TextReader", [](IPLKernel::Thread*, void* reader) { static_cast<TextReader*>(reader)->Run(); }, this);
  if (!started) {
    m_host->EndWork(kFailed);
  }
  return started;
}

/// The thread may just be waiting for a file or for WordCount. The former ends at once; the latter soon, since
/// WordCount goes on working until it is released below. And the thread acquires and releases no module, so this wait
/// is allowed in an unload entry.
TextReader::~TextReader() {
  if (m_pThread != nullptr) {
    eventfd_write(m_stopDescriptor, 1);
    m_pThread->WaitUntilFinished(IPLKernel::Time::Forever());
    m_pKernel->DestroyThread(m_pThread);
  }
  if (m_stopDescriptor >= 0) {
    close(m_stopDescriptor);
  }
}

void TextReader::Run() {
  if (CheckOptions() && ReadFiles() == Then::Stop) {
    return;  // the host waits for nothing any more
  }
  if (m_decoder.GetSkipped() > 0) {
    fprintf(stderr, "TextReader: bytes skipped in all: %" PRIu64 "\n", m_decoder.GetSkipped());
    m_status = m_status > kFailed ? m_status : kFailed;
  }
  EndOfWork end = {false};
  m_wordCount->GetQueue()->Send(kMessageEndOfWork, &end);
  if (!end.handled) {
    Report(nullptr, "memory is exhausted, there is no summary", kNoMemory);
  }
  m_host->EndWork(m_status);
}

bool TextReader::CheckOptions() {
  if (m_options.mistaken != nullptr) {
    Report(m_options.mistaken, m_options.mistake, kUsage);
  } else if (m_options.charSet != nullptr && !m_decoder.IsKnown()) {
    Report(m_options.charSet, "unknown character set", kUsage);
  } else if (m_options.fileCount == 0) {
    Report(nullptr, "no file is named behind '--'", kUsage);
  }
  return m_status == kDone;
}

TextReader::Then TextReader::ReadFiles() {
  Arguments arguments(m_pKernel);
  Options ignored;
  while (NextFile(arguments, ignored)) {
    if (ReadFile(arguments.GetWord()) == Then::Stop) {
      return Then::Stop;
    }
    m_meter.Add(0, 1);
  }
  return Then::Go;
}

TextReader::Then TextReader::ReadFile(const char* name) {
  if (!m_file.Open(name)) {
    Report(name, strerror(m_file.GetError()), kFailed);
    return Then::Go;
  }
  TextFile::Result result = TextFile::Result::Text;
  while (result == TextFile::Result::Text) {
    if (PassOn(result) == Then::Stop) {
      return Then::Stop;
    }
  }
  if (result == TextFile::Result::Failed) {
    Report(name, strerror(m_file.GetError()), kFailed);
  } else if (result == TextFile::Result::NoMemory) {
    Report(name, "memory is exhausted, the rest is left out", kNoMemory);
  }
  m_file.Close();
  // Also after a failure: what was read of the file has been passed on.
  EndOfFile end = {name, false};
  m_wordCount->GetQueue()->Send(kMessageEndOfFile, &end);
  if (!end.handled) {
    Report(name, "memory is exhausted, its counts are not shown", kNoMemory);
  }
  return Then::Go;
}

/// Passes the next piece of the file on. result: how it went.
TextReader::Then TextReader::PassOn(TextFile::Result& result) {
  ipl::TrackedOwner<TextChunk> chunk = ipl::MakeTracked<TextChunk>();
  const uint64_t byteCount = m_file.GetByteCount();
  result = chunk ? m_file.Read(chunk->text) : TextFile::Result::NoMemory;
  m_meter.Add(m_file.GetByteCount() - byteCount, 0);
  if (result == TextFile::Result::Stopped) {
    return Then::Stop;
  }
  if (result == TextFile::Result::Text) {
    if (m_wordCount->PostText(chunk.get())) {
      chunk.release();  // NOLINT(bugprone-unused-return-value): it is WordCount's now
    } else {
      result = TextFile::Result::NoMemory;
    }
  }
  return Then::Go;
}

/// Tells of a problem with a file or an option, or with all if name is null, and keeps the highest status.
void TextReader::Report(const char* name, const char* problem, Status status) {
  fprintf(stderr, "TextReader: %s%s%s\n", name == nullptr ? "" : name, name == nullptr ? "" : ": ", problem);
  if (status > m_status) {
    m_status = status;
  }
}

}  // namespace
}  // namespace pipeline

IPL_MODULE(TextReader, pipeline::TextReader);
