// The progress line of `run` and `stats`: its text, and what a log file gets of it (nothing at
// all).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/progress_line.h"
#include "run_fixture.h"

namespace corvanet::test {
namespace {

using cli::ProgressLine;

TEST(ProgressLineTextTest, ShowsRateAndTimeLeftOnlyOnceTheyMeanSomething) {
  struct Case {
    int in_hand;
    int total;
    std::string symbol;
    double elapsed;
    std::string text;
  };
  const std::vector<Case> cases = {
      {1, 340, "$NYA", 0.0, "Datafile 1 of 340  $NYA Daily"},
      {5, 340, "$NYA", 0.5, "Datafile 5 of 340  $NYA Daily"},   // under a second
      {1, 340, "$NYA", 30.0, "Datafile 1 of 340  $NYA Daily"},  // nothing done yet
      {11, 340, "$SOX", 4.0, "Datafile 11 of 340  $SOX Daily  2.5/s  2:12 left"},
      {340, 340, "$SOX", 10.0, "Datafile 340 of 340  $SOX Daily  33.9/s  0:00 left"},
      {3001, 9000, "XLK", 100.0, "Datafile 3001 of 9000  XLK Daily  30.0/s  3:20 left"},
      {2, 20000, "XLK", 2.0, "Datafile 2 of 20000  XLK Daily  0.5/s  11:06:38 left"},
      {7, 0, "", 3.0, "Datafile 7  2.0/s"},  // total and datafile unknown
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ProgressLine::Compose(c.in_hand, c.total, c.symbol, "Daily", c.elapsed), c.text);
  }
}

class ProgressLineTest : public RunTest {
 protected:
  void SetUp() override {
    RunTest::SetUp();
    MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
  }
};

TEST_F(ProgressLineTest, QuietPrintsNothingOnSuccessAndTheWholeStoryOnFailure) {
  const CliResult good = RunProcess("--base-dir '" + base_arg() + "' -q run 2");
  EXPECT_EQ(good.code, 0);
  EXPECT_EQ(good.out + good.err, "");

  service.SetFaults({"*/Update-Daily.csv status 404"});
  const CliResult failed = RunProcess("--base-dir '" + base_arg() + "' -q run 2");
  EXPECT_EQ(failed.code, cli::kExitRunFailures);
  EXPECT_EQ(failed.out, "");
  EXPECT_NE(failed.err.find("Problem: Daily: Update-Daily.csv could not be fetched: HTTP 404"),
            std::string::npos)
      << failed.err;

  const CliResult refused = RunProcess("--base-dir '" + base_arg() + "' --quiet list 6 clear");
  EXPECT_EQ(refused.code, cli::kExitRefused);
  EXPECT_EQ(refused.out, "");
  EXPECT_NE(refused.err.find("Cannot clear this download list."), std::string::npos);
}

}  // namespace
}  // namespace corvanet::test
