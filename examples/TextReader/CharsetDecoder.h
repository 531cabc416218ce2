// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_TEXTREADER_CHARSETDECODER_H
#define IPL_EXAMPLES_TEXTREADER_CHARSETDECODER_H

#include <stddef.h>
#include <stdint.h>

#include <ipl/IPLKernel.h>
#include <ipl/PLString.h>

namespace pipeline {

/// Decodes files of a character set through the kernel, piece by piece. What is invalid is stepped over, told by file
/// and offset on standard error, and counted.
///
/// The kernel's conversion keeps nothing from one call to the next. So a piece ends with a line's end, where the common
/// stateful sets (ISO-2022-JP, HZ, UTF-7) are back in their first state, and a cut-off character at its end is left for
/// the next one. A set whose state goes beyond lines (ISO-2022-KR), a line that fills the caller's buffer or is long
/// and has invalid bytes, and a line with a zero byte are decoded right only where the state does not matter. The byte
/// order that a mark at the file's start gives holds for the file, if the set's name with LE or BE behind it is one,
/// as that of UTF-16 is. Each zero byte becomes U+001A, SUBSTITUTE, since a PLString ends at a zero; a zero that a set
/// writes in another way (UTF-7, JAVA) hides what follows it in its piece.
class CharsetDecoder {
 public:
  /// charSet: stays valid as long as this object; null: the object is not used.
  CharsetDecoder(IPLKernel* kernel, const char* charSet);
  CharsetDecoder(const CharsetDecoder&) = delete;
  CharsetDecoder& operator=(const CharsetDecoder&) = delete;

  /// Returns whether the kernel knows the character set. If not, nothing else may be called.
  bool IsKnown() const { return m_unitSize != 0; }

  /// name: stays valid until EndFile.
  void BeginFile(const char* name);
  /// Appends the text of as many bytes as can be decoded, up to all of them; done is their number. bytes: overwritten.
  /// atEnd: nothing follows. isFull: the caller has
  /// no room for more bytes behind these unless some are done. Returns false if memory is exhausted.
  bool Decode(char* bytes, size_t count, bool atEnd, bool isFull, PLString& text, size_t& done);
  /// Tells what was not told yet.
  void EndFile();

  /// Returns how many bytes of all files were stepped over.
  uint64_t GetSkipped() const { return m_skipped; }

 private:
  enum : size_t { kPieceSize = 4096 };
  enum : unsigned int { kMaxTold = 10 };  // lines of a file

  unsigned int Convert(const char* bytes, size_t count, PLString& text, unsigned long& consumed) const;
  void ChooseByteOrder(const char* bytes);
  size_t CountZeros(const char* bytes, size_t count) const;
  size_t PieceLength(const char* bytes, size_t count, bool mayWait) const;
  size_t CutBefore(const char* bytes, size_t invalid) const;
  bool DecodePiece(char* bytes, size_t length, bool mayWait, bool isLast, PLString& text, size_t& done);
  void Skip(uint64_t offset, size_t count);
  void TellRun();

  IPLKernel* const m_pKernel;
  const char* const m_pCharSet;
  size_t m_unitSize = 0;        // bytes of the set's zero character, 0: the set is not known
  uint64_t m_skipped = 0;       // of all files
  char m_orderedName[64] = "";  // the set's name with a byte order
  // Of the current file:
  const char* m_pName = "";
  const char* m_pConvertFrom = "";  // the set's name with or without a byte order
  uint64_t m_offset = 0;
  uint64_t m_runStart = 0;  // neighbouring bytes that were stepped over and not told
  uint64_t m_runLength = 0;
  uint64_t m_untold = 0;  // bytes that get no line of their own
  unsigned int m_told = 0;
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_TEXTREADER_CHARSETDECODER_H
