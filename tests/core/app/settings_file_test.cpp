#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/app/settings.h"
#include "core/state/log.h"
#include "support/test_session.h"

namespace corvanet::test {
namespace {

using W = WindowState;

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
  s.ui.MaxDownloadMB = "128";
  s.ui.Stat2File3 = "v-Stat2File3";
}

// A session in design state over the same installation; with `log`, skipped lines can be seen in
// the log.
Session FreshSession(TestSession& t, bool log = true) {
  Session fresh(t.shell, t.http, t.clock);
  fresh.app = t.session.app;
  fresh.ui.GenerateLogFile = log ? 1 : 0;
  return fresh;
}

// The keys whose control differs between the two sessions.
std::vector<std::string> DifferingKeys(const Session& a, const Session& b) {
  std::vector<std::string> keys;
  for (const SettingDef& def : SettingsTable()) {
    if (DisplayValue(a, def) != DisplayValue(b, def)) keys.emplace_back(def.key);
  }
  return keys;
}

// Every control reads back as saved. Paths inside the installation are stored relative to it, any
// other path as it stands.
TEST(SettingsFileTest, SavedSettingsReadBackIntoEveryControl) {
  TestSession t;
  Session& s = t.session;
  GiveEveryControlAValue(s);
  const std::string elsewhere = "/elsewhere/" + std::string(s.app.BaseDirectory.size(), 'x') + "/";
  s.ui.PathToDataFiles = elsewhere;
  s.ui.PathToLists = s.app.BaseDirectory + "My, Lists/";
  SaveToINI_Click(s);
  EXPECT_TRUE(t.shell.boxes.empty());
  const std::vector<std::string> lines = ReadLines(SettingsFilePath(t.session));
  EXPECT_EQ(lines[2], "PathToDataFiles," + elsewhere);
  EXPECT_EQ(lines[3], "PathToLists,\"My, Lists/\"");

  Session fresh = FreshSession(t, false);
  LoadINI(fresh);
  EXPECT_EQ(DifferingKeys(s, fresh), std::vector<std::string>{});
  EXPECT_EQ(fresh.ui.Stat2File3, "Select One");  // never stored
  EXPECT_EQ(fresh.ui.GenerateLogFile, 0);        // not stored either
  EXPECT_TRUE(t.shell.boxes.empty());
}

// A file of the 89 lines written before the authority file and the download limit were kept loads
// as it stands and leaves both at their design values; a limit that is no whole number of MiB is
// refused with a message.
TEST(SettingsFileTest, AFileWithoutTheLaterKeysLoadsAndTheLimitIsChecked) {
  TestSession t;
  GiveEveryControlAValue(t.session);
  SaveToINI_Click(t.session);
  std::vector<std::string> lines = ReadLines(SettingsFilePath(t.session));
  ASSERT_EQ(lines.size(), 91u);
  EXPECT_EQ(lines[89], "CAFile,v-CAFile");
  EXPECT_EQ(lines[90], "MaxDownloadMB,128");
  lines.resize(89);
  WriteLines(SettingsFilePath(t.session), lines);

  Session fresh = FreshSession(t, false);
  LoadINI(fresh);
  EXPECT_EQ(DifferingKeys(t.session, fresh), (std::vector<std::string>{"CAFile", "MaxDownloadMB"}));
  EXPECT_EQ(fresh.ui.CAFile, "");
  EXPECT_EQ(fresh.ui.MaxDownloadMB, "64");
  EXPECT_TRUE(t.shell.boxes.empty());

  for (const char* bad : {"0", "-5", "ten", "1.5"}) {
    SCOPED_TRACE(bad);
    ASSERT_TRUE(SetSetting(fresh, *FindSetting("MaxDownloadMB"), bad, ValueSource::kUser));
    EXPECT_EQ(fresh.ui.MaxDownloadMB, "64");
  }
  EXPECT_EQ(t.shell.boxes.size(), 4u);
}

TEST(SettingsBadInputTest, UnusableLinesAreSkippedAndTheRestRead) {
  TestSession t;
  std::string content;
  content += "this line has no comma\r\n";
  content += std::string("\x00\x01\xff\xfe,\x80garbage", 13) + "\r\n";
  content += "UserName,first\r\n";
  content += "CAFile," + std::string(300 * 1024, 'p') + "\r\n";  // a very long line
  content += "Unknown,1\r\n";
  content += "UpTrends,2\r\n";    // not a check value
  content += "Advances,yes\r\n";  // nor this
  content += "Declines, 1\r\n";
  content += "SystemMessagesNo,perhaps\r\n";
  content += "IPAddress\r\n";  // a key without a value
  content += "\r\n";
  content += "UserName,second\r\n";                    // a repeated key: the later line wins
  content += std::string(100 * 1024, 'k') + ",1\r\n";  // a very long unknown key
  content += "Password,open,Sesame-42\r\n";  // the tail after the comma is skipped, unlogged
  content += "RetryNumber,4";                // no line end at the very end
  WriteFile(SettingsFilePath(t.session), content);

  Session fresh = FreshSession(t);
  fresh.ui.IPAddress = "old.host";
  LoadINI(fresh);
  EXPECT_EQ(fresh.ui.UserName, "second");
  EXPECT_EQ(fresh.ui.CAFile, std::string(300 * 1024, 'p'));
  EXPECT_EQ(fresh.ui.Password, "open");
  EXPECT_EQ(fresh.ui.UpTrends, 0);
  EXPECT_EQ(fresh.ui.Advances, 0);
  EXPECT_EQ(fresh.ui.Declines, 1);
  EXPECT_TRUE(fresh.ui.SystemMessagesYes);
  EXPECT_FALSE(fresh.ui.SystemMessagesNo);
  EXPECT_EQ(fresh.ui.IPAddress, "");
  EXPECT_EQ(fresh.ui.RetryNumber, "4");
  EXPECT_TRUE(t.shell.boxes.empty());

  const std::string log = ReadFile(LogFilePath(fresh));
  for (const char* line : {"line 1 - unknown key this line has no comma skipped",
                           "line 5 - unknown key Unknown skipped",
                           "line 6 - UpTrends has a value of the wrong form, skipped",
                           "line 10 - IPAddress has no value, skipped",
                           "line 14 - text after a comma in the value of Password skipped"}) {
    EXPECT_TRUE(Contains(log, std::string("LoadINI - ") + line)) << line;
  }
  EXPECT_FALSE(Contains(log, "Sesame-42"));
  // Bytes from the file reach the log only as printable text, and never at length.
  EXPECT_EQ(log.find('\xff'), std::string::npos);
  EXPECT_TRUE(Contains(log, std::string(40, 'k')));
  EXPECT_FALSE(Contains(log, std::string(41, 'k')));
}

// Every text a user can save reads back exactly as typed; one the file cannot hold is refused
// with a message and the old file stays.
TEST(SettingsBadInputTest, TextsReadBackExactlyAsSaved) {
  TestSession t;
  for (const char* text :
       {"a,b", "\"quoted\"", " spaced ", "x\"y,z", "\"a\",b", " q\" ", "\tt", ",", "p@ss:w/rd"}) {
    SCOPED_TRACE(text);
    t.session.ui.Password = text;
    t.session.ui.UserName = std::string("u") + text;
    t.session.ui.IPAddress = text;
    SaveToINI_Click(t.session);
    Session again = FreshSession(t);
    LoadINI(again);
    EXPECT_EQ(again.ui.Password, text);
    EXPECT_EQ(again.ui.UserName, std::string("u") + text);
    EXPECT_EQ(again.ui.IPAddress, text);
  }
  const std::string saved = ReadFile(t.base("Rondex/Rondex.ini"));
  for (const char* text : {"line\rbreak", "two\nlines"}) {
    SCOPED_TRACE(text);
    t.session.ui.Password = text;
    t.shell.boxes.clear();
    SaveToINI_Click(t.session);
    ASSERT_EQ(t.shell.boxes.size(), 1U);
    EXPECT_TRUE(Contains(t.shell.boxes[0].text, "Password cannot be saved as typed"));
    EXPECT_EQ(ReadFile(t.base("Rondex/Rondex.ini")), saved);
  }
}

TEST(SettingsBadInputTest, UnreadableFileLeavesTheControlsAsTheyWere) {
  TestSession t;
  // A folder where the file should be: no user can read it as a file, root included.
  std::filesystem::create_directory(SettingsFilePath(t.session));
  Session fresh = FreshSession(t);
  fresh.ui.UserName = "kept";
  LoadINI(fresh);
  EXPECT_EQ(fresh.ui.UserName, "kept");
  EXPECT_TRUE(t.shell.boxes.empty());

  // Saving over it fails, says so once, and leaves no temporary file behind.
  SaveToINI_Click(t.session);
  EXPECT_EQ(t.shell.boxes.size(), 1U);
  EXPECT_TRUE(std::filesystem::is_directory(SettingsFilePath(t.session)));
  for (const auto& entry : std::filesystem::directory_iterator(t.session.app.ProgramDirectory)) {
    EXPECT_FALSE(Contains(entry.path().filename().string(), ".tmp")) << entry.path();
  }
}

}  // namespace
}  // namespace corvanet::test
