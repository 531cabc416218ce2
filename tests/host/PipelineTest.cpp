// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "HostProgram.h"

const std::string kFileHead = "     lines      words   characters  file\n";
const std::string kWordHead = "\n     count  word\n";

class Pipeline : public HostProgram {
 protected:
  static Arguments Over(const Arguments& files) { return With({}, "TextReader", files); }
  static std::string Word(size_t count, const std::string& word) {
    return std::string(10 - std::to_string(count).size(), ' ') + std::to_string(count) + "  " + word + "\n";
  }
};

TEST_F(Pipeline, CountsFoldsAndSorts) {
  const std::string first = Write("first", "\xEF\xBB\xBFOne two, ONE.\nΣίσυφος ΣΊΣΥΦΟΣ\nbe be, 9-9 Éa éA");
  // A zero byte, a lead byte without its character, an overlong zero and a character cut off by the end.
  const char kDoubtful[] = "Ёж ёж x\0y \xE9z\xC0\x80z 😀 😀 \xF0\x9F";
  const std::string second = Write("second", std::string(kDoubtful, sizeof(kDoubtful) - 1));
  const std::string empty = Write("empty", "");
  EXPECT_EQ(Run(Over({first, second, empty})), 0) << m_err;
  EXPECT_EQ(m_out, kFileHead + Row(2, 11, 46, first) + Row(0, 8, 22, second) + Row(0, 0, 0, empty) +
                       Row(2, 19, 68, "total") + kWordHead + Word(2, "9") + Word(2, "be") + Word(2, "one") +
                       Word(2, "z") + Word(2, "éa") + Word(2, "σίσυφοσ") + Word(2, "ёж") + Word(2, "😀") +
                       Word(1, "two") + Word(1, "x"));
  EXPECT_EQ(m_err, "");
}

TEST_F(Pipeline, UnreadableFilesAreNamedAndTheOthersProcessed) {
  const std::string good = Write("good", "word\n");
  EXPECT_EQ(Run(Over({Path("missing"), good, m_directory})), 1);
  EXPECT_EQ(m_err, "TextReader: " + Path("missing") + ": No such file or directory\nTextReader: " + m_directory +
                       ": Is a directory\n");
  EXPECT_EQ(m_out, kFileHead + Row(1, 1, 5, good) + Row(1, 1, 5, "total") + kWordHead + Word(1, "word"));
  EXPECT_EQ(Run(Over({Path("missing")})), 1);
  EXPECT_EQ(m_out, "");
}

TEST_F(Pipeline, ASignalStopsItInTheMiddleOfAFile) {
  const std::string fifo = Path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const bool isHeld : {true, false}) {
    Start(Over({fifo, "/dev/zero"}));
    const int end = open(fifo.c_str(), O_WRONLY);  // returns when the reader has opened it
    ASSERT_EQ(write(end, "one\n", 4), 4);
    if (!isHeld) {
      close(end);
    }
    Signal(SIGTERM);
    EXPECT_EQ(Finish(), 128 + SIGTERM);
    EXPECT_EQ(m_out.find("total"), std::string::npos) << m_out;
    EXPECT_EQ(m_err, "");
    if (isHeld) {
      close(end);
    }
  }
}
