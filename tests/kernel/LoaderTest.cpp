// SPDX-License-Identifier: Apache-2.0
// The module map and the loader, from outside.
#include <algorithm>
#include <array>

#include <ipl/PLString.h>

#include "LoaderFixture.h"
#include "support/KernelTable.h"

namespace {

class LoaderTest : public LoaderFixture {
 protected:
  LoaderTest() {
    for (const char* value :
         std::array<const char*, 10>{"First:/1", nullptr, "First:/3", "Größe:/größe", "Cut\xC3:/c\xC3", ":x",
                                     "Empty::", "Plain", m_road.c_str(), "--modulemap"}) {
      m_arguments.insert(m_arguments.end(), {"--modulemap", value});
    }
    m_arguments.insert(m_arguments.end(),
                       {"Value:::/a:b:", "--MODULEMAP", "Upper:/u", "--modulemap=E:/e", "--modulemap"});
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
  const std::string m_road = "Road:" + File("Größe");
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

  // A module that acquires itself in its first entry is loaded twice, here with another object each time.
  IPLModule inner;
  other = nullptr;
  m_actions["Ap"] = [&](IPLModule*& object) {
    other = other == nullptr ? (other = object, kernel->AcquireModule("Alpha")) : other;
  };
  m_actions["Al"] = [&](IPLModule*& object) { object = m_log == "Ap Ap Al " ? &inner : object; };
  m_actions.erase("Au");
  m_log.clear();
  IPLModule* outer = kernel->AcquireModule("Alpha");
  EXPECT_TRUE(outer != nullptr && outer != &inner && other == &inner);
  kernel->ReleaseModule(&inner);
  EXPECT_EQ(kernel->AcquireModule("Alpha"), outer);
  kernel->ReleaseModule(outer);
  EXPECT_TRUE(IsOpen("Alpha"));
  kernel->ReleaseModule(outer);
  EXPECT_EQ(m_log, "Ap Ap Al Al Au Au ");
  EXPECT_FALSE(IsOpen("Alpha"));
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

std::array<int, KernelTable::kSlotCount> s_calls;
std::array<void* (*)(IPLKernel*, void*, void*, void*, void*), KernelTable::kSlotCount> s_originals;
bool s_ending = false;

// Serves for each operation whose operands are at most four words: they are passed on as they came.
template <unsigned kSlot>
void* Front(IPLKernel* kernel, void* first, void* second, void* third, void* fourth) {
  ++s_calls[kSlot];
  EXPECT_EQ(kernel->IsShutdownPending(), s_ending) << kSlot;
  return s_originals[kSlot](kernel, first, second, third, fourth);
}

template <unsigned... kSlots>
void StandInFront(KernelTable& table) {
  ((s_originals[kSlots] = table.Original<void*(IPLKernel*, void*, void*, void*, void*)>(kSlots)), ...);
  (table.Replace(kSlots, &Front<kSlots>), ...);
}

void ExpectCalls(const char* when, std::initializer_list<unsigned> slots) {
  for (const unsigned slot : slots) {
    EXPECT_GT(s_calls[slot], 0) << "slot " << slot << " at " << when;
  }
  s_calls = {};
}

TEST_F(LoaderTest, SomebodyInFrontOfTheTableSeesEveryCall) {
  LoadAgain();
  KernelTable table(kernel);
  StandInFront<3, 11, 12, 17, 19, 36, 42, 44, 48, 49, 50, 58, 63, 64, 69>(table);
  IPLModule_IPLKernel_InitializeKernel(m_argc, m_arguments.data());
  EXPECT_EQ(s_calls[11], 3) << "for the state, the modules and the threads";
  ExpectCalls("start-up", {17, 44, 48, 49, 50, 63});
  IPLModule* alpha = kernel->AcquireModule("Alpha");
  ExpectCalls("loading without a path", {3, 17, 36, 42, 48, 49, 50, 58, 64, 69});
  kernel->ReleaseModule(kernel->AcquireModule("Alpha", m_alpha.c_str()));
  ExpectCalls("loading with a path", {3, 17, 19, 44, 49, 50, 58, 63, 69});
  kernel->ReleaseModule(alpha);
  s_ending = true;
  IPLModule_IPLKernel_UnloadModule(kernel);
  EXPECT_EQ(s_calls[12], 3);
  ExpectCalls("the end", {12, 19});
}

}  // namespace
