#include "core/lists/captions.h"

#include <gtest/gtest.h>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

class CaptionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::vector<std::string> master;
    for (int i = 0; i < 1200; ++i)
      master.push_back("Issue " + std::to_string(i) + ",$S" + std::to_string(i));
    t.WriteMasterfile(master, false);
    t.WriteList(3, {"eSignal,eSignal", "DailyInterval,1", "WeeklyInterval,0", "MonthlyInterval,0",
                    "QuarterlyInterval,1", "A,$A", "B,$B", "Nasdaq,$COMPQ"});
    s.ui.DailyInterval = 1;
    s.ui.QuarterlyInterval = 1;
  }
  TestSession t;
  Session& s = t.session;
  WindowState& ui = t.session.ui;
};

TEST_F(CaptionsTest, UserListCountsItsIssuesPerTickedPeriod) {
  s.app.CurrentListNumber = "3";
  ChangeCaptionsOnButtons(s);
  // Three issues for two periods, less $COMPQ in the quarterly period.
  EXPECT_EQ(ui.DownLoadButton.caption, "Update 5 Datafile(s) On Download List 3 Now");
  EXPECT_EQ(ui.SaveDownloadList.caption, "Save Download List 3 Now");
  EXPECT_TRUE(ui.ClearList.visible);
  EXPECT_TRUE(ui.LoadDownloadFile.visible);
}

TEST_F(CaptionsTest, FullListWithForceFullNamesTheForcedDownload) {
  s.app.CurrentListNumber = "6";
  ui.QuarterlyInterval = 0;
  ui.AllDailyForceFull = 1;
  ChangeCaptionsOnButtons(s);
  EXPECT_EQ(ui.DownLoadButton.caption,
            "Force a Full Download On 1200 Datafile(s) On 'All Daily' Periods List");
  EXPECT_EQ(ui.SaveDownloadList.caption, "Save 'All Daily' Periods Download Settings");
  EXPECT_FALSE(ui.MoveAllToDownloadList.visible);
  EXPECT_FALSE(ui.LoadDownloadFile.visible);
  EXPECT_FALSE(ui.ClearList.visible);
  EXPECT_FALSE(ui.PeriodBoxesEnabled);
  EXPECT_EQ(ui.ClearList.caption, "Clear 'All Daily' Periods");

  // The other full list's box does not force this one.
  ui.AllDailyForceFull = 0;
  ui.AllPeriodsForceFull = 1;
  ChangeCaptionsOnButtons(s);
  EXPECT_EQ(ui.DownLoadButton.caption, "Update 1200 Datafile(s) On 'All Daily' Periods Now");
}

}  // namespace
}  // namespace corvanet::test
