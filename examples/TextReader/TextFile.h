// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_TEXTREADER_TEXTFILE_H
#define IPL_EXAMPLES_TEXTREADER_TEXTFILE_H

#include <stddef.h>
#include <stdint.h>

#include <ipl/PLString.h>

namespace pipeline {

class CharsetDecoder;

/// Reads text files piece by piece. Waiting for a pipe or a terminal can be ended from another thread.
class TextFile {
 public:
  enum class Result {
    Text,      ///< there is a piece of text; it may be empty
    End,       ///< the file is complete
    Stopped,   ///< the stop descriptor became readable
    Failed,    ///< GetError tells why
    NoMemory,  ///< memory is exhausted
  };

  /// stopDescriptor: reading ends as soon as it is readable. decoder: null if the files are UTF-8. Neither is owned.
  TextFile(int stopDescriptor, CharsetDecoder* decoder) : m_stopDescriptor(stopDescriptor), m_pDecoder(decoder) {}
  ~TextFile() { Close(); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  /// Opens a file, which is not a directory. Returns false on failure: GetError tells why.
  bool Open(const char* name);
  void Close();

  /// Appends the next piece, 64 KiB of the file at most, to text. It ends with a whole character, and a byte-order mark
  /// at the file's start is left out. What is not UTF-8 is replaced (MakeWellFormed); a decoder steps over what is
  /// invalid.
  Result Read(PLString& text);

  /// Returns how many bytes of the file were read.
  uint64_t GetByteCount() const { return m_byteCount; }
  /// Returns the errno of the last failure.
  int GetError() const { return m_error; }

 private:
  Result Fill();
  bool TakeText(PLString& text, size_t& done);
  bool TakeUtf8(PLString& text, size_t& done);

  const int m_stopDescriptor;
  CharsetDecoder* const m_pDecoder;
  int m_file = -1;  // owned
  int m_error = 0;
  uint64_t m_byteCount = 0;
  bool m_bAtStart = true;
  bool m_bAtEnd = false;
  size_t m_filled = 0;  // bytes in the buffer that were not passed on
  char m_buffer[64 * 1024];
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_TEXTREADER_TEXTFILE_H
