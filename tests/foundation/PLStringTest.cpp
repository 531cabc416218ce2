// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLString.h>

#include <string>

#include <ipl/PLMem.h>

#include "support/AllocControl.h"
#include "support/KernelFixture.h"

namespace {

/// The fields, in the order of the contract.
struct Fields {
  void* table;
  char* utf8;
  unsigned short* buffer;
  uint32_t length, capacity;
  uint16_t emptyChar;
};
static_assert(sizeof(Fields) == sizeof(PLString), "");

const Fields& FieldsOf(const PLString& string) { return *reinterpret_cast<const Fields*>(&string); }

std::u16string TextOf(const PLString& string) {
  EXPECT_EQ(string.GetBuffer()[string.GetLength()], 0);
  return std::u16string(string.GetBuffer(), string.GetBuffer() + string.GetLength());
}

PLString Make(const std::string& bytes) {
  PLString string;
  string.AppendUTF8(bytes.data(), bytes.size());
  return string;
}

const unsigned short* Units(const std::u16string& text) {
  return reinterpret_cast<const unsigned short*>(text.c_str());
}

class PLStringTest : public KernelFixture {};

void ExpectUtf8Of(const std::u16string& text, const char* bytes) {
  char* copy = PLString().CopyUTF16to8(Units(text));
  EXPECT_STREQ(copy, bytes);
  operator delete(copy, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
}

TEST_F(PLStringTest, ConvertsTheEdgeCases) {
  EXPECT_EQ(TextOf(Make("abc")), u"abc");
  EXPECT_EQ(TextOf(Make("\xC3\xA9\xF0\x9F\x98\x80\xA9")), u"\u00E9\xD83D\xDE00\u00A9");
  EXPECT_EQ(TextOf(Make("a\xE0\x80\x80z")), u"a");
  EXPECT_EQ(TextOf(Make(std::string("a\0z", 3))), u"a");
  EXPECT_EQ(TextOf(Make("\xED\xA0\x80\xF4\x90\x80\x80")), u"\uFFFD\uFFFD");
  EXPECT_EQ(TextOf(Make("ab\xC3")), u"ab");
  ExpectUtf8Of(u"\xD83D\xDE00", "\xF0\x9F\x98\x80");
  ExpectUtf8Of(u"\xD83D", "\xEF\xBF\xBD");
  ExpectUtf8Of(u"\xD83D\xD83Dx", "\xEF\xBF\xBD\xEF\xBF\xBDx");
  ExpectUtf8Of(u"\xDE00", "\xED\xB8\x80");
  ExpectUtf8Of(u"", nullptr);
  EXPECT_EQ(PLString().CopyUTF16to8(nullptr), nullptr);
}

TEST_F(PLStringTest, KeepsItsUtf8UntilTheTextChanges) {
  AllocControl memory(kernel);
  PLString string;
  EXPECT_STREQ(string.GetUTF8(), "");
  EXPECT_EQ(string.GetBuffer(), &FieldsOf(string).emptyChar);
  EXPECT_EQ(memory.Allocations(), 0);
  void (*const kChanges[])(PLString&) = {
      [](PLString& s) { s.AppendUTF8("x", 1); }, [](PLString& s) { s.AppendUTF8("x", 0); },
      [](PLString& s) { s.Append(static_cast<const unsigned short*>(nullptr)); },
      [](PLString& s) { s.Append(PLString()); }, [](PLString& s) { s = PLString(s); }};
  for (const auto change : kChanges) {
    string.Empty();
    string.AppendUTF8("ab", 2);
    const char* utf8 = string.GetUTF8();
    EXPECT_STREQ(utf8, "ab");
    EXPECT_EQ(string.GetUTF8(), utf8);
    EXPECT_EQ(FieldsOf(string).utf8, utf8);
    change(string);
    EXPECT_EQ(FieldsOf(string).utf8, nullptr);
    EXPECT_STREQ(string.GetUTF8(), string.GetLength() == 3 ? "abx" : "ab");
  }
  const unsigned short* buffer = string.GetBuffer();
  string.Empty();
  EXPECT_EQ(string.GetBuffer(), buffer);
  EXPECT_STREQ(string.GetUTF8(), "");
  EXPECT_EQ(TextOf(string), u"");
}

TEST_F(PLStringTest, GrowsToTheNextMultipleOfTwiceItsCapacity) {
  AllocControl memory(kernel);
  PLString string;
  std::u16string text;
  for (const auto& step : {std::pair<unsigned, unsigned>{3, 4}, {12, 24}, {8, 24}, {1, 48}}) {
    const std::u16string added(step.first, u'x');
    string.Append(Units(added));
    text += added;
    EXPECT_EQ(TextOf(string), text);
    EXPECT_EQ(FieldsOf(string).capacity, step.second);
    EXPECT_EQ(memory.AllocSize(), 2 * step.second + 8);
  }
  EXPECT_EQ(memory.Held(), 1);
  const long before = memory.Allocations();
  EXPECT_EQ(Make(std::string(256, '\xDF')).GetLength(), 128U);
  EXPECT_EQ(memory.Allocations() - before, 2) << "a temporary buffer and the string's own";
  EXPECT_EQ(Make(std::string(258, '\xDF')).GetLength(), 129U);
  EXPECT_EQ(memory.Allocations() - before, 5) << "more than 128 spare units are given back at once";
}

TEST_F(PLStringTest, AppendsItsOwnText) {
  PLString string = Make("ab");  // a full buffer, which the first append has to move
  std::string text = "ab";
  for (unsigned step = 0; text.size() < 4000000; ++step) {
    const size_t from = step % 3;
    if (from == 0) {
      string.Append(string);
    } else if (from == 1) {
      string.Append(string.GetBuffer() + 1);
    } else {
      string.AppendUTF8(string.GetUTF8() + 2, text.size() - 2);
    }
    text += text.substr(from);
    ASSERT_EQ(string.GetUTF8(), text);
  }
}

TEST_F(PLStringTest, CopiesAreIndependent) {
  PLString source = Make("source");
  PLString copy(source), small = Make("s"), large = Make("a longer text");
  small = source;
  large = source;
  const PLString& self = source;
  source = self;
  source.AppendUTF8("!", 1);
  EXPECT_EQ(TextOf(source) + TextOf(copy) + TextOf(small) + TextOf(large), u"source!sourcesourcesource");
}

TEST_F(PLStringTest, WithoutMemoryTheTextStays) {
  AllocControl memory(kernel);
  PLString string = Make("abc");
  const PLString longer = Make("a longer text");
  for (long successes : {0, 1}) {  // the second lets AppendUTF8 have its temporary buffer
    EXPECT_STREQ(string.GetUTF8(), "abc");
    memory.FailAfter(successes);
    string.AppendUTF8("de", 2);
    EXPECT_EQ(FieldsOf(string).utf8, nullptr);
    memory.FailAfter(0);
    string.Append(longer);
    string.Append(longer.GetBuffer());
    string = longer;
    EXPECT_EQ(TextOf(string), u"abc");
    EXPECT_STREQ(string.GetUTF8(), "");
    EXPECT_EQ(TextOf(PLString(string)), u"");
    memory.FailAfter(memory.kNever);
  }
  memory.FailAfter(1, 1);  // without the smaller temporary buffer the larger one does as well
  string.AppendUTF8(std::string(258, '\xDF').data(), 258);
  EXPECT_EQ(string.GetLength(), 3U + 129U);
}

}  // namespace
