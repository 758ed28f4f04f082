#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "core/app/settings.h"
#include "support/test_session.h"

namespace corvanet::test {
namespace {

using W = WindowState;

const std::string kRetryMessage =
    "Please enter a whole numerical value.\rRetry number will now be reset to the default value.";

// Gives every control of the table a value other than its design state, straight into the window
// state (no handlers), as a user's long session would leave it.
void GiveEveryControlAValue(Session& s) {
  const W design;
  for (const SettingDef& def : SettingsTable()) {
    const std::string key(def.key);
    if (const auto* check = std::get_if<int W::*>(&def.control)) {
      s.ui.** check = 1;
    } else if (const auto* option = std::get_if<bool W::*>(&def.control)) {
      s.ui.** option = !(design.**option);
    } else if (const auto* text = std::get_if<std::string W::*>(&def.control)) {
      s.ui.** text =
          def.form == SettingForm::kPath ? s.app.BaseDirectory + "p-" + key + "/" : "v-" + key;
    }
  }
  s.ui.RetryNumber = "7";
  s.ui.Stat2File3 = "v-Stat2File3";
}

// A session in design state over the same installation.
Session FreshSession(TestSession& t) {
  Session fresh(t.shell, t.http, t.clock);
  fresh.app = t.session.app;
  return fresh;
}

std::string SettingsFile(TestSession& t) {
  return SettingsFilePath(t.session);
}

// The keys whose control differs between the two sessions.
std::vector<std::string> DifferingKeys(const Session& a, const Session& b) {
  std::vector<std::string> keys;
  for (const SettingDef& def : SettingsTable()) {
    if (DisplayValue(a, def) != DisplayValue(b, def)) keys.emplace_back(def.key);
  }
  return keys;
}

TEST(SettingsFileTest, SavedSettingsReadBackIntoEveryControl) {
  TestSession t;
  GiveEveryControlAValue(t.session);
  SaveToINI_Click(t.session);
  EXPECT_TRUE(t.shell.boxes.empty());

  Session fresh = FreshSession(t);
  LoadINI(fresh);
  EXPECT_EQ(DifferingKeys(t.session, fresh), std::vector<std::string>{});
  EXPECT_EQ(fresh.ui.Stat2File3, "Select One");  // never stored
  EXPECT_EQ(fresh.ui.GenerateLogFile, 0);        // not stored either
  EXPECT_TRUE(t.shell.boxes.empty());
}

TEST(SettingsFileTest, WritesEightyNineCrLfLinesInTableOrder) {
  TestSession t;
  Session& s = t.session;
  s.ui.UpTrends = 1;
  s.ui.DownloadCompleteMessageYes = false;
  s.ui.DownloadCompleteMessageNo = true;
  s.ui.Stat1File3 = "Advances";
  s.ui.Stat2File3 = "Declines";
  s.ui.PathToLists = s.app.BaseDirectory + "Lists/";
  SaveToINI_Click(s);

  const std::string content = ReadFile(SettingsFile(t));
  const std::vector<std::string> lines = ReadLines(SettingsFile(t));
  ASSERT_EQ(lines.size(), 89U);
  std::size_t crlf = 0;
  for (std::size_t at = content.find("\r\n"); at != std::string::npos;
       at = content.find("\r\n", at + 2)) {
    ++crlf;
  }
  EXPECT_EQ(crlf, 89U);
  EXPECT_EQ(content.find('\n', content.size() - 1), content.size() - 1);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].substr(0, lines[i].find(',')), SettingsTable()[i].key) << "line " << i + 1;
  }
  EXPECT_EQ(lines[0], "Plus, 0");
  EXPECT_EQ(lines[3], "PathToLists,Lists/");
  EXPECT_EQ(lines[6], "UserName,user");
  EXPECT_EQ(lines[9], "DownloadCompleteMessageYes,False");
  EXPECT_EQ(lines[10], "DownloadCompleteMessageNo,True");
  EXPECT_EQ(lines[14], "UpTrends, 1");
  EXPECT_EQ(lines[77], "Stat1File3,Advances");
  EXPECT_EQ(lines[78], "Stat1File3,Advances");
  EXPECT_EQ(content.find("Stat2File3"), std::string::npos);

  struct stat info {};
  ASSERT_EQ(::stat(SettingsFile(t).c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777U, 0600U);  // it holds the password
}

TEST(SettingsFileTest, FileWithOnlyUserNameLeavesTheRestInDesignState) {
  TestSession t;
  WriteLines(SettingsFile(t), {"UserName,abc"});
  Session fresh = FreshSession(t);
  fresh.ui.IPAddress = "left.over.host";
  LoadINI(fresh);
  EXPECT_EQ(fresh.ui.UserName, "abc");
  EXPECT_EQ(fresh.ui.IPAddress, "");
  Session design = FreshSession(t);
  design.ui.UserName = "abc";
  EXPECT_EQ(DifferingKeys(fresh, design), std::vector<std::string>{});
}

TEST(SettingsFileTest, MissingFileLeavesTheDesignState) {
  TestSession t;
  ASSERT_FALSE(Exists(SettingsFile(t)));
  Session fresh = FreshSession(t);
  LoadINI(fresh);
  EXPECT_EQ(DifferingKeys(fresh, FreshSession(t)), std::vector<std::string>{});
  EXPECT_TRUE(t.shell.boxes.empty());
}

TEST(SettingsFileTest, PlaceholderOrEmptyCredentialsWriteNothing) {
  TestSession t;
  Session& s = t.session;
  WriteFile(SettingsFile(t), "UserName,old\r\n");
  const struct {
    const char* user;
    const char* password;
  } refused[] = {
      {"Enter username here", "pw"}, {"abc", "Enter password here"}, {"", "pw"}, {"abc", ""}};
  for (const auto& c : refused) {
    t.shell.Reset();
    s.ui.UserName = c.user;
    s.ui.Password = c.password;
    SaveToINI_Click(s);
    ASSERT_EQ(t.shell.boxes.size(), 1U) << c.user << '/' << c.password;
    EXPECT_EQ(t.shell.boxes[0].text.rfind("Please enter your username and password.", 0), 0U);
    EXPECT_EQ(ReadFile(SettingsFile(t)), "UserName,old\r\n");
  }
  s.ui.UserName = "abc";
  s.ui.Password = "pw";
  SaveSettings2_Click(s);
  EXPECT_EQ(ReadLines(SettingsFile(t)).size(), 89U);
}

// Paths inside the installation are stored relative to it; any other path as it stands, so that
// every path reads back as saved.
TEST(SettingsFileTest, PathsReadBackAsSavedInsideTheInstallationOrNot) {
  TestSession t;
  Session& s = t.session;
  const std::size_t base_length = s.app.BaseDirectory.size();
  const std::string elsewhere = "/elsewhere/" + std::string(base_length, 'x') + "/Data/";
  s.ui.PathToDataFiles = elsewhere;
  s.ui.PathToMSPxFiles = "/short/";
  s.ui.PathToLists = s.app.BaseDirectory + "My, Lists/";
  SaveToINI_Click(s);
  const std::vector<std::string> lines = ReadLines(SettingsFile(t));
  EXPECT_EQ(lines[2], "PathToDataFiles," + elsewhere);
  EXPECT_EQ(lines[3], "PathToLists,\"My, Lists/\"");
  EXPECT_EQ(lines[5], "PathToMSPxFiles,/short/");

  Session fresh = FreshSession(t);
  LoadINI(fresh);
  EXPECT_EQ(fresh.ui.PathToDataFiles, elsewhere);
  EXPECT_EQ(fresh.ui.PathToMSPxFiles, "/short/");
  EXPECT_EQ(fresh.ui.PathToLists, s.ui.PathToLists);
}

TEST(RetryNumberTest, ZeroOrEmptyBringsTheMessageAndThree) {
  for (const char* bad : {"0", "", "-1", "abc"}) {
    SCOPED_TRACE(bad);
    TestSession t;
    WriteLines(SettingsFile(t), {std::string("RetryNumber,") + bad});
    Session fresh = FreshSession(t);
    LoadINI(fresh);
    EXPECT_EQ(fresh.ui.RetryNumber, "3");
    EXPECT_EQ(t.shell.texts(), std::vector<std::string>{kRetryMessage});

    t.shell.Reset();
    SetSetting(t.session, *FindSetting("RetryNumber"), bad, ValueSource::kUser);
    EXPECT_EQ(t.session.ui.RetryNumber, "3");
    EXPECT_EQ(t.shell.texts(), std::vector<std::string>{kRetryMessage});
    EXPECT_EQ(t.shell.boxes[0].buttons, Buttons::kOk);
  }
}

TEST(RetryNumberTest, PositiveValuesStandAsTyped) {
  TestSession t;
  WriteLines(SettingsFile(t), {"RetryNumber,2.5"});
  Session fresh = FreshSession(t);
  LoadINI(fresh);
  EXPECT_EQ(fresh.ui.RetryNumber, "2.5");
  SetSetting(fresh, *FindSetting("RetryNumber"), "5 times", ValueSource::kUser);
  EXPECT_EQ(fresh.ui.RetryNumber, "5 times");
  EXPECT_TRUE(t.shell.boxes.empty());
}

TEST(OptionPairTest, TrueClearsThePartnerFalseLeavesIt) {
  TestSession t;
  Session& s = t.session;
  ASSERT_TRUE(s.ui.DownloadCompleteMessageYes);
  EXPECT_TRUE(SetSetting(s, *FindSetting("DownloadCompleteMessageNo"), "True", ValueSource::kUser));
  EXPECT_FALSE(s.ui.DownloadCompleteMessageYes);
  EXPECT_TRUE(s.ui.DownloadCompleteMessageNo);
  EXPECT_TRUE(
      SetSetting(s, *FindSetting("DownloadCompleteMessageNo"), "False", ValueSource::kUser));
  EXPECT_FALSE(s.ui.DownloadCompleteMessageYes);  // both off, as in the window's data
  EXPECT_FALSE(SetSetting(s, *FindSetting("DateFormatMMDDYYYY"), "maybe", ValueSource::kUser));
  EXPECT_TRUE(s.ui.DateFormatYYYYMMDD);

  // The file's forms: True/False in any case, or a number (non-zero is true).
  WriteLines(SettingsFile(t), {"SystemMessagesNo,true", "PeriodStatFilename,-1",
                               "DateFormatMMDDYYYY,0", "Plus, 1", "AllUS,1"});
  Session fresh = FreshSession(t);
  LoadINI(fresh);
  EXPECT_TRUE(fresh.ui.SystemMessagesNo);
  EXPECT_FALSE(fresh.ui.SystemMessagesYes);
  EXPECT_TRUE(fresh.ui.PeriodStatFilename);
  EXPECT_FALSE(fresh.ui.StatPeriodFileName);
  EXPECT_FALSE(fresh.ui.DateFormatMMDDYYYY);
  EXPECT_TRUE(fresh.ui.DateFormatYYYYMMDD);
  EXPECT_EQ(fresh.ui.DataSetPlus, 1);
  EXPECT_EQ(fresh.ui.DataSetAllUS, 1);
}

TEST(SettingValueTest, UserFormsAreCheckedBeforeAnythingChanges) {
  const SettingDef& check = *FindSetting("UpTrends");
  EXPECT_TRUE(SettingValueFits(check, "1"));
  EXPECT_TRUE(SettingValueFits(check, "0"));
  for (const char* bad : {"2", "-1", "", "yes", "1.5"}) EXPECT_FALSE(SettingValueFits(check, bad));
  EXPECT_TRUE(SettingValueFits(*FindSetting("SystemMessagesNo"), "False"));
  EXPECT_FALSE(SettingValueFits(*FindSetting("SystemMessagesNo"), "Nope"));
  EXPECT_TRUE(SettingValueFits(*FindSetting("UserName"), ""));
  EXPECT_EQ(FindSetting("username"), nullptr);  // keys match case-sensitively
  EXPECT_EQ(FindSetting("Stat2File3"), nullptr);
}

}  // namespace
}  // namespace corvanet::test
