// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include "CharsetTexts.h"

namespace {

// It opens a converter of the C library, not of GNU libiconv, and allocates the result.
size_t Convert(const char* text, size_t count, const char* to, const char* from) {
  gsize written = 0;
  g_free(g_convert(text, static_cast<gssize>(count), to, from, nullptr, &written, nullptr));
  return written;
}

const Registered s_registered([] {
  MeasureCharsets("FromCharset", "glib", [](const CharsetText& text) {
    return Convert(text.bytes.data(), text.bytes.size(), "UTF-16LE", text.name);
  });
  MeasureCharsets("ToCharset", "glib", [](const CharsetText& text) {
    return Convert(reinterpret_cast<const char*>(text.units.data()), 2 * text.units.size(), text.name, "UTF-16LE");
  });
});

}  // namespace
