// SPDX-License-Identifier: Apache-2.0
// iplmod: says whether the kernel will be able to load a module, without running a line of it.
#include <filesystem>

#include "../CommandLine.h"
#include "Report.h"

namespace {

namespace fs = std::filesystem;

struct Options {
  std::vector<std::string> files;
  std::string root = "/";
  std::string kernel;
  std::vector<std::string> moduleMap;
  bool json = false;
};

// The names by which the kernel finds the file: those of the map, or else by the rule for file names.
std::vector<std::string> ModuleNames(const std::string& file, const Options& options) {
  std::vector<std::string> names;
  for (const std::string& entry : options.moduleMap) {
    const size_t colon = entry.find(':');
    const size_t begin = entry.find_first_not_of(':', colon);
    if (colon == 0 || begin == std::string::npos) {
      continue;  // the kernel skips it as well
    }
    std::error_code none;
    const std::string path = entry.substr(begin);
    if (fs::equivalent(path, file, none) || fs::equivalent(options.root + "/" + path, file, none)) {
      names.push_back(entry.substr(0, colon));
    }
  }
  const std::string name = fs::path(file).filename().string();
  if (names.empty() && name.size() > 6 && name.rfind("lib", 0) == 0 && name.rfind(".so") == name.size() - 3) {
    names.push_back(name.substr(3, name.size() - 6));
  }
  return names;
}

Report Check(const std::string& path, const Options& options, const ElfFilePtr& kernel) {
  Report report;
  report.file = path;
  report.modules = ModuleNames(path, options);
  try {
    const auto file = std::make_shared<const ElfFile>(path);
    const ElfFilePtr other = kernel != nullptr ? kernel : FindLibrary(options.root, "libc.so.6", file.get());
    if (other == nullptr) {
      report.Error("wrong-machine", "it is for " + file->kind + ", for which there is no C library");
    } else if (CheckFile(*file, *other, report); other->kind == file->kind) {
      CheckEntries(*file, report);
      CheckNeeds(file, kernel, options.root, report);
    }
  } catch (const std::invalid_argument& reason) {
    report.Error("not-a-library", reason.what());
  }
  return report;
}

int Run(const Options& options) {
  const ElfFilePtr kernel = options.kernel.empty() ? FindLibrary(options.root, "libIPLKernel.so", nullptr)
                                                   : std::make_shared<const ElfFile>(options.kernel);
  std::vector<Report> reports;
  int status = 0;
  for (const std::string& file : options.files) {
    reports.push_back(Check(file, options, kernel));
    status = reports.back().loads ? status : 1;
  }
  options.json ? PrintJson(reports) : PrintText(reports);
  return status;
}

int Main(int argc, char** argv) {
  CLI::App app("Looks at modules of the kernel without running them.", "iplmod");
  Options options;
  app.require_subcommand(1);
  CLI::App* check = app.add_subcommand("check", "Say whether the kernel can load the modules in these files");
  check->set_help_flag("--help", "Print this text and exit");
  check->add_option("FILE", options.files, "The modules' files")->required();
  check->add_option("--sysroot", options.root, "The device's root file system; else this machine's")
      ->check(CLI::ExistingDirectory);
  check->add_option("--kernel", options.kernel, "The kernel's library; else libIPLKernel.so of that file system");
  check->add_option("--modulemap", options.moduleMap, "NAME:PATH, as for the kernel; may be repeated")
      ->allow_extra_args(false);
  check->add_flag("--json", options.json, "Print one JSON array with an object for each file");
  app.footer([check] { return check->help("iplmod"); });
  return ParseAndRun(app, argc, argv, [&options] { return Run(options); });
}

}  // namespace

int main(int argc, char** argv) {
  return RunTool("iplmod", 2, [&] { return Main(argc, argv); });
}
