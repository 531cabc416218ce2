// SPDX-License-Identifier: Apache-2.0
#include "foundation/Utf.h"

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

// What the markers of a sequence's bytes add up to when they are shifted along with the payload, by sequence length.
constexpr uint32_t kMarkerSum[] = {0, 0x00000000, 0x00003080, 0x000E2080, 0x03C82080, 0xFA082080, 0x82082080};

constexpr uint32_t kFirstByteMark[] = {0x00, 0x00, 0xC0, 0xE0, 0xF0};

constexpr unsigned int SequenceLength(unsigned char lead) {
  if (lead < 0xC0) {
    return 1;
  }
  if (lead < 0xE0) {
    return 2;
  }
  if (lead < 0xF0) {
    return 3;
  }
  if (lead < 0xF8) {
    return 4;
  }
  return lead < 0xFC ? 5 : 6;
}

constexpr bool IsSurrogate(uint32_t value) { return value >= 0xD800 && value <= 0xDFFF; }
constexpr bool IsHighSurrogate(uint32_t value) { return value >= 0xD800 && value <= 0xDBFF; }
constexpr bool IsLowSurrogate(uint32_t value) { return value >= 0xDC00 && value <= 0xDFFF; }

unsigned int EncodedLength(uint32_t value) {
  if (value < 0x80) {
    return 1;
  }
  if (value < 0x800) {
    return 2;
  }
  return value < 0x10000 ? 3 : 4;
}

}  // namespace

unsigned int DecodeUtf8Sequence(const unsigned char* bytes, unsigned short& unit1, unsigned short& unit2) {
  const unsigned int length = SequenceLength(bytes[0]);
  uint32_t value = 0;
  for (unsigned int i = 0; i < length; ++i) {
    value = (value << 6) + bytes[i];
  }
  value -= kMarkerSum[length];
  unit2 = 0;
  if (value < 0x10000 && !IsSurrogate(value)) {
    unit1 = static_cast<unsigned short>(value);
  } else if (value >= 0x10000 && value < 0x110000) {
    unit1 = static_cast<unsigned short>(0xD800 + ((value - 0x10000) >> 10));
    unit2 = static_cast<unsigned short>(0xDC00 + ((value - 0x10000) & 0x3FF));
  } else {
    unit1 = kReplacement;
  }
  return length;
}

unsigned long DecodeUtf8(const unsigned char* bytes, unsigned long count, unsigned short* units) {
  unsigned long position = 0;
  while (position < count && bytes[position] < 0xC0) {
    units[position] = bytes[position];
    ++position;
  }
  unsigned long written = position;
  while (position < count && SequenceLength(bytes[position]) <= count - position) {
    unsigned short second = 0;
    position += DecodeUtf8Sequence(bytes + position, units[written], second);
    ++written;
    if (second != 0) {
      units[written++] = second;
    }
  }
  return written;
}

uint64_t MaximalUtf8Size(const unsigned short* units, unsigned long count) {
  uint64_t size = 0;
  for (unsigned long i = 0; i < count; ++i) {
    size += EncodedLength(units[i]);
  }
  return size;
}

unsigned long EncodeUtf8(const unsigned short* units, unsigned long count, char* bytes) {
  unsigned long written = 0;
  for (unsigned long i = 0; i < count; ++i) {
    uint32_t value = units[i];
    if (IsHighSurrogate(value)) {
      if (i + 1 < count && IsLowSurrogate(units[i + 1])) {
        value = ((value - 0xD800) << 10) + (units[i + 1] - 0xDC00U) + 0x10000;
        ++i;
      } else {
        value = kReplacement;
      }
    }
    const unsigned int length = EncodedLength(value);
    for (unsigned int position = length - 1; position > 0; --position) {
      bytes[written + position] = static_cast<char>(0x80 | (value & 0x3F));
      value >>= 6;
    }
    bytes[written] = static_cast<char>(kFirstByteMark[length] | value);
    written += length;
  }
  return written;
}
