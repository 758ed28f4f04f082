// The chart's plain-data decisions: the remembered choice, the view's moves, the cross-hair.
#include "core/indicators/chart_model.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/platform/files.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

constexpr double kDay = 86'400'000;

TEST(ChartChoiceTest, ReadsBackAsSavedAndSurvivesADamagedFile) {
  TempDir dir;
  const std::string path = ChartChoiceFile(dir.path() + "/");
  EXPECT_EQ(ReadChartChoice(path), ChartChoice());  // no file: the defaults

  ChartChoice choice;
  choice.symbol = "$NYA";
  choice.period = "Weekly";
  choice.price_as_line = true;
  choice.panes = {"TRIN", "", "NewHighs"};
  ASSERT_TRUE(WriteChartChoice(path, choice));
  EXPECT_EQ(ReadChartChoice(path), choice);
  EXPECT_TRUE(Contains(ReadFile(path), "Pane3,NewHighs\r\n"));

  ASSERT_TRUE(WriteWholeFile(path,
                             "Symbol,$SOX\nPeriod,Hourly\nPane1,Period\nPane2,FV2\n"
                             "Pane4,TRIN\ngarbage\nPane3,ShareAbove9ma\n"));
  ChartChoice damaged;
  damaged.symbol = "$SOX";
  damaged.panes = {"", "", "ShareAbove9ma"};
  EXPECT_EQ(ReadChartChoice(path), damaged);
}

TEST(TimeWindowTest, ZoomAndPanStayInsideTheWholeAroundTheAnchor) {
  const std::vector<double> times{BarTime(20240101), BarTime(20240102), BarTime(20240103)};
  EXPECT_EQ(times[1] - times[0], kDay);
  EXPECT_EQ(std::fmod(times[0], kDay), kDay / 2);  // noon, whatever the time zone shows
  EXPECT_EQ(WholeWindow(times), (TimeWindow{times[0] - kDay / 2, times[2] + kDay / 2}));

  const TimeWindow whole{0, 1000 * kDay};  // a thousand bars
  const struct Case {
    const char* what;
    TimeWindow shown;
    double anchor;
    double factor;
    TimeWindow expected;
  } zooms[] = {
      {"in, anchored", whole, 250 * kDay, 0.5, {125 * kDay, 625 * kDay}},
      {"out past the whole", {100 * kDay, 200 * kDay}, 150 * kDay, 100, whole},
      {"in to five bars at most", {0, 10 * kDay}, 0, 0.01, {0, 5 * kDay}},
      {"out at an edge stays inside",
       {900 * kDay, 1000 * kDay},
       1000 * kDay,
       2,
       {800 * kDay, 1000 * kDay}},
  };
  for (const Case& c : zooms) {
    SCOPED_TRACE(c.what);
    const TimeWindow got = ZoomWindow(c.shown, whole, 1000, c.anchor, c.factor);
    EXPECT_NEAR(got.first, c.expected.first, 1);
    EXPECT_NEAR(got.last, c.expected.last, 1);
  }
  const TimeWindow shown{100 * kDay, 200 * kDay};
  EXPECT_EQ(PanWindow(shown, whole, 50 * kDay), (TimeWindow{150 * kDay, 250 * kDay}));
  EXPECT_EQ(PanWindow(shown, whole, -500 * kDay), (TimeWindow{0, 100 * kDay}));
  EXPECT_EQ(PanWindow(shown, whole, 5000 * kDay), (TimeWindow{900 * kDay, 1000 * kDay}));
}

TEST(CrossHairTest, NearestBarAndItsReading) {
  const std::vector<double> times{10, 20, 40};
  const struct Case {
    double time;
    std::size_t bar;
  } cases[] = {{-5, 0}, {14, 0}, {16, 1}, {30, 1}, {31, 2}, {99, 2}};
  for (const Case& c : cases) EXPECT_EQ(NearestBar(times, c.time), c.bar) << c.time;
  EXPECT_EQ(NearestBar({}, 1), std::nullopt);

  const NamedValue values[] = {{"ClosePx", 4512.254}, {"TRIN", std::nan("")}, {"ADLine", -3}};
  EXPECT_EQ(CrossHairText(20240102, values), "2024-01-02  ClosePx 4512.25  TRIN -  ADLine -3");
}

TEST(NiceScaleTest, RoundTicksNoMoreThanAsked) {
  const struct Case {
    ValueSpan span;
    int max_ticks;
    ValueSpan expected;
    int ticks;
  } cases[] = {
      {{6870, 8470}, 5, {6500, 8500}, 5},   // 500 apart
      {{6870, 8470}, 3, {6000, 10000}, 3},  // 1500 is no round step
      {{-0.3, 0.7}, 6, {-0.5, 0.75}, 6},    // the finest step that fits: .2 would need seven
      {{45.2, 61.9}, 4, {40, 70}, 4},      {{5, 5}, 5, {5, 5}, 2},  // nothing to scale
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.span.low);
    const NiceScale scale = NiceScaleOf(c.span, c.max_ticks);
    EXPECT_DOUBLE_EQ(scale.span.low, c.expected.low);
    EXPECT_DOUBLE_EQ(scale.span.high, c.expected.high);
    EXPECT_EQ(scale.ticks, c.ticks);
  }
}

}  // namespace
}  // namespace corvanet::test
