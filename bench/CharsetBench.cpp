// SPDX-License-Identifier: Apache-2.0
// Conversion of 1 KiB from and to a character set; the limit opens the same libiconv, converts and closes it.
#include "CharsetTexts.h"

#include <ipl/PLString.h>

#include "BenchKernel.h"

// GNU libiconv, under the names that it exports. Its header would name them iconv, as the C library's.
extern "C" {
void* libiconv_open(const char* to, const char* from);
size_t libiconv(void* descriptor, const char** input, size_t* inputLeft, char** output, size_t* outputLeft);
int libiconv_close(void* descriptor);
}

namespace {

const RunningKernel s_kernel;

size_t OurDecode(const CharsetText& text) {
  PLString target;
  unsigned long consumed = 0;
  s_kernel->MultiByteCharacterStringToPLString(text.bytes.data(), text.bytes.size(), target, text.name, consumed,
                                               false);
  return target.GetLength() == text.units.size() ? consumed : 0;
}

// The kernel puts U+FEFF before the text and stops there if the set lacks it, unless it may skip.
size_t OurEncode(const CharsetText& text) {
  static const std::string* last = nullptr;
  static PLString source;
  if (last != &text.bytes) {
    last = &text.bytes;
    source.Empty();
    source.Append(reinterpret_cast<const unsigned short*>(text.units.c_str()));
  }
  char target[8192];
  unsigned long written = 0;
  unsigned long consumed = 0;
  s_kernel->PLStringToMultiByteCharacterString(source, target, sizeof(target), text.name, written, consumed, true);
  return written - 1 == text.bytes.size() ? written : 0;
}

size_t BareConvert(const char* to, const char* from, const char* input, size_t size) {
  char target[8192];
  char* output = target;
  size_t room = sizeof(target);
  void* descriptor = ::libiconv_open(to, from);
  ::libiconv(descriptor, &input, &size, &output, &room);
  ::libiconv(descriptor, nullptr, nullptr, &output, &room);
  ::libiconv_close(descriptor);
  return size == 0 ? sizeof(target) - room : 0;
}

const Registered s_registered([] {
  MeasureCharsets("FromCharset", "ours", OurDecode);
  MeasureCharsets("ToCharset", "ours", OurEncode);
  MeasureCharsets("FromCharset", "limit", [](const CharsetText& text) {
    return BareConvert("UTF-16LE", text.name, text.bytes.data(), text.bytes.size());
  });
  MeasureCharsets("ToCharset", "limit", [](const CharsetText& text) {
    return BareConvert(text.name, "UTF-16LE", reinterpret_cast<const char*>(text.units.data()), 2 * text.units.size());
  });
});

}  // namespace
