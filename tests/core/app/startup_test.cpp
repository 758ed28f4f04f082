#include "core/app/startup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "core/app/settings.h"
#include "core/platform/files.h"
#include "core/state/log.h"
#include "support/recording_shell.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

// A data service that is never there; it remembers what was asked of it.
class NoService final : public HttpClient {
 public:
  FetchResult FetchToFile(const FetchRequest& request, const std::string&) override {
    urls.push_back(request.url);
    FetchResult result;
    result.status = FetchStatus::kCouldNotConnect;
    return result;
  }
  std::vector<std::string> urls;
};

// A program about to start: nothing installed yet under base(), RunListNum.txt (if any) in start().
struct Start {
  Start() { CreateFolders(start()); }
  std::string base() const { return dir / "Tessaly/"; }
  std::string start() const { return dir / "start/"; }
  StartupOptions options() const {
    StartupOptions o;
    o.base_directory = dir / "Tessaly";  // the trailing separator is added
    o.start_directory = dir / "start";   // the separator is added
    o.change_directory = false;
    return o;
  }

  TempDir dir;
  ScriptedShell shell;
  NoService http;
  ManualClock clock;
  Session session{shell, http, clock};
};

unsigned Mode(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return 0;
  return info.st_mode & 0777U;
}

TEST(RunListNumTest, ReadOnceAndResetToZero) {
  TempDir dir;
  const std::string path = dir / "RunListNum.txt";
  const struct {
    const char* content;
    int number;
  } cases[] = {{"3\r\n", 3},   {"9", 9},   {"0\r\n", 0},    {"-2\n", 0}, {" 7 \r\n", 7},
               {"abc\r\n", 0}, {"", 0},    {"\x01\xff", 0}, {"3.6", 4},  {"2.5", 2},
               {"6.5", 6},     {"1E0", 1}, {"99999", 0}};
  for (const auto& c : cases) {
    WriteFile(path, c.content);
    EXPECT_EQ(ReadAndResetRunListNum(path), c.number) << c.content;
    EXPECT_EQ(ReadFile(path), "0\r\n");
  }
  EXPECT_EQ(ReadAndResetRunListNum(path), 0);  // the next start is interactive
  EXPECT_EQ(ReadAndResetRunListNum(dir / "missing.txt"), 0);
  EXPECT_FALSE(Exists(dir / "missing.txt"));
}

TEST(FormLoadTest, FirstStartCreatesAWorkingInstallation) {
  Start p;
  ASSERT_TRUE(Form_Load(p.session, p.options()));
  const AppState& app = p.session.app;
  const WindowState& ui = p.session.ui;
  EXPECT_EQ(app.BaseDirectory, p.base());
  EXPECT_EQ(app.ProgramDirectory, p.base() + "Rondex/");
  EXPECT_EQ(app.RunListNum, 0);
  EXPECT_EQ(app.CurrentListNumber, "0");
  EXPECT_EQ(ui.WindowTitle, "Corvanet for Ovalith");
  EXPECT_EQ(ui.DisplayVersionNum.caption, "Version 5.1 - For Ovalith Subscribers");
  EXPECT_FALSE(ui.ProgressBar1.visible);
  EXPECT_EQ(ui.PathToDataFiles, p.base() + "CSVFiles/");
  for (const char* folder : {"Base", "Daily", "Weekly", "Monthly", "Quarterly"}) {
    EXPECT_TRUE(DirectoryExists(ui.PathToDataFiles + folder)) << folder;
  }
  EXPECT_TRUE(DirectoryExists(ui.PathToLists));
  EXPECT_EQ(ReadLines(app.ProgramDirectory + "Rondex.ini").size(), 89U);
  EXPECT_EQ(Mode(app.ProgramDirectory + "Rondex.ini"), 0600U);
  EXPECT_TRUE(p.shell.boxes.empty());
  EXPECT_TRUE(p.http.urls.empty());  // no credentials yet: no master file is fetched

  // The report is written before the program folder is known: start folder, design state.
  const std::vector<std::string> report = ReadLines(p.start() + "LogFile.txt");
  ASSERT_EQ(report.size(), 16U);
  EXPECT_EQ(report[2], "ProgramDirectory:  ");
  EXPECT_EQ(report[3], "PathToDataFiles.Text:  :" + p.base() + "CSVFiles/");
  EXPECT_EQ(report[8], "UserName.Text:  Enter username here");
  EXPECT_EQ(Mode(p.start() + "LogFile.txt"), 0600U);
}

TEST(FormLoadTest, NextStartReadsTheSavedSettings) {
  Start first;
  ASSERT_TRUE(Form_Load(first.session, first.options()));
  first.session.ui.UserName = "abc";
  first.session.ui.Password = "pw";
  first.session.ui.Advances = 1;
  SaveToINI_Click(first.session);

  ScriptedShell shell;
  NoService http;
  Session next(shell, http, first.clock);
  ASSERT_TRUE(Form_Load(next, first.options()));
  EXPECT_EQ(next.ui.UserName, "abc");
  EXPECT_EQ(next.ui.Advances, 1);
  EXPECT_EQ(next.ui.PathToLists, first.base() + "Lists/");
  // With credentials the master file is fetched afresh, never with them in the address.
  ASSERT_EQ(http.urls.size(), 1U);
  EXPECT_EQ(http.urls[0].find("pw"), std::string::npos);
  EXPECT_TRUE(shell.boxes.empty());
}

TEST(FormLoadTest, FailsWhenTheInstallationCannotBeCreated) {
  Start p;
  WriteFile(p.dir / "file", "not a folder");
  StartupOptions options = p.options();
  options.base_directory = p.dir / "file/Tessaly/";
  EXPECT_FALSE(Form_Load(p.session, options));
}

TEST(FormLoadTest, RunListNumDecidesUnattendedRuns) {
  Start p;
  WriteFile(p.start() + "RunListNum.txt", "9\r\n");
  ASSERT_TRUE(Form_Load(p.session, p.options()));
  EXPECT_EQ(p.session.app.RunListNum, 9);
  EXPECT_EQ(ReadFile(p.start() + "RunListNum.txt"), "0\r\n");
  // 9 names no list: nothing is selected or fetched, and the program closes without asking.
  const RunSummary summary = AutomatedRuns(p.session);
  EXPECT_FALSE(summary.started);
  EXPECT_EQ(p.session.app.CurrentListNumber, "0");
  EXPECT_TRUE(p.http.urls.empty());
  EXPECT_FALSE(Form_Unload(p.session));
  EXPECT_TRUE(p.shell.boxes.empty());
}

TEST(FormLoadTest, UnattendedListIsRunWithoutAQuestion) {
  Start p;
  WriteFile(p.start() + "RunListNum.txt", "3\r\n");
  ASSERT_TRUE(Form_Load(p.session, p.options()));
  p.session.ui.UserName = "abc";
  p.session.ui.Password = "pw";
  WriteLines(p.session.ui.PathToLists + "Download3.csv",
             {"eSignal,eSignal", "DailyInterval,1", "WeeklyInterval,0", "MonthlyInterval,0",
              "QuarterlyInterval,0", "NYSE Composite,$NYA"});
  AutomatedRuns(p.session);
  EXPECT_EQ(p.session.app.CurrentListNumber, "3");
  EXPECT_FALSE(p.http.urls.empty());
  EXPECT_FALSE(Form_Unload(p.session));
  for (const auto& box : p.shell.boxes) EXPECT_EQ(box.buttons, Buttons::kOk) << box.text;
  EXPECT_EQ(ReadFile(p.start() + "RunListNum.txt"), "0\r\n");
}

class FormUnloadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(Form_Load(p.session, p.options()));
    RemoveFile(settings());
    p.session.ui.UserName = "abc";
    p.session.ui.Password = "pw";
    p.session.ui.GenerateLogFile = 1;
  }
  std::string settings() const { return p.session.app.ProgramDirectory + "Rondex.ini"; }
  std::string log() const { return ReadFile(LogFilePath(p.session)); }

  Start p;
};

TEST_F(FormUnloadTest, TheAnswerDecidesSavingAndClosing) {
  const struct {
    Answer answer;
    bool stays_open;
    std::size_t lines;
    const char* logged;
  } cases[] = {{Answer::kYes, false, 89, "Settings saved"},
               {Answer::kNo, false, 0, "Settings not saved"},
               {Answer::kCancel, true, 0, "Exit canceled"}};
  for (const auto& c : cases) {
    RemoveFile(settings());
    p.shell.Reset();
    p.shell.answers = {c.answer};
    EXPECT_EQ(Form_Unload(p.session), c.stays_open) << c.logged;
    EXPECT_EQ(p.shell.boxes[0].text, "Save Corvanet settings before closing?");
    EXPECT_EQ(p.shell.boxes[0].buttons, Buttons::kYesNoCancel);
    EXPECT_EQ(p.shell.boxes.size(), c.answer == Answer::kYes ? 2U : 1U) << c.logged;
    EXPECT_EQ(Exists(settings()) ? ReadLines(settings()).size() : 0U, c.lines) << c.logged;
    EXPECT_NE(log().find(std::string(" - Form_Unload - ") + c.logged + "\r\n"), std::string::npos);
  }
  EXPECT_EQ(p.shell.boxes.size(), 1U);
}

TEST_F(FormUnloadTest, YesWithoutCredentialsStillSaysSaved) {
  p.session.ui.UserName = "Enter username here";
  p.shell.answers = {Answer::kYes};
  EXPECT_FALSE(Form_Unload(p.session));
  ASSERT_EQ(p.shell.boxes.size(), 3U);
  EXPECT_EQ(p.shell.boxes[1].text.rfind("Please enter your username and password.", 0), 0U);
  EXPECT_EQ(p.shell.boxes[2].text, "Corvanet settings saved.");
  EXPECT_FALSE(Exists(settings()));
}

TEST_F(FormUnloadTest, ExitButtonsLogTheirNameThenAsk) {
  p.shell.answers = {Answer::kCancel};
  EXPECT_TRUE(Exit_Click(p.session, 3));
  const std::string text = log();
  EXPECT_LT(text.find(" - Exit3_Click\r\n"), text.find(" - Form_Unload - Exit canceled"));
  EXPECT_EQ(p.shell.boxes.size(), 1U);

  CheckForUpdates_Click(p.session);
  EXPECT_TRUE(p.shell.opened.empty());
  ASSERT_EQ(p.shell.boxes.size(), 2U);
  EXPECT_EQ(p.shell.boxes[1].text.find("This is Corvanet Version 5.1 - For Ovalith Subscribers.\r"),
            0U);
  EXPECT_NE(log().find(" - CheckForUpdates_Click\r\n"), std::string::npos);
}

}  // namespace
}  // namespace corvanet::test
