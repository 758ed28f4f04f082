#include "gui/chart_pane.h"

#include <QDateTime>
#include <QDateTimeAxis>
#include <QGraphicsLayout>
#include <QGraphicsLineItem>
#include <QLineSeries>
#include <QMouseEvent>
#include <QPainter>
#include <QValueAxis>
#include <cmath>

namespace corvanet::gui {

namespace {

constexpr double kWheelStep = 0.8;  // the share of the view one wheel notch keeps
constexpr int kMargin = 4;
const QColor kLineColour(0x0d, 0x47, 0xa1);
const QColor kUpColour(0x1b, 0x5e, 0x20);
const QColor kDownColour(0xb7, 0x1c, 0x1c);

QDateTime TimeOf(double ms) {
  return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(ms), Qt::UTC);
}

}  // namespace

OhlcBarsItem::OhlcBarsItem(QChart* chart) : QGraphicsItem(chart), chart_(chart) {}

void OhlcBarsItem::SetBars(std::span<const double> times, std::span<const double> open,
                           std::span<const double> high, std::span<const double> low,
                           std::span<const double> close) {
  times_.assign(times.begin(), times.end());
  open_.assign(open.begin(), open.end());
  high_.assign(high.begin(), high.end());
  low_.assign(low.begin(), low.end());
  close_.assign(close.begin(), close.end());
  update();
}

void OhlcBarsItem::SetView(TimeWindow window, ValueSpan values) {
  prepareGeometryChange();
  window_ = window;
  values_ = values;
  update();
}

QRectF OhlcBarsItem::boundingRect() const {
  return chart_->plotArea();
}

void OhlcBarsItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) {
  const QRectF area = chart_->plotArea();
  if (times_.empty() || window_.width() <= 0 || values_.high <= values_.low) return;
  const double x_scale = area.width() / window_.width();
  const double y_scale = area.height() / (values_.high - values_.low);
  const auto x_of = [&](double t) { return area.left() + (t - window_.first) * x_scale; };
  const auto y_of = [&](double v) { return area.bottom() - (v - values_.low) * y_scale; };
  const auto first = std::lower_bound(times_.begin(), times_.end(), window_.first) - times_.begin();
  const auto last = std::upper_bound(times_.begin(), times_.end(), window_.last) - times_.begin();
  const double spacing = last - first > 1 ? area.width() / double(last - first) : area.width();
  const double tick = std::clamp(spacing * 0.35, 0.0, 6.0);
  // Two batches of lines, one per colour, instead of a pen change per bar.
  QVector<QLineF> up;
  QVector<QLineF> down;
  up.reserve(3 * (last - first));
  down.reserve(3 * (last - first));
  painter->setClipRect(area);
  for (auto i = static_cast<std::size_t>(first); i < static_cast<std::size_t>(last); ++i) {
    const double x = x_of(times_[i]);
    QVector<QLineF>& lines = close_[i] >= open_[i] ? up : down;
    lines.append(QLineF(x, y_of(high_[i]), x, y_of(low_[i])));
    if (tick >= 1) {
      lines.append(QLineF(x - tick, y_of(open_[i]), x, y_of(open_[i])));
      lines.append(QLineF(x, y_of(close_[i]), x + tick, y_of(close_[i])));
    }
  }
  painter->setPen(QPen(kUpColour, 1));
  painter->drawLines(up);
  painter->setPen(QPen(kDownColour, 1));
  painter->drawLines(down);
}

ChartPane::ChartPane(const QString& name, QWidget* parent)
    : QChartView(parent),
      series_(new QLineSeries),
      time_axis_(new QDateTimeAxis),
      value_axis_(new QValueAxis),
      cross_hair_(nullptr),
      bars_(nullptr) {
  setObjectName(name);
  auto* chart = new QChart;
  chart->legend()->hide();
  chart->setMargins(QMargins(kMargin, 2, kMargin, 2));
  chart->layout()->setContentsMargins(0, 0, 0, 0);
  chart->setBackgroundRoundness(0);
  series_->setPen(QPen(kLineColour, 1.2));
  chart->addSeries(series_);
  time_axis_->setFormat("yyyy-MM-dd");
  time_axis_->setTickCount(7);
  value_axis_->setLabelFormat("%.6g");
  chart->addAxis(time_axis_, Qt::AlignBottom);
  chart->addAxis(value_axis_, Qt::AlignLeft);
  series_->attachAxis(time_axis_);
  series_->attachAxis(value_axis_);
  setChart(chart);
  setRenderHint(QPainter::Antialiasing, false);
  setMouseTracking(true);
  setRubberBand(QChartView::NoRubberBand);
  setDragMode(QGraphicsView::NoDrag);
  bars_ = new OhlcBarsItem(chart);
  bars_->setZValue(5);
  bars_->hide();
  cross_hair_ = new QGraphicsLineItem(chart);
  cross_hair_->setPen(QPen(QColor(0x60, 0x60, 0x60), 1, Qt::DashLine));
  cross_hair_->setZValue(10);
  cross_hair_->hide();
  // The plot area moves when the pane is resized or an axis' labels change width.
  connect(chart, &QChart::plotAreaChanged, this, [this] {
    if (bars_visible_) bars_->SetView(window_, shown_);
    SetCrossHair(cross_hair_time_);
  });
}

QSize ChartPane::sizeHint() const {
  return {480, 120};
}

void ChartPane::Show(const QString& title, std::span<const double> times,
                     std::span<const double> values) {
  chart()->setTitle(title);
  times_.assign(times.begin(), times.end());
  values_.assign(values.begin(), values.end());
  lows_.clear();
  highs_.clear();
  QList<QPointF> points;
  points.reserve(static_cast<qsizetype>(times.size()));
  for (std::size_t i = 0; i < times.size() && i < values.size(); ++i) {
    if (!std::isnan(values[i])) points.append(QPointF(times[i], values[i]));
  }
  series_->replace(points);
  series_->setVisible(true);
  bars_visible_ = false;
  bars_->hide();
}

void ChartPane::ShowBars(std::span<const double> times, std::span<const double> open,
                         std::span<const double> high, std::span<const double> low,
                         std::span<const double> close, bool bars) {
  Show(QString(), times, close);
  bars_visible_ = bars;
  series_->setVisible(!bars);
  if (!bars) return;
  lows_.assign(low.begin(), low.end());
  highs_.assign(high.begin(), high.end());
  bars_->SetBars(times, open, high, low, close);
  bars_->show();
}

void ChartPane::SetWindow(TimeWindow window) {
  window_ = window;
  time_axis_->setRange(TimeOf(window.first), TimeOf(window.last));
  std::optional<ValueSpan> span;
  if (bars_visible_) {
    const auto low = ValueSpanIn(times_, lows_, window);
    const auto high = ValueSpanIn(times_, highs_, window);
    if (low && high) span = ValueSpan{low->low, high->high};
  } else {
    span = ValueSpanIn(times_, values_, window);
  }
  // Round ticks move the ends a little; the bars are drawn on the axis as it then stands. A tick
  // for every 30 pixels or so keeps the labels legible in a short pane.
  const int ticks = std::clamp(static_cast<int>(chart()->plotArea().height() / 30) + 1, 3, 8);
  const NiceScale scale = NiceScaleOf(span.value_or(ValueSpan{0, 1}), ticks);
  shown_ = scale.span;
  value_axis_->setRange(shown_.low, shown_.high);
  value_axis_->setTickCount(scale.ticks);
  if (bars_visible_) bars_->SetView(window, shown_);
  SetCrossHair(cross_hair_time_);
}

void ChartPane::SetDateLabelsVisible(bool visible) {
  time_axis_->setLabelsVisible(visible);
}

std::pair<double, double> ChartPane::LabelRoom() const {
  chart()->layout()->activate();  // the labels of a range just set
  const QRectF area = chart()->plotArea();
  const QMargins margins = chart()->margins();
  return {area.left() - margins.left(), chart()->size().width() - area.right() - margins.right()};
}

void ChartPane::SetPlotEdges(double left, double right) {
  const auto [left_room, right_room] = LabelRoom();
  QMargins margins = chart()->margins();
  margins.setLeft(std::max(0, static_cast<int>(std::lround(left - left_room))));
  margins.setRight(std::max(0, static_cast<int>(std::lround(right - right_room))));
  if (margins != chart()->margins()) chart()->setMargins(margins);
}

void ChartPane::SetCrossHair(std::optional<double> time) {
  cross_hair_time_ = time;
  const QRectF area = chart()->plotArea();
  if (!time || window_.width() <= 0 || *time < window_.first || *time > window_.last) {
    cross_hair_->hide();
    return;
  }
  const double x = area.left() + (*time - window_.first) * area.width() / window_.width();
  cross_hair_->setLine(x, area.top(), x, area.bottom());
  cross_hair_->show();
}

double ChartPane::TimeAt(double x) const {
  const QRectF area = chart()->plotArea();
  if (area.width() <= 0) return window_.first;
  return window_.first + (x - area.left()) * window_.width() / area.width();
}

void ChartPane::mouseMoveEvent(QMouseEvent* event) {
  const double x = event->position().x();
  if (drag_from_) {
    const QRectF area = chart()->plotArea();
    if (area.width() > 0) emit Panned((*drag_from_ - x) * window_.width() / area.width());
    drag_from_ = x;
  }
  emit Hovered(TimeAt(x));
}

void ChartPane::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) drag_from_ = event->position().x();
}

void ChartPane::mouseReleaseEvent(QMouseEvent*) {
  drag_from_.reset();
}

void ChartPane::wheelEvent(QWheelEvent* event) {
  const double notches = event->angleDelta().y() / 120.0;
  if (notches == 0) return;
  emit Zoomed(TimeAt(event->position().x()), std::pow(kWheelStep, notches));
  event->accept();
}

void ChartPane::leaveEvent(QEvent*) {
  drag_from_.reset();
  emit Left();
}

}  // namespace corvanet::gui
