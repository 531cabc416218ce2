// SPDX-License-Identifier: Apache-2.0
#include "time/CharsetConverter.h"

#include <errno.h>
#include <stddef.h>
#include <stdint.h>

// GNU libiconv, under the names that it exports. Its header would name them iconv, as the C library's.
extern "C" {
void* libiconv_open(const char* to, const char* from);
size_t libiconv(void* descriptor, const char** input, size_t* inputLeft, char** output, size_t* outputLeft);
int libiconv_close(void* descriptor);
}

namespace {

void* const kNotOpen = reinterpret_cast<void*>(static_cast<intptr_t>(-1));  // NOLINT(performance-no-int-to-ptr)

ConversionStatus ToStatus(size_t result) {
  if (result != static_cast<size_t>(-1)) {
    return ConversionStatus::kConverted;
  }
  switch (errno) {
    case E2BIG:
      return ConversionStatus::kNoRoom;
    case EILSEQ:
      return ConversionStatus::kInvalid;
    case EINVAL:
      return ConversionStatus::kIncomplete;
    default:
      return ConversionStatus::kOtherError;
  }
}

}  // namespace

CharsetConverter::CharsetConverter(const char* from, const char* to)
    : m_descriptor(from != nullptr && to != nullptr ? ::libiconv_open(to, from) : kNotOpen) {}

CharsetConverter::~CharsetConverter() {
  if (IsOpen()) {
    ::libiconv_close(m_descriptor);
  }
}

bool CharsetConverter::IsOpen() const { return m_descriptor != kNotOpen; }

ConversionStatus CharsetConverter::Convert(ConversionBuffers& buffers) {
  size_t inputLeft = buffers.inputLeft;
  size_t outputLeft = buffers.outputLeft;
  const size_t result = ::libiconv(m_descriptor, &buffers.input, &inputLeft, &buffers.output, &outputLeft);
  const ConversionStatus status = ToStatus(result);
  buffers.inputLeft = inputLeft;
  buffers.outputLeft = outputLeft;
  return status;
}

ConversionStatus CharsetConverter::Finish(ConversionBuffers& buffers) {
  size_t outputLeft = buffers.outputLeft;
  const ConversionStatus status = ToStatus(::libiconv(m_descriptor, nullptr, nullptr, &buffers.output, &outputLeft));
  buffers.outputLeft = outputLeft;
  return status;
}

void CharsetConverter::Reset() { ::libiconv(m_descriptor, nullptr, nullptr, nullptr, nullptr); }
