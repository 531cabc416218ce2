// SPDX-License-Identifier: Apache-2.0
#include <QString>

#include "UtfTexts.h"

namespace {

// Both allocate their result.
const Registered s_registered([] {
  const auto decode = [](const char* bytes, size_t count, char16_t*) {
    return QString::fromUtf8(bytes, static_cast<qsizetype>(count)).size();
  };
  const auto encode = [](const char16_t* units, size_t count, char*) {
    return QStringView(units, static_cast<qsizetype>(count)).toUtf8().size();
  };
  for (const char* operation : {"Decode", "AppendUTF8"}) {
    MeasureDecode("qt", decode, operation);
  }
  for (const char* operation : {"Encode", "CopyUTF16to8"}) {
    MeasureEncode("qt", encode, operation);
  }
});

}  // namespace
