// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_TEXTREADER_UTF8_H
#define IPL_EXAMPLES_TEXTREADER_UTF8_H

#include <stddef.h>

namespace pipeline {

/// Makes bytes well-formed UTF-8 without a zero byte, in place: each byte that belongs to no well-formed character, and
/// each zero byte, becomes 0x1A, the control character SUBSTITUTE. (PLString ends a text at a zero, and takes what
/// follows a broken character's first byte as a part of it.)
/// Returns how many bytes from the start are done. It is less than count if the bytes end within a character: the rest,
/// at most 3 bytes, is left as it is. atEnd: nothing follows, so such a rest is malformed.
size_t MakeWellFormed(char* bytes, size_t count, bool atEnd);

}  // namespace pipeline

#endif  // IPL_EXAMPLES_TEXTREADER_UTF8_H
