// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIME_CHARSETCONVERSION_H
#define IPL_TIME_CHARSETCONVERSION_H

#include <ipl/PLString.h>

#include "time/CharsetConverter.h"

/// Both directions of the conversion between a PLString and text in a named character set, as the operations of the
/// interface describe them.

ConversionStatus ConvertToPLString(const char* source, unsigned long sourceLength, PLString& target,
                                   const char* charSet, unsigned long& bytesConsumed, bool skipInvalid);

ConversionStatus ConvertFromPLString(const PLString& source, char* target, unsigned long targetSize,
                                     const char* charSet, unsigned long& bytesWritten, unsigned long& bytesConsumed,
                                     bool skipInvalid);

#endif  // IPL_TIME_CHARSETCONVERSION_H
