#include "core/indicators/chart_model.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "core/indicators/breadth_indicators.h"
#include "core/indicators/indicator_table.h"
#include "core/indicators/symbol_datafile.h"
#include "core/platform/files.h"
#include "core/platform/text.h"
#include "core/stats/value_text.h"

namespace corvanet {

namespace {

constexpr double kDayMs = 86'400'000;
constexpr double kNarrowestBars = 5;  // a zoom stops where this many bars fill the view
constexpr double kValueMargin = 0.05;

bool IsChartSeries(std::string_view name) {
  return ColumnsOfSeries(name).any();
}

}  // namespace

std::string ChartChoiceFile(const std::string& program_directory) {
  return program_directory + "Chart.txt";
}

ChartChoice ReadChartChoice(const std::string& path) {
  ChartChoice choice;
  const std::optional<std::string> text = ReadWholeFile(path);
  if (!text) return choice;
  std::string_view rest = *text;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = TrimLineEnd(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    const std::size_t comma = line.find(',');
    if (comma == std::string_view::npos) continue;
    const std::string_view key = line.substr(0, comma);
    const std::string_view value = Trim(line.substr(comma + 1));
    if (key == "Symbol") {
      choice.symbol = value;
    } else if (key == "Period" && !PeriodOfLetterOrName(value).empty()) {
      choice.period = PeriodOfLetterOrName(value);
    } else if (key == "Price") {
      choice.price_as_line = value == "Line";
    } else if (key.size() == 5 && key.substr(0, 4) == "Pane" && key[4] >= '1' &&
               key[4] < static_cast<char>('1' + kChartPanes)) {
      choice.panes[static_cast<std::size_t>(key[4] - '1')] =
          IsChartSeries(value) ? std::string(value) : std::string();
    }
  }
  return choice;
}

bool WriteChartChoice(const std::string& path, const ChartChoice& choice) {
  std::string text = "Symbol," + choice.symbol + "\r\nPeriod," + choice.period + "\r\nPrice," +
                     (choice.price_as_line ? "Line" : "Bars") + "\r\n";
  for (std::size_t i = 0; i < kChartPanes; ++i) {
    text += "Pane" + std::to_string(i + 1) + "," + choice.panes[i] + "\r\n";
  }
  return WriteWholeFile(path, text);
}

std::vector<std::string> ChartSeriesNames() {
  std::vector<std::string> names;
  for (const IndicatorDef& def : Indicators()) names.emplace_back(def.name);
  for (int column = 1; column <= kCompositeColumnCount; ++column) {
    if (NumericColumns().test(static_cast<std::size_t>(column - 1))) {
      names.emplace_back(ColumnName(column));
    }
  }
  return names;
}

std::string_view SymbolOfListItem(std::string_view item) {
  const std::size_t comma = item.rfind(',');
  return Trim(comma == std::string_view::npos ? item : item.substr(comma + 1));
}

double BarTime(std::int32_t date) {
  using namespace std::chrono;
  const year_month_day day{year(date / 10000), month(static_cast<unsigned>(date / 100 % 100)),
                           std::chrono::day(static_cast<unsigned>(date % 100))};
  return static_cast<double>(sys_days(day).time_since_epoch().count()) * kDayMs + kDayMs / 2;
}

std::vector<double> BarTimes(std::span<const std::int32_t> dates) {
  std::vector<double> times(dates.size());
  std::transform(dates.begin(), dates.end(), times.begin(), BarTime);
  return times;
}

TimeWindow WholeWindow(std::span<const double> times) {
  if (times.empty()) return {0, kDayMs};
  const double bar =
      times.size() > 1 ? (times.back() - times.front()) / double(times.size() - 1) : kDayMs;
  return {times.front() - bar / 2, times.back() + bar / 2};
}

TimeWindow ZoomWindow(TimeWindow shown, TimeWindow whole, std::size_t bars, double anchor,
                      double factor) {
  // Bars are about evenly spaced, so a few bars' width is that share of the whole.
  const double count = static_cast<double>(bars);
  const double narrowest =
      count > kNarrowestBars ? whole.width() * kNarrowestBars / count : whole.width();
  const double width = std::clamp(shown.width() * factor, narrowest, whole.width());
  const double share = shown.width() > 0 ? (anchor - shown.first) / shown.width() : 0.5;
  const double first = anchor - share * width;
  return PanWindow({first, first + width}, whole, 0);
}

TimeWindow PanWindow(TimeWindow shown, TimeWindow whole, double shift) {
  const double width = std::min(shown.width(), whole.width());
  const double first = std::clamp(shown.first + shift, whole.first, whole.last - width);
  return {first, first + width};
}

std::optional<std::size_t> NearestBar(std::span<const double> times, double time) {
  if (times.empty()) return std::nullopt;
  const auto after = std::lower_bound(times.begin(), times.end(), time);
  if (after == times.begin()) return 0;
  if (after == times.end()) return times.size() - 1;
  const auto before = after - 1;
  return static_cast<std::size_t>((time - *before <= *after - time ? before : after) -
                                  times.begin());
}

std::optional<ValueSpan> ValueSpanIn(std::span<const double> times, std::span<const double> values,
                                     TimeWindow window) {
  const auto begin = std::lower_bound(times.begin(), times.end(), window.first) - times.begin();
  const auto end = std::upper_bound(times.begin(), times.end(), window.last) - times.begin();
  std::optional<ValueSpan> span;
  for (auto i = begin; i < end && static_cast<std::size_t>(i) < values.size(); ++i) {
    const double value = values[static_cast<std::size_t>(i)];
    if (std::isnan(value)) continue;
    if (!span) span = ValueSpan{value, value};
    span->low = std::min(span->low, value);
    span->high = std::max(span->high, value);
  }
  if (!span) return span;
  const double room = span->high > span->low ? (span->high - span->low) * kValueMargin
                                             : std::max(std::abs(span->high) * kValueMargin, 1.0);
  span->low -= room;
  span->high += room;
  return span;
}

NiceScale NiceScaleOf(ValueSpan span, int max_ticks) {
  max_ticks = std::max(max_ticks, 2);
  const double range = span.high - span.low;
  if (!(range > 0) || !std::isfinite(range)) return {span, 2};
  const double rough = range / (max_ticks - 1);
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 2.5, 5.0, 10.0, 20.0}) {
    const double step = factor * power;
    const double low = std::floor(span.low / step) * step;
    const double high = std::ceil(span.high / step) * step;
    const int ticks = static_cast<int>(std::lround((high - low) / step)) + 1;
    if (ticks <= max_ticks) return {{low, high}, ticks};
  }
  return {span, 2};
}

std::string CrossHairText(std::int32_t date, std::span<const NamedValue> values) {
  const std::string digits = std::to_string(date);
  std::string text = digits.size() == 8 ? digits.substr(0, 4) + "-" + digits.substr(4, 2) + "-" +
                                              digits.substr(6, 2)
                                        : digits;
  for (const NamedValue& named : values) {
    (text += "  ") += named.name;
    text += ' ';
    if (std::isnan(named.value)) {
      text += '-';
    } else {
      // Two decimals are what a reader of a chart wants; the table keeps every digit.
      AppendValue(text, std::round(named.value * 100) / 100, true);
    }
  }
  return text;
}

}  // namespace corvanet
