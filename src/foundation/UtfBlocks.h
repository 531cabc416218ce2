// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_FOUNDATION_UTFBLOCKS_H
#define IPL_FOUNDATION_UTFBLOCKS_H

#include <stdint.h>

/// What is done with several characters at once, in blocks as wide as the processor's registers. The runs of ASCII may
/// end sooner than they have to: the caller goes on one by one.

/// Widens bytes to units until the first that is not ASCII, or sooner. Returns how many it widened; it may have
/// written to any of the count units.
unsigned long WidenAsciiRun(const unsigned char* bytes, unsigned long count, unsigned short* units);

/// Narrows units to bytes until the first that is not ASCII, or sooner. Returns how many it narrowed; it may have
/// written to any of the count bytes.
unsigned long NarrowAsciiRun(const unsigned short* units, unsigned long count, char* bytes);

/// Counts units, all or fewer, and adds for each of them to size the bytes that it takes in UTF-8: 1, 2 or, each
/// surrogate too, 3. Returns how many it counted.
unsigned long CountUtf8Bytes(const unsigned short* units, unsigned long count, uint64_t& size);

/// Returns the number of units before the first zero.
unsigned long CountUntilZero(const unsigned short* units);

#endif  // IPL_FOUNDATION_UTFBLOCKS_H
