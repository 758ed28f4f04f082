#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>

#include "core/platform/text.h"
#include "core/stats/composite_fixture.h"
#include "core/stats/composite_row.h"
#include "core/stats/value_text.h"

namespace corvanet {
namespace {

using test::CompositeLine;
using test::TempDir;
using test::WriteDatafile;
using test::WriteFile;

// Reads every row of a datafile; the error (if any) of the read that stopped.
struct ReadResult {
  std::vector<CompositeRow> rows;
  DatafileError error;
};

ReadResult ReadAll(const std::string& path) {
  ReadResult result;
  CompositeFile file;
  if (file.Open(path) && ReadCompositeHeader(file)) {
    CompositeRow row;
    while (ReadCompositeRow(file, row)) result.rows.push_back(row);
  }
  result.error = file.error();
  return result;
}

TEST(CompositeRow, ReadsQuotesBlanksLineEndsAndLooseValues) {
  TempDir dir;
  const std::string quoted = CompositeLine("D", 20121101)
                                 .SetColumn(1, "\"D\"")
                                 .Set("UpTrends", "  \"12\" ")
                                 .Set("UpVolume", "-0.25")
                                 .Set("Advances", "")
                                 .Set("Declines", "7.5")
                                 .Set("FV2", "\"a, b\"")
                                 .Set("FV3", "1E3");
  // LF and CR LF endings mixed, a blank line between the rows, no ending on the last line.
  WriteFile(dir / "a.csv", test::CompositeHeader() + "\n" + quoted + "\r\n\r\n" +
                               CompositeLine("W", 20121102).Text());
  const ReadResult read = ReadAll(dir / "a.csv");
  ASSERT_FALSE(read.error.has_error()) << read.error.Text();
  ASSERT_EQ(read.rows.size(), 2u);
  const CompositeRow& row = read.rows[0];
  EXPECT_EQ(row.Period, "D");
  EXPECT_EQ(row.UpTrends, 12);
  EXPECT_EQ(row.UpVolume, -0.25);
  EXPECT_EQ(row.Advances, 0) << "an empty numeric field reads as 0";
  EXPECT_EQ(row.Declines, 8) << "a count with decimals is rounded half to even";
  EXPECT_FALSE(row.FV[0].is_number);
  EXPECT_EQ(row.FV[0].text, "a, b");
  EXPECT_TRUE(row.FV[1].is_number);
  EXPECT_EQ(row.FV[1].number, 1000);
  EXPECT_EQ(GetStatisticValue(row, "FV2").kind, StatisticValue::Kind::kText);
  EXPECT_EQ(read.rows[1].Period, "W");
  EXPECT_EQ(read.rows[1].RowDate, 20121102);
}

TEST(CompositeRow, MalformedInputStopsWithTheClassicErrorAndWhere) {
  TempDir dir;
  struct Case {
    const char* what;
    std::string content;
    int number;
    const char* text;
  };
  const std::string header = test::CompositeHeader() + "\r\n";
  const std::string good = CompositeLine().Text() + "\r\n";
  std::string short_row = CompositeLine().Text();
  short_row.resize(short_row.rfind(','));
  const Case cases[] = {
      {"empty file", "", kErrorInputPastEnd, "Input past end of file (no header line)"},
      {"short row", header + good + short_row + "\r\n" + good, kErrorInputPastEnd,
       "Input past end of file (line 3 holds 67 of 68 fields)"},
      {"long row", header + CompositeLine().Text() + ",69\r\n", kErrorTypeMismatch,
       "Type mismatch (line 2 holds 69 fields, not 68)"},
      {"text in a count", header + CompositeLine().Set("NewHighs", "n/a").Text(),
       kErrorTypeMismatch, "Type mismatch (line 2, column 20 NewHighs: \"n/a\")"},
      {"text in a price", header + CompositeLine().Set("ClosePx", "12x").Text(), kErrorTypeMismatch,
       "Type mismatch (line 2, column 7 ClosePx: \"12x\")"},
      {"count out of range", header + CompositeLine().Set("Traded", "3000000000").Text(),
       kErrorOverflow, "Overflow (line 2, column 22 Traded: \"3000000000\")"},
  };
  for (const Case& c : cases) {
    WriteFile(dir / "a.csv", c.content);
    const ReadResult read = ReadAll(dir / "a.csv");
    EXPECT_EQ(read.error.number, c.number) << c.what;
    EXPECT_EQ(read.error.Text(), c.text) << c.what;
  }
  EXPECT_EQ(ReadAll(dir / "missing.csv").error.number, kErrorFileNotFound);
}

// The quick paths (decimal parsing, whole-number formatting) must give exactly what the general
// routines give.
TEST(CompositeRow, QuickNumberPathsAgreeWithTheGeneralOnes) {
  std::mt19937_64 random(7);
  TempDir dir;
  std::vector<std::string> rows;
  std::vector<double> expected;
  for (int i = 0; i < 2000; ++i) {
    const long long mantissa =
        static_cast<long long>(random() % 1000000000000000ULL) - 500000000000000LL;
    const int decimals = static_cast<int>(random() % 16);
    std::string text = std::to_string(mantissa < 0 ? -mantissa : mantissa);
    if (decimals > 0) {
      while (text.size() <= static_cast<std::size_t>(decimals)) text.insert(0, "0");
      text.insert(text.size() - static_cast<std::size_t>(decimals), ".");
    }
    if (mantissa < 0) text.insert(0, "-");
    rows.push_back(CompositeLine().Set("ClosePx", text));
    expected.push_back(std::strtod(text.c_str(), nullptr));
  }
  WriteDatafile(dir / "a.csv", rows);
  const ReadResult read = ReadAll(dir / "a.csv");
  ASSERT_EQ(read.rows.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ASSERT_EQ(read.rows[i].ClosePx, expected[i]) << rows[i];
  }

  std::uniform_int_distribution<long long> hundredths(-100000000, 100000000);
  std::uniform_real_distribution<double> anything(-1e6, 1e6);
  char quick[kNumberTextCapacity];
  char general[kNumberTextCapacity];
  for (int i = 0; i < 20000; ++i) {
    const double price = static_cast<double>(hundredths(random)) / 100;
    ASSERT_EQ(FormatValue(price, quick), FormatNumber(price, general)) << price;
    const double any = anything(random) / static_cast<double>(1 + random() % 100000);
    ASSERT_EQ(FormatValue(any, quick), FormatNumber(any, general)) << any;
  }
  for (const double value : {0.0, -0.0, 1e15, 1e-5, 123456789012345678.0, -2147483648.0}) {
    EXPECT_EQ(FormatValue(value, quick), FormatNumber(value, general)) << value;
  }
  // A text judged already written is exactly what the rule writes for it (the random texts
  // below); these are not.
  for (const char* text : {"012", "0.5", "1.50", "+1", "-0", "1E3", ".00001", "1.", "", "-",
                           "1234567890123456", "12a"}) {
    EXPECT_FALSE(IsNumberRuleText(text)) << text;
  }
  const char alphabet[] = "0123456789.-";
  for (int i = 0; i < 200000; ++i) {
    std::string text;
    const int length = 1 + static_cast<int>(random() % 8);
    for (int c = 0; c < length; ++c) text += alphabet[random() % (sizeof alphabet - 1)];
    if (!IsNumberRuleText(text)) continue;
    ASSERT_EQ(TrimmedNumberText(std::strtod(text.c_str(), nullptr)), text);
  }

  std::string out;
  AppendValue(out, 0.5, true);
  AppendValue(out, -3, true);
  AppendValue(out, 0.5, false);
  EXPECT_EQ(out, ".5-3 .5");
}

}  // namespace
}  // namespace corvanet
