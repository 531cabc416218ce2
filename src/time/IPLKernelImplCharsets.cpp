// SPDX-License-Identifier: Apache-2.0
// Slots 65 to 68: character sets and language. There is no converter yet: every character set is unknown.
#include <langinfo.h>

#include <ipl/PLString.h>

#include "kernel/IPLKernelImpl.h"

namespace {

constexpr unsigned int kUnknownCharSet = 5;

}  // namespace

unsigned int IPLKernelImpl::PLStringToMultiByteCharacterString(const PLString&, char*, unsigned long, const char*,
                                                               unsigned long&, unsigned long&, bool) {
  return kUnknownCharSet;
}

unsigned int IPLKernelImpl::MultiByteCharacterStringToPLString(const char*, unsigned long, PLString&, const char*,
                                                               unsigned long&, bool) {
  return kUnknownCharSet;
}

const char* IPLKernelImpl::GetSystemCharSet() { return ::nl_langinfo(CODESET); }

void IPLKernelImpl::GetSystemLanguage(PLString& language) {
  language.Empty();
  language.AppendUTF8("en", 2);
}
