// SPDX-License-Identifier: Apache-2.0
#include <stdint.h>

#include <string>
#include <string_view>

#include <ipl/IPLKernel.h>
#include <ipl/PLMem.h>
#include <ipl/PLString.h>

#include "GateCases.h"

namespace {

// Texts of two lengths in bytes: the difference is what the bytes alone cost. They consist of whole blocks of any size
// that is worked on at once, and are so long that malloc finds memory for both in the same way.
constexpr unsigned long kShort = 1920, kLong = 3840;

struct Sample {
  const char* name;
  std::string_view text;
};

constexpr Sample kSamples[] = {
    {"ascii", "a"},
    {"latin", "Zwölf Boxkämpfer jagen Viktor quer über den großen Sylter Deich. Déjà vu! "},
    {"cjk", "日本語の文章は漢字と仮名を交ぜて書く。春眠暁を覚えず啼鳥を聞く。"},
    {"emoji", "😀😁😂🤣😃😄😅😆😉😊"},
    {"mixed", "aéb漢c😀dïe語ñ€"},
};

constexpr bool AllAreWhole() {
  for (const Sample& sample : kSamples) {
    if (kShort % sample.text.size() != 0 || kLong % sample.text.size() != 0) {
      return false;
    }
  }
  return true;
}
static_assert(AllAreWhole(), "a text ends with its sample");

volatile uintptr_t s_sink;

std::string Repeat(std::string_view sample, unsigned long length) {
  std::string text;
  while (text.size() < length) {
    text += sample;
  }
  return text;
}

void MeasureText(Meter& meter, const std::string& suffix, const std::string& bytes) {
  IPLKernel* kernel = IPLKernel::GetKernel();
  PLString text;
  text.AppendUTF8(std::string(bytes.size(), 'a').data(), bytes.size());  // room for any text of as many bytes
  meter.Measure(("utf8-decode-" + suffix).c_str(), [&] {
    text.Empty();
    text.AppendUTF8(bytes.data(), bytes.size());
  });
  meter.Measure(("length-" + suffix).c_str(), [&] { s_sink = kernel->wcslen(text.GetBuffer()); });
  meter.Measure(("utf8-encode-" + suffix).c_str(), [&] {
    char* encoded = text.CopyUTF16to8(text.GetBuffer());
    operator delete(encoded, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
  });
}

}  // namespace

void MeasureTexts(Meter& meter) {
  for (const Sample& sample : kSamples) {
    for (const unsigned long length : {kShort, kLong}) {
      MeasureText(meter, sample.name + ("-" + std::to_string(length)), Repeat(sample.text, length));
    }
  }
  const std::string bytes(3072, 'a');
  meter.Measure("utf8-append-3072", [&] {
    PLString other;
    other.AppendUTF8("x", 1);
    other.AppendUTF8(bytes.data(), bytes.size());
  });
  PLString text;
  meter.Measure("charset-1024", [&] {
    unsigned long consumed = 0;
    IPLKernel::GetKernel()->MultiByteCharacterStringToPLString(bytes.data(), 1024, text, "UTF-8", consumed, false);
  });
}
