// SPDX-License-Identifier: Apache-2.0
// Strings against a second, slow converter that is written down from the rules.
#include <ipl/PLString.h>

#include <random>
#include <string>

#include "support/KernelFixture.h"

namespace {

class UtfTest : public KernelFixture {};

std::u16string UnitsOf(uint32_t character) {
  if (character >= 0x110000 || (character >= 0xD800 && character <= 0xDFFF)) {
    return u"\uFFFD";
  }
  if (character < 0x10000) {
    return {static_cast<char16_t>(character)};
  }
  return {static_cast<char16_t>(0xD7C0 + character / 0x400), static_cast<char16_t>(0xDC00 + character % 0x400)};
}

/// Each byte counts with what it has above its mark, whether the mark is there or not; the sum wraps at 32 bits.
std::u16string Decode(const std::string& bytes) {
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

std::string BytesOf(uint32_t character) {
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

std::string Encode(const std::u16string& text) {
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

void ExpectDecodes(const std::string& bytes, const std::u16string& text) {
  PLString string;
  string.AppendUTF8(bytes.data(), bytes.size());
  ASSERT_EQ(std::u16string(string.GetBuffer(), string.GetBuffer() + string.GetLength()), text) << bytes;
}

void ExpectEncodes(const std::u16string& text, const std::string& bytes) {
  PLString string;
  string.Append(reinterpret_cast<const unsigned short*>(text.c_str()));
  ASSERT_EQ(string.GetUTF8(), bytes);
}

TEST_F(UtfTest, EveryCharacterGoesThereAndBack) {
  std::string bytes;
  std::u16string text;
  for (uint32_t character = 1; character < 0x110000; ++character) {
    if (character == 0xD800) {
      character = 0xE000;
    }
    const std::string sequence = BytesOf(character);
    unsigned short units[] = {1, 1};
    ASSERT_EQ(PLString()._UTF8toU16Char(reinterpret_cast<const unsigned char*>(sequence.data()), &units[0], &units[1]),
              sequence.size());
    ASSERT_EQ(std::u16string(units, units + (units[1] == 0 ? 1 : 2)), UnitsOf(character));
    bytes += sequence;
    text += UnitsOf(character);
  }
  ExpectDecodes(bytes, text);
  ExpectEncodes(text, bytes);
}

TEST_F(UtfTest, AnyBytesAndAnyUnitsConvertAsTheRulesSay) {
  static const unsigned char kBytes[] = {0x00, 0x41, 0x7F, 0x80, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC3, 0xDF, 0xE0,
                                         0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xF7, 0xF8, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF};
  static const char16_t kUnits[] = {0x41,   0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                                    0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF};
  std::minstd_rand random(1);
  for (unsigned round = 0; round < 20000 && !HasFatalFailure(); ++round) {
    std::string bytes(random() % 24, 'a');
    for (char& byte : bytes) {
      byte = static_cast<char>(random() % 2 != 0 ? kBytes[random() % 24] : random() % 256);
    }
    std::u16string text(random() % 12, u'a');
    for (char16_t& unit : text) {
      unit = kUnits[random() % 12];
    }
    ExpectDecodes(bytes, Decode(bytes));
    ExpectEncodes(text, Encode(text));
  }
}

}  // namespace
