// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TIME_CHARSETCONVERTER_H
#define IPL_TIME_CHARSETCONVERTER_H

/// How a conversion ended; the values are the contract's.
enum class ConversionStatus : unsigned int {
  kConverted = 0,
  kNoRoom = 1,
  kInvalid = 2,
  kIncomplete = 3,
  kOtherError = 4,
  kUnknownCharSet = 5,
};

/// The part of a conversion's input and output that is still to come.
struct ConversionBuffers {
  const char* input;
  unsigned long inputLeft;
  char* output;
  unsigned long outputLeft;
};

/// Owns a conversion descriptor of the iconv library.
class CharsetConverter {
 public:
  /// Names as the library knows them; a null one is unknown.
  CharsetConverter(const char* from, const char* to);
  ~CharsetConverter();
  CharsetConverter(const CharsetConverter&) = delete;
  CharsetConverter& operator=(const CharsetConverter&) = delete;

  /// Returns false if one of the character sets is unknown.
  bool IsOpen() const;

  /// Converts until the input ends or an error stops it, and moves the buffers on.
  ConversionStatus Convert(ConversionBuffers& buffers);
  /// Writes what the converter still holds: a character that could have combined with the next one, or the sequence
  /// that ends the text in a stateful character set.
  ConversionStatus Finish(ConversionBuffers& buffers);
  /// Brings the converter back to its first state.
  void Reset();

 private:
  void* m_descriptor;
};

#endif  // IPL_TIME_CHARSETCONVERTER_H
