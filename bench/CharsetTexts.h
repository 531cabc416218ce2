// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_CHARSETTEXTS_H
#define IPL_BENCH_CHARSETTEXTS_H

#include <string>

#include "Bench.h"

/// 1 KiB of a character set, and the same text in UTF-16.
struct CharsetText {
  const char* name;
  std::string bytes;
  std::u16string units;
};

inline CharsetText MakeCharsetText(const char* name, const std::string& bytes, const std::u16string& units) {
  CharsetText text = {name, "", u""};
  while (text.bytes.size() < 1024) {
    text.bytes += bytes;
    text.units += units;
  }
  return text;
}

/// Measures an operation on each text: function(text) converts it from scratch and returns 0 if that went wrong.
template <typename Function>
void MeasureCharsets(const std::string& operation, const std::string& who, Function function) {
  static const CharsetText texts[] = {
      MakeCharsetText("ISO-8859-1", "Gr\xFC\xDF Gott, d\xE9j\xE0 vu ", u"Gr\u00FC\u00DF Gott, d\u00E9j\u00E0 vu "),
      MakeCharsetText("SHIFT_JIS", "\x93\xFA\x96\x7B\x8C\xEA \x83\x65\x83\x58\x83\x67!", u"日本語 テスト!"),
  };
  for (const CharsetText& text : texts) {
    Measure(operation + "." + text.name + "/" + who, [function, &text](State& state) {
      while (state.KeepRunning()) {
        if (function(text) == 0) {
          state.SkipWithError("not converted");
        }
      }
    });
  }
}

#endif  // IPL_BENCH_CHARSETTEXTS_H
