// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iomanip>
#include <sstream>

#include "HostProgram.h"

namespace {

std::string Row(const std::vector<size_t>& numbers, const std::string& text) {
  std::ostringstream row;
  for (size_t i = 0; i < numbers.size(); ++i) {
    row << std::setw(i == 2 ? 13 : (i == 1 ? 11 : 10)) << numbers[i];
  }
  return row.str() + "  " + text + "\n";
}

const std::string kFileHead = "     lines      words   characters  file\n";
const std::string kWordHead = "\n     count  word\n";

Arguments PipelineOver(const Arguments& files) {
  Arguments arguments = {"--modulemap", "TextReader:" TEST_TextReader, "--modulemap", "WordCount:" TEST_WordCount,
                         "--modulemap", "TextReport:" TEST_TextReport, "--module",    "TextReader",
                         "--"};
  arguments.insert(arguments.end(), files.begin(), files.end());
  return arguments;
}

class Pipeline : public HostProgram {};

TEST_F(Pipeline, CountsFoldsAndSorts) {
  const std::string first = Write("first", "\xEF\xBB\xBFOne two, ONE.\nΣίσυφος ΣΊΣΥΦΟΣ\nbe be, 9-9 Éa éA");
  // A zero byte, a lead byte without its character, an overlong zero and a character cut off by the end.
  const char kDoubtful[] = "Ёж ёж x\0y \xE9z\xC0\x80z 😀 😀 \xF0\x9F";
  const std::string second = Write("second", std::string(kDoubtful, sizeof(kDoubtful) - 1));
  const std::string empty = Write("empty", "");
  EXPECT_EQ(Run(PipelineOver({first, second, empty})), 0) << m_err;
  EXPECT_EQ(m_out, kFileHead + Row({2, 11, 46}, first) + Row({0, 8, 22}, second) + Row({0, 0, 0}, empty) +
                       Row({2, 19, 68}, "total") + kWordHead + Row({2}, "9") + Row({2}, "be") + Row({2}, "one") +
                       Row({2}, "z") + Row({2}, "éa") + Row({2}, "σίσυφοσ") + Row({2}, "ёж") + Row({2}, "😀") +
                       Row({1}, "two") + Row({1}, "x"));
  EXPECT_EQ(m_err, "");
}

TEST_F(Pipeline, PiecesOfAFileCutNeitherCharactersNorWords) {
  const size_t chunk = 65536;
  size_t characters = 0;
  Arguments files;
  std::string expected = kFileHead;
  for (const std::string character : {"ж", "क", "𝔘"}) {
    for (size_t split = 1; split < character.size(); ++split) {
      // Blanks, and words of one letter, up to a word whose middle character the chunk's border splits.
      std::string text(chunk - split - 1, ' ');
      for (size_t i = 0; i < 10000; ++i) {
        text[2 * i] = 'a';
      }
      text += "x" + character + "x\n" + std::string(2 * chunk, 'b');
      files.push_back(Write(character + std::to_string(split), text));
      expected += Row({1, 10002, text.size() - character.size() + 1}, files.back());
      characters += text.size() - character.size() + 1;
    }
  }
  expected += Row({files.size(), files.size() * 10002, characters}, "total") + kWordHead + Row({60000}, "a") +
              Row({6}, std::string(2 * chunk, 'b')) + Row({3}, "x𝔘x") + Row({2}, "xकx") + Row({1}, "xжx");
  EXPECT_EQ(Run(PipelineOver(files)), 0) << m_err;
  EXPECT_EQ(m_out, expected);
}

TEST_F(Pipeline, UnreadableFilesAreNamedAndTheOthersProcessed) {
  const std::string good = Write("good", "word\n");
  EXPECT_EQ(Run(PipelineOver({Path("missing"), good, m_directory})), 1);
  EXPECT_EQ(m_err, "TextReader: " + Path("missing") + ": No such file or directory\nTextReader: " + m_directory +
                       ": Is a directory\n");
  EXPECT_EQ(m_out, kFileHead + Row({1, 1, 5}, good) + Row({1, 1, 5}, "total") + kWordHead + Row({1}, "word"));
  EXPECT_EQ(Run(PipelineOver({Path("missing")})), 1);
  EXPECT_EQ(m_out, "");
  EXPECT_EQ(Run(PipelineOver({})), 2);
  EXPECT_EQ(m_err, "TextReader: no file is named behind '--'\n");
}

TEST_F(Pipeline, ASignalStopsItInTheMiddleOfAFile) {
  const std::string fifo = Path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  enum Case { kFinish, kHold, kEndless };
  for (const Case what : {kFinish, kHold, kEndless}) {
    Start(PipelineOver({fifo, what == kEndless ? "/dev/zero" : "/dev/null"}));
    const int end = open(fifo.c_str(), O_WRONLY);  // returns when the reader has opened it
    for (const char byte : std::string("\xEF\xBB\xBFж one\n")) {
      ASSERT_EQ(write(end, &byte, 1), 1);
    }
    if (what != kHold) {
      close(end);
    }
    if (what != kFinish) {
      Signal(SIGTERM);
    }
    EXPECT_EQ(Finish(), what == kFinish ? 0 : 128 + SIGTERM);
    EXPECT_EQ(m_out.find(Row({1, 2, 6}, "total")) != std::string::npos, what == kFinish) << m_out;
    EXPECT_EQ(m_err, "");
    if (what == kHold) {
      close(end);
    }
  }
}

}  // namespace
