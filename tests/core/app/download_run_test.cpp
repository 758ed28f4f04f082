// A whole download run against a real HTTP service on 127.0.0.1.
#include "core/app/download_run.h"

#include <gtest/gtest.h>

#include "core/download/download_fixture.h"
#include "core/lists/download_lists.h"

namespace corvanet::test {
namespace {

class DownloadRunTest : public ::testing::Test, public DownloadFixture {
 protected:
  void SetUp() override {
    session.ui.DownloadCompleteMessageYes = false;
    session.ui.DownloadCompleteMessageNo = true;
    WriteLines(dir / "Masterfile2.csv",
               {"NYSE Composite (2000 issues),$NYA", "Dow Jones Industrial Ave. (30 issues),$INDU",
                "Semiconductors (30 issues),$SOX"});
    service.SetFile("/ovalith/data/Masterfile2.csv", ReadFile(dir / "Masterfile2.csv"));
    for (const char* web : {"NYSE", "DJ30", "SOX"}) {
      for (const char* period : {"Daily", "Weekly", "Monthly", "Quarterly"}) {
        service.SetFile(std::string(kServicePath) + web + period + "-CompositeStats.csv",
                        Datafile({1, 2, 3, 4}));
      }
    }
    for (const char* period : {"Daily", "Weekly", "Monthly", "Quarterly"}) {
      std::vector<std::string> lines;
      for (const char* web : {"NYSE", "DJ30", "SOX"}) {
        for (const int day : {3, 4, 5}) lines.push_back(UpdateLine(web, Row(day)));
      }
      std::string content;
      for (const std::string& line : lines) content += line + "\r\n";
      service.SetFile(std::string(kServicePath) + "Update-" + period + ".csv", content);
    }
  }

  // A user list file with the given vendor, periods and issues, selected as its button does.
  void UseList(int n, const std::string& vendor, const std::string& periods,
               const std::vector<std::string>& issues) {
    std::vector<std::string> lines{vendor + "," + vendor};
    const char* names[] = {"DailyInterval", "WeeklyInterval", "MonthlyInterval",
                           "QuarterlyInterval"};
    for (int i = 0; i < 4; ++i) {
      lines.push_back(std::string(names[i]) + "," +
                      (periods.find("DWMQ"[i]) != std::string::npos ? "1" : "0"));
    }
    lines.insert(lines.end(), issues.begin(), issues.end());
    WriteLines(session.ui.PathToLists + "Download" + std::to_string(n) + ".csv", lines);
    DownloadList_Click(session, n);
  }
};

// An update file that cannot be had, or that is no update file, is named as the cause once, and
// the period is merged all the same with what is on disk: here no update file was ever kept, so
// each datafile is its base copy, fetched whole where it is missing.
TEST_F(DownloadRunTest, AnUpdateFileThatCannotBeHadIsTheNamedCause) {
  UseList(3, "eSignal", "D,W", {"NYSE Composite,$NYA", "Dow,$INDU"});
  const struct {
    int status;
    const char* body;
    const char* cause;
  } cases[] = {
      {401, "", "could not be fetched: HTTP 401 (the data service refused the user name"},
      {404, "", "could not be fetched: HTTP 404"},
      {200, "<html><body>Maintenance</body></html>", "holds no update rows"},
      {200, "\r\r\r\r", "holds no update rows"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.cause);
    service.SetFile("/ovalith/data/Update-Daily.csv", c.body);
    if (c.status != 200) service.SetStatus("/ovalith/data/Update-Daily.csv", c.status);
    const RunSummary summary = DownLoadButton_Click(session);
    EXPECT_TRUE(summary.has_failures());
    EXPECT_EQ(summary.not_updated, 0);
    EXPECT_EQ(summary.failures.size(), 0U);
    EXPECT_EQ(summary.merged + summary.fetched_whole, 4);
    ASSERT_EQ(summary.period_problems.size(), 1U);
    EXPECT_NE(summary.period_problems[0].find("Daily: Update-Daily.csv " + std::string(c.cause)),
              std::string::npos)
        << summary.period_problems[0];
    EXPECT_NE(summary.period_problems[0].find("; no update file kept from an earlier run either"),
              std::string::npos);
    EXPECT_EQ(ReadFile(daily("$NYA.csv")), Datafile({1, 2, 3, 4}));
  }
  EXPECT_EQ(service.requests("/ovalith/data/NYSEDaily-CompositeStats.csv"), 1)
      << "fetched once, when its base copy was missing";
}

}  // namespace
}  // namespace corvanet::test
