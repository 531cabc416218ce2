// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_FOUNDATION_UTF_H
#define IPL_FOUNDATION_UTF_H

#include <stdint.h>

/// Conversion between UTF-8 and UTF-16 in host order, lenient as PLString describes. Needs no kernel object, allocates
/// nothing.

/// Decodes the sequence at bytes, whose length its first byte gives and all of which is readable, into one or two
/// units; unit2 is 0 for one. Returns the length of the sequence, 1 to 6.
unsigned int DecodeUtf8Sequence(const unsigned char* bytes, unsigned short& unit1, unsigned short& unit2);

/// Decodes count bytes into units, which have room for count, and returns how many the text has; those behind it may
/// have been written too. A sequence that the end cuts off is left out.
unsigned long DecodeUtf8(const unsigned char* bytes, unsigned long count, unsigned short* units);

/// Returns a size that is enough for EncodeUtf8: surrogates count three bytes each.
uint64_t MaximalUtf8Size(const unsigned short* units, unsigned long count);

/// Encodes count units and returns how many bytes the text has; any of those that MaximalUtf8Size counts may be
/// written.
unsigned long EncodeUtf8(const unsigned short* units, unsigned long count, char* bytes);

#endif  // IPL_FOUNDATION_UTF_H
