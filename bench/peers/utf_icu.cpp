// SPDX-License-Identifier: Apache-2.0
#include <unicode/ustring.h>

#include "UtfTexts.h"

namespace {

// It converts into the caller's memory.
const Registered s_registered([] {
  const auto decode = [](const char* bytes, size_t count, char16_t* units) {
    UErrorCode error = U_ZERO_ERROR;
    int32_t written = 0;
    u_strFromUTF8(units, kUtfRoom, &written, bytes, static_cast<int32_t>(count), &error);
    return written;
  };
  const auto encode = [](const char16_t* units, size_t count, char* bytes) {
    UErrorCode error = U_ZERO_ERROR;
    int32_t written = 0;
    u_strToUTF8(bytes, kUtfRoom, &written, units, static_cast<int32_t>(count), &error);
    return written;
  };
  for (const char* operation : {"Decode", "AppendUTF8"}) {
    MeasureDecode("icu", decode, operation);
  }
  for (const char* operation : {"Encode", "CopyUTF16to8"}) {
    MeasureEncode("icu", encode, operation);
  }
});

}  // namespace
