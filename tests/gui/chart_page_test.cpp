// The Chart page, offscreen, over a datafile written into the test's installation.
#include <QDateTimeAxis>
#include <QImage>
#include <QLineSeries>
#include <QListWidget>
#include <QTabWidget>
#include <QTest>
#include <QValueAxis>
#include <cmath>

#include "core/indicators/breadth_indicators.h"
#include "core/platform/files.h"
#include "core/stats/composite_fixture.h"
#include "gui/chart_page.h"
#include "gui/chart_pane.h"
#include "gui_fixture.h"

namespace corvanet::test {
namespace {

constexpr int kBars = 60;

class ChartPageTest : public GuiTest {
 protected:
  ChartPageTest() {
    WriteBars(kBars);
    window_->show();
    page()->SetChoice(Choice({"ADLine", "McClellanOscillator", ""}));
  }
  gui::ChartPage* page() const { return window_->chart(); }
  std::string datafile() const { return session_.ui.PathToDataFiles + "Daily/$NYA.csv"; }

  // Bar i closes at 100 + i; advances and declines wander so every indicator moves.
  void WriteBars(int count) {
    std::vector<std::string> rows;
    for (int i = 0; i < count; ++i) {
      const int date = 20240101 + (i / 28) * 100 + i % 28;
      rows.push_back(CompositeLine("D", date)
                         .Set("OpenPx", std::to_string(99 + i))
                         .Set("HighPx", std::to_string(102 + i))
                         .Set("LowPx", std::to_string(97 + i))
                         .Set("ClosePx", std::to_string(100 + i))
                         .Set("Advances", std::to_string(100 + i * 37 % 50))
                         .Set("Declines", std::to_string(100 + i * 11 % 60)));
    }
    CreateFolders(session_.ui.PathToDataFiles + "Daily/");
    WriteDatafile(datafile(), rows);
  }
  static ChartChoice Choice(std::array<std::string, kChartPanes> panes) {
    ChartChoice choice;
    choice.symbol = "$NYA";
    choice.panes = std::move(panes);
    return choice;
  }
  // The y of each point of a pane's line.
  static std::vector<double> Ys(const gui::ChartPane* pane) {
    std::vector<double> ys;
    for (const QPointF& point : pane->series()->points()) ys.push_back(point.y());
    return ys;
  }
};

TEST_F(ChartPageTest, PanesHoldTheBarsAndTheIndicatorValues) {
  const DatafileSeries& series = page()->series();
  ASSERT_EQ(series.size(), static_cast<std::size_t>(kBars));
  EXPECT_EQ(page()->message(), "");
  const gui::ChartPane* price = page()->pane(0);
  ASSERT_NE(price->bars(), nullptr);
  EXPECT_EQ(price->bars()->size(), static_cast<std::size_t>(kBars));
  std::vector<double> closes;
  for (int i = 0; i < kBars; ++i) closes.push_back(100 + i);
  EXPECT_EQ(Ys(price), closes);

  std::vector<double> line = ComputeIndicator(series, Indicator::kAdvanceDeclineLine);
  EXPECT_EQ(Ys(page()->pane(1)), line);
  // The oscillator's points start on bar 39.
  std::vector<double> oscillator = ComputeIndicator(series, Indicator::kMcClellanOscillator);
  oscillator.erase(oscillator.begin(), oscillator.begin() + 38);
  EXPECT_EQ(Ys(page()->pane(2)), oscillator);
  EXPECT_EQ(page()->pane(2)->series()->points().front().x(), BarTime(series.dates[38]));
  EXPECT_TRUE(page()->pane(3)->isHidden());
  // Only the lowest pane shown writes the dates.
  EXPECT_FALSE(page()->pane(1)->time_axis()->labelsVisible());
  EXPECT_TRUE(page()->pane(2)->time_axis()->labelsVisible());

  // A statistic column and the price as a line.
  ChartChoice choice = Choice({"", "", "NewHighs"});
  choice.price_as_line = true;
  page()->SetChoice(choice);
  EXPECT_EQ(page()->pane(0)->bars(), nullptr);
  EXPECT_TRUE(page()->pane(0)->series()->isVisible());
  EXPECT_EQ(Ys(page()->pane(3)), std::vector<double>(kBars, 20));  // the fixture's column number
  EXPECT_TRUE(page()->pane(1)->isHidden());
}

TEST_F(ChartPageTest, TheChoiceIsRememberedAndARunsNewFileRedrawn) {
  window_->tabs()->setCurrentWidget(page());
  ChartChoice choice = Choice({"TRIN", "", "ShareAbove200ma"});
  choice.price_as_line = true;
  page()->SetChoice(choice);
  window_ = std::make_unique<gui::MainWindow>(session_);
  EXPECT_EQ(window_->chart()->choice(), choice);
  window_->show();
  window_->tabs()->setCurrentWidget(page());
  ASSERT_EQ(page()->series().size(), static_cast<std::size_t>(kBars));

  WriteBars(kBars + 1);  // a run replaces the file
  window_->Render(session_.ui);
  EXPECT_EQ(page()->series().size(), static_cast<std::size_t>(kBars + 1));
  EXPECT_EQ(page()->pane(0)->series()->count(), kBars + 1);

  const std::string picture = dir_ / "chart.png";
  ASSERT_TRUE(page()->SavePng(QString::fromStdString(picture)));
  EXPECT_FALSE(QImage(QString::fromStdString(picture)).isNull());
}

}  // namespace
}  // namespace corvanet::test
