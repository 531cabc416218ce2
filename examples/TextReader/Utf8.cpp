// SPDX-License-Identifier: Apache-2.0
#include "TextReader/Utf8.h"

namespace pipeline {

namespace {

const size_t kMalformed = 0;
const size_t kCutOff = 5;  // longer than any character

size_t LengthByLead(unsigned char lead) {
  if (lead < 0x80) {
    return lead == 0 ? kMalformed : 1;
  }
  if (lead < 0xC2 || lead > 0xF4) {
    return kMalformed;
  }
  return lead < 0xE0 ? 2 : (lead < 0xF0 ? 3 : 4);
}

/// Returns the length of the character at bytes, kMalformed or kCutOff. count > 0.
size_t CharacterLength(const char* bytes, size_t count) {
  const unsigned char lead = static_cast<unsigned char>(bytes[0]);
  const size_t length = LengthByLead(lead);
  // The second byte's limits keep out overlong forms, surrogates, and what lies above U+10FFFF.
  unsigned char lowest = lead == 0xE0 ? 0xA0 : (lead == 0xF0 ? 0x90 : 0x80);
  unsigned char highest = lead == 0xED ? 0x9F : (lead == 0xF4 ? 0x8F : 0xBF);
  for (size_t i = 1; i < length; ++i) {
    if (i == count) {
      return kCutOff;
    }
    const unsigned char byte = static_cast<unsigned char>(bytes[i]);
    if (byte < lowest || byte > highest) {
      return kMalformed;
    }
    lowest = 0x80;
    highest = 0xBF;
  }
  return length;
}

}  // namespace

size_t MakeWellFormed(char* bytes, size_t count, bool atEnd) {
  size_t done = 0;
  while (done < count) {
    const size_t length = CharacterLength(bytes + done, count - done);
    if (length == kCutOff && !atEnd) {
      return done;
    }
    if (length == kMalformed || length == kCutOff) {
      bytes[done] = 0x1A;
      ++done;
    } else {
      done += length;
    }
  }
  return done;
}

}  // namespace pipeline
