// SPDX-License-Identifier: Apache-2.0
// The routines themselves, and the operations of PLString around them, which allocate. The limit copies as many bytes
// as the result has; "plain" is a loop that converts one character at a time.
#include <string.h>

#include <ipl/PLMem.h>
#include <ipl/PLString.h>

#include "BenchKernel.h"
#include "UtfTexts.h"
#include "foundation/Utf.h"

namespace {

const RunningKernel s_kernel;

// The texts are well-formed, so nothing is checked.
size_t PlainDecode(const char* bytes, size_t count, char16_t* units) {
  const char16_t* begin = units;
  const auto* in = reinterpret_cast<const unsigned char*>(bytes);
  const unsigned char* end = in + count;
  while (in < end) {
    uint32_t value = *in++;
    const int more = value < 0xC0 ? 0 : value < 0xE0 ? 1 : value < 0xF0 ? 2 : 3;
    value &= more == 0 ? 0x7F : 0x3F >> more;
    for (int i = 0; i < more; ++i) {
      value = value << 6 | (*in++ & 0x3F);
    }
    if (value >= 0x10000) {
      *units++ = static_cast<char16_t>(0xD7C0 + (value >> 10));
      value = 0xDC00 | (value & 0x3FF);
    }
    *units++ = static_cast<char16_t>(value);
  }
  return static_cast<size_t>(units - begin);
}

size_t PlainEncode(const char16_t* units, size_t count, char* bytes) {
  const char* begin = bytes;
  for (const char16_t* end = units + count; units < end;) {
    uint32_t value = *units++;
    if (value >= 0xD800 && value < 0xDC00) {
      value = 0x10000 + ((value - 0xD800) << 10) + (*units++ - 0xDC00U);
    }
    if (value < 0x80) {
      *bytes++ = static_cast<char>(value);
      continue;
    }
    if (value < 0x800) {
      *bytes++ = static_cast<char>(0xC0 | value >> 6);
    } else {
      if (value < 0x10000) {
        *bytes++ = static_cast<char>(0xE0 | value >> 12);
      } else {
        *bytes++ = static_cast<char>(0xF0 | value >> 18);
        *bytes++ = static_cast<char>(0x80 | (value >> 12 & 0x3F));
      }
      *bytes++ = static_cast<char>(0x80 | (value >> 6 & 0x3F));
    }
    *bytes++ = static_cast<char>(0x80 | (value & 0x3F));
  }
  return static_cast<size_t>(bytes - begin);
}

size_t OurDecode(const char* bytes, size_t count, char16_t* units) {
  return DecodeUtf8(reinterpret_cast<const unsigned char*>(bytes), count, reinterpret_cast<unsigned short*>(units));
}

size_t OurEncode(const char16_t* units, size_t count, char* bytes) {
  return EncodeUtf8(reinterpret_cast<const unsigned short*>(units), count, bytes);
}

size_t AppendUTF8(const char* bytes, size_t count, char16_t*) {
  PLString text;
  text.AppendUTF8(bytes, count);
  return text.GetLength();
}

size_t CopyUTF16to8(const char16_t* units, size_t, char*) {
  const PLString text;
  char* copy = text.CopyUTF16to8(reinterpret_cast<const unsigned short*>(units));
  operator delete(copy, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
  return copy != nullptr ? 1 : 0;
}

void MeasureCopies() {
  for (const UtfText& text : GetUtfTexts()) {
    const auto copy = [&text](bool toUtf16) {
      return [&text, toUtf16](State& state) {
        const size_t count = toUtf16 ? text.utf16.size() * sizeof(char16_t) : text.utf8.size();
        const std::string from(count, 'x');
        std::string to(count, '\0');
        while (state.KeepRunning()) {
          benchmark::DoNotOptimize(::memcpy(to.data(), from.data(), count));
          benchmark::ClobberMemory();
        }
      };
    };
    for (const char* operation : {"Decode", "AppendUTF8"}) {
      Measure(std::string(operation) + "." + text.name + "/limit", copy(true));
    }
    for (const char* operation : {"Encode", "CopyUTF16to8"}) {
      Measure(std::string(operation) + "." + text.name + "/limit", copy(false));
    }
  }
}

// There and back, of N KiB.
void LongString(State& state) {
  const std::string text(static_cast<size_t>(state.range(0)) * 1024, 'x');
  while (state.KeepRunning()) {
    PLString string;
    string.AppendUTF8(text.data(), text.size());
    benchmark::DoNotOptimize(string.GetUTF8());
  }
}

// What has to be written: the text in UTF-16 and in UTF-8.
void LongCopy(State& state) {
  const std::string text(static_cast<size_t>(state.range(0)) * 1024, 'x');
  while (state.KeepRunning()) {
    const std::string once = text + text;
    const std::string again(text.data(), text.size());
    benchmark::DoNotOptimize(once.data());
    benchmark::DoNotOptimize(again.data());
  }
}

const Registered s_registered([] {
  MeasureDecode("ours", OurDecode);
  MeasureDecode("plain", PlainDecode);
  MeasureDecode("ours", AppendUTF8, "AppendUTF8");
  MeasureEncode("ours", OurEncode);
  MeasureEncode("plain", PlainEncode);
  MeasureEncode("ours", CopyUTF16to8, "CopyUTF16to8");
  MeasureCopies();
  Measure("StringKiB/ours", LongString)->RangeMultiplier(8)->Range(1, 65536);
  Measure("StringKiB/limit", LongCopy)->RangeMultiplier(8)->Range(1, 65536);
});

}  // namespace
