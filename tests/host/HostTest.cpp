// SPDX-License-Identifier: Apache-2.0
#include "HostProgram.h"

const char kReporterMap[] = "Reporter:" TEST_HostTestModules;
const char kHangerMap[] = "Hanger::" TEST_HostTestModules;

TEST_F(HostProgram, HelpAndVersionGoToStandardOutput) {
  EXPECT_EQ(Run({"--help", "--bogus"}), 0);
  EXPECT_TRUE(m_err.empty() && m_out.find("--modulemap NAME:PATH") != std::string::npos);
  EXPECT_EQ(Run({"--version"}), 0);
  EXPECT_EQ(m_out + m_err, "iplhost " TEST_VERSION "\n");
}

TEST_F(HostProgram, EachMistakeGetsOneLineThatNamesItAndStatus2) {
  const std::pair<Arguments, const char*> cases[] = {
      {{}, "--module"},
      {{"--module"}, "--module"},
      {{"--module", ""}, "--module"},
      {{"--module", "Reporter", "--bogus"}, "'--bogus'"},
      {{"-x"}, "'-x'"},
      {{"--help=1"}, "'--help' takes no value"},
      {{"--module", "Reporter", "stray", "--", "x"}, "'stray'"},
      {{"--module", "--", "stray"}, "'stray'"},
      {{"--", "--module", "Reporter"}, "--module"},
      {{"--module", "Reporter", "--kernel", ""}, "--kernel"},
      {{"--modulemap"}, "--modulemap"},
      {{"--modulemap", "core"}, "'core'"},
      {{"--modulemap", ":x"}, "':x'"},
      {{"--modulemap", "core:::"}, "'core:::'"},
      {{"--modulemap=core:/x", "--module", "core"}, "'--modulemap=core:/x'"},  // the kernel would not see these two
      {{"--modulem", "core:/x", "--module", "core"}, "'--modulem'"},
  };
  for (const auto& [arguments, named] : cases) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    EXPECT_EQ(Run(arguments), 2);
    EXPECT_EQ(m_out, "");
    EXPECT_EQ(m_err.find("iplhost: "), 0U);
    EXPECT_NE(m_err.find(named), std::string::npos) << m_err;
    EXPECT_EQ(m_err.find('\n'), m_err.size() - 1) << m_err;
  }
}

TEST_F(HostProgram, WhatCannotBeLoadedIsNamed) {
  EXPECT_EQ(Run({"--kernel", Path("none.so"), "--module", "Reporter"}), 3);
  EXPECT_NE(m_err.find("'" + Path("none.so") + "'"), std::string::npos) << m_err;
  EXPECT_EQ(Run({"--kernel", "libm.so.6", "--module", "Reporter"}), 3);
  EXPECT_NE(m_err.find("entry symbol IPLModule_IPLKernel_LoadModule"), std::string::npos) << m_err;

  EXPECT_EQ(Run({"--modulemap", kReporterMap, "--module", "Reporter", "--module", "Missing"}), 4);
  EXPECT_NE(m_err.find("iplhost: module 'Missing' cannot be acquired\n"), std::string::npos) << m_err;
  EXPECT_NE(m_out.find("\nReporter loaded\nReporter unloaded\n"), std::string::npos) << m_out;
}

TEST_F(HostProgram, TheHighestReportedStatusIsTheExitStatus) {
  const std::pair<Arguments, int> cases[] = {{{"0"}, 0}, {{"3", "7", "5"}, 7}, {{"256"}, 125}, {{"-4"}, 1}};
  for (const auto& [statuses, expected] : cases) {
    Arguments arguments = {"--module=Reporter", "--modulemap", kReporterMap, "--"};
    arguments.insert(arguments.end(), statuses.begin(), statuses.end());
    EXPECT_EQ(Run(arguments), expected);
    EXPECT_NE(m_out.find("[" + statuses[0] + "]"), std::string::npos) << m_out;
    EXPECT_EQ(m_err, "");
  }
}

TEST_F(HostProgram, WithoutWorkItRunsUntilASignal) {
  for (const int number : {SIGTERM, SIGINT}) {
    Start({"--modulemap", kReporterMap, "--module", "Reporter"});
    ReadUntil("Reporter loaded\n");
    Signal(number);
    EXPECT_EQ(Finish(), 128 + number);
  }
}

TEST_F(HostProgram, ModulesAreReleasedInReverseOrderAndASecondSignalEndsAHostThatHangs) {
  Start({"--modulemap", kReporterMap, "--modulemap", kHangerMap, "--module", "Hanger", "--module", "Reporter"});
  ReadUntil("Reporter loaded\n");
  Signal(SIGTERM);
  ReadUntil("Hanger unloading\n");
  EXPECT_NE(m_out.find("Reporter unloaded\nHanger unloading\n"), std::string::npos) << m_out;
  Signal(SIGINT);
  EXPECT_EQ(Finish(), -SIGINT);
}
