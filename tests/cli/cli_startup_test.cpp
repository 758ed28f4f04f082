#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "cli_fixture.h"
#include "core/platform/headless_shell.h"

namespace corvanet::test {
namespace {

using CliStartupTest = CliTest;

TEST_F(CliStartupTest, RunListNumOutsideOneToSevenIsAnInteractiveStart) {
  for (const char* number : {"0", "-2", "9", "x"}) {
    WriteFile(start() + "RunListNum.txt", std::string(number) + "\r\n");
    const CliResult result = RunIn({});
    EXPECT_EQ(result.code, 0) << number << result.err;
    EXPECT_TRUE(Contains(result.out, "Installation:     " + base())) << number;
    EXPECT_EQ(ReadFile(start() + "RunListNum.txt"), "0\r\n");
  }
  RemoveFile(start() + "RunListNum.txt");
  EXPECT_EQ(RunIn({}).code, 0);
  EXPECT_FALSE(Exists(start() + "RunListNum.txt"));  // a missing file is not created
}

// A scheduler reads the status alone: a run refused before it began must not look like success,
// whether asked for by command or by RunListNum.txt.
TEST_F(CliStartupTest, ARunThatNeverStartsExitsFour) {
  struct Case {
    std::vector<std::string> args;
    std::string run_list_num;  // "" = no file
  };
  const std::vector<Case> cases = {
      {{"run", "1"}, ""},  // a new installation: no credentials, no list
      {{"run", "7"}, ""},  // a full list without a vendor
      {{}, "2\r\n"},       // the unattended start
  };
  for (const Case& c : cases) {
    if (!c.run_list_num.empty()) WriteFile(start() + "RunListNum.txt", c.run_list_num);
    const CliResult result = RunIn(c.args);
    EXPECT_EQ(result.code, cli::kExitRefused) << result.out;
    EXPECT_TRUE(Contains(result.out, "Run not started.\n")) << result.out;
  }
}

// The log and its start-up report go to the program folder, never the folder the program was
// started from.
TEST_F(CliStartupTest, LogOptionStartsAFreshLogInTheProgramFolder) {
  const std::string log_file = base() + "Rondex/LogFile.txt";
  ASSERT_EQ(RunIn({}).code, 0);
  WriteFile(log_file, "old lines\r\n");
  WriteFile(start() + "LogFile.txt", "the user's own notes\n");
  const CliResult result = RunIn({"--log", "settings", "UserName=abc", "Password=pw"});
  ASSERT_EQ(result.code, 0) << result.err;
  const std::vector<std::string> lines = ReadLines(log_file);
  ASSERT_GT(lines.size(), 16U);
  EXPECT_EQ(lines[2], "ProgramDirectory:  " + base() + "Rondex/");
  EXPECT_FALSE(Contains(ReadFile(log_file), "old lines"));
  EXPECT_TRUE(Contains(ReadFile(log_file), " - Not Set - SaveToINI_Click\r\n"));
  EXPECT_EQ(ReadFile(start() + "LogFile.txt"), "the user's own notes\n");
}

}  // namespace
}  // namespace corvanet::test
