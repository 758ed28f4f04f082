#include "core/lists/download_lists.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "core/app/settings_buttons.h"
#include "core/platform/field_reader.h"
#include "support/test_session.h"

namespace corvanet::test {
namespace {

using Lines = std::vector<std::string>;

const Lines kHeaderYahooDailyMonthly = {"Yahoo,Yahoo", "DailyInterval,1", "WeeklyInterval,0",
                                        "MonthlyInterval,1", "QuarterlyInterval,0"};

class DownloadListsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    t.WriteMasterfile({"Dow Jones Industrial Ave. (DJIA),$INDU", "NYSE Composite,$NYA",
                       "Nasdaq Composite,$COMPQ"});
  }
  TestSession t;
  Session& s = t.session;
};

TEST_F(DownloadListsTest, SavedListRestoresVendorPeriodsAndItems) {
  DownloadList_Click(s, 3);
  EXPECT_TRUE(s.ui.List6.items.empty());  // never saved yet
  s.ui.VendorYahoo = true;
  s.ui.DailyInterval = 1;
  s.ui.MonthlyInterval = 1;
  s.ui.List6.Add("Dow Jones Industrial Ave.,$INDU");
  s.ui.List6.Add("NYSE Composite,$NYA");
  SaveDownloadList_Click(s);
  EXPECT_TRUE(t.shell.boxes.empty());
  Lines expected = kHeaderYahooDailyMonthly;
  expected.insert(expected.end(), {"Dow Jones Industrial Ave.,$INDU", "NYSE Composite,$NYA"});
  EXPECT_EQ(t.ReadList(3), expected);
  EXPECT_NE(ReadFile(t.lists("Download3.csv")).find("Yahoo,Yahoo\r\nDailyInterval,1\r\n"),
            std::string::npos);

  s.ui.VendorYahoo = false;
  s.ui.VendoreSignal = true;
  s.ui.MonthlyInterval = 0;
  s.ui.WeeklyInterval = 1;
  s.ui.List6.Clear();
  DownloadList_Click(s, 3);
  EXPECT_TRUE(s.ui.VendorYahoo);
  EXPECT_FALSE(s.ui.VendoreSignal);
  EXPECT_EQ(s.ui.DailyInterval, 1);
  EXPECT_EQ(s.ui.WeeklyInterval, 0);
  EXPECT_EQ(s.ui.MonthlyInterval, 1);
  EXPECT_EQ(s.ui.List6.items, (Lines{"Dow Jones Industrial Ave.,$INDU", "NYSE Composite,$NYA"}));
  EXPECT_EQ(s.app.CurrentListNumber, "3");
}

TEST_F(DownloadListsTest, FullListsWriteTheirOwnPeriodLinesAndKeepWholeLines) {
  DownloadList_Click(s, 6);
  s.ui.VendoreSignal = true;
  s.ui.WeeklyInterval = 1;
  s.ui.List6.Add("  Acme, Inc.,$ACME  ");
  SaveDownloadList_Click(s);
  EXPECT_EQ(t.ReadList(6), (Lines{"eSignal,eSignal", "DailyInterval,1", "WeeklyInterval,0",
                                  "MonthlyInterval,0", "QuarterlyInterval,0", "Acme, Inc.,$ACME"}));
  DownloadList_Click(s, 6);
  EXPECT_EQ(s.ui.WeeklyInterval, 0);
  EXPECT_EQ(s.ui.DailyInterval, 1);
  EXPECT_EQ(s.ui.List6.items, Lines{"Acme, Inc.,$ACME"});

  DownloadList_Click(s, 7);
  s.ui.DailyInterval = 0;
  s.ui.QuarterlyInterval = 1;
  SaveDownloadList_Click(s);
  const Lines seven = t.ReadList(7);
  EXPECT_EQ(
      Lines(seven.begin() + 1, seven.end()),
      (Lines{"DailyInterval,1", "WeeklyInterval,1", "MonthlyInterval,1", "QuarterlyInterval,1"}));
}

// The boxes a run of a full list reads are its own, whichever list was shown before and whether
// or not its file was ever saved (or says otherwise).
TEST_F(DownloadListsTest, FullListsTakeTheirOwnPeriodsWhateverWasShownBefore) {
  struct Case {
    const char* what;
    int before;  // the list shown first
    int full;
    Lines file;  // empty: never saved
    std::array<int, 4> boxes;
  };
  const Lines weekly_only = {"eSignal,eSignal", "DailyInterval,0", "WeeklyInterval,1",
                             "MonthlyInterval,0", "QuarterlyInterval,0"};
  const Case cases[] = {
      {"all periods after a daily list, never saved", 1, 7, {}, {1, 1, 1, 1}},
      {"all daily after all periods, never saved", 7, 6, {}, {1, 0, 0, 0}},
      {"all daily whose file was edited by hand", 7, 6, weekly_only, {1, 0, 0, 0}},
      {"all periods whose file was edited by hand", 1, 7, weekly_only, {1, 1, 1, 1}},
  };
  t.WriteList(1, kHeaderYahooDailyMonthly);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::filesystem::remove(t.lists("Download6.csv"));
    std::filesystem::remove(t.lists("Download7.csv"));
    if (!c.file.empty()) t.WriteList(c.full, c.file);
    DownloadList_Click(s, c.before);
    DownloadList_Click(s, c.full);
    EXPECT_EQ((std::array<int, 4>{s.ui.DailyInterval, s.ui.WeeklyInterval, s.ui.MonthlyInterval,
                                  s.ui.QuarterlyInterval}),
              c.boxes);
  }
  // A save fixes the boxes as well as the file: the run that follows reads the boxes.
  DownloadList_Click(s, 6);
  s.ui.VendoreSignal = true;
  s.ui.DailyInterval = 0;
  s.ui.WeeklyInterval = 1;
  SaveDownloadList_Click(s);
  EXPECT_EQ(s.ui.DailyInterval, 1);
  EXPECT_EQ(s.ui.WeeklyInterval, 0);
  EXPECT_EQ(t.ReadList(6)[1], "DailyInterval,1");
}

TEST_F(DownloadListsTest, SelectingAListForgetsWhatWasSaidAboutTheListBefore) {
  s.ui.RunProblems = {"2 datafile(s) could not be updated", true};
  s.ui.RunOutcome.caption = "FAILED: ...";
  s.ui.RunSummaryLines = {"Datafiles failed: 2"};
  s.ui.RunFailed = true;
  s.ui.SearchResult = "No index or ETF holds \"xyz\".";
  DownloadList_Click(s, 2);
  EXPECT_FALSE(s.ui.RunProblems.visible);
  EXPECT_EQ(s.ui.RunOutcome.caption, WindowState().RunOutcome.caption);
  EXPECT_TRUE(s.ui.RunSummaryLines.empty());
  EXPECT_FALSE(s.ui.RunFailed);
  EXPECT_TRUE(s.ui.SearchResult.empty());
}

TEST_F(DownloadListsTest, RestoreSelectsTheVendorOfTheFileOrNoneForAnUnknownWord) {
  struct Case {
    std::string line;
    bool esignal, reuters, yahoo, other;
  };
  const Case cases[] = {{"Yahoo,Yahoo", false, false, true, false},
                        {"ORG,ORG", false, false, false, true},
                        {"Reuters,Reuters", false, true, false, false},
                        {"yahoo,yahoo", false, false, false, false},
                        {"Bloomberg,Bloomberg", false, false, false, false}};
  t.EnableLog();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    s.ui.VendoreSignal = s.ui.VendorReuters = s.ui.VendorYahoo = s.ui.VendorOther = true;
    Lines lines = kHeaderYahooDailyMonthly;
    lines[0] = c.line;
    t.WriteList(1, lines);
    DownloadList_Click(s, 1);
    EXPECT_EQ(s.ui.VendoreSignal, c.esignal);
    EXPECT_EQ(s.ui.VendorReuters, c.reuters);
    EXPECT_EQ(s.ui.VendorYahoo, c.yahoo);
    EXPECT_EQ(s.ui.VendorOther, c.other);
  }
  EXPECT_NE(t.LogText().find("unknown data vendor \"yahoo\""), std::string::npos);
  // The next save asks for a vendor and leaves the file alone.
  const std::string before = ReadFile(t.lists("Download1.csv"));
  SaveDownloadList_Click(s);
  EXPECT_EQ(t.shell.texts(), Lines{"Please select a Data Vendor!"});
  EXPECT_EQ(ReadFile(t.lists("Download1.csv")), before);
}

TEST_F(DownloadListsTest, GuardsAnswerWithTheirMessagesAndWriteNothing) {
  LoadDownloadFile_Click(s);
  SaveDownloadList_Click(s);
  EXPECT_EQ(t.shell.texts(),
            (Lines{"Please load a download list!", "Please load a download list!"}));
  EXPECT_FALSE(Exists(t.lists("Download0.csv")));

  t.shell.Reset();
  DownloadList_Click(s, 2);
  SaveDownloadList_Click(s);
  s.ui.DailyInterval = 1;
  s.ui.VendoreSignal = false;
  SaveDownloadList_Click(s);
  EXPECT_EQ(t.shell.texts(),
            (Lines{"Please select a Data Period!", "Please select a Data Vendor!"}));
  EXPECT_FALSE(Exists(t.lists("Download2.csv")));
  EXPECT_EQ(t.shell.boxes[0].title, "Corvanet");
  EXPECT_EQ(t.shell.boxes[0].buttons, Buttons::kOk);
}

TEST_F(DownloadListsTest, BadListFilesGiveALogLineAndAnEmptyOrPartialBox) {
  t.EnableLog();
  // Blank lines are passed over, quoted fields keep their commas, blanks are trimmed.
  t.WriteList(1, {"eSignal,eSignal", "", "DailyInterval,1", "WeeklyInterval,0", "MonthlyInterval,0",
                  "QuarterlyInterval,0", "", "\"Acme, Inc.\" ,  $ACME  ", "  ", "NYSE,$NYA"});
  DownloadList_Click(s, 1);
  EXPECT_EQ(s.ui.List6.items, (Lines{"Acme, Inc.,$ACME", "NYSE,$NYA"}));

  // Three header lines: the first issue is taken as header, the rest is shown.
  t.WriteList(
      2, {"eSignal,eSignal", "DailyInterval,1", "WeeklyInterval,1", "A,$A", "B,$B", "C,$C", "D"});
  DownloadList_Click(s, 2);
  EXPECT_EQ(s.ui.List6.items, Lines{"C,$C"});
  EXPECT_EQ(s.ui.MonthlyInterval, 0);
  const std::string log = t.LogText();
  EXPECT_NE(log.find("\"A\" where the MonthlyInterval line belongs"), std::string::npos);
  EXPECT_NE(log.find("has no symbol: D"), std::string::npos);

  t.WriteList(3, {"eSignal,eSignal", "DailyInterval,1"});
  DownloadList_Click(s, 3);
  EXPECT_TRUE(s.ui.List6.items.empty());
  EXPECT_NE(t.LogText().find("ends before its WeeklyInterval line"), std::string::npos);

  DownloadList_Click(s, 4);  // never saved
  EXPECT_TRUE(s.ui.List6.items.empty());
  EXPECT_NE(t.LogText().find("cannot read " + t.lists("Download4.csv")), std::string::npos);

  std::filesystem::create_directory(t.lists("Download5.csv"));  // there, but not readable
  DownloadList_Click(s, 5);
  EXPECT_TRUE(s.ui.List6.items.empty());
  EXPECT_TRUE(t.shell.boxes.empty());
}

TEST_F(DownloadListsTest, AFailedSaveLeavesNoFileBehind) {
  DownloadList_Click(s, 4);
  s.ui.VendoreSignal = true;
  s.ui.DailyInterval = 1;
  s.ui.List6.Add("NYSE Composite,$NYA");
  std::filesystem::create_directory(t.lists("Download4.csv"));  // the rename onto it fails
  SaveDownloadList_Click(s);
  ASSERT_EQ(t.shell.boxes.size(), 1u);
  EXPECT_NE(t.shell.boxes[0].text.find("could not save"), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_directory(t.lists("Download4.csv")));
  for (const auto& entry : std::filesystem::directory_iterator(t.lists())) {
    EXPECT_EQ(entry.path().filename().string().find(".tmp"), std::string::npos);
  }
}

TEST_F(DownloadListsTest, OpenDownloadListStartsAtTheFirstIssue) {
  Lines lines = kHeaderYahooDailyMonthly;
  lines.push_back("Mine,$MINE");
  t.WriteList(2, lines);
  t.WriteList(6, lines);
  std::string name;
  std::string symbol;
  FieldReader reader;
  s.app.CurrentListNumber = "2";
  ASSERT_TRUE(OpenDownloadList(s, reader));
  ASSERT_TRUE(reader.ReadRecord(name, symbol));
  EXPECT_EQ(symbol, "$MINE");
  s.app.CurrentListNumber = "6";  // the full lists walk the master file, not their own file
  ASSERT_TRUE(OpenDownloadList(s, reader));
  ASSERT_TRUE(reader.ReadRecord(name, symbol));
  EXPECT_EQ(name, "Dow Jones Industrial Ave. (DJIA)");
  EXPECT_EQ(symbol, "$INDU");
  s.app.CurrentListNumber = "0";
  EXPECT_FALSE(OpenDownloadList(s, reader));
}

}  // namespace
}  // namespace corvanet::test
