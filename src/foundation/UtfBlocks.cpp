// SPDX-License-Identifier: Apache-2.0
#include "foundation/UtfBlocks.h"

#include <stdint.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__arm__)
#include <arm_neon.h>
#include <sys/auxv.h>
#endif

// These watch each byte that is read, and a block may reach behind a text.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define IPL_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define IPL_SANITIZED
#endif
#endif

namespace {

#if defined(__SSE2__)

constexpr unsigned long kBlock = 16;

__m128i Load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
void Store(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

void WidenBlock(__m128i bytes, unsigned short* units) {
  Store(units, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
  Store(units + kBlock / 2, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}

// Blocks are tested together, so that few instructions are spent on each byte.
template <unsigned int blocks>
bool WidenBlocks(const unsigned char* bytes, unsigned short* units) {
  __m128i block[blocks];
  __m128i all = _mm_setzero_si128();
#pragma GCC unroll 8
  for (unsigned int i = 0; i < blocks; ++i) {
    block[i] = Load(bytes + i * kBlock);
    all = _mm_or_si128(all, block[i]);
  }
  if (_mm_movemask_epi8(all) != 0) {
    return false;
  }
#pragma GCC unroll 8
  for (unsigned int i = 0; i < blocks; ++i) {
    WidenBlock(block[i], units + i * kBlock);
  }
  return true;
}

// These two do a whole block and return a bit for each character of it that ends the run.

unsigned int WidenSome(const unsigned char* bytes, unsigned short* units) {
  const __m128i block = Load(bytes);
  WidenBlock(block, units);
  return static_cast<unsigned int>(_mm_movemask_epi8(block));
}

unsigned int NarrowSome(const unsigned short* units, char* bytes) {
  const __m128i low = Load(units);
  const __m128i high = Load(units + kBlock / 2);
  const __m128i top = _mm_set1_epi16(static_cast<short>(0xFF80));
  const __m128i isAscii = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_and_si128(low, top), _mm_setzero_si128()),
                                          _mm_cmpeq_epi16(_mm_and_si128(high, top), _mm_setzero_si128()));
  Store(bytes, _mm_packus_epi16(low, high));
  return 0xFFFFU ^ static_cast<unsigned int>(_mm_movemask_epi8(isAscii));
}

unsigned int FindFirst(unsigned int stops) { return static_cast<unsigned int>(__builtin_ctz(stops)); }

// All bits of each unit up to the limit, no bit of the others.
__m128i FindUpTo(__m128i units, short limit) {
  return _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(limit)), _mm_setzero_si128());
}

#elif defined(__arm__)

// Not every processor has the unit that does this, and the compiler is not told that there is one.
#define IPL_NEON __attribute__((target("fpu=neon")))

constexpr unsigned long kBlock = 16;
constexpr unsigned long kNeonBit = 1UL << 12;  // HWCAP_NEON

const bool s_hasNeon = (::getauxval(AT_HWCAP) & kNeonBit) != 0;

IPL_NEON unsigned long WidenWithNeon(const unsigned char* bytes, unsigned long count, unsigned short* units) {
  unsigned long position = 0;
  for (; count - position >= 2 * kBlock; position += 2 * kBlock) {
    const uint8x16_t first = vld1q_u8(bytes + position);
    const uint8x16_t second = vld1q_u8(bytes + position + kBlock);
    const uint8x16_t all = vorrq_u8(first, second);
    const uint64x1_t top = vreinterpret_u64_u8(vorr_u8(vget_low_u8(all), vget_high_u8(all)));
    if ((vget_lane_u64(top, 0) & 0x8080808080808080U) != 0) {
      break;
    }
    vst1q_u16(units + position, vmovl_u8(vget_low_u8(first)));
    vst1q_u16(units + position + kBlock / 2, vmovl_u8(vget_high_u8(first)));
    vst1q_u16(units + position + kBlock, vmovl_u8(vget_low_u8(second)));
    vst1q_u16(units + position + kBlock + kBlock / 2, vmovl_u8(vget_high_u8(second)));
  }
  return position;
}

IPL_NEON unsigned long NarrowWithNeon(const unsigned short* units, unsigned long count, char* bytes) {
  unsigned long position = 0;
  for (; count - position >= kBlock; position += kBlock) {
    const uint16x8_t low = vld1q_u16(units + position);
    const uint16x8_t high = vld1q_u16(units + position + kBlock / 2);
    const uint16x8_t all = vorrq_u16(low, high);
    const uint64x1_t top = vreinterpret_u64_u16(vorr_u16(vget_low_u16(all), vget_high_u16(all)));
    if ((vget_lane_u64(top, 0) & 0xFF80FF80FF80FF80U) != 0) {
      break;
    }
    vst1q_u8(reinterpret_cast<unsigned char*>(bytes) + position, vcombine_u8(vmovn_u16(low), vmovn_u16(high)));
  }
  return position;
}

IPL_NEON unsigned long CountWithNeon(const unsigned short* units, unsigned long count, uint64_t& size) {
  constexpr unsigned long kLanes = 8;
  uint32x4_t more = vdupq_n_u32(0);  // bytes beyond the first: enough for all that fits 32 bits of address
  unsigned long position = 0;
  for (; count - position >= kLanes; position += kLanes) {
    const uint16x8_t block = vld1q_u16(units + position);
    // Each comparison gives -1 or 0.
    const uint16x8_t less = vaddq_u16(vcgtq_u16(block, vdupq_n_u16(0x7F)), vcgtq_u16(block, vdupq_n_u16(0x7FF)));
    more = vpadalq_u16(more, vsubq_u16(vdupq_n_u16(0), less));
  }
  const uint64x2_t sums = vpaddlq_u32(more);
  size += position + vgetq_lane_u64(sums, 0) + vgetq_lane_u64(sums, 1);
  return position;
}

#endif

#if !defined(__SSE2__)

// A few characters at a time, with what every processor has.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "characters are taken out of words");

constexpr unsigned long kWords = 8;

uint32_t LoadWord(const void* from) {
  uint32_t word = 0;
  ::memcpy(&word, from, sizeof(word));
  return word;
}

// Two units, of the lower two bytes.
void StoreUnits(unsigned short* units, uint32_t bytes) {
  const uint32_t word = (bytes & 0xFF) | (bytes & 0xFF00) << 8;
  ::memcpy(units, &word, sizeof(word));
}

// Two bytes, of two units.
uint32_t NarrowWord(uint32_t units) { return (units & 0xFF) | (units >> 8 & 0xFF00); }

unsigned long WidenWords(const unsigned char* bytes, unsigned long count, unsigned short* units) {
  unsigned long position = 0;
  for (; count - position >= kWords; position += kWords) {
    const uint32_t first = LoadWord(bytes + position);
    const uint32_t second = LoadWord(bytes + position + 4);
    if (((first | second) & 0x80808080) != 0) {
      break;
    }
    StoreUnits(units + position, first);
    StoreUnits(units + position + 2, first >> 16);
    StoreUnits(units + position + 4, second);
    StoreUnits(units + position + 6, second >> 16);
  }
  return position;
}

unsigned long NarrowWords(const unsigned short* units, unsigned long count, char* bytes) {
  unsigned long position = 0;
  for (; count - position >= 4; position += 4) {
    const uint32_t first = LoadWord(units + position);
    const uint32_t second = LoadWord(units + position + 2);
    if (((first | second) & 0xFF80FF80) != 0) {
      break;
    }
    const uint32_t word = NarrowWord(first) | NarrowWord(second) << 16;
    ::memcpy(bytes + position, &word, sizeof(word));
  }
  return position;
}

#endif

}  // namespace

#if defined(__SSE2__)

unsigned long WidenAsciiRun(const unsigned char* bytes, unsigned long count, unsigned short* units) {
  constexpr unsigned int kTogether = 8;
  unsigned long position = 0;
  while (count - position >= kBlock) {
    const unsigned int stops = WidenSome(bytes + position, units + position);
    if (stops != 0) {
      return position + FindFirst(stops);
    }
    position += kBlock;
    for (; count - position >= kTogether * kBlock; position += kTogether * kBlock) {
      if (!WidenBlocks<kTogether>(bytes + position, units + position)) {
        break;
      }
    }
  }
  return position;
}

unsigned long NarrowAsciiRun(const unsigned short* units, unsigned long count, char* bytes) {
  unsigned long position = 0;
  for (; count - position >= kBlock; position += kBlock) {
    const unsigned int stops = NarrowSome(units + position, bytes + position);
    if (stops != 0) {
      return position + FindFirst(stops);
    }
  }
  return position;
}

#elif defined(__arm__)

// Most runs in text with accents are too short for the wide registers: words come before them, and behind.
unsigned long WidenAsciiRun(const unsigned char* bytes, unsigned long count, unsigned short* units) {
  unsigned long position = WidenWords(bytes, count < kWords ? count : kWords, units);
  if (position == 0) {
    return 0;
  }
  if (s_hasNeon) {
    position += WidenWithNeon(bytes + position, count - position, units + position);
  }
  return position + WidenWords(bytes + position, count - position, units + position);
}

unsigned long NarrowAsciiRun(const unsigned short* units, unsigned long count, char* bytes) {
  const unsigned long position = s_hasNeon ? NarrowWithNeon(units, count, bytes) : 0;
  return position + NarrowWords(units + position, count - position, bytes + position);
}

#else

unsigned long WidenAsciiRun(const unsigned char* bytes, unsigned long count, unsigned short* units) {
  return WidenWords(bytes, count, units);
}

unsigned long NarrowAsciiRun(const unsigned short* units, unsigned long count, char* bytes) {
  return NarrowWords(units, count, bytes);
}

#endif

unsigned long CountUtf8Bytes(const unsigned short* units, unsigned long count, uint64_t& size) {
  unsigned long position = 0;
#if defined(__SSE2__)
  constexpr unsigned long kTogether = 4;
  constexpr unsigned long kUnits = kTogether * kBlock / 2;
  for (; count - position >= kUnits; position += kUnits) {
    __m128i block[kTogether];
    __m128i all = _mm_setzero_si128();
#pragma GCC unroll 4
    for (unsigned long i = 0; i < kTogether; ++i) {
      block[i] = Load(units + position + i * kBlock / 2);
      all = _mm_or_si128(all, block[i]);
    }
    size += kUnits;
    if (_mm_movemask_epi8(FindUpTo(all, 0x7F)) == 0xFFFF) {
      continue;
    }
    __m128i more = _mm_set1_epi16(2 * kTogether);  // bytes beyond the first, at most, in each lane
#pragma GCC unroll 4
    for (unsigned long i = 0; i < kTogether; ++i) {
      more = _mm_add_epi16(more, _mm_add_epi16(FindUpTo(block[i], 0x7F), FindUpTo(block[i], 0x7FF)));
    }
    // The lanes are small: their low bytes hold them.
    const __m128i sums = _mm_sad_epu8(more, _mm_setzero_si128());
    size += static_cast<unsigned int>(_mm_cvtsi128_si32(sums)) +
            static_cast<unsigned int>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(sums, sums)));
  }
#elif defined(__arm__)
  position = s_hasNeon ? CountWithNeon(units, count, size) : 0;
#else
  static_cast<void>(units);
  static_cast<void>(count);
  static_cast<void>(size);
#endif
  return position;
}

#if defined(__SSE2__) && !defined(IPL_SANITIZED)

// Reads whole blocks at their alignment, one after the other: no block without a unit of the text is touched, and none
// reaches into another page.
unsigned long CountUntilZero(const unsigned short* units) {
  const unsigned short* position = units;
  for (; reinterpret_cast<uintptr_t>(position) % kBlock != 0; ++position) {
    if (*position == 0) {
      return static_cast<unsigned long>(position - units);
    }
  }
  for (;; position += kBlock / 2) {
    const auto isZero =
        static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi16(Load(position), _mm_setzero_si128())));
    if (isZero != 0) {
      return static_cast<unsigned long>(position - units) + FindFirst(isZero) / 2;
    }
  }
}

#else

unsigned long CountUntilZero(const unsigned short* units) {
  unsigned long length = 0;
  while (units[length] != 0) {
    ++length;
  }
  return length;
}

#endif
