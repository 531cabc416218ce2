// SPDX-License-Identifier: Apache-2.0
#include "foundation/UtfBlocks.h"

#include <stdint.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_FEATURE_SIMD32)
#include <arm_acle.h>
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
  block[0] = Load(bytes);
  __m128i all = block[0];
  __m128i least = block[0];
#pragma GCC unroll 8
  for (unsigned int i = 1; i < blocks; ++i) {
    block[i] = Load(bytes + i * kBlock);
    all = _mm_or_si128(all, block[i]);
    least = _mm_min_epu8(least, block[i]);
  }
  if (_mm_movemask_epi8(_mm_or_si128(all, _mm_cmpeq_epi8(least, _mm_setzero_si128()))) != 0) {
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
  const __m128i isZero = _mm_cmpeq_epi8(block, _mm_setzero_si128());
  return static_cast<unsigned int>(_mm_movemask_epi8(_mm_or_si128(block, isZero)));
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

#else

// Words of four bytes, several to a block.
constexpr unsigned int kWords = 4;
constexpr unsigned long kBlock = kWords * sizeof(uint32_t);

// The top bit of each byte that is zero or not ASCII is set; others may be set above such a byte.
uint32_t FindStops(uint32_t word) {
#if defined(__ARM_FEATURE_SIMD32)
  return static_cast<uint32_t>(__qsub8(static_cast<int8x4_t>(word), 0x01010101));
#else
  return (word - 0x01010101U) | word;
#endif
}

struct UnitPairs {
  uint32_t first;
  uint32_t second;
};

UnitPairs Widen(uint32_t word) {
#if defined(__ARM_FEATURE_SIMD32)
  const auto even = static_cast<uint32_t>(__uxtb16(word));
  const auto odd = static_cast<uint32_t>(__uxtb16(word >> 8 | word << 24));
  return {(even & 0xFFFFU) | odd << 16, (odd & 0xFFFF0000U) | even >> 16};
#elif __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  return {(word & 0xFFU) | (word & 0xFF00U) << 8, (word >> 16 & 0xFFU) | (word >> 24) << 16};
#else
#error "the order of a word's bytes is not known"
#endif
}

bool WidenBlock(const unsigned char* bytes, unsigned short* units) {
  uint32_t words[kWords];
  memcpy(words, bytes, sizeof(words));
  uint32_t stops = 0;
  for (const uint32_t word : words) {
    stops |= FindStops(word);
  }
  if ((stops & 0x80808080U) != 0) {
    return false;
  }
  UnitPairs pairs[kWords];
  for (unsigned int i = 0; i < kWords; ++i) {
    pairs[i] = Widen(words[i]);
  }
  memcpy(units, pairs, sizeof(pairs));
  return true;
}

bool NarrowBlock(const unsigned short* units, char* bytes) {
  UnitPairs pairs[kWords];
  memcpy(pairs, units, sizeof(pairs));
  uint32_t all = 0;
  for (const UnitPairs& pair : pairs) {
    all |= pair.first | pair.second;
  }
  if ((all & 0xFF80FF80U) != 0) {
    return false;
  }
  uint32_t words[kWords];
  for (unsigned int i = 0; i < kWords; ++i) {
    words[i] = ((pairs[i].first | pairs[i].first >> 8) & 0xFFFFU) | (pairs[i].second | pairs[i].second >> 8) << 16;
  }
  memcpy(bytes, words, sizeof(words));
  return true;
}

#endif

}  // namespace

unsigned long WidenAsciiRun(const unsigned char* bytes, unsigned long count, unsigned short* units) {
  unsigned long position = 0;
#if defined(__SSE2__)
  constexpr unsigned int kTogether = 8;
  while (count - position >= kBlock) {
    const unsigned int stops = WidenSome(bytes + position, units + position);
    if (stops != 0) {
      return position + FindFirst(stops);
    }
    position += kBlock;
    while (count - position >= kTogether * kBlock && WidenBlocks<kTogether>(bytes + position, units + position)) {
      position += kTogether * kBlock;
    }
  }
#else
  while (count - position >= kBlock && WidenBlock(bytes + position, units + position)) {
    position += kBlock;
  }
#endif
  return position;
}

unsigned long NarrowAsciiRun(const unsigned short* units, unsigned long count, char* bytes) {
  unsigned long position = 0;
#if defined(__SSE2__)
  while (count - position >= kBlock) {
    const unsigned int stops = NarrowSome(units + position, bytes + position);
    if (stops != 0) {
      return position + FindFirst(stops);
    }
    position += kBlock;
  }
#else
  while (count - position >= kBlock && NarrowBlock(units + position, bytes + position)) {
    position += kBlock;
  }
#endif
  return position;
}

unsigned long CountUtf8Bytes(const unsigned short* units, unsigned long count, uint64_t& size) {
  unsigned long position = 0;
#if defined(__SSE2__)
  constexpr unsigned long kLanes = 8;
  constexpr unsigned long kRound = 0x1000 * kLanes;  // sums of 16 bits hold what so many units add
  bool isZeroFound = false;
  while (count - position >= kLanes && !isZeroFound) {
    const unsigned long begin = position;
    const unsigned long end = position + (count - position < kRound ? (count - position) / kLanes * kLanes : kRound);
    __m128i saved = _mm_setzero_si128();  // bytes that are not needed, of three for each unit
    for (; position < end; position += kLanes) {
      const __m128i block = Load(units + position);
      isZeroFound = _mm_movemask_epi8(_mm_cmpeq_epi16(block, _mm_setzero_si128())) != 0;
      if (isZeroFound) {
        break;
      }
      saved = _mm_sub_epi16(saved, _mm_add_epi16(FindUpTo(block, 0x7F), FindUpTo(block, 0x7FF)));
    }
    __m128i sums = _mm_madd_epi16(saved, _mm_set1_epi16(1));
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, _MM_SHUFFLE(1, 0, 3, 2)));
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, _MM_SHUFFLE(2, 3, 0, 1)));
    size += 3 * (position - begin) - static_cast<unsigned int>(_mm_cvtsi128_si32(sums));
  }
#else
  for (; position < count && units[position] != 0; ++position) {
    size += 1U + (units[position] >= 0x80 ? 1U : 0U) + (units[position] >= 0x800 ? 1U : 0U);
  }
#endif
  return position;
}
