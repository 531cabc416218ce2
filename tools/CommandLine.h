// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_TOOLS_COMMANDLINE_H
#define IPL_TOOLS_COMMANDLINE_H

#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

/// Runs a tool and returns its exit status: what run returns, or failure if that throws or standard output cannot be
/// written.
template <typename Run>
int RunTool(const char* name, int failure, Run run) {
  int status = failure;
  try {
    status = run();
  } catch (const std::exception& exception) {
    std::cerr << name << ": " << exception.what() << "\n";
  }
  if (!std::cout.flush()) {
    std::cerr << name << ": cannot write to standard output\n";
    return failure;
  }
  return status;
}

/// Reads a tool's command line and does what it asks for. Returns 2 for a mistake in it, 0 after the help or the
/// version, else what run returns.
template <typename Run>
int ParseAndRun(CLI::App& app, int argc, char** argv, Run run) {
  const std::string name = app.get_name();
  app.set_help_flag("--help", "Print this text and exit");
  app.set_version_flag("--version", name + " " IPL_VERSION, "Print the version and exit");
  app.failure_message([&name](const CLI::App*, const CLI::Error& mistake) {
    return name + ": " + mistake.what() + "; see '" + name + " --help'\n";
  });
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& mistake) {
    return app.exit(mistake) == 0 ? 0 : 2;
  }
  return run();
}

#endif  // IPL_TOOLS_COMMANDLINE_H
