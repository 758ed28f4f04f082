// The indicators against values worked out by hand, on datafiles written and read back as the
// program reads them.
#include "core/indicators/breadth_indicators.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <vector>

#include "core/indicators/indicator_table.h"
#include "core/stats/composite_fixture.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

constexpr double N = kNoValue;
using Values = std::vector<double>;
using Columns = std::map<std::string, long long>;

void ExpectValues(const Values& actual, const Values& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE("bar " + std::to_string(i));
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(actual[i])) << actual[i];
    } else {
      EXPECT_NEAR(actual[i], expected[i], 1e-9);
    }
  }
}

// A datafile whose breadth columns (11-54) are all 0 but those given, one map per bar: a composite
// that lacks everything it is not given.
class IndicatorTest : public ::testing::Test {
 protected:
  DatafileSeries Read(const std::vector<Columns>& bars) {
    std::vector<std::string> rows;
    int date = 20240102;
    for (const Columns& bar : bars) {
      CompositeLine line("D", date++);
      for (int c = 11; c <= 54; ++c) line.SetColumn(c, "0");
      for (const auto& [name, value] : bar) line.Set(name, std::to_string(value));
      rows.push_back(line);
    }
    const std::string path = dir / "$TEST.csv";
    WriteDatafile(path, rows);
    DatafileSeries series;
    DatafileError error;
    EXPECT_TRUE(ReadDatafileSeries(path, NumericColumns(), series, error)) << error.Text();
    return series;
  }
  // `count` bars of the same columns.
  static std::vector<Columns> Repeat(const Columns& bar, int count) {
    return std::vector<Columns>(static_cast<std::size_t>(count), bar);
  }

  TempDir dir;
};

TEST(AverageTest, StartWhenTheyHaveEnoughValues) {
  const Values rising{1, 2, 3, 4, 5};
  // Seeded with the mean of the first three, then half of each step (2 / (3 + 1)).
  ExpectValues(ExponentialAverage(rising, 3), {N, N, 2, 3, 4});
  ExpectValues(ExponentialAverage(rising, 1), rising);
  ExpectValues(ExponentialAverage(rising, 6), {N, N, N, N, N});
  ExpectValues(SimpleAverage(rising, 2), {N, 1.5, 2.5, 3.5, 4.5});
  ExpectValues(SimpleAverage(rising, 5), {N, N, N, N, 3});
  ExpectValues(SimpleAverage(rising, 6), {N, N, N, N, N});
}

TEST_F(IndicatorTest, PerBarIndicatorsAndTheGapsOfZeroDivisors) {
  // Advances, declines, their volumes, new highs and lows, and the counts around the 4-bar average.
  const auto bar = [](long long a, long long d, long long uv, long long dv, long long nh,
                      long long nl, long long above, long long below, long long equal) {
    return Columns{{"Advances", a},     {"Declines", d},     {"UpVolume", uv},
                   {"DownVolume", dv},  {"NewHighs", nh},    {"NewLows", nl},
                   {"Above4ma", above}, {"Below4ma", below}, {"Equal4ma", equal}};
  };
  const DatafileSeries series = Read({bar(60, 40, 600, 200, 8, 2, 30, 60, 10),
                                      {{"Advances", 50}, {"UpVolume", 500}},
                                      bar(10, 40, 100, 400, 1, 3, 25, 70, 5)});
  const struct Case {
    Indicator indicator;
    Values expected;
  } cases[] = {
      {Indicator::kNetAdvances, {20, 50, -30}},
      {Indicator::kAdvanceDeclineLine, {20, 70, 40}},
      {Indicator::kNetNewHighs, {6, 0, -2}},
      // (A / D) / (UV / DV): none where there are no declines.
      {Indicator::kTrin, {0.5, N, 1}},
      {Indicator::kUpDownVolumeRatio, {3, N, 0.25}},
      {Indicator::kShareAbove4ma, {30, N, 25}},
      // The composite carries no counts around the longer averages.
      {Indicator::kShareAbove9ma, {N, N, N}},
      {Indicator::kShareAbove200ma, {N, N, N}},
      // Three bars are too few for any of the averages.
      {Indicator::kMcClellanOscillator, {N, N, N}},
      {Indicator::kSummationIndex, {N, N, N}},
      {Indicator::kHighLowIndex, {N, N, N}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(Definition(c.indicator).name));
    ExpectValues(ComputeIndicator(series, c.indicator), c.expected);
  }
}

TEST_F(IndicatorTest, ACompositeWithoutVolumesGivesNoVolumeIndicators) {
  const DatafileSeries series = Read({{{"Advances", 3}, {"Declines", 1}}, {{"Declines", 2}}});
  ExpectValues(ComputeIndicator(series, Indicator::kNetAdvances), {2, -2});
  ExpectValues(ComputeIndicator(series, Indicator::kTrin), {N, N});
  ExpectValues(ComputeIndicator(series, Indicator::kUpDownVolumeRatio), {N, N});
  ExpectValues(ComputeIndicator(series, Indicator::kNetNewHighs), {N, N});
}

TEST_F(IndicatorTest, McClellanOscillatorAndSummationIndex) {
  // 39 even bars seed both averages at 0; then one bar of net advances 100, then even again.
  std::vector<Columns> bars = Repeat({{"Advances", 10}, {"Declines", 10}}, 39);
  bars.push_back({{"Advances", 130}, {"Declines", 30}});
  bars.push_back({{"Advances", 10}, {"Declines", 10}});
  const DatafileSeries series = Read(bars);

  const auto tail = [](const Values& values) { return Values(values.end() - 4, values.end()); };
  const Values oscillator = ComputeIndicator(series, Indicator::kMcClellanOscillator);
  EXPECT_TRUE(std::isnan(oscillator[0]));
  // Bar 38 is the slow average's first; then 0.10 x 100 - 0.05 x 100, and both decay.
  ExpectValues(tail(oscillator), {N, 0, 10 - 5, 9 - 4.75});
  ExpectValues(tail(ComputeIndicator(series, Indicator::kSummationIndex)), {N, 0, 5, 9.25});
  // Ratio-adjusted: 1000 x 100 / 160 = 625 on the one bar that is not even.
  ExpectValues(tail(ComputeIndicator(series, Indicator::kMcClellanRatioAdjusted)),
               {N, 0, 62.5 - 31.25, 56.25 - 29.6875});
  ExpectValues(tail(ComputeIndicator(series, Indicator::kSummationRatioAdjusted)),
               {N, 0, 31.25, 31.25 + 26.5625});
}

TEST_F(IndicatorTest, HighLowIndexAveragesTheRecordHighPercentOverTenBars) {
  std::vector<Columns> bars = Repeat({{"NewHighs", 1}, {"NewLows", 3}}, 9);  // 25 each
  bars.push_back({});                                                        // neither: 50
  bars.push_back({{"NewHighs", 4}});                                         // 100
  const Values index = ComputeIndicator(Read(bars), Indicator::kHighLowIndex);
  ExpectValues(Values(index.begin() + 8, index.end()),
               {N, (9 * 25 + 50) / 10.0, (8 * 25 + 50 + 100) / 10.0});
}

TEST_F(IndicatorTest, TheTableShowsTheChosenColumnsOverTheRangeAsked) {
  const DatafileSeries series = Read({
      {{"Advances", 3}, {"Declines", 1}},
      {{"Advances", 1}, {"Declines", 2}},
      {{"Advances", 2}, {"Declines", 2}, {"Above4ma", 2}, {"Below4ma", 1}},
  });
  const std::vector<Indicator> two{Indicator::kAdvanceDeclineLine, Indicator::kTrin};
  const struct Case {
    IndicatorTableOptions options;
    std::string expected;
  } cases[] = {
      {{two, 0, 0, 0}, "Date,ADLine,TRIN\n20240102,2,\n20240103,1,\n20240104,1,\n"},
      // The line keeps the sum of the bars before the range.
      {{two, 20240103, 0, 0}, "Date,ADLine,TRIN\n20240103,1,\n20240104,1,\n"},
      {{two, 0, 20240103, 1}, "Date,ADLine,TRIN\n20240103,1,\n"},
      {{two, 20240105, 0, 0}, "Date,ADLine,TRIN\n"},
      {{{Indicator::kNetAdvances}, 0, 0, 2}, "Date,NetAdvances\n20240103,-1\n20240104,0\n"},
      // Four decimals, the number rule's form.
      {{{Indicator::kShareAbove4ma}, 0, 0, 1}, "Date,ShareAbove4ma\n20240104,66.6667\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(IndicatorTable(series, c.options), c.expected);
  }
  const std::string all = IndicatorTable(series, {});
  EXPECT_EQ(all.substr(0, all.find('\n')),
            "Date,NetAdvances,ADLine,McClellanOscillator,SummationIndex,McClellanRatioAdjusted,"
            "SummationRatioAdjusted,NetNewHighs,HighLowIndex,ShareAbove4ma,ShareAbove9ma,"
            "ShareAbove18ma,ShareAbove30ma,ShareAbove200ma,UpDownVolumeRatio,TRIN");
}

TEST_F(IndicatorTest, SeriesAreIndicatorsOrNumericColumns) {
  const DatafileSeries series = Read({{{"Advances", 3}, {"UpTrends", 7}}});
  ExpectValues(SeriesValues(series, "NetAdvances"), {3});
  ExpectValues(SeriesValues(series, "UpTrends"), {7});
  ExpectValues(SeriesValues(series, "ClosePx"), {7});  // the fixture's column number
  for (const char* unknown : {"Period", "FV2", "upTrends", ""}) {
    SCOPED_TRACE(unknown);
    EXPECT_TRUE(ColumnsOfSeries(unknown).none());
    ExpectValues(SeriesValues(series, unknown), {N});
  }
  EXPECT_EQ(ColumnsOfSeries("TRIN").count(), 4u);
}

TEST(DatafileSeriesTest, AFileIsReadWholeOrNotAtAll) {
  TempDir dir;
  const std::string path = dir / "$X.csv";
  DatafileSeries series;
  DatafileError error;
  EXPECT_FALSE(ReadDatafileSeries(path, NumericColumns(), series, error));
  EXPECT_EQ(error.number, kErrorFileNotFound);

  WriteDatafile(path, {});
  EXPECT_TRUE(ReadDatafileSeries(path, NumericColumns(), series, error));
  EXPECT_EQ(series.size(), 0u);

  WriteDatafile(path,
                {CompositeLine("D", 20240102), CompositeLine("D", 20240103).Set("Advances", "x")});
  EXPECT_FALSE(ReadDatafileSeries(path, NumericColumns(), series, error));
  EXPECT_EQ(error.number, kErrorTypeMismatch);
  EXPECT_EQ(series.size(), 0u);
  // A column nobody asked for is not checked.
  ColumnSet close;
  close.set(static_cast<std::size_t>(FindColumn("ClosePx") - 1));
  ASSERT_TRUE(ReadDatafileSeries(path, close, series, error));
  EXPECT_EQ(series.dates, (std::vector<std::int32_t>{20240102, 20240103}));
  EXPECT_EQ(series.Column(7).size(), 2u);
  EXPECT_TRUE(series.Column(16).empty());
}

TEST(BarDateTest, ThreeFormsOfARealDay) {
  const struct Case {
    const char* text;
    std::int32_t date;  // 0 = refused
  } cases[] = {
      {"20240229", 20240229}, {"2024-02-29", 20240229}, {"02/29/2024", 20240229},
      {"20230229", 0},        {"2024-13-01", 0},        {"2024/02/29", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    std::int32_t date = 0;
    EXPECT_EQ(ParseBarDate(c.text, date), c.date != 0);
    if (c.date != 0) {
      EXPECT_EQ(date, c.date);
    }
  }
}

}  // namespace
}  // namespace corvanet::test
