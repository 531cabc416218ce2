// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_UTF8TEXT_H
#define IPL_UTF8TEXT_H

#include <stddef.h>

#include <string>

#include <ipl/PLString.h>
#include <ipl/TrackedOwners.h>

/// @file
/// Strings from and to UTF-8.

/// PLString from and to UTF-8, with the errors that PLString's own operations are silent about. They need the kernel
/// object, take no lock and store no error. [owner] of the strings.
namespace ipl {

/// How a conversion ended. Whatever is not kConverted has left the target as it was.
enum class TextStatus {
  kConverted,
  kMalformed,  ///< not UTF-8, not UTF-16, or a zero in the text, which would end a PLString
  kNoMemory,   ///< memory is exhausted
};

/// Returns the length of the UTF-8 sequence at the start of count bytes, count > 0; 0 if that is none, or is a zero.
IPL_ALWAYS_INLINE size_t Utf8SequenceLength(const unsigned char* bytes, size_t count) {
  const unsigned char first = bytes[0];
  if (first < 0x80) {
    return first != 0 ? 1 : 0;
  }
  const size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
  if (length == 0 || length > count) {
    return 0;
  }
  // The second byte tells overlong forms, surrogates and what lies above U+10FFFF.
  const unsigned char lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const unsigned char highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (bytes[1] < lowest || bytes[1] > highest) {
    return 0;
  }
  for (size_t i = 2; i < length; ++i) {
    if (bytes[i] < 0x80 || bytes[i] > 0xBF) {
      return 0;
    }
  }
  return length;
}

/// Appends count bytes of UTF-8 to text.
IPL_ALWAYS_INLINE TextStatus AppendUtf8(PLString& text, const char* bytes, size_t count) {
  for (size_t done = 0; done < count;) {
    const size_t length = Utf8SequenceLength(reinterpret_cast<const unsigned char*>(bytes) + done, count - done);
    if (length == 0) {
      return TextStatus::kMalformed;
    }
    done += length;
  }
  const unsigned long before = text.GetLength();
  text.AppendUTF8(bytes, static_cast<unsigned long>(count));
  return count == 0 || text.GetLength() > before ? TextStatus::kConverted : TextStatus::kNoMemory;
}

/// The same of a std::string.
IPL_ALWAYS_INLINE TextStatus AppendUtf8(PLString& text, const std::string& utf8) {
  return AppendUtf8(text, utf8.data(), utf8.size());
}

/// The same of a zero-terminated text; null appends nothing.
IPL_ALWAYS_INLINE TextStatus AppendUtf8(PLString& text, const char* utf8) {
  return AppendUtf8(text, utf8, utf8 != nullptr ? std::char_traits<char>::length(utf8) : 0);
}

/// Returns whether each surrogate of text is one of a pair.
IPL_ALWAYS_INLINE bool IsWellFormed(const PLString& text) {
  const unsigned short* const units = text.GetBuffer();
  for (unsigned long i = 0; i < text.GetLength(); ++i) {
    if (units[i] < 0xD800 || units[i] > 0xDFFF) {
      continue;
    }
    // The zero behind the text is no low surrogate.
    if (units[i] > 0xDBFF || units[i + 1] < 0xDC00 || units[i + 1] > 0xDFFF) {
      return false;
    }
    ++i;
  }
  return true;
}

/// Replaces utf8 by the text, in UTF-8. The text's cache is neither used nor filled. Memory that std::string does not
/// get counts as exhausted memory; without exceptions it ends the process, as std::string does then.
IPL_ALWAYS_INLINE TextStatus ToUtf8(const PLString& text, std::string& utf8) {
  if (text.GetLength() == 0) {
    utf8.clear();
    return TextStatus::kConverted;
  }
  if (!IsWellFormed(text)) {
    return TextStatus::kMalformed;
  }
  const BytesOwner<char> bytes(text.CopyUTF16to8(text.GetBuffer()));
  if (!bytes) {
    return TextStatus::kNoMemory;
  }
#ifdef __EXCEPTIONS
  try {
#endif
    utf8.assign(bytes.get());
#ifdef __EXCEPTIONS
  } catch (...) {
    return TextStatus::kNoMemory;
  }
#endif
  return TextStatus::kConverted;
}

}  // namespace ipl

#endif  // IPL_UTF8TEXT_H
