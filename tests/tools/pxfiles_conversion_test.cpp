// The converter run as a process on price files, read back with the tests' own reader of the
// MetaStock format: every bar, the index records, the numbering beyond 255 securities, replacing.
#include <gtest/gtest.h>

#include <cmath>

#include "tools/pxfiles_fixture.h"

namespace corvanet::test {
namespace {

using PxFilesConversion = PxFilesTest;

TEST_F(PxFilesConversion, EveryBarComesBackAsWritten) {
  struct Case {
    const char* label;
    bool header;
    const char* line_end;
    char period;
    std::size_t bars;
    double base;
  } cases[] = {
      {"daily, header, CR LF", true, "\r\n", 'D', 400, 10000.25},
      {"weekly, no header, LF", false, "\n", 'W', 60, -812.5},
      {"monthly, one bar", true, "\n", 'M', 1, 0.001},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::string out = dir_ / (std::string("nested/") + c.period + "/folder");
    const auto bars = MakeBars(c.bars, 20240228, c.base);
    const ProgramResult run = ConvertText(
        PriceFileText("$NYA", "NYSE Composite", c.period, bars, c.header, c.line_end), out);
    ASSERT_EQ(run.exit_code, 0) << run.err;
    const MetastockFolder folder = ReadMetastockFolder(out);
    EXPECT_EQ(folder.problems, std::vector<std::string>{});
    ASSERT_EQ(folder.securities.size(), 1u);
    const MetastockSecurity& security = folder.securities[0];
    EXPECT_EQ(security.symbol, "$NYA");
    EXPECT_EQ(security.name, "NYSE Composite");
    EXPECT_EQ(security.period, c.period);
    EXPECT_EQ(security.data_file, "F1.DAT");
    EXPECT_EQ(security.fields, 7);
    ExpectBars(security, bars);
    const std::string log = LastLogLine();
    EXPECT_NE(log.find(" $NYA: " + std::to_string(c.bars) + " bars written to " + out), log.npos)
        << log;
  }
}

TEST_F(PxFilesConversion, ValuesRoundTripThroughMbf) {
  struct Case {
    double written;
    double read;
  } cases[] = {
      {0, 0},
      {1, 1},
      {-1, -1},
      {0.5, 0.5},
      {1e-40, 0},
      {-3e-39, 0},  // below a single's normal range: MBF has no subnormals
      {123456.789, static_cast<float>(123456.789)},
      {4294967296.0 + 777, static_cast<float>(4294967296.0 + 777)},  // billions come back rounded
      {1e-30, static_cast<float>(1e-30)},
      {1.5e38, static_cast<float>(1.5e38)},  // near the top of MBF's range
  };
  std::vector<PriceBar> bars = MakeBars(std::size(cases), 20250101, 1);
  for (std::size_t i = 0; i < bars.size(); ++i) bars[i].values[3] = cases[i].written;
  ASSERT_EQ(ConvertText(PriceFileText("X", "X", 'D', bars), dir_ / "out").exit_code, 0);
  const MetastockFolder folder = ReadMetastockFolder(dir_ / "out");
  ASSERT_EQ(folder.securities.size(), 1u);
  for (std::size_t i = 0; i < bars.size(); ++i) {
    SCOPED_TRACE(cases[i].written);
    EXPECT_EQ(folder.securities[0].bars[i].values[3], cases[i].read);
  }
}

TEST_F(PxFilesConversion, SecuritiesBeyond255GoToXmasterAndConvertingAgainReplaces) {
  const std::string out = dir_ / "Daily";
  const std::string long_name(50, 'n');  // XMASTER keeps 45 characters, EMASTER 52
  std::vector<std::vector<PriceBar>> bars;
  std::vector<std::string> files;
  for (int i = 0; i < 300; ++i) {
    bars.push_back(MakeBars(3 + i % 5, 20200101 + i % 28, i));
    files.push_back(dir_ / ("S" + std::to_string(i) + ".csv"));
    WriteFile(files.back(), PriceFileText("S" + std::to_string(i), long_name, 'D', bars.back()));
  }
  const ProgramResult run = ConvertAll(files, out);
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_TRUE(Contains(LastLogLine(), "S299: 7 bars written to " + out + " as F300.MWD; name cut"));
  const MetastockFolder first = ReadMetastockFolder(out);
  EXPECT_EQ(first.problems, std::vector<std::string>{});
  ASSERT_EQ(first.securities.size(), 300u);
  for (std::size_t i = 0; i < 300; ++i) {
    const MetastockSecurity& security = first.securities[i];
    const bool beyond = i >= 255;
    EXPECT_EQ(security.symbol, "S" + std::to_string(i));
    EXPECT_EQ(security.index, beyond ? "XMASTER" : "MASTER");
    EXPECT_EQ(security.file_number, static_cast<int>(i + 1));
    EXPECT_EQ(security.name, long_name.substr(0, beyond ? 45 : 50));
    ExpectBars(security, bars[i]);
  }

  // The same file again changes no byte; a shorter one and a new name replace the old ones.
  const auto before = FolderSnapshot(out);
  ASSERT_EQ(ConvertText(PriceFileText("S280", long_name, 'D', bars[280]), out).exit_code, 0);
  EXPECT_EQ(FolderSnapshot(out), before);
  const auto shorter = MakeBars(1, 20230105, 99);
  for (const char* symbol : {"S10", "S280"}) {
    ASSERT_EQ(ConvertText(PriceFileText(symbol, "Renamed", 'D', shorter), out).exit_code, 0);
  }
  const MetastockFolder second = ReadMetastockFolder(out);
  EXPECT_EQ(second.problems, std::vector<std::string>{});
  ASSERT_EQ(second.securities.size(), 300u);
  for (std::size_t i = 0; i < 300; ++i) {
    const bool replaced = i == 10 || i == 280;
    EXPECT_EQ(second.securities[i].file_number, static_cast<int>(i + 1));
    EXPECT_EQ(second.securities[i].name, replaced ? "Renamed" : first.securities[i].name);
    ExpectBars(second.securities[i], replaced ? shorter : bars[i]);
  }
}

TEST_F(PxFilesConversion, LongSymbolsAreCutAndStillFoundAgain) {
  const std::string out = dir_ / "out";
  const std::string text =
      PriceFileText("ABCDEFGHIJKLMNOPQRST", std::string(60, 'x'), 'W', MakeBars(2, 20250106, 5));
  for (int pass = 0; pass < 2; ++pass) ASSERT_EQ(ConvertText(text, out).exit_code, 0);
  const MetastockFolder folder = ReadMetastockFolder(out);
  ASSERT_EQ(folder.securities.size(), 1u);
  EXPECT_EQ(folder.securities[0].symbol, "ABCDEFGHIJKLMN");
  EXPECT_EQ(folder.securities[0].name, std::string(52, 'x'));
  EXPECT_TRUE(
      Contains(LastLogLine(), "ABCDEFGHIJKLMN: 2 bars written to " + out +
                                  " as F1.DAT; symbol cut to 14 characters; name cut to 52"))
      << LastLogLine();
}

TEST_F(PxFilesConversion, ARunKilledBeforeMasterWasWrittenIsCompletedByTheNext) {
  const std::string out = dir_ / "out/";
  const std::string second = PriceFileText("$SOX", "Semis", 'D', MakeBars(3, 20250106, 5));
  ASSERT_EQ(
      ConvertText(PriceFileText("$NYA", "NYSE", 'D', MakeBars(2, 20250106, 5)), out).exit_code, 0);
  const std::string master = ReadFile(out + "MASTER");
  ASSERT_EQ(ConvertText(second, out).exit_code, 0);
  // Killed after the data file and EMASTER were replaced: MASTER still lists one security.
  WriteFile(out + "MASTER", master);
  ASSERT_EQ(ConvertText(second, out).exit_code, 0);
  const MetastockFolder folder = ReadMetastockFolder(out);
  EXPECT_EQ(folder.problems, std::vector<std::string>{});
  ASSERT_EQ(folder.securities.size(), 2u);
  EXPECT_EQ(folder.securities[1].symbol, "$SOX");
  EXPECT_EQ(folder.securities[1].data_file, "F2.DAT");
}

}  // namespace
}  // namespace corvanet::test
