// SPDX-License-Identifier: Apache-2.0
#include "HostOptions.h"

#include <getopt.h>

const char kHostHelp[] =
    "Usage: iplhost [OPTION]... --module NAME [--module NAME]... [-- ARGUMENT...]\n"
    "Loads the kernel library and the named modules, and runs until the modules are done or SIGINT or SIGTERM "
    "arrives.\n"
    "\n"
    "  --module NAME          acquire the module NAME; modules are released in reverse order\n"
    "  --modulemap NAME:PATH  the library of the module NAME; without it, libNAME.so in the directory of iplhost\n"
    "  --kernel PATH          the kernel library; without it, libIPLKernel.so above the directory of iplhost, else as\n"
    "                         the loader finds it\n"
    "  --fault-handler        write a crash report to standard error when a fatal signal arrives, also in start-up;\n"
    "                         the first SIGTERM still stops the run, a second one is reported\n"
    "  --wall-clock           set the kernel's GMT to the system's time, once, before any module is loaded\n"
    "  --help                 print this text and exit\n"
    "  --version              print the version and exit\n"
    "\n"
    "The arguments behind \"--\" are for the modules.\n"
    "\n"
    "Exit status: the highest that a module reported, 0 if all went well; 1 if the system refused memory, a thread or\n"
    "the output; 2 for a mistake on the command line; 3 if the kernel library cannot be used; 4 if a module cannot be\n"
    "acquired; 128 + N if signal N ended the run. After a crash report the process ends by SIGABRT.\n";

namespace {

enum OptionCode : int { kModule = 1000, kModuleMap, kKernel, kFaultHandler, kWallClock, kHelp, kVersion };

const option kLongOptions[] = {
    {"module", required_argument, nullptr, kModule},  {"modulemap", required_argument, nullptr, kModuleMap},
    {"kernel", required_argument, nullptr, kKernel},  {"fault-handler", no_argument, nullptr, kFaultHandler},
    {"wall-clock", no_argument, nullptr, kWallClock}, {"help", no_argument, nullptr, kHelp},
    {"version", no_argument, nullptr, kVersion},      {nullptr, 0, nullptr, 0},
};

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

/// The kernel reads the map itself and skips what it cannot use without a word, so the form is checked here.
bool IsModuleMapping(const std::string& value) {
  const std::string::size_type colon = value.find(':');
  return colon != std::string::npos && colon != 0 && value.find_first_not_of(':', colon) != std::string::npos;
}

/// Takes one option over into options. word: as it stands on the command line. Returns what is wrong, or nothing.
std::string TakeOption(int code, const std::string& word, const std::string& value, HostOptions& options) {
  switch (code) {
    case kModule:
      options.modules.push_back(value);
      return value.empty() ? "option '--module' needs a name that is not empty" : "";
    case kModuleMap:
      // getopt_long accepts more spellings than the kernel does.
      if (word != "--modulemap") {
        return "option '--modulemap' has to be written in full, with its value as the next argument: " + Quoted(word);
      }
      return IsModuleMapping(value) ? "" : "option '--modulemap' needs a value of the form NAME:PATH: " + Quoted(value);
    case kKernel:
      options.kernelPath = value;
      return value.empty() ? "option '--kernel' needs a path that is not empty" : "";
    case kFaultHandler:
      options.faultHandler = true;
      return "";
    case kWallClock:
      options.wallClock = true;
      return "";
    case kHelp:
      options.action = HostOptions::Action::ShowHelp;
      return "";
    case kVersion:
      options.action = HostOptions::Action::ShowVersion;
      return "";
    case ':':
      return "option " + Quoted(word) + " needs a value";
    default:
      return optopt >= kModule ? "option " + Quoted(word.substr(0, word.find('='))) + " takes no value"
                               : "unknown option " + Quoted(word);
  }
}

/// Reads the options of arguments, which ends with null; stops at the first mistake.
std::string ReadOptions(std::vector<char*>& arguments, HostOptions& options) {
  const int count = static_cast<int>(arguments.size()) - 1;
  optind = 0;
  opterr = 0;
  for (int position = 1; options.action == HostOptions::Action::Run; position = optind) {
    // '+' ends the options at the first argument that is none, ':' tells a missing value from an unknown option.
    const int code = getopt_long(count, arguments.data(), "+:", kLongOptions, nullptr);
    const std::string word = position < count ? arguments[static_cast<size_t>(position)] : "";
    if (code == -1) {
      if (position < count && word != "--") {
        return "unexpected argument " + Quoted(word) + "; arguments for modules stand behind '--'";
      }
      return options.modules.empty() ? "no '--module' is given" : "";
    }
    std::string mistake = TakeOption(code, word, optarg == nullptr ? "" : optarg, options);
    if (!mistake.empty()) {
      return mistake;
    }
  }
  return "";
}

}  // namespace

HostOptions ParseHostOptions(int argc, const char* const* argv) {
  // getopt_long wants an array that it may write to; the original one goes to the kernel and the modules.
  std::vector<char*> arguments;
  arguments.reserve(static_cast<size_t>(argc) + 1);
  for (int i = 0; i < argc; ++i) {
    arguments.push_back(const_cast<char*>(argv[i]));
  }
  arguments.push_back(nullptr);

  HostOptions options;
  options.mistake = ReadOptions(arguments, options);
  if (!options.mistake.empty()) {
    options.action = HostOptions::Action::Refuse;
  }
  return options;
}
