// SPDX-License-Identifier: Apache-2.0
// Slots 65 to 68: character sets and language.
#include <langinfo.h>
#include <stdlib.h>

#include <ipl/PLString.h>

#include "kernel/IPLKernelImpl.h"
#include "time/CharsetConversion.h"

namespace {

constexpr bool IsCodeLength(unsigned long length) { return length == 2 || length == 3; }

}  // namespace

unsigned int IPLKernelImpl::PLStringToMultiByteCharacterString(const PLString& source, char* target,
                                                               unsigned long targetSize, const char* charSet,
                                                               unsigned long& bytesWritten,
                                                               unsigned long& bytesConsumed, bool skipInvalid) {
  return static_cast<unsigned int>(
      ConvertFromPLString(source, target, targetSize, charSet, bytesWritten, bytesConsumed, skipInvalid));
}

unsigned int IPLKernelImpl::MultiByteCharacterStringToPLString(const char* source, unsigned long sourceLength,
                                                               PLString& target, const char* charSet,
                                                               unsigned long& bytesConsumed, bool skipInvalid) {
  return static_cast<unsigned int>(
      ConvertToPLString(source, sourceLength, target, charSet, bytesConsumed, skipInvalid));
}

const char* IPLKernelImpl::GetSystemCharSet() { return ::nl_langinfo(CODESET); }

// "de_DE.UTF-8" gives "de-DE"; lengths are counted in bytes.
void IPLKernelImpl::GetSystemLanguage(PLString& language) {
  language.Empty();
  const char* value = ::getenv("LANG");
  const char* underscore = value != nullptr ? strchr(value, '_') : nullptr;
  const unsigned long length = underscore != nullptr ? static_cast<unsigned long>(underscore - value) : strlen(value);
  if (!IsCodeLength(length)) {
    language.AppendUTF8("en", 2);
    return;
  }
  language.AppendUTF8(value, length);
  if (underscore == nullptr) {
    return;
  }
  const char* country = underscore + 1;
  const char* dot = strchr(country, '.');
  const unsigned long countryLength = dot != nullptr ? static_cast<unsigned long>(dot - country) : strlen(country);
  if (IsCodeLength(countryLength)) {
    language.AppendUTF8("-", 1);
    language.AppendUTF8(country, countryLength);
  }
}
