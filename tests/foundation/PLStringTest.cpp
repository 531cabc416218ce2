// SPDX-License-Identifier: Apache-2.0
#include <ipl/PLMem.h>

#include "support/AllocControl.h"
#include "support/KernelFixture.h"
#include "support/Text.h"

/// The fields, in the order of the contract.
struct Fields {
  void* table;
  char* utf8;
  unsigned short* buffer;
  uint32_t length, capacity;
  uint16_t emptyChar;
};
static_assert(sizeof(Fields) == sizeof(PLString), "");

static const Fields& FieldsOf(const PLString& string) { return *reinterpret_cast<const Fields*>(&string); }

class PLStringTest : public KernelFixture {};

static void ExpectUtf8Of(const std::u16string& text, const char* bytes) {
  char* copy = PLString().CopyUTF16to8(Units(text));
  EXPECT_STREQ(copy, bytes);
  operator delete(copy, 0U, nullptr, 0, static_cast<PLMem_Selector_PL_MALLOC_FREE*>(nullptr));
}

TEST_F(PLStringTest, ConvertsTheEdgeCases) {
  EXPECT_EQ(TextOf(MakeText("abc")), u"abc");
  EXPECT_EQ(TextOf(MakeText("\xC3\xA9\xF0\x9F\x98\x80\xA9")), u"\u00E9\xD83D\xDE00\u00A9");
  EXPECT_EQ(TextOf(MakeText("a\xE0\x80\x80z")), u"a");
  EXPECT_EQ(TextOf(MakeText(std::string("a\0z", 3))), u"a");
  EXPECT_EQ(TextOf(MakeText("\xED\xA0\x80\xF4\x90\x80\x80")), u"\uFFFD\uFFFD");
  EXPECT_EQ(TextOf(MakeText("ab\xC3")), u"ab");
  ExpectUtf8Of(u"\xD83D\xDE00", "\xF0\x9F\x98\x80");
  ExpectUtf8Of(u"\xD83D", "\xEF\xBF\xBD");
  ExpectUtf8Of(u"\xD83D\xD83Dx", "\xEF\xBF\xBD\xEF\xBF\xBDx");
  ExpectUtf8Of(u"\xDE00", "\xED\xB8\x80");
  ExpectUtf8Of(u"", nullptr);
  EXPECT_EQ(PLString().CopyUTF16to8(nullptr), nullptr);
  unsigned short units[] = {1, 1};
  const auto* bytes = reinterpret_cast<const unsigned char*>("\xF0\x9F\x98\x80\xC3\xA9");
  EXPECT_EQ(PLString()._UTF8toU16Char(bytes, &units[0], &units[1]), 4U);
  EXPECT_EQ(std::u16string(units, units + 2), u"\xD83D\xDE00");
  EXPECT_EQ(PLString()._UTF8toU16Char(bytes + 4, &units[0], &units[1]), 2U);
  EXPECT_EQ(std::u16string(units, units + 2), std::u16string(u"\u00E9\0", 2));
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
    EXPECT_EQ(memory.lastAlloc.size, 2 * step.second + 8);
  }
  EXPECT_EQ(memory.Held(), 1);
}

TEST_F(PLStringTest, AppendsItsOwnText) {
  for (std::string text : {"ab", "ab\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"}) {
    PLString string = MakeText(text);  // a full buffer, which the first append has to move
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
}

TEST_F(PLStringTest, CopiesAreIndependent) {
  PLString source = MakeText("source");
  PLString copy(source), small = MakeText("s"), large = MakeText("a longer text");
  small = source;
  large = source;
  const PLString& self = source;
  source = self;
  source.AppendUTF8("!", 1);
  EXPECT_EQ(TextOf(source) + TextOf(copy) + TextOf(small) + TextOf(large), u"source!sourcesourcesource");
}

TEST_F(PLStringTest, LeavesNothingButItsPointersInItsStorage) {
  alignas(PLString) unsigned char storage[sizeof(PLString)];
  PLString* string = new (storage) PLString(MakeText("abc"));
  const AllocControl memory(kernel);
  EXPECT_STREQ(string->GetUTF8(), "abc");
  string->~PLString();
  Fields left;
  memcpy(&left, storage, sizeof(left));
  EXPECT_EQ(left.length + left.capacity, 0U);
  EXPECT_EQ(memory.Frees(), 2);
}

TEST_F(PLStringTest, WithoutMemoryTheTextStays) {
  AllocControl memory(kernel);
  PLString string = MakeText("abc");
  const PLString longer = MakeText("a longer text");
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
