// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_SUPPORT_TEXT_H
#define IPL_TESTS_SUPPORT_TEXT_H

#include <string>

#include <gtest/gtest.h>
#include <ipl/PLString.h>

// Between the kernel's texts and the standard library's.

inline const unsigned short* Units(const std::u16string& text) {
  return reinterpret_cast<const unsigned short*>(text.c_str());
}
inline PLString MakeText(const std::string& utf8) {
  PLString string;
  string.AppendUTF8(utf8.data(), utf8.size());
  return string;
}
inline PLString MakeText(const std::u16string& units) {
  PLString string;
  string.Append(Units(units));
  return string;
}
inline std::u16string TextOf(const PLString& string) {
  EXPECT_EQ(string.GetBuffer()[string.GetLength()], 0);
  return std::u16string(string.GetBuffer(), string.GetBuffer() + string.GetLength());
}

#endif  // IPL_TESTS_SUPPORT_TEXT_H
