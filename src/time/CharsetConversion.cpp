// SPDX-License-Identifier: Apache-2.0
#include "time/CharsetConversion.h"

#include <stdint.h>

#include <ipl/IPLKernel.h>

#include "foundation/TrackedMemory.h"

namespace {

constexpr const char* kInternalCharSet = "UTF-16LE";
constexpr unsigned long kUnitSize = sizeof(unsigned short);
constexpr unsigned short kByteOrderMark = 0xFEFF;

// Converts all input. skip returns how many bytes of input to step over at an invalid or unconvertible character; with
// fewer than two bytes left the conversion ends well there. Adds to skipped.
template <typename Skip>
ConversionStatus ConvertAll(CharsetConverter& converter, ConversionBuffers& buffers, bool skipInvalid, Skip skip,
                            unsigned long& skipped) {
  ConversionStatus status = converter.Convert(buffers);
  while (status == ConversionStatus::kInvalid && skipInvalid && buffers.inputLeft >= 2) {
    const unsigned long count = skip(buffers);
    buffers.input += count;
    buffers.inputLeft -= count;
    skipped += count;
    status = converter.Convert(buffers);
  }
  if (status == ConversionStatus::kInvalid && skipInvalid) {
    status = ConversionStatus::kConverted;
  }
  return status == ConversionStatus::kConverted ? converter.Finish(buffers) : status;
}

unsigned long OneByte(const ConversionBuffers&) { return 1; }

// A step of one byte would read units made of two halves.
unsigned long OneCharacter(const ConversionBuffers& buffers) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(buffers.input);
  const bool isPair = buffers.inputLeft >= 2 * kUnitSize && (bytes[1] & 0xFC) == 0xD8 && (bytes[3] & 0xFC) == 0xDC;
  return isPair ? 2 * kUnitSize : kUnitSize;
}

// Memory for count bytes and a terminating unit.
TrackedBytesPtr<char> AllocateText(uint64_t count) {
  if (count > UINT32_MAX - 8 - kUnitSize) {
    return nullptr;
  }
  return TrackedBytesPtr<char>(static_cast<char*>(AllocateTrackedBytes(static_cast<unsigned int>(count + kUnitSize))));
}

}  // namespace

ConversionStatus ConvertToPLString(const char* source, unsigned long sourceLength, PLString& target,
                                   const char* charSet, unsigned long& bytesConsumed, bool skipInvalid) {
  CharsetConverter converter(charSet, kInternalCharSet);
  if (!converter.IsOpen()) {
    return ConversionStatus::kUnknownCharSet;
  }
  ConversionStatus status = ConversionStatus::kOtherError;
  TrackedBytesPtr<char> output;
  ConversionBuffers buffers = {};
  unsigned long skipped = 0;
  // Four bytes of output for each of input do nearly always; twice as much is tried once more, from the start.
  for (uint64_t factor = 4;; factor *= 2) {
    const uint64_t room = factor * sourceLength;
    output = nullptr;
    output = AllocateText(room);
    if (output == nullptr) {
      target.Empty();
      bytesConsumed = 0;
      return ConversionStatus::kOtherError;
    }
    skipped = 0;
    buffers = {source, sourceLength, output.get(), static_cast<unsigned long>(room)};
    status = ConvertAll(converter, buffers, skipInvalid, OneByte, skipped);
    if (status != ConversionStatus::kNoRoom || factor == 8) {
      break;
    }
    converter.Reset();
  }
  buffers.output[0] = '\0';
  buffers.output[1] = '\0';
  const auto* text = reinterpret_cast<const unsigned short*>(output.get());
  target.Empty();
  target.Append(text);
  if (target.GetLength() != IPLKernel::GetKernel()->wcslen(text)) {  // no memory for it
    bytesConsumed = 0;
    return ConversionStatus::kOtherError;
  }
  bytesConsumed = sourceLength - buffers.inputLeft - skipped;
  return status;
}

ConversionStatus ConvertFromPLString(const PLString& source, char* target, unsigned long targetSize,
                                     const char* charSet, unsigned long& bytesWritten, unsigned long& bytesConsumed,
                                     bool skipInvalid) {
  CharsetConverter converter(kInternalCharSet, charSet);
  if (!converter.IsOpen()) {
    return ConversionStatus::kUnknownCharSet;
  }
  bytesWritten = 1;
  bytesConsumed = 0;
  if (target == nullptr || targetSize == 0) {
    return ConversionStatus::kNoRoom;
  }
  IPLKernel* kernel = IPLKernel::GetKernel();
  const unsigned long length = kernel->wcslen(source.GetBuffer());
  const unsigned long inputSize = kUnitSize * (1 + length);
  const TrackedBytesPtr<char> input = AllocateText(inputSize);
  if (input == nullptr) {
    target[0] = '\0';
    return ConversionStatus::kOtherError;
  }
  kernel->memcpy(input.get(), &kByteOrderMark, kUnitSize);
  kernel->memcpy(input.get() + kUnitSize, source.GetBuffer(), kUnitSize * length);
  unsigned long skipped = 0;
  // One byte of the target is kept for the terminating zero.
  ConversionBuffers buffers = {input.get(), inputSize, target, targetSize - 1};
  const ConversionStatus status = ConvertAll(converter, buffers, skipInvalid, OneCharacter, skipped);
  *buffers.output = '\0';
  bytesWritten = static_cast<unsigned long>(buffers.output - target) + 1;
  bytesConsumed = inputSize - buffers.inputLeft - skipped;
  return status;
}
