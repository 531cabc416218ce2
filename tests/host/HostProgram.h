// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TESTS_HOST_HOSTPROGRAM_H
#define IPL_TESTS_HOST_HOSTPROGRAM_H

#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using Arguments = std::vector<std::string>;

/// Runs iplhost as a child. Files lie in a directory that ends with the case.
class HostProgram : public testing::Test {
 protected:
  HostProgram() : m_directory(mkdtemp(std::string("/tmp/iplhost-XXXXXX").data())) {}
  ~HostProgram() override { std::filesystem::remove_all(m_directory); }

  /// The arguments for iplhost: its own options, the examples' places, one of them to run, and its arguments.
  static Arguments With(Arguments options, const std::string& module, const Arguments& behind) {
    for (const char* place : {"TextReader:" TEST_TextReader, "WordCount:" TEST_WordCount, "TextReport:" TEST_TextReport,
                              "Progress:" TEST_Progress, "AlarmClock:" TEST_AlarmClock, "Crash:" TEST_Crash}) {
      options.insert(options.end(), {"--modulemap", place});
    }
    options.insert(options.end(), {"--module", module, "--"});
    options.insert(options.end(), behind.begin(), behind.end());
    return options;
  }
  /// A line of the report on files: lines, words and characters.
  static std::string Row(size_t lines, size_t words, size_t characters, const std::string& file) {
    char row[300];
    snprintf(row, sizeof(row), "%10zu %10zu %12zu  %s\n", lines, words, characters, file.c_str());
    return row;
  }

  std::string Path(const std::string& name) const { return m_directory + "/" + name; }
  std::string Write(const std::string& name, const std::string& content) const {
    std::ofstream(Path(name), std::ios::binary) << content;
    return Path(name);
  }

  std::string Content(const std::string& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  void Start(const Arguments& arguments) {
    // SIGINT is ignored, as for a shell's background jobs; the shell's process becomes the child.
    std::string command = "trap '' INT; echo $$; exec " TEST_EMULATOR " '" TEST_iplhost "'";
    for (const std::string& argument : arguments) {
      command += " '" + argument + "'";
    }
    m_pOut = popen((command + " 2>" + Path("err")).c_str(), "r");
    m_out.clear();
    ReadUntil("\n");
    m_child = std::stoi(m_out);
    m_out.clear();
  }
  void Signal(int number) const { kill(m_child, number); }
  /// Reads the child's output until it ends with text, or to its end.
  void ReadUntil(const std::string& text) {
    int byte = 0;
    while ((text.empty() || m_out.find(text) == std::string::npos) && (byte = fgetc(m_pOut)) != EOF) {
      m_out += static_cast<char>(byte);
    }
  }
  /// Returns the exit status, or minus the signal that ended the child.
  int Finish() {
    ReadUntil("");
    const int status = pclose(m_pOut);
    m_err = Content("err");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  int Run(const Arguments& arguments) {
    Start(arguments);
    return Finish();
  }

  const std::string m_directory;
  std::string m_out, m_err;
  FILE* m_pOut = nullptr;
  pid_t m_child = 0;
};

#endif  // IPL_TESTS_HOST_HOSTPROGRAM_H
