// SPDX-License-Identifier: Apache-2.0
#include "foundation/Utf.h"

#include <string.h>

#include "foundation/UtfBlocks.h"

namespace {

constexpr uint32_t kReplacement = 0xFFFD;

// What the markers of a sequence's bytes add up to when they are shifted along with the payload, by sequence length.
constexpr uint32_t kMarkerSum[] = {0, 0x00000000, 0x00003080, 0x000E2080, 0x03C82080, 0xFA082080, 0x82082080};

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

// Whether a unit is a character of three bytes; the seldom ones behind the surrogates are left out.
constexpr bool NeedsThreeBytes(uint32_t value) { return value - 0x800 < 0xD800 - 0x800; }

unsigned char* StoreThreeBytes(uint32_t value, unsigned char* out) {
  out[0] = static_cast<unsigned char>(0xE0 | value >> 12);
  out[1] = static_cast<unsigned char>(0x80 | (value >> 6 & 0x3F));
  out[2] = static_cast<unsigned char>(0x80 | (value & 0x3F));
  return out + 3;
}

// A pair of surrogates is handled as one number: the first unit in its low half, as it lies in memory.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "pairs, and the four bytes they become, are moved as words");

uint32_t LoadPair(const unsigned short* units) {
  uint32_t pair = 0;
  ::memcpy(&pair, units, sizeof(pair));
  return pair;
}

bool StartsWithPair(const unsigned short* units, const unsigned short* end) {
  return end - units >= 2 && (LoadPair(units) & 0xFC00FC00) == 0xDC00D800;
}

void StoreFourBytes(uint32_t pair, unsigned char* out) {
  const uint32_t value = 0x10000 + ((pair & 0x3FF) << 10) + (pair >> 16 & 0x3FF);
  const uint32_t word =
      0x808080F0 | value >> 18 | (value >> 12 & 0x3F) << 8 | (value >> 6 & 0x3F) << 16 | (value & 0x3F) << 24;
  ::memcpy(out, &word, sizeof(word));
}

// Blocks of ASCII are tried for only where a few such characters in a row promise more of them: a failed try costs.
constexpr unsigned int kPromising = 2;

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
  const unsigned char* const end = bytes + count;
  const unsigned short* const first = units;
  unsigned int run = 0;  // ASCII characters before this position
  while (bytes != end) {
    const unsigned char lead = *bytes;
    if (lead < 0x80) {
      *units++ = lead;
      ++bytes;
      if (++run == kPromising) {
        const unsigned long widened = WidenAsciiRun(bytes, static_cast<unsigned long>(end - bytes), units);
        bytes += widened;
        units += widened;
        run = 0;
      }
      continue;
    }
    run = 0;
    if (lead < 0xC0) {
      *units++ = lead;
      ++bytes;
      continue;
    }
    // The frequent lengths without a loop, where the outcome is usual text.
    const auto left = static_cast<unsigned long>(end - bytes);
    if (lead < 0xE0 && left >= 2) {
      const uint32_t value = (static_cast<uint32_t>(lead) << 6) + bytes[1] - kMarkerSum[2];
      if (value < 0x8000) {
        *units++ = static_cast<unsigned short>(value);
        bytes += 2;
        continue;
      }
    } else if (lead < 0xF0 && left >= 3) {
      const uint32_t value =
          (static_cast<uint32_t>(lead) << 12) + (static_cast<uint32_t>(bytes[1]) << 6) + bytes[2] - kMarkerSum[3];
      if (value < 0xD800) {
        *units++ = static_cast<unsigned short>(value);
        bytes += 3;
        continue;
      }
    }
    if (lead >= 0xF0 && lead < 0xF8 && left >= 4) {
      const uint32_t value = (static_cast<uint32_t>(lead) << 18) + (static_cast<uint32_t>(bytes[1]) << 12) +
                             (static_cast<uint32_t>(bytes[2]) << 6) + bytes[3] - kMarkerSum[4];
      if (value - 0x10000 < 0x100000) {
        units[0] = static_cast<unsigned short>(0xD7C0 + (value >> 10));
        units[1] = static_cast<unsigned short>(0xDC00 + (value & 0x3FF));
        units += 2;
        bytes += 4;
        continue;
      }
    }
    if (SequenceLength(lead) > left) {
      break;
    }
    unsigned short second = 0;
    bytes += DecodeUtf8Sequence(bytes, *units, second);
    ++units;
    if (second != 0) {
      *units++ = second;
    }
  }
  return static_cast<unsigned long>(units - first);
}

uint64_t MaximalUtf8Size(const unsigned short* units, unsigned long count) {
  uint64_t size = 0;
  for (unsigned long i = CountUtf8Bytes(units, count, size); i < count; ++i) {
    size += 1U + (units[i] >= 0x80 ? 1U : 0U) + (units[i] >= 0x800 ? 1U : 0U);
  }
  return size;
}

// Text comes in runs of one kind, most of which are stayed with for as long as they last.
unsigned long EncodeUtf8(const unsigned short* units, unsigned long count, char* bytes) {
  const unsigned short* const end = units + count;
  auto* out = reinterpret_cast<unsigned char*>(bytes);
  while (units != end) {
    uint32_t value = *units;
    if (value < 0x80) {
      *out++ = static_cast<unsigned char>(value);
      if (++units == end) {
        break;
      }
      value = *units;
      if (value < 0x80) {
        *out++ = static_cast<unsigned char>(value);
        ++units;
        const unsigned long narrowed =
            NarrowAsciiRun(units, static_cast<unsigned long>(end - units), reinterpret_cast<char*>(out));
        units += narrowed;
        out += narrowed;
        continue;
      }
    }
    if (value < 0x800) {
      out[0] = static_cast<unsigned char>(0xC0 | value >> 6);
      out[1] = static_cast<unsigned char>(0x80 | (value & 0x3F));
      out += 2;
      ++units;
      continue;
    }
    if (IsHighSurrogate(value)) {
      if (StartsWithPair(units, end)) {
        do {
          StoreFourBytes(LoadPair(units), out);
          units += 2;
          out += 4;
        } while (StartsWithPair(units, end));
        continue;
      }
      value = kReplacement;
    }
    do {
      out = StoreThreeBytes(value, out);
      value = ++units != end ? *units : 0;
    } while (NeedsThreeBytes(value));
  }
  return static_cast<unsigned long>(out - reinterpret_cast<unsigned char*>(bytes));
}
