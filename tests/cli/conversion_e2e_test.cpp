// MetaStock conversion at the end of real runs of corvanet-cli against the demo service, read back
// with the tests' own reader of the format.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "cli/run_fixture.h"
#include "support/metastock_reader.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBatches[] = {"MakePxFiles.bat", "MakeEqWtPxFiles.bat",
                                    "MakeFile1PxFiles.bat", "MakeFile2PxFiles.bat",
                                    "MakeFile3PxFiles.bat"};
// Per kind: the price-file folder under the data folder and the MetaStock folder.
constexpr std::pair<const char*, const char*> kFolders[] = {{"PX/", ""},
                                                            {"PxEqWt/", "EqWtPriceFiles/"},
                                                            {"PxFile1/", "PxFile1/"},
                                                            {"PxFile2/", "PxFile2/"},
                                                            {"PxFile3/", "PxFile3/"}};

class ConversionTest : public RunTest {
 protected:
  explicit ConversionTest(DemoServiceOptions options = {}) : RunTest(std::move(options)) {}

  void Tick(const std::vector<std::string>& pairs) {
    std::vector<std::string> args{"settings", "ImplementSpecialFunctions=1",
                                  "MakeMetaStockPxFiles=1"};
    args.insert(args.end(), pairs.begin(), pairs.end());
    ASSERT_EQ(RunIn(args).code, 0);
  }
  std::string MetaStock(const std::string& relative) const {
    return base() + "MetaStock/" + relative;
  }
  std::string Batch(const char* name) const { return base() + "Lists/" + name; }

  // Every price file of a folder is a security of the MetaStock folder with the same bars.
  void ExpectConverted(const std::string& price_folder, const std::string& metastock_folder) {
    SCOPED_TRACE(metastock_folder);
    const MetastockFolder folder = ReadMetastockFolder(metastock_folder);
    EXPECT_EQ(folder.problems, std::vector<std::string>{});
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(price_folder)) {
      ++files;
      const std::vector<std::string> lines = ReadLines(entry.path().string());
      ASSERT_GE(lines.size(), 2U);
      const std::string symbol = lines[1].substr(0, lines[1].find(','));
      const auto found =
          std::find_if(folder.securities.begin(), folder.securities.end(),
                       [&](const MetastockSecurity& s) { return s.symbol == symbol; });
      ASSERT_NE(found, folder.securities.end()) << symbol;
      ASSERT_EQ(found->bars.size(), lines.size() - 1) << symbol;
      for (std::size_t i = 1; i < lines.size(); ++i) {
        std::vector<double> values;
        std::size_t pos = 0;
        for (int field = 0; field < 10; ++field) {
          const std::size_t comma = lines[i].find(',', pos);
          if (field >= 3) values.push_back(std::strtod(lines[i].c_str() + pos, nullptr));
          pos = comma + 1;
        }
        const MetastockBar& bar = found->bars[i - 1];
        ASSERT_EQ(bar.date, static_cast<int>(values[0])) << symbol << " bar " << i;
        for (int v = 0; v < 6; ++v) {
          EXPECT_NEAR(bar.values[v], values[v + 1], std::abs(values[v + 1]) * 1e-6 + 1e-6)
              << symbol << " bar " << i << " value " << v;
        }
      }
    }
    EXPECT_EQ(folder.securities.size(), files) << "no security twice, none left over";
  }
};

// All five kinds over All Periods: five batch files run in table order, and every composite of
// every period is in its MetaStock folder with the bars of its price file; a second run replaces.
TEST_F(ConversionTest, AllPeriodsWithEveryKindConvertsEveryPriceFile) {
  Tick({"OHLCVV=1", "EqWtOHLCVV=1", "UserDefFile1=1", "UserDefFile2=1", "UserDefFile3=1",
        "Stat1File1=ClosePx", "Stat2File2=Advances", "Stat6File3=TradeVolume"});
  ASSERT_EQ(RunIn({"list", "7", "vendor", "eSignal", "periods", "D,W,M,Q"}).code, 0);
  for (int pass = 0; pass < 2; ++pass) {
    SCOPED_TRACE(pass);
    if (pass == 1) service.Advance(1);
    const std::size_t logged = ReadFile(base() + "Rondex/MSXlog.txt").size();
    const CliResult run = RunList(7);
    ASSERT_EQ(run.code, 0) << run.out;
    // Table order: every traditional call was made before the first equal-weight one, and so on.
    const std::string log = ReadFile(base() + "Rondex/MSXlog.txt").substr(logged);
    EXPECT_LT(log.rfind("MetaStock/Quarterly"), log.find("EqWtPriceFiles"));
    EXPECT_LT(log.rfind("EqWtPriceFiles"), log.find("PxFile1"));
    EXPECT_LT(log.rfind("PxFile2"), log.find("PxFile3"));
    for (const char* batch : kBatches) {
      const std::vector<std::string> lines = ReadLines(Batch(batch));
      ASSERT_FALSE(lines.empty()) << batch;
      EXPECT_EQ(lines.back(), "Call Complete.exe") << batch;
      EXPECT_EQ(lines.front().rfind("PxFiles -f " + data(""), 0), 0U) << lines.front();
      EXPECT_TRUE(Contains(run.out, std::string("MetaStock conversion ") + batch + ": " +
                                        std::to_string(lines.size() - 1) + " of " +
                                        std::to_string(lines.size() - 1) + " price file(s)"))
          << run.out;
    }
    for (const auto& [price, metastock] : kFolders) {
      for (const char* period : {"Daily", "Weekly", "Monthly", "Quarterly"}) {
        ExpectConverted(data(std::string(price) + period),
                        MetaStock(std::string(metastock) + period));
      }
    }
  }
}

// Without the MetaStock format the batch files get no lines and nothing waits; a user list
// deletes nothing in the MetaStock folders.
TEST_F(ConversionTest, NoFormatNoBatchesAndUserListsDeleteNothing) {
  Tick({"OHLCVV=1", "DoNotMakeMetaStockFormat=1"});
  MakeList(3, "eSignal", "D", {"$NYA", "$SOX"});
  CreateFolders(MetaStock("Daily"));
  WriteFile(MetaStock("Daily/MASTER"), "kept");
  const CliResult plain = RunList(3);
  EXPECT_EQ(plain.code, 0) << plain.out;
  for (const char* batch : kBatches) EXPECT_EQ(ReadFile(Batch(batch)), "") << batch;
  EXPECT_FALSE(Contains(plain.out, "MetaStock conversion"));
  EXPECT_FALSE(Exists(base() + "Rondex/MSXlog.txt"));

  Tick({"DoNotMakeMetaStockFormat=0"});
  fs::remove(MetaStock("Daily/MASTER"));
  WriteFile(MetaStock("Daily/notes.txt"), "mine");
  ASSERT_EQ(RunList(3).code, 0);
  ExpectConverted(data("PX/Daily"), MetaStock("Daily"));
  ASSERT_EQ(RunList(3).code, 0);
  EXPECT_EQ(ReadFile(MetaStock("Daily/notes.txt")), "mine");
}

// Batch lines carry paths as they are: blanks and "$" in them reach the converter unharmed.
TEST_F(ConversionTest, PathsWithBlanksAndDollarSignsAreConverted) {
  ASSERT_EQ(RunIn({"settings", "PathToDataFiles=CSV Files/", "PathToMSPxFiles=Meta Stock/"}).code,
            0);
  Tick({"OHLCVV=1"});
  MakeList(3, "eSignal", "D", {"$NYA", "$SOX"});
  const CliResult run = RunList(3);
  ASSERT_EQ(run.code, 0) << run.out;
  EXPECT_TRUE(Contains(ReadFile(Batch("MakePxFiles.bat")), "/CSV Files/PX/Daily/$NYA.csv"));
  ExpectConverted(base() + "CSV Files/PX/Daily", base() + "Meta Stock/Daily");
  EXPECT_TRUE(Contains(run.out, "2 of 2 price file(s) converted")) << run.out;

  // A security the converter cannot write counts as not converted.
  std::filesystem::remove(base() + "Meta Stock/Daily/F1.DAT");
  std::filesystem::create_directory(base() + "Meta Stock/Daily/F1.DAT");
  const CliResult again = RunList(3);
  EXPECT_TRUE(Contains(again.out, "1 of 2 price file(s) converted")) << again.out;
}

// A batch that ends without its completion mark ends the wait and is reported.
TEST_F(ConversionTest, AMissingCompletionHelperEndsTheWaitWithAFailure) {
  Tick({"OHLCVV=1"});
  MakeList(3, "eSignal", "D", {"$NYA"});
  TempDir helpers;
  fs::create_symlink(BinaryPath("PxFiles"), helpers / "PxFiles");
  ::setenv("CORVANET_HELPER_DIR", helpers.path().c_str(), 1);
  const CliResult run = RunList(3);
  ::unsetenv("CORVANET_HELPER_DIR");
  EXPECT_EQ(run.code, 3);
  EXPECT_TRUE(Contains(run.out,
                       "MetaStock conversion MakePxFiles.bat: 1 of 1 price file(s) "
                       "converted; the batch ended without its completion mark"))
      << run.out;
}

// A batch still ending after its completion mark holds the run lock it inherited: the run waits for
// it, so the next run straight after is not refused as busy.
TEST_F(ConversionTest, ABatchLingeringAfterItsMarkIsWaitedFor) {
  Tick({"OHLCVV=1"});
  MakeList(3, "eSignal", "D", {"$NYA"});
  TempDir helpers;
  fs::create_symlink(BinaryPath("PxFiles"), helpers / "PxFiles");
  WriteFile(helpers / "Complete.exe", "#!/bin/sh\necho 1 > Complete.txt\nsleep 1\n");
  fs::permissions(helpers / "Complete.exe", fs::perms::owner_exec, fs::perm_options::add);
  ::setenv("CORVANET_HELPER_DIR", helpers.path().c_str(), 1);
  const CliResult first = RunList(3);
  const CliResult second = RunList(3);
  ::unsetenv("CORVANET_HELPER_DIR");
  EXPECT_EQ(first.code, 0) << first.out;
  EXPECT_EQ(second.code, 0) << second.out;
}

// A full list whose run failed somewhere keeps its MetaStock folders: nothing is emptied.
TEST_F(ConversionTest, AFailedFullListRunEmptiesNoMetaStockFolder) {
  Tick({"OHLCVV=1"});
  ASSERT_EQ(RunIn({"list", "6", "vendor", "eSignal", "periods", "D"}).code, 0);
  ASSERT_EQ(RunList(6).code, 0);
  WriteFile(MetaStock("Daily/F99.DAT"), "a security gone from the master file");
  service.Advance(7);
  service.SetFaults({"*/NYSEDaily-CompositeStats.csv status 500"});
  const CliResult failed = RunList(6);
  EXPECT_EQ(failed.code, 3);
  EXPECT_TRUE(Exists(MetaStock("Daily/F99.DAT")));
  service.SetFaults({});
  ASSERT_EQ(RunList(6).code, 0);
  EXPECT_FALSE(Exists(MetaStock("Daily/F99.DAT"))) << "a whole run empties the folder first";
  ExpectConverted(data("PX/Daily"), MetaStock("Daily"));
}

}  // namespace
}  // namespace corvanet::test
