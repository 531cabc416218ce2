// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_HOST_HOSTOPTIONS_H
#define IPL_HOST_HOSTOPTIONS_H

#include <string>
#include <vector>

/// What the command line asks iplhost to do.
struct HostOptions {
  enum class Action { Run, ShowHelp, ShowVersion, Refuse };

  Action action = Action::Run;
  std::string mistake;     ///< what is wrong with the command line, in one line; for Refuse
  std::string kernelPath;  ///< empty: not given
  bool faultHandler = false;
  bool wallClock = false;
  std::vector<std::string> modules;  ///< in the order of the command line
};

/// Reads the options up to "--". argv is left as it is.
HostOptions ParseHostOptions(int argc, const char* const* argv);

/// The text of --help.
extern const char kHostHelp[];

#endif  // IPL_HOST_HOSTOPTIONS_H
