// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_PIPELINE_PIPELINE_H
#define IPL_EXAMPLES_PIPELINE_PIPELINE_H

#include <stdint.h>

#include <ipl/IPLKernel.h>
#include <ipl/IPLModule.h>
#include <ipl/PLString.h>

/// What the modules of the text pipeline agree on: Progress -> TextReader -> WordCount -> TextReport. A module holds an
/// acquisition of the next one as long as it lives, so whoever receives outlives whoever sends to it.
namespace pipeline {

/// What a module reports when its work ends; the host exits with the highest.
enum Status : int { kDone = 0, kFailed = 1, kUsage = 2, kNoMemory = 5 };

struct TextCounts {
  uint64_t lines;  // ends of lines
  uint64_t words;
  uint64_t characters;  // code points
};

/// The messages, with what their data pointer designates.
///
/// A posted message hands its data over: it is made with the scalar tracked new, and the receiver destroys it.
/// A sent message lends its data until Send returns. The receiver sets handled; if the sender finds it unset, memory
/// was exhausted and the message never went out.
enum MessageID : unsigned long {
  kMessageText = 1,    // posted, TextChunk: the next piece of the current file
  kMessageEndOfFile,   // sent, EndOfFile: the current file is complete
  kMessageEndOfWork,   // sent, EndOfWork: there are no more files
  kMessageFileCounts,  // sent, FileCounts: one file was counted
  kMessageSummary,     // sent, Summary: all files were counted
};

struct TextChunk {
  PLString text;
};

struct EndOfFile {
  const char* name;
  bool handled;
};

struct EndOfWork {
  bool handled;
};

struct FileCounts {
  const char* name;
  TextCounts counts;
  bool handled;
};

struct WordFrequency {
  const unsigned short* word;  // zero-terminated
  uint64_t count;
};

struct Summary {
  enum { kMaxWords = 10 };

  TextCounts total;
  unsigned int wordCount;  // entries of words in use
  WordFrequency words[kMaxWords];
  bool handled;
};

/// How far TextReader is.
struct ReadProgress {
  unsigned long filesDone;
  unsigned long fileCount;
  uint64_t bytes;           // read so far, of all files
  IPLKernel::Time elapsed;  // since the start, until now or until the end of the last file
};

/// The module object of TextReader.
class ITextReader : public IPLModule {
 public:
  /// Any thread may call it.
  virtual void GetProgress(ReadProgress& progress) = 0;
};

/// The module object of WordCount.
class IWordCount : public IPLModule {
 public:
  /// Posts a piece of text; waits while too many are on their way. Returns false if memory is exhausted: then the
  /// caller still owns chunk. Any thread but WordCount's own may call it.
  virtual bool PostText(TextChunk* chunk) = 0;
  /// Returns the queue for kMessageEndOfFile and kMessageEndOfWork. It belongs to the module.
  virtual IPLKernel::MessageQueue* GetQueue() = 0;
};

/// The module object of TextReport.
class ITextReport : public IPLModule {
 public:
  /// Returns the queue for kMessageFileCounts and kMessageSummary. It belongs to the module.
  virtual IPLKernel::MessageQueue* GetQueue() = 0;
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_PIPELINE_PIPELINE_H
