// SPDX-License-Identifier: Apache-2.0
#include "TextReader/CharsetDecoder.h"

#include <inttypes.h>
#include <stdio.h>
#include <string.h>

namespace pipeline {

namespace {

enum ConversionStatus : unsigned int { kConverted = 0, kInvalid = 2, kIncomplete = 3, kUnknownCharSet = 5 };

const unsigned short kSubstitute[] = {0x1A, 0};
const unsigned short kByteOrderMark = 0xFEFF;

bool Append(PLString& text, const unsigned short* units) {
  const unsigned long length = text.GetLength();
  text.Append(units);
  return units[0] == 0 || text.GetLength() > length;
}

}  // namespace

/// The bytes of a zero character tell how wide the set's units are: fewer are incomplete.
CharsetDecoder::CharsetDecoder(IPLKernel* kernel, const char* charSet)
    : m_pKernel(kernel), m_pCharSet(charSet), m_pConvertFrom(charSet) {
  static const char kZeros[4] = {};
  PLString ignored;
  unsigned long consumed = 0;
  if (charSet == nullptr || charSet[0] == '\0' || Convert(kZeros, 1, ignored, consumed) == kUnknownCharSet) {
    return;
  }
  m_unitSize = 1;
  while (m_unitSize < sizeof(kZeros) && Convert(kZeros, m_unitSize, ignored, consumed) == kIncomplete) {
    m_unitSize *= 2;
  }
}

unsigned int CharsetDecoder::Convert(const char* bytes, size_t count, PLString& text, unsigned long& consumed) const {
  consumed = 0;
  return m_pKernel->MultiByteCharacterStringToPLString(bytes, static_cast<unsigned long>(count), text, m_pConvertFrom,
                                                       consumed, false);
}

void CharsetDecoder::BeginFile(const char* name) {
  m_pName = name;
  m_pConvertFrom = m_pCharSet;
  m_offset = m_runStart = m_runLength = m_untold = 0;
  m_told = 0;
}

/// Sets like UTF-16 take the byte order from a mark, which only the first piece has. Without one it is big-endian.
void CharsetDecoder::ChooseByteOrder(const char* bytes) {
  const bool isLittleEndian = bytes[0] == '\xFF' && bytes[1] == '\xFE';
  PLString ignored;
  unsigned long consumed = 0;
  snprintf(m_orderedName, sizeof(m_orderedName), "%s%s", m_pCharSet, isLittleEndian ? "LE" : "BE");
  m_pConvertFrom = m_orderedName;
  if (Convert(bytes, 0, ignored, consumed) == kUnknownCharSet) {
    m_pConvertFrom = m_pCharSet;  // the name has an order already
  }
}

bool CharsetDecoder::Decode(char* bytes, size_t count, bool atEnd, bool isFull, PLString& text, size_t& done) {
  done = 0;
  if (m_offset == 0 && m_unitSize > 1 && count > 0) {
    if (count >= m_unitSize) {
      ChooseByteOrder(bytes);
    } else if (!atEnd) {
      return true;
    }
  }
  while (done < count) {
    size_t taken = CountZeros(bytes + done, count - done);
    for (size_t i = 0; i < taken; i += m_unitSize) {
      if (!Append(text, kSubstitute)) {
        return false;
      }
    }
    if (taken == 0) {
      // The caller can come back with the rest and more bytes behind it.
      const bool mayWait = !atEnd && (!isFull || done > 0);
      const size_t length = PieceLength(bytes + done, count - done, mayWait);
      const bool isLast = done + length == count;
      if (!DecodePiece(bytes + done, length, mayWait && isLast, atEnd && isLast, text, taken)) {
        return false;
      }
    }
    if (taken == 0) {
      break;
    }
    done += taken;
    m_offset += taken;
  }
  return true;
}

/// Returns how many bytes from the start are zero characters.
size_t CharsetDecoder::CountZeros(const char* bytes, size_t count) const {
  size_t zeros = 0;
  while (zeros < count && bytes[zeros] == '\0') {
    ++zeros;
  }
  return zeros - zeros % m_unitSize;
}

/// Returns how many bytes shall be decoded at once: whole lines, as many as a piece holds. 0: more bytes are needed.
size_t CharsetDecoder::PieceLength(const char* bytes, size_t count, bool mayWait) const {
  const size_t room = count < kPieceSize ? count : kPieceSize;
  size_t length = room;
  if (m_unitSize == 1) {
    const void* lineEnd = memrchr(bytes, '\n', room);
    if (lineEnd == nullptr) {
      lineEnd = memchr(bytes + room, '\n', count - room);
    }
    if (lineEnd != nullptr) {
      length = static_cast<size_t>(static_cast<const char*>(lineEnd) - bytes) + 1;
    } else {
      length = mayWait ? 0 : count;
    }
  }
  for (size_t i = 0; i + m_unitSize <= length; i += m_unitSize) {
    if (CountZeros(bytes + i, m_unitSize) > 0) {
      return i;
    }
  }
  return length;
}

/// Returns where a piece may be cut before an invalid sequence: at a line's start, or anywhere if the set's characters
/// are wide or the line is long. 0: nowhere.
size_t CharsetDecoder::CutBefore(const char* bytes, size_t invalid) const {
  if (m_unitSize > 1) {
    return invalid;
  }
  const void* lineEnd = memrchr(bytes, '\n', invalid);
  if (lineEnd != nullptr) {
    return static_cast<size_t>(static_cast<const char*>(lineEnd) - bytes) + 1;
  }
  return invalid > kPieceSize / 8 ? invalid : 0;
}

/// An invalid sequence is taken out and its line so far converted again with what follows it: so neither the state gets
/// lost in which the rest stands, nor a last character that some sets hold back until they see the next one. What
/// follows stays where it is; the line so far moves.
/// isLast: nothing follows the piece. done: 0 if the piece is the beginning of one character, and mayWait.
bool CharsetDecoder::DecodePiece(char* bytes, size_t length, bool mayWait, bool isLast, PLString& text, size_t& done) {
  PLString part;
  size_t left = length;  // without what was taken out
  done = length;
  for (;;) {
    unsigned long consumed = 0;
    const unsigned int status = Convert(bytes, left, part, consumed);
    if (status == kConverted) {
      break;
    }
    if (consumed >= left || (status != kInvalid && status != kIncomplete)) {
      return false;
    }
    size_t cut = 0;
    if (status == kInvalid) {
      cut = CutBefore(bytes, consumed);
    } else if (!isLast) {
      cut = consumed;
    }
    if (cut > 0 || (status == kIncomplete && mayWait)) {
      done -= left - cut;
      left = cut;
      if (cut == 0) {
        break;
      }
      continue;
    }
    const size_t rest = left - consumed;
    const size_t skipped = rest < m_unitSize || (status == kIncomplete && isLast) ? rest : m_unitSize;
    Skip(m_offset + (done - left) + consumed, skipped);
    memmove(bytes + skipped, bytes, consumed);
    bytes += skipped;
    left -= skipped;
  }
  const unsigned short* units = part.GetBuffer();
  return Append(text, m_offset == 0 && units[0] == kByteOrderMark ? units + 1 : units);
}

void CharsetDecoder::Skip(uint64_t offset, size_t count) {
  if (offset != m_runStart + m_runLength) {
    TellRun();
    m_runStart = offset;
  }
  m_runLength += count;
  m_skipped += count;
}

void CharsetDecoder::TellRun() {
  if (m_runLength == 0) {
    return;
  }
  if (m_told < kMaxTold) {
    fprintf(stderr, "TextReader: %s: not %s at byte %" PRIu64 "; bytes skipped: %" PRIu64 "\n", m_pName, m_pCharSet,
            m_runStart, m_runLength);
    ++m_told;
  } else {
    m_untold += m_runLength;
  }
  m_runLength = 0;
}

void CharsetDecoder::EndFile() {
  TellRun();
  if (m_untold > 0) {
    fprintf(stderr, "TextReader: %s: not %s at more places; bytes skipped: %" PRIu64 "\n", m_pName, m_pCharSet,
            m_untold);
    m_untold = 0;
  }
}

}  // namespace pipeline
