#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cli_fixture.h"
#include "core/app/settings.h"
#include "support/child_process.h"

namespace corvanet::test {
namespace {

const std::string kCredentials[] = {"UserName=abc", "Password=pw", "IPAddress=127.0.0.1:9"};

class CliSettingsTest : public CliTest {
 protected:
  // The first command of a new user: creates the installation and stores the credentials.
  void Install() {
    const CliResult result = RunIn({"settings", kCredentials[0], kCredentials[1], kCredentials[2]});
    ASSERT_EQ(result.code, 0) << result.err;
    ASSERT_EQ(result.out, "");
    ASSERT_EQ(result.err, "");
  }
};

TEST_F(CliSettingsTest, FirstCommandCreatesTheInstallationAndTheSettingsFile) {
  Install();
  EXPECT_TRUE(DirectoryExists(base() + "CSVFiles/Base"));
  EXPECT_TRUE(DirectoryExists(base() + "Lists"));
  const std::string content = ReadFile(settings_file());
  const std::vector<std::string> lines = ReadLines(settings_file());
  ASSERT_EQ(lines.size(), 91U);
  EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 91);
  EXPECT_EQ(std::count(content.begin(), content.end(), '\r'), 91);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].substr(0, lines[i].find(',')), SettingsTable()[i].key) << i + 1;
  }
  EXPECT_EQ(lines[2], "PathToDataFiles,CSVFiles/");
  EXPECT_EQ(lines[6], "UserName,abc");
  EXPECT_EQ(lines[7], "Password,pw");
  EXPECT_TRUE(IsOwnerOnly(settings_file()));
  // Nothing of the installation went to the start folder.
  EXPECT_FALSE(Exists(start() + "LogFile.txt"));
  EXPECT_FALSE(Exists(start() + "RunListNum.txt"));
}

TEST_F(CliSettingsTest, ValuesAreSetAsAUserWouldSetThem) {
  Install();
  const CliResult result = RunIn({"settings", "UpTrends=1", "DownloadCompleteMessageNo=True",
                                  "RetryNumber=0", "PathToLists=" + base() + "MyLists/"});
  ASSERT_EQ(result.code, 0) << result.err;
  // The retry field refuses 0 with its message box: printed, CR as a new line, then an empty line.
  EXPECT_EQ(result.out,
            "Please enter a whole numerical value.\n"
            "Retry number will now be reset to the default value.\n\n");
  const std::vector<std::string> lines = ReadLines(settings_file());
  EXPECT_EQ(lines[3], "PathToLists,MyLists/");
  EXPECT_EQ(lines[8], "RetryNumber,3");
  EXPECT_EQ(lines[9], "DownloadCompleteMessageYes,False");
  EXPECT_EQ(lines[10], "DownloadCompleteMessageNo,True");
  EXPECT_EQ(lines[14], "UpTrends, 1");
}

TEST_F(CliSettingsTest, ABadValueChangesNothing) {
  Install();
  const std::string stored = ReadFile(settings_file());
  const std::vector<std::vector<std::string>> bad = {
      {"settings", "UserName=zzz", "UpTrends=2"},
      {"settings", "UserName=zzz", "SystemMessagesNo=perhaps"},
      {"settings", "UserName=zzz", "NoSuchKey=1"},
      {"settings", "username=zzz"},
      {"settings", "Stat2File3=Advances"},  // a control the file does not keep
      {"settings", "UserName"},
      {"settings", "UserName=zzz", "Password=two\nlines"},  // the file could not give it back
  };
  for (const auto& args : bad) {
    const CliResult result = RunIn(args);
    EXPECT_EQ(result.code, 2) << args.back();
    EXPECT_TRUE(Contains(result.err, "corvanet-cli settings: ")) << args.back();
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(ReadFile(settings_file()), stored) << args.back();
  }
}

TEST_F(CliSettingsTest, RelativeBaseDirectoryIsTheSameFolderAfterStartUp) {
  // The real program makes the program folder current, so a relative root must be resolved first.
  const CliResult made =
      RunProcess("--base-dir rel settings UserName=abc Password=pw IPAddress=127.0.0.1:9");
  ASSERT_EQ(made.code, 0) << made.err;
  EXPECT_EQ(made.out, "");
  ASSERT_EQ(ReadLines(start() + "rel/Rondex/Rondex.ini").size(), 91U);
  const CliResult printed = RunProcess("--base-dir rel settings");
  EXPECT_TRUE(Contains(printed.out, "\nUserName=abc\n")) << printed.out;
  EXPECT_TRUE(Contains(printed.out, "\nPathToDataFiles=" + start() + "rel/CSVFiles/\n"))
      << printed.out;
}

}  // namespace
}  // namespace corvanet::test
