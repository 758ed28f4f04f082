#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "core/stats/composite_fixture.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

using Lines = std::vector<std::string>;

// `stats N` in-process on a fresh installation, with a user list of two composites of which only
// $NYA has a datafile.
class StatsCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run({"settings", "UserName=u", "Password=p", "IPAddress=127.0.0.1:9",
                   "NewHighs1stDay=1", "MaxFilenameLength=Limit to 8 Characters"}),
              0)
        << err.str();
    WriteLines(dir / "Lists/Download2.csv",
               {"eSignal,eSignal", "DailyInterval,1", "WeeklyInterval,0", "MonthlyInterval,0",
                "QuarterlyInterval,0", "NYSE Composite,$NYA", "Dow Industrials,$INDU"});
    WriteDatafile(dir / "CSVFiles/Daily/$NYA.csv", {CompositeLine()});
  }
  int Run(Lines args) {
    out.str("");
    err.str("");
    args.insert(args.begin(), {"--base-dir", dir.path()});
    return cli::RunCli(args, out, err, {dir.path(), false});
  }

  TempDir dir;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(StatsCommandTest, MakesTheListsFilesAndReportsTheCompositesItCouldNotSplit) {
  EXPECT_EQ(Run({"stats", "2"}), cli::kExitRunFailures);
  EXPECT_EQ(ReadLines(dir / "CSVFiles/NewHighs1stDay/Daily/$NYA-New.csv"), Lines{"20121102,46"});
  const std::string printed = out.str();
  EXPECT_NE(printed.find("Single Statistic Files Created ... (Elapsed time:  "), std::string::npos);
  EXPECT_NE(printed.find("Datafiles split: 1\nDatafiles failed: 1\n  $INDU Daily: File not found"),
            std::string::npos)
      << printed;
}

TEST_F(StatsCommandTest, RefusesAnythingButOneListNumber) {
  for (const Lines& args :
       {Lines{"stats"}, Lines{"stats", "8"}, Lines{"stats", "x"}, Lines{"stats", "1", "2"}}) {
    EXPECT_EQ(Run(args), cli::kExitUsage);
    EXPECT_NE(err.str().find("corvanet-cli stats: "), std::string::npos) << args.back();
  }
}

}  // namespace
}  // namespace corvanet::test
