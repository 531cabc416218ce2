// SPDX-License-Identifier: Apache-2.0
// The fault handler's own functions for text, numbers and output. This file is compiled without the compiler's
// knowledge of the C library, so that the loops below stay loops.
#include <errno.h>
#include <unistd.h>

#include "diagnostics/KernelFaultHandlerImpl.h"

void KernelFaultHandlerImpl::writefd(int descriptor, void* bytes, int length) {
  constexpr int kAttempts = 2;
  const char* position = static_cast<const char*>(bytes);
  for (int attempt = 0; attempt < kAttempts && length > 0; ++attempt) {
    const ssize_t written = ::write(descriptor, position, static_cast<size_t>(length));
    if (written >= 0) {
      position += written;
      length -= static_cast<int>(written);
    } else if (errno != EINTR) {
      return;
    }
  }
}

unsigned int KernelFaultHandlerImpl::strcpy(char* destination, const char* source) {
  if (destination == nullptr || source == nullptr) {
    return 0;
  }
  unsigned int length = 0;
  while ((destination[length] = source[length]) != '\0') {
    ++length;
  }
  return length;
}

int KernelFaultHandlerImpl::strlen(const char* text) {
  int length = 0;
  if (text != nullptr) {
    while (text[length] != '\0') {
      ++length;
    }
  }
  return length;
}

unsigned int KernelFaultHandlerImpl::memcpy(char* destination, const char* source, unsigned int count) {
  if (source == nullptr || count == 0 || destination == nullptr || destination == source) {
    return 0;
  }
  if (destination > source && destination < source + count) {
    for (unsigned int i = count; i > 0; --i) {
      destination[i - 1] = source[i - 1];
    }
  } else {
    for (unsigned int i = 0; i < count; ++i) {
      destination[i] = source[i];
    }
  }
  return count;
}

unsigned int KernelFaultHandlerImpl::decimaltobuffer(unsigned int value, unsigned int radix, char* buffer,
                                                     unsigned int width, char pad) {
  if (buffer == nullptr || width == 0 || radix < 2 || radix > 16) {
    return 0;
  }
  unsigned int digits = 1;
  unsigned int divisor = 1;
  while (value / divisor >= radix) {
    divisor *= radix;
    ++digits;
  }
  unsigned int written = 0;
  if (pad != 0) {
    while (written + digits < width) {
      buffer[written++] = '0';
    }
  }
  for (; divisor != 0 && written < width; divisor /= radix) {
    buffer[written++] = "0123456789ABCDEF"[value / divisor % radix];
  }
  return written;
}
