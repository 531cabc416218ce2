// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_SERVICES_RANDOMHASH_H
#define IPL_SERVICES_RANDOMHASH_H

#include <stdint.h>

/// Spreads the bits of a value. 32-bit arithmetic with sign-propagating shifts.
uint32_t HashRandom(uint32_t value);

/// Fills buffer with a sequence that text, up to its first zero, determines. Least significant byte of a word first.
void FillFromText(const char* text, unsigned char* buffer, unsigned long size);

#endif  // IPL_SERVICES_RANDOMHASH_H
