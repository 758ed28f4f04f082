#include "core/lists/run_total.h"

#include <gtest/gtest.h>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

std::vector<std::string> ListWith(int issues, const std::string& extra_symbol) {
  std::vector<std::string> lines = {"eSignal,eSignal", "DailyInterval,1", "WeeklyInterval,0",
                                    "MonthlyInterval,0", "QuarterlyInterval,1"};
  for (int i = 1; i < issues; ++i) lines.push_back("Issue,$I" + std::to_string(i));
  lines.push_back("NYSE Composite," + extra_symbol);
  return lines;
}

TEST(CountRunDatafilesTest, IssuesTimesPeriodsLessTheQuarterlySkips) {
  TestSession t;
  Session& s = t.session;
  t.WriteList(2, ListWith(20, "$NYA"));
  s.app.CurrentListNumber = "2";
  s.ui.DailyInterval = 1;
  s.ui.QuarterlyInterval = 1;
  EXPECT_EQ(CountRunDatafiles(s), 39);
  s.ui.QuarterlyInterval = 0;  // the skip only counts in a quarterly run
  EXPECT_EQ(CountRunDatafiles(s), 20);

  // The full lists count the master file, whose records have no header to take off.
  t.WriteMasterfile({"A,$A", "B,$B", "C,$XAX"}, false);
  s.app.CurrentListNumber = "7";
  s.ui.WeeklyInterval = s.ui.MonthlyInterval = s.ui.QuarterlyInterval = 1;
  EXPECT_EQ(CountRunDatafiles(s), 11);
}

TEST(CountRunDatafilesTest, StaysWithinSixteenBitsAndNeverNegative) {
  TestSession t;
  Session& s = t.session;
  s.ui.DailyInterval = s.ui.WeeklyInterval = s.ui.MonthlyInterval = s.ui.QuarterlyInterval = 1;
  EXPECT_EQ(CountRunDatafiles(s), 0);  // no list loaded
  s.app.CurrentListNumber = "4";
  EXPECT_EQ(CountRunDatafiles(s), 0);  // never saved
  t.WriteList(4, {"eSignal,eSignal", "DailyInterval,1"});
  EXPECT_EQ(CountRunDatafiles(s), 0);  // fewer records than the header
  std::vector<std::string> master(9000, "Issue,$X");
  t.WriteMasterfile(master, false);
  s.app.CurrentListNumber = "7";
  EXPECT_EQ(CountRunDatafiles(s), 32767);
}

}  // namespace
}  // namespace corvanet::test
