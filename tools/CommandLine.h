// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TOOLS_COMMANDLINE_H
#define IPL_TOOLS_COMMANDLINE_H

#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

/// Reads a tool's command line and runs what it asks for. Returns the exit status: 2 for a mistake on the
/// command line, failure if run throws or standard output cannot be written, else what run returns.
template <typename Run>
int RunTool(CLI::App& app, int argc, char** argv, int failure, Run run) {
  const std::string name = app.get_name();
  app.set_help_flag("--help", "Print this text and exit");
  app.set_version_flag("--version", name + " " IPL_VERSION, "Print the version and exit");
  app.failure_message([&name](const CLI::App*, const CLI::Error& mistake) {
    return name + ": " + mistake.what() + "; see '" + name + " --help'\n";
  });
  int status = failure;
  try {
    app.parse(argc, argv);
    status = run();
  } catch (const CLI::ParseError& mistake) {
    status = app.exit(mistake) == 0 ? 0 : 2;
  } catch (const std::exception& exception) {
    std::cerr << name << ": " << exception.what() << "\n";
  }
  if (!std::cout.flush()) {
    std::cerr << name << ": cannot write to standard output\n";
    return failure;
  }
  return status;
}

#endif  // IPL_TOOLS_COMMANDLINE_H
