// SPDX-License-Identifier: Apache-2.0
#include "services/RandomHash.h"

namespace {

// The difference of a value spread upwards and its top bits, taken with their sign.
uint32_t Spread(uint32_t value) {
  const auto top = static_cast<uint32_t>(static_cast<int32_t>(value) >> 21);
  return (value ^ (value << 13)) - top;
}

constexpr uint32_t RotateRight(uint32_t value, unsigned int bits) { return (value >> bits) | (value << (32 - bits)); }

}  // namespace

uint32_t HashRandom(uint32_t value) {
  const uint32_t a = Spread(value);
  const uint32_t b = ((a * (a * a * 15731U + 789221U) + 1376312589U) & 0x7FFFFFFFU) + a;
  return Spread(b);
}

void FillFromText(const char* text, unsigned char* buffer, unsigned long size) {
  uint32_t hash1 = 0;
  uint32_t hash2 = 0;
  for (; *text != '\0'; ++text) {
    const auto byte = static_cast<unsigned char>(*text);
    hash1 = byte + RotateRight(hash1, 27);
    hash2 = byte + RotateRight(hash2, 26);
  }
  uint32_t word = HashRandom((hash1 & 0xF0F0F0F0U) | (hash2 & 0x0F0F0F0FU));
  uint32_t following = HashRandom((hash2 & 0xF0F0F0F0U) | (hash1 & 0x0F0F0F0FU));
  for (unsigned long position = 0; position < size; position += 4) {
    for (unsigned long i = 0; i < 4 && position + i < size; ++i) {
      buffer[position + i] = static_cast<unsigned char>(word >> (8 * i));
    }
    word = following;
    following = HashRandom(25173U * word + 13849U);
  }
}
