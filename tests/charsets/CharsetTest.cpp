// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <errno.h>
#include <locale.h>
#include <stdlib.h>

#include <sstream>

#include "support/AllocControl.h"
#include "support/KernelFixture.h"
#include "support/Text.h"

static int s_errors[2];  // with which the coming two calls end, though they did their work; 0: as they do

/// Stands in front of the library's own, for errors that no character set brings about: a byte of any gives four bytes
/// of UTF-16 at most.
extern "C" __attribute__((visibility("default"))) size_t libiconv(void* descriptor, const char** in, size_t* inLeft,
                                                                  char** out, size_t* outLeft) {
  using Function = size_t(void*, const char**, size_t*, char**, size_t*);
  static auto* const original = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "libiconv"));
  const size_t result = original(descriptor, in, inLeft, out, outLeft);
  if (in == nullptr) {  // begins or ends a text
    return result;
  }
  const int error = std::exchange(s_errors[0], std::exchange(s_errors[1], 0));
  errno = error != 0 ? error : errno;
  return error != 0 ? static_cast<size_t>(-1) : result;
}

constexpr unsigned long kOld = 4711;

class CharsetTest : public KernelFixture {
 protected:
  static std::string Join(unsigned status, const std::string& text, unsigned long count) {
    return std::to_string(status) + " " + text + " " + std::to_string(count);
  }
  /// Returns status, text and count of consumed bytes.
  std::string Decode(const char* charSet, const std::string& bytes, bool skips, int error1 = 0, int error2 = 0) {
    const std::vector<char> source(bytes.begin(), bytes.end());  // nothing lies behind it
    PLString text = MakeText(u"old");
    unsigned long used = kOld;
    s_errors[0] = error1;
    s_errors[1] = error2;
    const unsigned status =
        kernel->MultiByteCharacterStringToPLString(source.data(), source.size(), text, charSet, used, skips);
    return Join(status, text.GetUTF8(), used);
  }
  /// Returns status, bytes, and counts of written and consumed bytes. Nothing may be written around the target.
  std::string Encode(const char* charSet, const std::u16string& text, unsigned long size, bool skips, int error = 0) {
    std::string bytes(64, '#');
    unsigned long written = kOld, used = kOld;
    s_errors[0] = error;
    const unsigned status =
        kernel->PLStringToMultiByteCharacterString(MakeText(text), &bytes[8], size, charSet, written, used, skips);
    const size_t end = 8 + (status == 5 || size == 0 ? 0 : written);
    EXPECT_EQ(bytes, std::string(8, '#') + bytes.substr(8, end - 8) + std::string(64 - end, '#'));
    EXPECT_TRUE(end == 8 || (written <= size && bytes[end - 1] == 0));
    return Join(status, bytes.substr(8, end == 8 ? 0 : end - 9) + " " + std::to_string(written), used);
  }
};

TEST_F(CharsetTest, BytesToText) {
  EXPECT_EQ(Decode("UTF-8", "", false), "0  0");
  EXPECT_EQ(Decode("UTF-8", "a\xFFz", true), "0 az 2");
  EXPECT_EQ(Decode("UTF-8", "a\xFFz", false), "2 a 1");
  EXPECT_EQ(Decode("UTF-8", "a\xFF\xFEz\xFF", true), "0 az 2") << "an invalid last byte ends it";
  EXPECT_EQ(Decode("UTF-8", std::string("a\0z", 3), false), "0 a 3");
  EXPECT_EQ(Decode("UTF-8", "a\xE2\x82", true), "3 a 1");
  EXPECT_EQ(Decode("Shift_JIS", "\x82\xA0\x82", true), "3 あ 2");
  EXPECT_EQ(Decode("ISO-2022-JP", "\x1B$B$\"\x1B(B", false), "0 あ 8");
  EXPECT_EQ(Decode("UTF-7", "+MEI-a", false), "0 あa 6");
  // The last character, which the converter holds back as the next one could combine with it.
  EXPECT_EQ(Decode("CP1255", "\xE0", false), "0 א 1");
  EXPECT_EQ(Decode("CP1258", "aA\xF2z", false), "0 aẠz 4");
  EXPECT_EQ(Decode("TCVN", "a", false), "0 a 1");
  EXPECT_EQ(Decode("BIG5-HKSCS", "\x88\x62", false), "0 \u00CA\u0304 2");
  EXPECT_EQ(Decode(nullptr, "a", true) + Decode("NO-SUCH-SET", "a", true), "5 old 47115 old 4711");

  EXPECT_EQ(Decode("UTF-8", "\xFFyz", true, 0, E2BIG), "0 yz 2");
  EXPECT_EQ(Decode("UTF-8", "yz", true, E2BIG, E2BIG), "1 yz 2");
  EXPECT_EQ(Decode("UTF-8", "yz", true, EIO), "4 yz 2");
}

TEST_F(CharsetTest, TextToBytes) {
  EXPECT_EQ(Encode("UTF-8", u"", 4, false), "0 \uFEFF 4 2");
  EXPECT_EQ(Encode("UTF-8", u"ab", 6, false), "0 \uFEFFab 6 6");
  EXPECT_EQ(Encode("UTF-8", u"ab", 5, false), "1 \uFEFFa 5 4");
  EXPECT_EQ(Encode("UTF-8", u"é", 5, false), "1 \uFEFF 4 2");
  EXPECT_EQ(Encode("UTF-8", u"ab", 1, false), "1  1 0");
  EXPECT_EQ(Encode("UTF-8", u"ab", 0, false), "1  1 0");
  EXPECT_EQ(Encode("UTF-8", u"a\xDC00z", 9, false), "2 \uFEFFa 5 4");
  EXPECT_EQ(Encode("UTF-8", u"a\xDC00\xD800z\xDC01", 9, true), "0 \uFEFFaz 6 6");
  EXPECT_EQ(Encode("UTF-8", u"a\xD800", 9, true), "3 \uFEFFa 5 4");
  EXPECT_EQ(Encode("ISO-8859-1", u"a", 9, false), "2  1 0") << "it has no U+FEFF";
  EXPECT_EQ(Encode("ISO-8859-1", u"", 9, true), "0  1 0");
  EXPECT_EQ(Encode("ISO-8859-1", u"a€b😀c€", 9, true), "0 abc 4 6");
  EXPECT_EQ(Encode("GB18030", u"😀", 9, false), "0 \x84\x31\x95\x33\x94\x39\xFC\x36 9 6");
  EXPECT_EQ(Encode("CP1258", u"Ạ", 3, true), "0 A\xF2 3 2");
  EXPECT_EQ(Encode("UTF-7", u"é", 9, false), "0 +/v8A6Q- 9 4");
  // The sequence that leads back to ASCII belongs to the text.
  EXPECT_EQ(Encode("ISO-2022-JP", u"あ", 9, true), "0 \x1B$B$\"\x1B(B 9 2");
  EXPECT_EQ(Encode("ISO-2022-JP", u"あ", 8, true), "1 \x1B$B$\" 6 2");
  EXPECT_EQ(Encode("UTF-8", u"ab", 9, true, EIO), "4 \uFEFFab 6 6");
  EXPECT_EQ(Encode(nullptr, u"a", 9, true) + Encode("NO-SUCH-SET", u"a", 9, true), "5  4711 47115  4711 4711");
}

TEST_F(CharsetTest, MemoryExhausted) {
  AllocControl memory(kernel);
  for (const long successes : {1, 2}) {  // one for the text that is passed
    memory.FailAfter(successes, 1);
    EXPECT_EQ(Decode("UTF-8", "a", false, E2BIG), "4  0");
  }
  memory.FailAfter(1, 1);
  EXPECT_EQ(Encode("UTF-8", u"a", 9, false), "4  1 0");
  EXPECT_EQ(memory.Failures(), 3);
  EXPECT_EQ(memory.Held(), 0);
}

TEST_F(CharsetTest, SystemLanguageAndCharSet) {
  const std::string x(5000, 'x');
  std::istringstream rows(
      "=en C=en POSIX=en C.UTF-8=en de.UTF-8=en english_US=en _DE=en e_US=en éé_DE=en " + x + "=en " + x + "_DE=en " +
      "de_DE.UTF-8=de-DE pt_BR=pt-BR deu_DEU.x.y=deu-DEU DE_de=DE-de fr=fr de.=de. fr_.UTF-8=fr fr_F=fr fr_FRAN=fr " +
      "fr_FR_x=fr de_DE@euro=de de_DE@x.y=de de_" + x + "=de de_DE." + x + "=de-DE é=é é_é=é-é \xBF\xBF_\xE2\x82=¿¿-");
  PLString language;
  const auto get = [&] {
    language.AppendUTF8("old", 3);
    kernel->GetSystemLanguage(language);
    return std::string(language.GetUTF8());
  };
  for (std::string row; rows >> row;) {
    const size_t end = row.rfind('=');
    setenv("LANG", row.substr(0, end).c_str(), 1);
    EXPECT_EQ(get(), row.substr(end + 1)) << row.substr(0, 20);
  }
  unsetenv("LANG");
  EXPECT_EQ(get(), "en");
  EXPECT_STREQ(kernel->GetSystemCharSet(), "ANSI_X3.4-1968");
  ASSERT_NE(setlocale(LC_ALL, "C.UTF-8"), nullptr);
  EXPECT_STREQ(kernel->GetSystemCharSet(), "UTF-8");
}
