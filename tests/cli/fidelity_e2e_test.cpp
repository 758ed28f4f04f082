// Runs of corvanet-cli against the demo service where a user's datafile used to be lost, counted
// wrongly or left behind, and starts that used to lose a scheduled run.
#include <gtest/gtest.h>

#include <filesystem>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

// The line with field `index` (from 0) replaced.
std::string WithField(const std::string& line, int index, const std::string& value) {
  std::size_t start = 0;
  for (int i = 0; i < index; ++i) start = line.find(',', start) + 1;
  const std::size_t end = line.find(',', start);
  return line.substr(0, start) + value + (end == std::string::npos ? "" : line.substr(end));
}

class FidelityTest : public ListTwoRunTest {
 protected:
  // Adds a composite to the service's master file and to list 2.
  void AddComposite(const std::string& symbol, const std::string& served) {
    WriteFile(ServiceFile(symbol + "Daily-CompositeStats.csv"), served);
    WriteFile(ServiceFile("Masterfile2.csv"),
              ReadFile(ServiceFile("Masterfile2.csv")) + "New Composite," + symbol + "\r\n");
    std::vector<std::string> list = ReadLines(base() + "Lists/Download2.csv");
    list.push_back("New Composite," + symbol);
    WriteLines(base() + "Lists/Download2.csv", list);
  }
  std::string Header() const {
    return ReadLines(ServiceFile("NYSEDaily-CompositeStats.csv")).front();
  }
};

// A forced full download that fails still merges on the kept base copy, and says so.
TEST_F(FidelityTest, AFailedForcedFetchMergesOnTheKeptCopy) {
  ASSERT_EQ(RunIn({"list", "6", "vendor", "eSignal", "periods", "D"}).code, 0);
  ASSERT_EQ(RunList(6).code, 0);  // every composite's daily base copy is kept
  service.Advance(1);
  service.SetFaults({"*/NYSEDaily-CompositeStats.csv status 500"});
  ASSERT_EQ(RunIn({"settings", "AllDailyForceFull=1"}).code, 0);
  const CliResult run = RunList(6);
  EXPECT_EQ(run.code, 3);
  EXPECT_TRUE(Contains(run.out, "Problem: $NYA Daily: the full download failed: HTTP 500"))
      << run.out;
  EXPECT_EQ(LastRow("Daily/$NYA.csv"),
            LastRow("Daily/$INDU.csv").substr(0, 10) + LastRow("Daily/$NYA.csv").substr(10))
      << "the new bar was merged";
  EXPECT_EQ(ValidateDatafile(data("Daily/$NYA.csv")), std::vector<std::string>{});
}

// Support reads every line as time, LogDetail, message.
TEST_F(FidelityTest, EveryLogLineCarriesLogDetail) {
  service.Advance(1);
  ASSERT_EQ(RunIn({"--log", "run", "2"}).code, 0);
  const std::vector<std::string> lines = ReadLines(base() + "Rondex/LogFile.txt");
  int logged = 0;
  for (std::size_t i = 16; i < lines.size(); ++i) {  // after the settings report
    EXPECT_EQ(lines[i].substr(8, 13), " - Not Set - ") << lines[i];
    ++logged;
  }
  EXPECT_GT(logged, 50);
}

// Whole-number columns go through their type: 12.5 is read as 12, 13.5 as 14, and a count beyond
// 32 bits takes the composite's error path, leaving its old files.
TEST_F(FidelityTest, WholeNumberColumnsAreConvertedByType) {
  ASSERT_EQ(
      RunIn({"settings", "Advances=1", "UserDefFile1=1", "Stat1File1=Advances", "UserDefFile1=1"})
          .code,
      0);
  std::vector<std::string> rows = ReadLines(data("Daily/$NYA.csv"));
  rows[1] = WithField(rows[1], 15, "12.5");
  rows[2] = WithField(rows[2], 15, "13.5");
  WriteLines(data("Daily/$NYA.csv"), rows);
  ASSERT_EQ(RunIn({"stats", "2"}).code, 0);
  const std::vector<std::string> advances = ReadLines(data("Advances/Daily/$NYA-Advances.csv"));
  EXPECT_EQ(advances.at(0).substr(advances[0].find(',')), ",12");
  EXPECT_EQ(advances.at(1).substr(advances[1].find(',')), ",14");

  const std::string before = ReadFile(data("Advances/Daily/$NYA-Advances.csv"));
  rows[2] = WithField(rows[2], 15, "99999999999");
  WriteLines(data("Daily/$NYA.csv"), rows);
  EXPECT_EQ(RunIn({"stats", "2"}).code, 3);
  EXPECT_EQ(ReadFile(data("Advances/Daily/$NYA-Advances.csv")), before);
}

}  // namespace
}  // namespace corvanet::test
