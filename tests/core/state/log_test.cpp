#include "core/state/log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/app/settings.h"
#include "core/platform/files.h"
#include "support/child_process.h"
#include "support/test_session.h"

namespace corvanet::test {
namespace {

void SetTime(ManualClock& clock) {
  clock.now.year = 2026;
  clock.now.month = 11;
  clock.now.day = 23;
  clock.now.hour = 14;
  clock.now.minute = 5;
  clock.now.second = 9;
}

TEST(WriteLogTest, LineIsTimeDetailAndMessage) {
  TestSession t;
  Session& s = t.session;
  SetTime(t.clock);
  t.EnableLog();
  const mode_t umask_before = ::umask(0);  // 0600 must come from the program, not the environment
  LogEntry(s, "LoadINI");
  ::umask(umask_before);
  s.app.LogDetail = "$NYA Daily";
  Log(s, "UpdateDatafile - no match");
  Log(s, "forged\r\n14:00:00 - Not Set - line");  // text from outside stays on its line
  EXPECT_EQ(t.LogText(),
            "14:05:09 - Not Set - LoadINI\r\n"
            "14:05:09 - $NYA Daily - UpdateDatafile - no match\r\n"
            "14:05:09 - $NYA Daily - forged??14:00:00 - Not Set - line\r\n");
  EXPECT_TRUE(IsOwnerOnly(LogFilePath(s)));
}

TEST(WriteLogTest, NothingIsAddedWhileTheBoxIsUnticked) {
  TestSession t;
  Session& s = t.session;
  WriteSettingsReport(s);
  const std::string report = t.LogText();
  LogEntry(s, "LoadINI");
  WriteLog(s, "direct call");
  LoadINI(s);
  SaveToINI_Click(s);
  EXPECT_EQ(t.LogText(), report);
}

TEST(SettingsReportTest, SixteenLinesOfTheMainSettings) {
  TestSession t;
  Session& s = t.session;
  SetTime(t.clock);
  s.ui.ImplementSpecialFunctions = 1;
  s.ui.SystemMessagesYes = false;
  s.ui.SystemMessagesNo = true;
  s.ui.RetryNumber = "2.5";
  WriteFile(LogFilePath(s), "");  // a log some copy left readable by others
  OpenToOthers(LogFilePath(s));
  WriteSettingsReport(s);
  const std::vector<std::string> expected = {
      "2026-11-23",
      "",
      "ProgramDirectory:  " + t.base("Rondex/"),
      "PathToDataFiles.Text:  :" + t.base("CSVFiles/"),
      "PathToLists.Text:  " + t.base("Lists/"),
      "ImplementSpecialFunctions.Value:   1",
      "MakeMetaStockPxFiles.Value:   0",
      "PathToMSPxFiles.Text:  " + t.base("MetaStock/"),
      "UserName.Text:  user",
      "Password.Text:  secret",
      "RetryNumber.Text:  2.5",
      "DownloadCompleteMessageYes.Value:  True",
      "DownloadCompleteMessageNo.Value:  False",
      "SystemMessagesYes.Value:  False",
      "SystemMessagesNo.Value:  True",
      "",
  };
  EXPECT_EQ(ReadLines(LogFilePath(s)), expected);
  const std::string text = t.LogText();
  EXPECT_TRUE(text.ends_with("True\r\n\r\n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 16);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), 16);
  EXPECT_TRUE(IsOwnerOnly(LogFilePath(s)));  // the report holds the password
}

}  // namespace
}  // namespace corvanet::test
