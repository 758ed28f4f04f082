#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "cli_fixture.h"
#include "core/platform/headless_shell.h"

namespace corvanet::test {
namespace {

using CliStartupTest = CliTest;

TEST_F(CliStartupTest, UnknownOptionsAndCommandsAreUsageErrors) {
  const std::vector<std::vector<std::string>> bad = {
      {"--bogus"}, {"--base-dir", base_arg(), "frobnicate"}, {"--base-dir"}, {"--base-dir="},
      {"-h"},
  };
  for (const auto& args : bad) {
    const CliResult result = Run(args);
    EXPECT_EQ(result.code, 2) << args.back();
    EXPECT_NE(result.err.find("usage: corvanet-cli [--base-dir DIR] [--log] [--yes]"),
              std::string::npos)
        << args.back();
    EXPECT_NE(result.err.find("  settings [KEY=VALUE ...]"), std::string::npos);
    EXPECT_EQ(result.out, "");
  }
  // Refused before start-up: nothing was installed anywhere.
  EXPECT_FALSE(Exists(base()));
  EXPECT_FALSE(Exists(start() + "LogFile.txt"));

  const CliResult run = RunIn({"run", "8"});
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.err.find("corvanet-cli run: "), std::string::npos);
}

TEST_F(CliStartupTest, NoCommandPrintsWhereEverythingLives) {
  const CliResult result = Run({"--base-dir=" + base_arg(), "--yes"});
  ASSERT_EQ(result.code, 0) << result.err;
  EXPECT_NE(result.out.find("Corvanet for Ovalith - Version 5.1 - For Ovalith Subscribers\n"),
            std::string::npos);
  EXPECT_NE(result.out.find("Settings file:    " + settings_file() + "\n"), std::string::npos);
  EXPECT_NE(result.out.find("Datafiles:        " + base() + "CSVFiles/\n"), std::string::npos);
}

TEST_F(CliStartupTest, RunListNumOutsideOneToSevenIsAnInteractiveStart) {
  for (const char* number : {"0", "-2", "9", "x"}) {
    WriteFile(start() + "RunListNum.txt", std::string(number) + "\r\n");
    const CliResult result = RunIn({});
    EXPECT_EQ(result.code, 0) << number << result.err;
    EXPECT_NE(result.out.find("Installation:     " + base()), std::string::npos) << number;
    EXPECT_EQ(ReadFile(start() + "RunListNum.txt"), "0\r\n");
  }
  RemoveFile(start() + "RunListNum.txt");
  EXPECT_EQ(RunIn({}).code, 0);
  EXPECT_FALSE(Exists(start() + "RunListNum.txt"));  // a missing file is not created
}

TEST_F(CliStartupTest, LogOptionStartsAFreshLogInTheProgramFolder) {
  const std::string log_file = base() + "Rondex/LogFile.txt";
  ASSERT_EQ(RunIn({}).code, 0);
  WriteFile(log_file, "old lines\r\n");
  const CliResult result = RunIn({"--log", "settings", "UserName=abc", "Password=pw"});
  ASSERT_EQ(result.code, 0) << result.err;
  const std::vector<std::string> lines = ReadLines(log_file);
  ASSERT_GT(lines.size(), 16U);
  EXPECT_EQ(lines[2], "ProgramDirectory:  " + base() + "Rondex/");
  EXPECT_EQ(ReadFile(log_file).find("old lines"), std::string::npos);
  EXPECT_NE(ReadFile(log_file).find(" - Not Set - SaveToINI_Click\r\n"), std::string::npos);
}

TEST(HeadlessShellTest, PrintsMessagesAndAnswersQuestions) {
  std::ostringstream out;
  HeadlessShell no(out, false);
  EXPECT_EQ(no.MessageBox("first\rsecond", "Title", Buttons::kOk, Icon::kNone), Answer::kOk);
  EXPECT_EQ(no.MessageBox("Go on?", "Title", Buttons::kYesNo, Icon::kQuestion), Answer::kNo);
  EXPECT_EQ(no.MessageBox("Save?", "Title", Buttons::kYesNoCancel, Icon::kQuestion), Answer::kNo);
  EXPECT_EQ(out.str(), "first\nsecond\n\nGo on?\n\nSave?\n\n");

  std::ostringstream yes_out;
  HeadlessShell yes(yes_out, true);
  EXPECT_EQ(yes.MessageBox("Go on?", "Title", Buttons::kYesNo, Icon::kQuestion), Answer::kYes);
  EXPECT_EQ(yes.MessageBox("Done.", "Title", Buttons::kOk, Icon::kNone), Answer::kOk);
}

}  // namespace
}  // namespace corvanet::test
