// SPDX-License-Identifier: Apache-2.0
// Tables of character sets, beside those of the C library's iconv, an independent converter.
#include <iconv.h>

#include <fstream>
#include <map>

#include <ipl/PLString.h>

#include "support/KernelFixture.h"

static std::string Hex(const std::string& bytes) {
  std::string digits;
  for (const unsigned char byte : bytes) {
    digits += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
  }
  return digits;
}

static std::string Convert(const std::string& input, const char* from, const char* to) {
  PLString text;
  char output[64];
  unsigned long size = 0, used = 0;
  auto* kernel = IPLKernel::GetKernel();
  const unsigned status = kernel->MultiByteCharacterStringToPLString(&input[0], input.size(), text, from, used, false);
  kernel->PLStringToMultiByteCharacterString(text, output, sizeof(output), to, size, used, true);
  const size_t markSize = to == std::string("UTF-16BE") ? 2 : to == std::string("GB18030") ? 4 : 0;
  return status == 0 ? std::string(output, size - 1).substr(markSize) : "";
}

static std::string ConvertAsTheCLibrary(std::string input, iconv_t converter) {
  char output[64];
  char *in = &input[0], *out = output;
  size_t inLeft = input.size(), outLeft = sizeof(output);
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  const bool isGood =
      iconv(converter, &in, &inLeft, &out, &outLeft) == 0 && iconv(converter, nullptr, nullptr, &out, &outLeft) == 0;
  return isGood ? std::string(output, out) : "";
}

/// What each input becomes, here and in the C library: nothing where there is no such character or sequence.
struct Table {
  const char *from, *to;
  iconv_t reference = iconv_open(to, from);
  std::map<std::string, std::pair<std::string, std::string>> results = {};

  ~Table() { iconv_close(reference); }
  const std::pair<std::string, std::string>& Add(const std::string& input) {
    const std::string ours = Convert(input, from, to);
    return results[input] = {ours, IPL_HAS_REFERENCE ? ConvertAsTheCLibrary(input, reference) : ours};
  }
  /// Returns the lines that tables.txt has to have.
  std::string Describe(const std::string& heading) {
    uint32_t sum = 0;
    int count = 0;
    std::string lines, last;
    results["\xFF\xFF\xFF"] = {"end", "end"};  // of the last run
    for (const auto& [input, result] : results) {
      const auto& [ours, theirs] = result;
      for (const char c : ours.empty() ? "" : Hex(input) + Hex(ours)) {
        sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
      }
      if (ours != theirs) {
        last = Hex(input) + ">" + Hex(ours) + "|" + Hex(theirs);
        lines += count++ == 0 ? heading + last : "";
      } else if (!ours.empty() && count > 0) {
        lines += count == 1 ? "\n" : " .. " + last + " " + std::to_string(count) + "\n";
        count = 0;
      }
    }
    return heading + "table " + std::to_string(sum) + "\n" + lines;
  }
};

struct CharsetTableTest : KernelFixture, testing::WithParamInterface<std::string> {};

TEST_P(CharsetTableTest, DiffersFromTheCLibraryAsListed) {
  Table encoded{"UTF-16BE", GetParam().c_str()}, decoded{GetParam().c_str(), "UTF-16BE"};
  for (unsigned c = 1; c < 0x10000; c += c == 0xD7FF ? 0x801 : 1) {  // without surrogates
    decoded.Add(encoded.Add({static_cast<char>(c >> 8), static_cast<char>(c)}).first);
  }
  for (char one = 1; one != 0; ++one) {
    const auto single = decoded.Add({one});
    for (char two = 1; two != 0 && single.first.empty() && single.second.empty(); ++two) {
      decoded.Add({one, two});
    }
  }
  std::ifstream file(IPL_TABLES_FILE);
  std::string expected;
  for (std::string line; std::getline(file, line);) {
    const bool isWanted = IPL_HAS_REFERENCE || line.find(" table ") != std::string::npos;
    expected += isWanted && line.rfind(GetParam() + " ", 0) == 0 ? line + "\n" : "";
  }
  EXPECT_EQ(encoded.Describe(GetParam() + " encode ") + decoded.Describe(GetParam() + " decode "), expected);
}

INSTANTIATE_TEST_SUITE_P(, CharsetTableTest,
                         testing::Values("ISO-8859-1", "ISO-8859-7", "CP1252", "CP1255", "KOI8-R", "TIS-620", "TCVN",
                                         "SJIS", "CP932", "EUC-JP", "GB18030", "BIG5", "BIG5-HKSCS", "EUC-KR"));
