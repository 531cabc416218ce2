// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "UtfTexts.h"

namespace {

// Both allocate their result.
const Registered s_registered([] {
  const auto decode = [](const char* bytes, size_t count, char16_t*) {
    glong written = 0;
    g_free(g_utf8_to_utf16(bytes, static_cast<glong>(count), nullptr, &written, nullptr));
    return written;
  };
  const auto encode = [](const char16_t* units, size_t count, char*) {
    glong written = 0;
    g_free(g_utf16_to_utf8(reinterpret_cast<const gunichar2*>(units), static_cast<glong>(count), nullptr, &written,
                           nullptr));
    return written;
  };
  for (const char* operation : {"Decode", "AppendUTF8"}) {
    MeasureDecode("glib", decode, operation);
  }
  for (const char* operation : {"Encode", "CopyUTF16to8"}) {
    MeasureEncode("glib", encode, operation);
  }
});

}  // namespace
