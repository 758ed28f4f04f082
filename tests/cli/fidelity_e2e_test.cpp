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

// A composite the service lists without bars yet gets its header-only datafile and price file; a
// body that is no datafile is still refused.
TEST_F(FidelityTest, AHeaderOnlyFileGivesAHeaderOnlyDatafile) {
  AddComposite("NEWX", Header() + "\r\n");
  const CliResult run = RunList(2);
  EXPECT_EQ(run.code, 0) << run.out;
  EXPECT_TRUE(Contains(run.out, "Note: NEWX Daily: the service has no rows for it yet")) << run.out;
  EXPECT_EQ(ReadLines(data("Daily/NEWX.csv")), std::vector<std::string>{Header()});
  EXPECT_TRUE(Exists(data("PX/Daily/NEWX.csv")));

  WriteFile(ServiceFile("NEWXDaily-CompositeStats.csv"), "<html><body>Busy</body></html>\r\n");
  std::filesystem::remove(data("Daily/NEWX.csv"));
  std::filesystem::remove(data("Base/NEWXDaily-CompositeStats.csv"));
  const CliResult refused = RunList(2);
  EXPECT_EQ(refused.code, 3);
  EXPECT_FALSE(Exists(data("Daily/NEWX.csv")));
}

// A composite the update file leaves out is fetched whole, counted so, with price files.
TEST_F(FidelityTest, ADatafileTheUpdateFileDoesNotCoverIsFetchedWhole) {
  service.Advance(1);
  std::vector<std::string> update;
  for (const std::string& line : ReadLines(ServiceFile("Update-Daily.csv"))) {
    if (line.rfind("SOX ", 0) != 0) update.push_back(line);
  }
  WriteLines(ServiceFile("Update-Daily.csv"), update);
  const std::string price_file = ReadFile(data("PX/Daily/$SOX.csv"));
  const CliResult run = RunList(2);
  EXPECT_EQ(run.code, 0) << run.out;
  EXPECT_TRUE(Contains(run.out, "Datafiles fetched whole: 1")) << run.out;
  EXPECT_TRUE(Contains(run.out, "Note: $SOX Daily: the update file does not cover it"));
  EXPECT_EQ(ReadFile(data("Daily/$SOX.csv")), ReadFile(ServiceFile("SOXDaily-CompositeStats.csv")));
  EXPECT_NE(ReadFile(data("PX/Daily/$SOX.csv")), price_file) << "price files made anew";
}

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

// A start given a command of its own leaves a scheduled run for the start that carries it out.
TEST_F(FidelityTest, OnlyAnUnattendedStartTakesRunListNum) {
  WriteFile(start() + "RunListNum.txt", "2\r\n");
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"list", "2"}, {"settings"}, {"stats", "2"}}) {
    std::vector<std::string> args{"--base-dir", base_arg()};
    args.insert(args.end(), command.begin(), command.end());
    Run(args);
    EXPECT_EQ(ReadFile(start() + "RunListNum.txt"), "2\r\n") << command[0];
  }
  service.Advance(1);
  const CliResult unattended = RunIn({});
  EXPECT_EQ(unattended.code, 0) << unattended.out;
  EXPECT_TRUE(Contains(unattended.out, "Datafiles updated by merge: 3")) << unattended.out;
  EXPECT_EQ(ReadFile(start() + "RunListNum.txt"), "0\r\n");
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

// A message file that could not be fetched stays on disk, and nothing of it is shown again.
TEST_F(FidelityTest, AnUnfetchedMessageFileIsKeptButNotShown) {
  ASSERT_EQ(RunIn({"settings", "SystemMessagesYes=True"}).code, 0);
  const CliResult shown = RunList(2);
  EXPECT_TRUE(Contains(shown.out, "Corvanet")) << shown.out;
  const std::string kept = ReadFile(data("Base/Zennor_System.txt"));
  ASSERT_FALSE(kept.empty());
  service.SetFaults({"*/Zennor_System.txt status 503"});
  const CliResult run = RunList(2);
  EXPECT_NE(shown.out.substr(0, 40), run.out.substr(0, 40)) << run.out;
  EXPECT_EQ(ReadFile(data("Base/Zennor_System.txt")), kept);
}

}  // namespace
}  // namespace corvanet::test
