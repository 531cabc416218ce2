// SPDX-License-Identifier: Apache-2.0
// The module map and the loader, from outside.
#include <algorithm>

#include <ipl/PLString.h>

#include "LoaderFixture.h"
#include "support/CallWatch.h"

class LoaderTest : public LoaderFixture {
 protected:
  LoaderTest() {
    LoadAgain();
    Start();
  }
  void Start() {
    static const std::string s_road = "Road:" + File("Größe");
    static const char* s_arguments[] = {
        "test",           "--modulemap",   "First:/1",    "--modulemap",  nullptr,
        "--modulemap",    "First:/3",      "--modulemap", "Größe:/größe", "--modulemap",
        "Cut\xC3:/c\xC3", "--modulemap",   ":x",          "--modulemap",  "Empty::",
        "--modulemap",    "Plain",         "--modulemap", s_road.c_str(), "--modulemap",
        "--modulemap",    "Value:::/a:b:", "--MODULEMAP", "Upper:/u",     "--modulemap=E:/e",
        "--modulemap"};
    IPLModule_IPLKernel_InitializeKernel(static_cast<int>(std::size(s_arguments)), s_arguments);
  }
  std::string Cycle(const char* name, const char* path = nullptr) {
    m_log.clear();
    kernel->ReleaseModule(kernel->AcquireModule(name, path));
    return m_log;
  }
  /// Returns what the loader writes when it is asked for a module that it cannot give.
  template <typename... Path>
  std::string Refused(const std::string& name, Path... path) {
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "stale_symbol"), nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(kernel->AcquireModule(name.c_str(), path...), nullptr) << name;
    return testing::internal::GetCapturedStderr();
  }
  static std::string Note(const std::string& name, const std::string& reason) {
    return "Note: Module " + name + " was not loaded. Execution will continue without it (reason: " + reason + ")\n";
  }
  static std::string NotOpened(const std::string& name, const std::string& file) {
    EXPECT_EQ(dlopen(file.c_str(), RTLD_NOW), nullptr);
    return Note(name, dlerror());
  }

  const std::string m_alpha = File("Alpha");
};

// '1' and '2' acquire one object by two keys, '3' by the name of another module; 'r' releases it.
TEST_F(LoaderTest, AcquisitionsAreCountedAndTheEntriesCalledInOrder) {
  IPLModule* module = nullptr;
  m_actions["Ap"] = [&](IPLModule*& object) { EXPECT_EQ(object, kernel); };
  m_actions["Au"] = [&](IPLModule*& object) { EXPECT_TRUE(IsOpen("Alpha") && object == module); };
  m_actions["Bl"] = [&](IPLModule*& object) { object = module; };
  for (const std::string steps :
       {"11rr", "22rr", "1rr1r", "12rr", "21rr", "1212rrrr", "12r1rr", "12r2rr", "12r21rrr", "13rr", "132rr3rr"}) {
    m_log.clear();
    int acquired = 0;
    for (const char step : steps) {
      if (step == 'r') {
        kernel->ReleaseModule(module);
        acquired = std::max(acquired - 1, 0);
      } else {
        IPLModule* other =
            kernel->AcquireModule(step == '3' ? "Beta" : "Alpha", step == '2' ? m_alpha.c_str() : nullptr);
        EXPECT_TRUE(other != nullptr && (acquired == 0 || other == module)) << steps;
        module = other;
        ++acquired;
      }
      EXPECT_EQ(IsOpen("Alpha") || IsOpen("Beta"), acquired != 0) << steps << " with " << acquired;
    }
    EXPECT_EQ(std::count(m_log.begin(), m_log.end(), 'l'), std::count(m_log.begin(), m_log.end(), 'u')) << steps;
    EXPECT_EQ(m_log == "Ap Al Au ", steps == "11rr" || steps == "22rr") << steps;
  }
  kernel->ReleaseModule(nullptr);
  kernel->ReleaseModule(kernel);
  EXPECT_TRUE(kernel->AcquireModule("IPLKernel") == kernel && kernel->AcquireModule("IPLKernel", "/nowhere") == kernel);
  EXPECT_EQ(kernel->AcquireModule(nullptr), nullptr);
  EXPECT_EQ(Refused("", m_alpha.c_str()), "");
}

TEST_F(LoaderTest, TheFileFollowsFromNameAndPath) {
  PLString directory;
  EXPECT_TRUE(kernel->GetKernelBinDirectory(directory));
  EXPECT_EQ(directory.GetUTF8() + std::string("/libAlpha.so"), m_alpha);
  const std::string name47 = "The_name_of_this_module_has_forty_seven_letters";
  const std::string path47 = std::string(44, 'x') + ".so";
  const std::string path48 = path47 + "x";
  std::filesystem::current_path(directory.GetUTF8());
  std::filesystem::copy_file("libAlpha.so", path47, std::filesystem::copy_options::overwrite_existing);
  std::filesystem::copy_file("libAlpha.so", path48, std::filesystem::copy_options::overwrite_existing);
  for (const std::string& path : {m_alpha, std::string("libAlpha.so"), path47}) {
    EXPECT_EQ(Cycle("Alpha", path.c_str()), "Ap Al Au ") << path;
  }
  EXPECT_EQ(Cycle(name47.c_str()), "Tp Tl Tu ");
  EXPECT_EQ(Cycle("Größe"), "Gp Gl Gu ");
  EXPECT_EQ(Refused(name47 + "x", m_alpha.c_str()), Note(name47 + "x", "its name is longer than 47 bytes"));
  EXPECT_EQ(Refused("Alpha", path48.c_str()), Note("Alpha", "its path has no '/' and is longer than 47 bytes"));
  // The name's last byte begins a character that takes in the '.' of the file's name.
  EXPECT_EQ(Refused("Alpha\xC3"), NotOpened("Alpha\xC3", directory.GetUTF8() + std::string("/libAlphanso")));
}

TEST_F(LoaderTest, EachFailureIsReportedOnce) {
  const std::string cases[][3] = {{"NoEntry", File("NoEntry"), "IPLModule_PLModule_PutKernel"},
                                  {"NoLoad", File("NoLoad"), "IPLModule_NoLoad_ModuleLoad"},
                                  {"NoUnload", File("NoUnload"), "IPLModule_NoUnload_ModuleUnload"},
                                  {"Alias", m_alpha, "IPLModule_Alias_ModuleLoad"}};
  for (const auto& [name, file, symbol] : cases) {
    EXPECT_EQ(Refused(name, file.c_str()), "Failed to load " + symbol + " from " + file + "\n");
    EXPECT_FALSE(IsOpen(name) || IsOpen("Alpha"));
  }
  EXPECT_EQ(Refused("Absent"), NotOpened("Absent", File("Absent")));
  EXPECT_EQ(Refused("Beta", "libAbsent"), NotOpened("Beta", "./libAbsent"));
  m_actions["Al"] = [](IPLModule*& object) { object = nullptr; };
  EXPECT_EQ(Refused("Alpha"), "");
  EXPECT_EQ(m_log, "Ap Al ") << "no entry runs before all were found, and none after one that refuses";
  EXPECT_FALSE(IsOpen("Alpha"));
  m_actions["Al"] = [&](IPLModule*&) { EXPECT_EQ(Refused("Alpha", ""), NotOpened("Alpha", "./")) << "another key"; };
  EXPECT_EQ(Cycle("Alpha"), "Ap Al Au ");
}

TEST_F(LoaderTest, ALoadEntryThatThrowsLeavesTheLibraryAlone) {
  m_actions["Al"] = [](IPLModule*&) { throw 42; };
  EXPECT_THROW(kernel->AcquireModule("Alpha"), int);
  m_actions.clear();
  m_log.clear();
  EXPECT_EQ(Cycle("Alpha"), "Ap Al Au ");
  void* left = dlopen(m_alpha.c_str(), RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(left, nullptr) << "what was thrown may live there";
  EXPECT_TRUE(dlclose(left) == 0 && dlclose(left) == 0);
  EXPECT_FALSE(IsOpen("Alpha"));
}

TEST_F(LoaderTest, EntriesMayUseTheLoader) {
  IPLModule* other = nullptr;
  m_actions["Al"] = [&](IPLModule*& object) {
    kernel->ReleaseModule(object);
    EXPECT_EQ(kernel->AcquireModule("Alpha"), nullptr) << "it is being loaded";
    other = kernel->AcquireModule("Beta");
  };
  m_actions["Au"] = [&](IPLModule*& object) {
    kernel->ReleaseModule(object);
    EXPECT_EQ(kernel->AcquireModule("Alpha"), nullptr) << "it is being unloaded";
    kernel->ReleaseModule(other);
  };
  EXPECT_EQ(Cycle("Alpha"), "Ap Al Bp Bl Au Bu ");
}

TEST_F(LoaderTest, TheCommandLineMapsNamesToFiles) {
  const std::string mapped[][2] = {{"First", "/1"}, {"Value", "/a:b:"}, {"Größe", "/größe"}, {"Cut", "/c"}};
  for (const auto& [name, file] : mapped) {
    EXPECT_EQ(Refused(name), NotOpened(name, file));
  }
  for (const char* name : {"first", "Upper", "E", "Empty", "Plain", "--modulemap"}) {
    EXPECT_EQ(Refused(name), NotOpened(name, File(name)));
  }
  EXPECT_EQ(Refused("Road"), "Failed to load IPLModule_Road_ModuleLoad from " + File("Größe") + "\n");
}

TEST_F(LoaderTest, SomebodyInFrontOfTheTableSeesEveryCall) {
  LoadAgain();
  std::map<unsigned, int> calls;
  bool isEnding = false;
  const CallWatch<3, 11, 12, 17, 19, 36, 42, 44, 48, 49, 50, 58, 63, 64, 69> watch(kernel, [&](unsigned slot) {
    ++calls[slot];
    EXPECT_EQ(kernel->IsShutdownPending(), isEnding) << slot;
  });
  const auto expectCalls = [&calls](const char* when, std::initializer_list<unsigned> slots) {
    for (const unsigned slot : slots) {
      EXPECT_GT(calls[slot], 0) << "slot " << slot << " at " << when;
    }
    calls.clear();
  };
  Start();
  expectCalls("start-up", {11, 17, 44, 48, 49, 50, 63});
  kernel->ReleaseModule(kernel->AcquireModule("Alpha"));
  expectCalls("loading without a path", {3, 17, 36, 42, 48, 49, 50, 58, 64, 69});
  kernel->ReleaseModule(kernel->AcquireModule("Alpha", m_alpha.c_str()));
  expectCalls("loading with a path", {3, 17, 19, 44, 49, 50, 58, 63, 69});
  isEnding = true;
  IPLModule_IPLKernel_UnloadModule(kernel);
  expectCalls("the end", {12, 19});
}
