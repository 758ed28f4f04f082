#pragma once
// One pane of the chart page: a chart of one series over the shared date axis. The pane reports
// the mouse (hover, wheel, drag) in the axis' time units and leaves what they mean to the page; it
// draws OHLC bars itself, since a graphics item per bar would cost more than the whole chart.
#include <QChartView>
#include <QGraphicsItem>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "core/indicators/chart_model.h"

class QDateTimeAxis;
class QGraphicsLineItem;
class QLineSeries;
class QValueAxis;

namespace corvanet::gui {

// The price's bars, painted in the plot area from the window and value span the pane is given.
class OhlcBarsItem final : public QGraphicsItem {
 public:
  explicit OhlcBarsItem(QChart* chart);
  void SetBars(std::span<const double> times, std::span<const double> open,
               std::span<const double> high, std::span<const double> low,
               std::span<const double> close);
  void SetView(TimeWindow window, ValueSpan values);
  std::size_t size() const { return times_.size(); }

  QRectF boundingRect() const override;
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

 private:
  QChart* chart_;
  std::vector<double> times_, open_, high_, low_, close_;
  TimeWindow window_;
  ValueSpan values_;
};

class ChartPane final : public QChartView {
  Q_OBJECT

 public:
  explicit ChartPane(const QString& name, QWidget* parent = nullptr);

  // The series shown: one point per bar that has a value. `bars` draws OHLC bars from the price
  // columns instead of the line; the line's points are kept either way.
  void Show(const QString& title, std::span<const double> times, std::span<const double> values);
  void ShowBars(std::span<const double> times, std::span<const double> open,
                std::span<const double> high, std::span<const double> low,
                std::span<const double> close, bool bars);
  // Sets the time axis and scales the value axis to what is in view.
  void SetWindow(TimeWindow window);
  void SetDateLabelsVisible(bool visible);
  // The room the value labels take left of the plot area and the dates right of it, in pixels.
  std::pair<double, double> LabelRoom() const;
  // Margins that put the plot area's left and right edges `left` and `right` pixels from the
  // pane's edges (when the labels leave that much room), so panes stacked up line up.
  void SetPlotEdges(double left, double right);
  // The cross-hair's vertical line at a time; hidden for nullopt.
  void SetCrossHair(std::optional<double> time);

  // Small, so the page shares out its height rather than asking to scroll.
  QSize sizeHint() const override;

  QLineSeries* series() const { return series_; }
  QDateTimeAxis* time_axis() const { return time_axis_; }
  QValueAxis* value_axis() const { return value_axis_; }
  const OhlcBarsItem* bars() const { return bars_visible_ ? bars_ : nullptr; }

 signals:
  void Hovered(double time);
  void Left();
  void Zoomed(double anchor, double factor);
  void Panned(double shift);

 protected:
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  double TimeAt(double x) const;

  QLineSeries* series_;
  QDateTimeAxis* time_axis_;
  QValueAxis* value_axis_;
  QGraphicsLineItem* cross_hair_;
  OhlcBarsItem* bars_;
  bool bars_visible_ = false;
  std::vector<double> times_;   // of the series shown
  std::vector<double> values_;  // NaN where a bar has none
  std::vector<double> lows_, highs_;
  TimeWindow window_;
  ValueSpan shown_;
  std::optional<double> cross_hair_time_;
  std::optional<double> drag_from_;  // the x where a drag started, in pixels
};

}  // namespace corvanet::gui
