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
      EXPECT_EQ(lines.front().rfind("PxFiles -f '" + data(""), 0), 0U) << lines.front();
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

// Every path reaches the converter as the setting holds it, whatever it holds: quoted on the batch
// line, read back whole by the batch runner, and taken by the converter as a value even where it
// looks like an option.
TEST_F(ConversionTest, EveryPathReachesTheConverterAsItIs) {
  Tick({"OHLCVV=1"});
  MakeList(3, "eSignal", "D", {"$NYA", "$SOX"});
  const char* const folders[] = {
      "Meta  Stock/", "it's \"quoted\" $HOME %PATH%/", "a&b;c |d/", "x -h y/", " -o -f/",
  };
  for (const std::string folder : folders) {
    SCOPED_TRACE(folder);
    ASSERT_EQ(
        RunIn({"settings", "PathToDataFiles=CSV " + folder, "PathToMSPxFiles=" + folder}).code, 0);
    Tick({"OHLCVV=1"});  // makes the kind's folders under the new paths
    const CliResult run = RunList(3);
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_TRUE(Contains(run.out, "2 of 2 price file(s) converted")) << run.out;
    ExpectConverted(base() + "CSV " + folder + "PX/Daily", base() + folder + "Daily");
  }
  EXPECT_FALSE(Exists(base() + "Meta Stock")) << "two blanks stay two";

  // A security the converter cannot write counts as not converted.
  const std::string last = base() + folders[std::size(folders) - 1] + "Daily/";
  fs::remove(last + "F1.DAT");
  fs::create_directory(last + "F1.DAT");
  const CliResult again = RunList(3);
  EXPECT_EQ(again.code, 3);
  EXPECT_TRUE(Contains(again.out, "1 of 2 price file(s) converted")) << again.out;
}

// A converter that cannot run, or runs and writes nothing, converts nothing and says so: when it
// cannot even answer, no MetaStock folder is emptied and no batch is run.
TEST_F(ConversionTest, AConverterThatDoesNotConvertIsNeverCountedAsConverting) {
  Tick({"OHLCVV=1"});
  ASSERT_EQ(RunIn({"list", "6", "vendor", "eSignal", "periods", "D"}).code, 0);
  ASSERT_EQ(RunList(6).code, 0);
  const std::size_t securities = ReadMetastockFolder(MetaStock("Daily")).securities.size();
  ASSERT_GT(securities, 2U);
  const std::string usage = "if [ \"$1\" = --help ]; then echo 'usage: PxFiles'; exit 0; fi\n";
  struct Case {
    const char* what;
    const char* converter;  // the script put in PxFiles' place; nullptr: none
    bool answers_usage;
    const char* said;
    bool emptied;
  };
  const Case cases[] = {
      {"missing", nullptr, false, "MetaStock conversion not run: PxFiles was not found", false},
      {"answers wrongly", "exit 0\n", false, "MetaStock conversion not run: ", false},
      {"crashes", "kill -SEGV $$\n", true, "MetaStock conversion MakePxFiles.bat: 0 of ", true},
      {"writes nothing", "exit 0\n", true, "MetaStock conversion MakePxFiles.bat: 0 of ", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TempDir helpers;
    fs::create_symlink(BinaryPath("Complete.exe"), helpers / "Complete.exe");
    if (c.converter != nullptr) {
      WriteFile(helpers / "PxFiles",
                "#!/bin/sh\n" + (c.answers_usage ? usage : std::string()) + c.converter);
      fs::permissions(helpers / "PxFiles", fs::perms::owner_exec, fs::perm_options::add);
    }
    ::setenv("CORVANET_HELPER_DIR", helpers.path().c_str(), 1);
    const CliResult run = RunList(6);
    ::unsetenv("CORVANET_HELPER_DIR");
    EXPECT_EQ(run.code, 3) << run.out;
    EXPECT_TRUE(Contains(run.out, c.said)) << run.out;
    EXPECT_EQ(ReadMetastockFolder(MetaStock("Daily")).securities.size(),
              c.emptied ? 0U : securities);
    EXPECT_EQ(ReadLines(Batch("MakePxFiles.bat")).back() == "Call Complete.exe", c.emptied)
        << "a batch runs only with a converter that answers";
  }
  ASSERT_EQ(RunList(6).code, 0);
  EXPECT_EQ(ReadMetastockFolder(MetaStock("Daily")).securities.size(), securities);
}

// A composite the service lists before it has a bar gives a price file of its header alone: there
// is nothing to convert, no security is made, and the run is not failed for it.
TEST_F(ConversionTest, APriceFileWithoutBarsIsNotConvertedAndNotAFailure) {
  Tick({"OHLCVV=1"});
  const std::string header = ReadLines(ServiceFile("NYSEDaily-CompositeStats.csv")).front();
  WriteFile(ServiceFile("NEWDaily-CompositeStats.csv"), header + "\r\n");
  WriteFile(ServiceFile("Masterfile2.csv"),
            ReadFile(ServiceFile("Masterfile2.csv")) + "Newly Listed,NEW\r\n");
  MakeList(3, "eSignal", "D", {"$NYA", "Newly Listed"});
  for (int pass = 0; pass < 2; ++pass) {
    SCOPED_TRACE(pass);
    const CliResult run = RunList(3);
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_TRUE(Contains(run.out,
                         "MakePxFiles.bat: 1 of 1 price file(s) converted, 1 with no "
                         "bars yet"))
        << run.out;
    EXPECT_EQ(ReadLines(data("PX/Daily/NEW.csv")).size(), 1U);
    const MetastockFolder folder = ReadMetastockFolder(MetaStock("Daily"));
    ASSERT_EQ(folder.securities.size(), 1U);
    EXPECT_EQ(folder.securities[0].symbol, "$NYA");
  }
}

// A price file that cannot be written is a failure of its kind for its datafile, named with the
// column or value at fault; the other kinds and datafiles are written and converted.
TEST_F(ConversionTest, PriceFilesThatCannotBeWrittenAreReportedKindByKind) {
  Tick({"OHLCVV=1", "UserDefFile1=1", "UserDefFile2=1", "Stat1File1=Advances", "Stat3File1=Pivot",
        "Stat1File2=Declines"});
  const CliResult refused = RunIn({"settings", "Stat2File1=Period"});
  EXPECT_EQ(refused.code, 2) << refused.out << refused.err;
  EXPECT_TRUE(Contains(refused.err, "Stats.csv")) << refused.err;
  // Names the settings file may still hold from an older version or a hand edit.
  const std::string ini = base() + "Rondex/Rondex.ini";
  std::string settings = ReadFile(ini);
  settings.replace(settings.find("Stat2File1,Select One"), 21, "Stat2File1,Period");
  settings.replace(settings.find("Stat3File2,Select One"), 21, "Stat3File2,Advancez");
  WriteFile(ini, settings);
  // A close the service sends as a text, and a pivot no double holds.
  std::vector<std::string> sox = ReadLines(ServiceFile("SOXDaily-CompositeStats.csv"));
  struct Damage {
    std::size_t row;
    int column;  // 1-based: ClosePx 7, Pivot 9
    const char* value;
  };
  for (const Damage damage : {Damage{3, 7, "abc"}, Damage{5, 9, "1e999"}}) {
    std::string& line = sox[damage.row];
    std::size_t at = 0;
    for (int field = 1; field < damage.column; ++field) at = line.find(',', at) + 1;
    line.replace(at, line.find(',', at) - at, damage.value);
  }
  WriteLines(ServiceFile("SOXDaily-CompositeStats.csv"), sox);
  MakeList(3, "eSignal", "D", {"$NYA", "$SOX"});
  const CliResult run = RunList(3);
  EXPECT_EQ(run.code, 3) << run.out;
  for (const char* line : {
           "Price files failed: 5",
           "$NYA Daily: PxFile1 price file not written: value column 2 (Stat2File1) names Period",
           "$NYA Daily: PxFile2 price file not written: value column 3 (Stat3File2) names "
           "\"Advancez\", which is no statistic",
           "$SOX Daily: PX price file not written: row 3 (",
           "): ClosePx holds \"abc\", which is no price",
           "MakePxFiles.bat: 1 of 1 price file(s) converted",
           "MakeFile1PxFiles.bat: 0 of 0 price file(s) converted",
       }) {
    EXPECT_TRUE(Contains(run.out, line)) << line << "\n" << run.out;
  }
  EXPECT_FALSE(Exists(data("PX/Daily/$SOX.csv")));
  // With the choices mended the kinds come back; the bad values still fail their kinds alone.
  ASSERT_EQ(RunIn({"settings", "Stat2File1=Select One", "Stat3File2=Declines"}).code, 0);
  const CliResult mended = RunList(3);
  EXPECT_EQ(mended.code, 3) << mended.out;
  for (const char* line :
       {"Price files failed: 2", "$SOX Daily: PxFile1 price file not written: row 5 (",
        "): Pivot holds \"1e999\", which is no price",
        "MakeFile2PxFiles.bat: 2 of 2 price file(s) converted"}) {
    EXPECT_TRUE(Contains(mended.out, line)) << line << "\n" << mended.out;
  }
  ExpectConverted(data("PxFile2/Daily"), MetaStock("PxFile2/Daily"));
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
