// Statistic files and price files made from datafiles that a real run fetched from the demo
// service, through corvanet-cli.
#include <gtest/gtest.h>

#include "cli/run_fixture.h"
#include "core/platform/field_reader.h"

namespace corvanet::test {
namespace {

using Lines = std::vector<std::string>;

// Field `index` (from 0) of a comma-separated line.
std::string Field(const std::string& line, int index) {
  std::size_t start = 0;
  for (int i = 0; i < index; ++i) start = line.find(',', start) + 1;
  return line.substr(start, line.find(',', start) - start);
}

class StatsRunTest : public RunTest {
 protected:
  void SetUp() override {
    RunTest::SetUp();
    // The oldest $SOX row gets values the number rule writes in its own way.
    Lines sox = ReadLines(ServiceFile("SOXDaily-CompositeStats.csv"));
    std::vector<std::string> fields = SplitFields(sox[1]);
    fields[3] = "-3";   // OpenPx
    fields[6] = "0.5";  // ClosePx
    sox[1] = fields[0];
    for (std::size_t i = 1; i < fields.size(); ++i) sox[1] += "," + fields[i];
    WriteLines(ServiceFile("SOXDaily-CompositeStats.csv"), sox);
    MakeList(2, "eSignal", "D,Q", {"$NYA", "$SOX"});
  }
  void Settings(const Lines& pairs) {
    Lines args{"settings"};
    args.insert(args.end(), pairs.begin(), pairs.end());
    ASSERT_EQ(RunIn(args).code, 0);
  }
  Lines DatafileRows(const std::string& relative) {
    Lines rows = ReadLines(data(relative));
    rows.erase(rows.begin());
    return rows;
  }
};

TEST_F(StatsRunTest, TheRunMakesStatisticFilesInEitherStructure) {
  Settings({"PeriodStatFilename=True", "NewHighs=1", "AutoCreateOneStatFiles=1", "RunWithList2=1"});
  ASSERT_EQ(RunList(2).code, 0);
  const Lines rows = DatafileRows("Daily/$NYA.csv");
  const Lines stat = ReadLines(data("Daily/NewHighs/$NYA-NewHighs.csv"));
  ASSERT_EQ(stat.size(), rows.size());
  EXPECT_EQ(stat.front(), Field(rows.front(), 1) + "," + Field(rows.front(), 19));
  EXPECT_FALSE(Exists(data("Quarterly/NewHighs/$NYA-NewHighs.csv")));
  EXPECT_TRUE(Exists(data("Quarterly/NewHighs/$SOX-NewHighs.csv")));

  Settings({"StatPeriodFileName=True", "NewHighs=0", "NewHighs=1"});
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  EXPECT_EQ(ReadLines(data("NewHighs/Daily/$NYA-NewHighs.csv")), stat);
}

// File names follow the length rule; a datafile of its header alone gives an empty file.
TEST_F(StatsRunTest, FileNamesFollowTheLengthRule) {
  Settings({"NewHighs1stDay=1", "NewHighs=1", "NewLows=1", "UpTrends=1",
            "MaxFilenameLength=Limit to 8 Characters"});
  ASSERT_EQ(RunList(2).code, 0);
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  for (const char* statistic : {"NewHighs1stDay", "NewHighs", "NewLows"}) {
    EXPECT_TRUE(Exists(data(std::string(statistic) + "/Daily/$NYA-New.csv"))) << statistic;
  }
  Settings({"MaxFilenameLength=Use Issue Symbol"});
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  EXPECT_TRUE(Exists(data("UpTrends/Daily/$NYA.csv")));
  Settings({"MaxFilenameLength="});
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  EXPECT_FALSE(ReadFile(data("UpTrends/Daily/$NYA-UpTrends.csv")).empty());

  WriteLines(data("Daily/$NYA.csv"), {ReadLines(data("Daily/$NYA.csv"))[0]});
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  EXPECT_EQ(ReadFile(data("UpTrends/Daily/$NYA-UpTrends.csv")), "");
  EXPECT_FALSE(ReadFile(data("UpTrends/Daily/$SOX-UpTrends.csv")).empty());
}

TEST_F(StatsRunTest, DatesAndZeroReplacementFollowTheSettings) {
  Settings({"NewLows=1", "ReplaceZeroValues=0.00001"});
  ASSERT_EQ(RunList(2).code, 0);
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  const Lines rows = DatafileRows("Daily/$NYA.csv");
  Lines zeros;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (Field(rows[i], 20) == "0") zeros.push_back(Field(rows[i], 1) + ",0.00001");
  }
  ASSERT_FALSE(zeros.empty()) << "the data set has days without new lows";
  const Lines stat = ReadLines(data("NewLows/Daily/$NYA-NewLows.csv"));
  for (const std::string& line : zeros)
    EXPECT_NE(std::find(stat.begin(), stat.end(), line), stat.end());

  Settings({"ReplaceZeroValues=-1", "DateFormatMMDDYYYY=True"});
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  const Lines mmdd = ReadLines(data("NewLows/Daily/$NYA-NewLows.csv"));
  EXPECT_EQ(mmdd.front().substr(0, 11), Field(rows.front(), 2) + ",");
  EXPECT_TRUE(std::any_of(mmdd.begin(), mmdd.end(),
                          [](const std::string& l) { return l.substr(10) == ",-1"; }));
}

TEST_F(StatsRunTest, PriceFilesComeWithEveryUpdatedDatafile) {
  Settings({"MakeMetaStockPxFiles=1", "OHLCVV=1", "EqWtOHLCVV=1", "UserDefFile1=1",
            "Stat1File1=ClosePx"});
  ASSERT_EQ(RunList(2).code, 0);
  const Lines traditional = ReadLines(data("PX/Daily/$SOX.csv"));
  ASSERT_GE(traditional.size(), 2u);
  EXPECT_EQ(traditional[0], "<ticker>,<name>,<per>,<date>,<open>,<high>,<low>,<close>,<vol>,<o/i>");
  EXPECT_EQ(Field(traditional[1], 0), "$SOX");
  EXPECT_EQ(Field(traditional[1], 4), "-3");
  EXPECT_EQ(Field(traditional[1], 7), " .5");
  const Lines user = ReadLines(data("PxFile1/Daily/$SOX.csv"));
  EXPECT_EQ(Field(user[1], 4), " .5");
  EXPECT_EQ(user[1].substr(user[1].size() - 15), ", 0, 0, 0, 0, 0") << "Select One columns";
  const Lines quarterly = ReadLines(data("PX/Quarterly/$SOX.csv"));
  ASSERT_GE(quarterly.size(), 2u);
  EXPECT_EQ(Field(quarterly[1], 2), "M") << "quarterly bars go to the converter as monthly";
  EXPECT_TRUE(Exists(data("PxEqWt/Daily/$NYA.csv")));

  Settings({"DoNotMakeMetaStockFormat=1"});
  ASSERT_EQ(RunList(2).code, 0);
  EXPECT_EQ(Field(ReadLines(data("PX/Daily/$SOX.csv"))[0], 0), "$SOX") << "no header";
}

}  // namespace
}  // namespace corvanet::test
