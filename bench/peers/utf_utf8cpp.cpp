// SPDX-License-Identifier: Apache-2.0
#include <utf8.h>

#include "UtfTexts.h"

namespace {

const Registered s_registered([] {
  MeasureDecode("utf8cpp", [](const char* bytes, size_t count, char16_t* units) {
    return utf8::utf8to16(bytes, bytes + count, units) - units;
  });
  MeasureEncode("utf8cpp", [](const char16_t* units, size_t count, char* bytes) {
    return utf8::utf16to8(units, units + count, bytes) - bytes;
  });
});

}  // namespace
