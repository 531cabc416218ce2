// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_PLSTRING_H
#define IPL_PLSTRING_H

#include <stdint.h>

#include <ipl/PLExport.h>

/// @file
/// A text.

/// A text of UTF-16 code units in host order, with a cached UTF-8 copy. A character above U+FFFF takes two units.
///
/// Its memory comes from the tracked allocation, so it is used only while the kernel object exists; the kernel and the
/// modules work on the same objects. Malformed text never fails: see AppendUTF8 and CopyUTF16to8.
/// When memory is exhausted, or the text would not fit 32 bits, an operation leaves the text as it was.
/// [owner] No lock is taken, and GetUTF8 writes the cache: a string is not shared between threads without a lock.
class IPL_API PLString {
 public:
  /// The empty text.
  PLString();
  /// A copy; empty if memory is exhausted.
  PLString(const PLString& other);
  /// Becomes a copy.
  PLString& operator=(const PLString& other);
  virtual ~PLString();  // slots 0, 1

  /// Appends the text of other, which may be this string.
  void Append(const PLString& other);
  /// Appends a zero-terminated text, which may lie in this string; null appends nothing.
  void Append(const unsigned short* text);
  /// Decodes byteCount bytes of UTF-8 and appends the text, up to the first zero unit in it.
  /// Malformed input: continuation bytes are not checked and overlong forms are accepted, a lone 0x80 to 0xBF is the
  /// character of its value, surrogates and values above U+10FFFF become U+FFFD, a sequence cut off by the end is left
  /// out. The bytes may lie in this string's cached UTF-8.
  void AppendUTF8(const char* bytes, unsigned long byteCount);

  /// Makes the text empty; keeps the buffer.
  void Empty();

  /// Returns the number of code units.
  unsigned long GetLength() const { return m_length; }
  /// Returns the zero-terminated text, never null; valid until the text changes.
  const unsigned short* GetBuffer() const;
  /// Returns the text in UTF-8, zero-terminated, never null; valid until the text changes. Computed by the first call
  /// and kept; "" if memory for it is exhausted.
  const char* GetUTF8();
  /// Returns a new UTF-8 copy of a zero-terminated text. The caller frees it with the raw-bytes operator delete of
  /// PLMem.h. Null if text is null or empty, or if memory is exhausted. A high surrogate without a low one behind it
  /// becomes U+FFFD; a low surrogate without a high one before it is encoded as its own value.
  char* CopyUTF16to8(const unsigned short* text) const;

  /// Decodes the UTF-8 sequence at bytes, whose first byte gives its length, into one unit (then unit2 is 0) or two.
  /// Returns the length of the sequence, 1 to 6 bytes, all of which have to be readable.
  unsigned long _UTF8toU16Char(const unsigned char* bytes, unsigned short* unit1, unsigned short* unit2) const;

 private:
  template <typename>
  friend struct PLContractLayout;

  IPL_HIDDEN void AppendUnits(const unsigned short* units, uint64_t count);
  IPL_HIDDEN void DropUTF8();

  char* m_pUTF8;              // owned; null when it was not computed
  unsigned short* m_pBuffer;  // owned, zero at m_length; null until the first allocation
  uint32_t m_length;          // in units, without the zero
  uint32_t m_capacity;        // in units, with the zero
  uint16_t m_emptyChar;       // always 0: the text of a string without a buffer
};

#endif  // IPL_PLSTRING_H
