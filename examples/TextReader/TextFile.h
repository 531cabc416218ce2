// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_TEXTREADER_TEXTFILE_H
#define IPL_EXAMPLES_TEXTREADER_TEXTFILE_H

#include <stddef.h>
#include <sys/types.h>

#include <ipl/PLString.h>

namespace pipeline {

/// Reads UTF-8 files piece by piece. Waiting for a pipe or a terminal can be ended from another thread.
class TextFile {
 public:
  enum class Result {
    Text,      ///< there is a piece of text; it may be empty
    End,       ///< the file is complete
    Stopped,   ///< the stop descriptor became readable
    Failed,    ///< GetError tells why
    NoMemory,  ///< memory is exhausted
  };

  /// stopDescriptor: reading ends as soon as it is readable. Not owned.
  explicit TextFile(int stopDescriptor) : m_stopDescriptor(stopDescriptor) {}
  ~TextFile() { Close(); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  /// Opens a file, which is not a directory. Returns false on failure: GetError tells why.
  bool Open(const char* name);
  void Close();

  /// Appends the next piece, 64 KiB of the file at most, to text. It ends with a whole character, and a byte-order mark
  /// at the file's start is left out. What is not UTF-8 is replaced (MakeWellFormed).
  Result Read(PLString& text);

  /// Returns the errno of the last failure.
  int GetError() const { return m_error; }

 private:
  Result Fill();
  Result TakeText(size_t byteCount, PLString& text);

  const int m_stopDescriptor;
  int m_file = -1;  // owned
  int m_error = 0;
  bool m_bAtStart = true;
  bool m_bAtEnd = false;
  size_t m_filled = 0;  // bytes in the buffer that were not passed on
  char m_buffer[64 * 1024];
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_TEXTREADER_TEXTFILE_H
