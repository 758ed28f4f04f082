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
  EXPECT_TRUE(Contains(log, "\"A\" where the MonthlyInterval line belongs"));
  EXPECT_TRUE(Contains(log, "has no symbol: D"));

  t.WriteList(3, {"eSignal,eSignal", "DailyInterval,1"});
  DownloadList_Click(s, 3);
  EXPECT_TRUE(s.ui.List6.items.empty());
  EXPECT_TRUE(Contains(t.LogText(), "ends before its WeeklyInterval line"));

  DownloadList_Click(s, 4);  // never saved
  EXPECT_TRUE(s.ui.List6.items.empty());
  EXPECT_TRUE(Contains(t.LogText(), "cannot read " + t.lists("Download4.csv")));

  std::filesystem::create_directory(t.lists("Download5.csv"));  // there, but not readable
  DownloadList_Click(s, 5);
  EXPECT_TRUE(s.ui.List6.items.empty());
  EXPECT_TRUE(t.shell.boxes.empty());
}

}  // namespace
}  // namespace corvanet::test
