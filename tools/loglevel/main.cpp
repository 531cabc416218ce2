// SPDX-License-Identifier: Apache-2.0
// ipl-loglevel: shows and sets which log messages are enabled, for all processes of the machine.
#include <charconv>
#include <limits>

#include "../CommandLine.h"
#include "LogLevelStore.h"

namespace {

constexpr LogLevelSegment kAll = {LogLevelSegment::kEveryCategory, 0};
// Level 0 passes whatever the words are. The one other message that these enable, category -1 at the lowest of all
// levels, is none that anybody writes; no pair of words enables less.
constexpr LogLevelSegment kOff = {-1, std::numeric_limits<int32_t>::min()};

void Show() {
  const auto words = ReadLogLevel();
  if (!words) {
    std::cout << "The segment does not exist: no process has asked for a log level yet, and nothing is set.\n";
    return;
  }
  const char* category = "";
  std::string enabled = "category " + std::to_string(words->category) + " at levels up to " +
                        std::to_string(words->level) + ", and level 0 of every category";
  if (words->category == kAll.category) {
    category = " (every category)";
    enabled = "every category and level";
  } else if (words->category == kOff.category && words->level == kOff.level) {
    category = " (no category)";
    enabled = "level 0 of every category";
  }
  std::cout << "category: " << words->category << category << "\nlevel:    " << words->level
            << "\nenabled:  " << enabled << "\n";
}

// The library itself would take octal numbers, and the word "true".
std::string CheckNumber(const std::string& text) {
  int32_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return text == std::to_string(number) ? "" : "'" + text + "' is no number from -2147483648 to 2147483647";
}

int Main(int argc, char** argv) {
  CLI::App app("Shows or sets which log messages are enabled, for all processes of this machine.", "ipl-loglevel");
  LogLevelSegment words = {};
  app.require_subcommand(1);
  app.footer("Exit status: 0 if all went well, 1 if the system refused, 2 for a mistake on the command line.");
  app.add_subcommand("show", "Print the setting; creates nothing")->callback(&Show);
  CLI::App* set = app.add_subcommand("set", "Enable one category (8: every category and level) at levels up to LEVEL");
  set->add_option("CATEGORY", words.category)->required()->check(CheckNumber);
  set->add_option("LEVEL", words.level)->required()->check(CheckNumber);
  set->callback([&words] { WriteLogLevel(words); });
  app.add_subcommand("all", "Enable every category and level")->callback([] { WriteLogLevel(kAll); });
  app.add_subcommand("off", "Enable level 0 alone, which is always enabled")->callback([] { WriteLogLevel(kOff); });
  return ParseAndRun(app, argc, argv, [] { return 0; });
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool("ipl-loglevel", 1, [&] { return Main(argc, argv); });
}
