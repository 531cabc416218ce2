// SPDX-License-Identifier: Apache-2.0
#include <unicode/ucnv.h>

#include "CharsetTexts.h"

namespace {

constexpr int32_t kRoom = 8192;

// It keeps the tables of the last converters when they are closed.
const Registered s_registered([] {
  MeasureCharsets("FromCharset", "icu", [](const CharsetText& text) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(text.name, &error);
    char16_t units[kRoom];
    const int32_t written =
        ucnv_toUChars(converter, units, kRoom, text.bytes.data(), static_cast<int32_t>(text.bytes.size()), &error);
    ucnv_close(converter);
    return static_cast<size_t>(written);
  });
  MeasureCharsets("ToCharset", "icu", [](const CharsetText& text) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(text.name, &error);
    char bytes[kRoom];
    const int32_t written =
        ucnv_fromUChars(converter, bytes, kRoom, text.units.data(), static_cast<int32_t>(text.units.size()), &error);
    ucnv_close(converter);
    return static_cast<size_t>(written);
  });
});

}  // namespace
