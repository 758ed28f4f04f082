#include "core/app/run_outcome.h"

#include <algorithm>

#include "core/download/run_summary.h"

#include <gtest/gtest.h>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

RunSummary Ran(int merged) {
  RunSummary summary;
  summary.started = true;
  summary.merged = merged;
  return summary;
}

TEST(RunOutcomeTest, TheHeadingSaysPlainlyWhetherEveryFileIsUpToDate) {
  struct Case {
    const char* what;
    RunSummary summary;
    const char* heading;
    bool failed;
  };
  RunSummary failed_datafile = Ran(3);
  failed_datafile.failures.push_back(
      {"$NYA", "Daily", "HTTP 401 for NYSEDaily-CompositeStats.csv"});
  RunSummary failed_period = Ran(3);
  failed_period.period_problems.push_back("Update-Daily.csv: could not connect");
  RunSummary stopped = Ran(1);
  stopped.stopped = true;
  stopped.not_tried = 2;
  RunSummary failed_statistics = Ran(3);
  failed_statistics.statistic_failures.push_back({"$NYA", "Daily", "short row"});
  const Case cases[] = {
      {"refused by its checks", RunSummary{},
       "FAILED: the download of Download List 3 did not start.", true},
      {"every datafile updated", Ran(3), "Complete: every datafile of Download List 3 was updated.",
       false},
      {"a datafile failed", failed_datafile,
       "FAILED: not every datafile of Download List 3 could be updated. Why is listed below.",
       true},
      {"an update file failed", failed_period,
       "FAILED: not every datafile of Download List 3 could be updated. Why is listed below.",
       true},
      {"stopped by the user", stopped,
       "STOPPED: the download of Download List 3 was stopped before every datafile was updated.",
       true},
      {"statistic files failed", failed_statistics,
       "FAILED: the datafiles of Download List 3 were updated, but not every statistic or price "
       "file could be made.",
       true},
  };
  TestSession t;
  t.session.app.CurrentListNumber = "3";
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ShowRunOutcome(t.session, c.summary);
    EXPECT_EQ(t.session.ui.RunOutcome.caption, c.heading);
    EXPECT_EQ(t.session.ui.RunFailed, c.failed);
    EXPECT_EQ(t.session.ui.RunSummaryLines, c.summary.Lines());
  }
  ClearRunOutcome(t.session.ui);
  EXPECT_EQ(t.session.ui.RunOutcome.caption, WindowState().RunOutcome.caption);
  EXPECT_TRUE(t.session.ui.RunSummaryLines.empty());
  EXPECT_FALSE(t.session.ui.RunFailed);
}

TEST(RunSummaryTest, DatafilesNotUpdatedAreCountedFromOne) {
  RunSummary summary;
  summary.started = true;
  summary.not_updated = 1;
  const std::vector<std::string> lines = summary.Lines();
  EXPECT_NE(std::find(lines.begin(), lines.end(), "Datafiles not updated: 1"), lines.end());
}

}  // namespace
}  // namespace corvanet::test
