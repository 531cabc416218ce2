// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_BENCH_UTFTEXTS_H
#define IPL_BENCH_UTFTEXTS_H

#include <string>
#include <vector>

#include "Bench.h"

struct UtfText {
  const char* name;
  std::string utf8;
  std::u16string utf16;
};

/// The texts that every conversion is measured with: 4 KiB each of one sort, a path of 40 bytes, and 1 MiB of ASCII.
const std::vector<UtfText>& GetUtfTexts();

/// Room for the conversion of any of them.
constexpr size_t kUtfRoom = size_t{3} << 20;

/// Measures Decode: function(bytes, count, units) converts to UTF-16 and returns how many units there are.
template <typename Function>
void MeasureDecode(const std::string& who, Function function, const std::string& operation = "Decode") {
  for (const UtfText& text : GetUtfTexts()) {
    Measure(operation + "." + text.name + "/" + who, [function, &text](State& state) {
      std::u16string units(kUtfRoom, u'\0');
      while (state.KeepRunning()) {
        benchmark::DoNotOptimize(function(text.utf8.data(), text.utf8.size(), units.data()));
        benchmark::ClobberMemory();
      }
    });
  }
}

/// Measures Encode: function(units, count, bytes) converts to UTF-8 and returns how many bytes there are.
template <typename Function>
void MeasureEncode(const std::string& who, Function function, const std::string& operation = "Encode") {
  for (const UtfText& text : GetUtfTexts()) {
    Measure(operation + "." + text.name + "/" + who, [function, &text](State& state) {
      std::string bytes(kUtfRoom, '\0');
      while (state.KeepRunning()) {
        benchmark::DoNotOptimize(function(text.utf16.data(), text.utf16.size(), bytes.data()));
        benchmark::ClobberMemory();
      }
    });
  }
}

#endif  // IPL_BENCH_UTFTEXTS_H
