// SPDX-License-Identifier: Apache-2.0
// Slots 43 to 64 and 69: the C library's memory, text and number functions.
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include "foundation/UtfBlocks.h"
#include "kernel/IPLKernelImpl.h"

void* IPLKernelImpl::memset(void* destination, int value, unsigned long count) {
  return ::memset(destination, value, count);
}

void* IPLKernelImpl::memcpy(void* destination, const void* source, unsigned long count) {
  return ::memcpy(destination, source, count);
}

void* IPLKernelImpl::memmove(void* destination, const void* source, unsigned long count) {
  return ::memmove(destination, source, count);
}

int IPLKernelImpl::memcmp(const void* left, const void* right, unsigned long count) {
  return ::memcmp(left, right, count);
}

void IPLKernelImpl::qsort(void* base, unsigned long count, int size, void* compare) {
  ::qsort(base, count, static_cast<size_t>(size), reinterpret_cast<int (*)(const void*, const void*)>(compare));
}

unsigned long IPLKernelImpl::wcslen(const unsigned short* text) { return text != nullptr ? CountUntilZero(text) : 0; }

unsigned long IPLKernelImpl::strlen(const char* text) { return text != nullptr ? ::strlen(text) : 0; }

int IPLKernelImpl::strcmp(const char* left, const char* right) { return ::strcmp(left, right); }

int IPLKernelImpl::strncmp(const char* left, const char* right, unsigned long count) {
  return ::strncmp(left, right, count);
}

int IPLKernelImpl::strcasecmp(const char* left, const char* right) { return ::strcasecmp(left, right); }

int IPLKernelImpl::strncasecmp(const char* left, const char* right, unsigned long count) {
  return ::strncasecmp(left, right, count);
}

char* IPLKernelImpl::strcpy(char* destination, const char* source) { return ::strcpy(destination, source); }

char* IPLKernelImpl::strcat(char* destination, const char* source) { return ::strcat(destination, source); }

char* IPLKernelImpl::strstr(const char* text, const char* part) { return const_cast<char*>(::strstr(text, part)); }

int IPLKernelImpl::sprintf(char* buffer, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = ::vsprintf(buffer, format, arguments);
  va_end(arguments);
  return result;
}

int IPLKernelImpl::snprintf(char* buffer, unsigned long size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = ::vsnprintf(buffer, size, format, arguments);
  va_end(arguments);
  return result;
}

long IPLKernelImpl::strtol(const char* text, char** end, int base) { return ::strtol(text, end, base); }

unsigned long IPLKernelImpl::strtoul(const char* text, char** end, int base) { return ::strtoul(text, end, base); }

long long IPLKernelImpl::strtoq(const char* text, char** end, int base) { return ::strtoq(text, end, base); }

double IPLKernelImpl::strtod(const char* text, char** end) { return ::strtod(text, end); }

char* IPLKernelImpl::strchr(const char* text, int character) { return const_cast<char*>(::strchr(text, character)); }

char* IPLKernelImpl::strrchr(const char* text, int character) { return const_cast<char*>(::strrchr(text, character)); }

void IPLKernelImpl::strncpyTerm(char* destination, const char* source, unsigned long size) {
  if (destination == nullptr || size == 0) {
    return;
  }
  unsigned long length = 0;
  if (source != nullptr) {
    while (length < size - 1 && source[length] != '\0') {
      destination[length] = source[length];
      ++length;
    }
  }
  destination[length] = '\0';
}
