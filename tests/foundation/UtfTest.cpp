// SPDX-License-Identifier: Apache-2.0
// Strings against a second, slow converter that is written down from the rules.
#include <random>

#include "support/KernelFixture.h"
#include "support/Text.h"

using UtfTest = KernelFixture;

static std::u16string UnitsOf(uint32_t character) {
  if (character >= 0x110000 || (character >= 0xD800 && character <= 0xDFFF)) {
    return u"\uFFFD";
  }
  if (character < 0x10000) {
    return {static_cast<char16_t>(character)};
  }
  return {static_cast<char16_t>(0xD7C0 + character / 0x400), static_cast<char16_t>(0xDC00 + character % 0x400)};
}

/// Each byte counts with what it has above its mark, whether the mark is there or not; the sum wraps at 32 bits.
static std::u16string Decode(const std::string& bytes) {
  static const uint32_t kLeadMarks[] = {0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0x100};
  std::u16string text;
  for (size_t i = 0; i < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    size_t length = 1;
    while (lead >= kLeadMarks[length]) {
      ++length;
    }
    if (i + length > bytes.size()) {
      break;
    }
    uint32_t character = lead - kLeadMarks[length - 1];
    for (const size_t end = i + length; ++i < end;) {
      character = character * 64 + static_cast<unsigned char>(bytes[i]) - 0x80;
    }
    text += UnitsOf(character);
  }
  return text.substr(0, text.find(u'\0'));
}

static std::string BytesOf(uint32_t character) {
  if (character < 0x80) {
    return {static_cast<char>(character)};
  }
  std::string tail;
  uint32_t leadRoom = 0x40;  // how many values the lead byte can hold
  do {
    tail = static_cast<char>(0x80 + character % 64) + tail;
    character /= 64;
    leadRoom /= 2;
  } while (character >= leadRoom);
  return static_cast<char>(0x100 - 2 * leadRoom + character) + tail;
}

static std::string Encode(const std::u16string& text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool high = text[i] / 0x400 == 0xD800 / 0x400;
    if (high && i + 1 < text.size() && text[i + 1] / 0x400 == 0xDC00 / 0x400) {
      bytes += BytesOf(0x10000U + text[i] % 0x400 * 0x400U + text[i + 1] % 0x400);
      ++i;
    } else {
      bytes += BytesOf(high ? 0xFFFD : text[i]);
    }
  }
  return bytes;
}

TEST_F(UtfTest, AnyBytesAndAnyUnitsConvertAsTheRulesSay) {
  static const unsigned char kBytes[] = {0x00, 0x41, 0x7F, 0x80, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC3, 0xDF, 0xE0,
                                         0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xF7, 0xF8, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF};
  static const char16_t kUnits[] = {0x41,   0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                                    0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF};
  std::minstd_rand random(1);
  for (unsigned round = 0; round < 5000; ++round) {
    const unsigned spacing = round % 2 == 0 ? 1 : 40;  // ASCII is converted in blocks where there is enough of it
    std::string bytes(random() % 200, 'a');
    for (size_t i = 0; i < bytes.size(); ++i) {
      const auto special = static_cast<char>(random() % 2 != 0 ? kBytes[random() % 24] : random() % 256);
      bytes[i] = random() % spacing == 0 ? special : static_cast<char>('a' + i % 23);
    }
    std::u16string text(random() % 200, u'a');
    for (size_t i = 0; i < text.size(); ++i) {
      const auto special = static_cast<char16_t>(random() % 2 != 0 ? kUnits[random() % 12] : 1 + random() % 0xFFFF);
      text[i] = random() % spacing == 0 ? special : static_cast<char16_t>('a' + i % 23);
    }
    ASSERT_EQ(TextOf(MakeText(bytes)), Decode(bytes)) << bytes;
    ASSERT_EQ(MakeText(text).GetUTF8(), Encode(text));
  }
}
