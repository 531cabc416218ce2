// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_WORDCOUNT_LETTERS_H
#define IPL_EXAMPLES_WORDCOUNT_LETTERS_H

namespace pipeline {

/// Whether a UTF-16 unit belongs to a word. Of ASCII, letters and digits do; of the rest, everything but the signs and
/// spaces of Latin-1, the ogham space, the general and CJK punctuation, the byte-order mark and the replacement
/// character. So words of all scripts are found, without a table of them.
inline bool IsWordUnit(unsigned short unit) {
  if (unit < 0x80) {
    const unsigned int letter = unit | 0x20U;
    return (letter >= 'a' && letter <= 'z') || (unit >= '0' && unit <= '9');
  }
  if (unit < 0xC0) {
    return unit == 0xAA || unit == 0xB5 || unit == 0xBA;  // ordinal indicators, micro sign
  }
  const bool isSign = unit == 0xD7 || unit == 0xF7 || unit == 0x1680 || (unit >= 0x2000 && unit <= 0x206F) ||
                      (unit >= 0x3000 && unit <= 0x303F) || unit == 0xFEFF || unit == 0xFFFD;
  return !isSign;
}

/// The lower-case form of a capital letter of ASCII, Latin-1, Greek or the basic Cyrillic alphabets, and the common
/// form of the Greek sigma at a word's end; every other unit as it is.
inline unsigned short FoldCase(unsigned short unit) {
  struct Range {
    unsigned short first;
    unsigned short last;
    unsigned short distance;
  };
  static constexpr Range kCapitals[] = {
      {'A', 'Z', 32},     {0xC0, 0xD6, 32},   {0xD8, 0xDE, 32},    // ASCII, Latin-1
      {0x386, 0x386, 38}, {0x388, 0x38A, 37}, {0x38C, 0x38C, 64},  // Greek with an accent
      {0x38E, 0x38F, 63}, {0x391, 0x3A1, 32}, {0x3A3, 0x3AB, 32},  // Greek
      {0x3C2, 0x3C2, 1},  {0x400, 0x40F, 80}, {0x410, 0x42F, 32},  // final sigma, Cyrillic
  };
  for (const Range& range : kCapitals) {
    if (unit >= range.first && unit <= range.last) {
      return static_cast<unsigned short>(unit + range.distance);
    }
  }
  return unit;
}

}  // namespace pipeline

#endif  // IPL_EXAMPLES_WORDCOUNT_LETTERS_H
