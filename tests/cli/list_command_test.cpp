#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

using Lines = std::vector<std::string>;

class ListCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Credentials keep the settings save quiet; nothing listens on port 9, so the master file
    // refresh of every start fails at once and the file written here stays.
    ASSERT_EQ(Run({"settings", "UserName=u", "Password=p", "IPAddress=127.0.0.1:9"}), 0);
    WriteLines(dir / "Masterfile2.csv",
               {"Dow Jones Industrial Ave. (DJIA),$INDU", "Dow Jones Transports (DJTA),$TRAN",
                "NYSE Composite (NYA),$NYA"});
  }
  int Run(Lines args) {
    out.str("");
    err.str("");
    args.insert(args.begin(), {"--base-dir", dir.path()});
    return cli::RunCli(args, out, err, {dir.path(), false});
  }
  Lines Printed() const {
    Lines lines;
    std::istringstream in(out.str());
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }
  std::string List(int n) const { return dir / ("Lists/Download" + std::to_string(n) + ".csv"); }

  TempDir dir;
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(ListCommandTest, EditsAreAppliedInOrderAndSaved) {
  ASSERT_EQ(Run({"list", "2", "vendor", "yahoo", "periods", "D,q", "add", "dow", "add", "$NYA",
                 "remove", "dow jones transports (djta),$tran"}),
            0)
      << err.str();
  EXPECT_EQ(ReadLines(List(2)),
            (Lines{"Yahoo,Yahoo", "DailyInterval,1", "WeeklyInterval,0", "MonthlyInterval,0",
                   "QuarterlyInterval,1", "Dow Jones Industrial Ave. (DJIA),$INDU",
                   "NYSE Composite (NYA),$NYA"}));
  ASSERT_EQ(Run({"list", "2"}), 0);
  EXPECT_EQ(Printed(),
            (Lines{"Dow Jones Industrial Ave. (DJIA),$INDU", "NYSE Composite (NYA),$NYA"}));

  ASSERT_EQ(Run({"list", "2", "clear", "move-all", "periods", "Weekly"}), 0);
  const Lines saved = ReadLines(List(2));
  EXPECT_EQ(saved[2], "WeeklyInterval,1");
  EXPECT_EQ(Lines(saved.begin() + 5, saved.end()),
            (Lines{"Dow Jones Industrial Ave.,$INDU", "Dow Jones Transports,$TRAN",
                   "NYSE Composite,$NYA"}));
}

TEST_F(ListCommandTest, RefusalsArePrintedExitFourAndMistakesChangeNothing) {
  struct Refusal {
    Lines args;
    std::string message;
  };
  // List 6 fixes its periods (daily), so its save asks only for the vendor.
  const std::vector<Refusal> refusals = {
      {{"list", "6", "add", "dow"}, "Cannot add to or change this download list."},
      {{"list", "7", "move-all"}, "Cannot change this download list."},
      {{"list", "6", "clear", "vendor", "eSignal"}, "Cannot clear this download list."},
      {{"list", "6", "periods", "D"}, "Please select a Data Vendor!"},
      {{"list", "3", "vendor", "Yahoo", "periods", "D", "remove", "nothing"}, "no item"},
      {{"list", "4", "periods", "W"}, "Please select a Data Vendor!"},
      {{"list", "5", "vendor", "Yahoo"}, "Please select a Data Period!"},
  };
  for (const Refusal& refusal : refusals) {
    EXPECT_EQ(Run(refusal.args), cli::kExitRefused) << refusal.args[1];
    EXPECT_TRUE(Contains((out.str() + err.str()), refusal.message)) << refusal.args[1] << out.str();
  }
  for (const int n : {3, 4, 5, 6, 7}) EXPECT_FALSE(Exists(List(n))) << n;

  for (const Lines& args : {Lines{"list"}, Lines{"list", "0"}, Lines{"list", "8"},
                            Lines{"list", "1", "vendor", "Bloomberg"}, Lines{"list", "1", "add"},
                            Lines{"list", "1", "periods", "D,X"}, Lines{"list", "1", "sort"},
                            Lines{"clear-datafiles", "now"}}) {
    EXPECT_EQ(Run(args), 2) << args.back();
  }
  EXPECT_FALSE(Exists(List(1)));
}

}  // namespace
}  // namespace corvanet::test
