#include "core/indicators/indicator_table.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

#include "core/stats/value_text.h"

namespace corvanet {

namespace {

// Four decimals are more than any reading of these indicators needs, and a value so rounded is
// written by the number rule's quick path: the full fifteen digits of every average cost the
// table nine tenths of its time.
double TableValue(double value) {
  constexpr double kScale = 1e4;
  return std::abs(value) < 1e11 ? std::round(value * kScale) / kScale : value;
}

}  // namespace

ColumnSet ColumnsOfSeries(std::string_view name) {
  if (const IndicatorDef* def = FindIndicator(name)) return ColumnsOf(def->indicator);
  ColumnSet columns;
  const int column = FindColumn(name);
  if (column != 0) columns.set(static_cast<std::size_t>(column - 1));
  return columns & NumericColumns();
}

std::vector<double> SeriesValues(const DatafileSeries& series, std::string_view name) {
  if (const IndicatorDef* def = FindIndicator(name)) {
    return ComputeIndicator(series, def->indicator);
  }
  const std::span<const double> column = series.Column(FindColumn(name));
  if (column.size() != series.size()) return std::vector<double>(series.size(), kNoValue);
  return {column.begin(), column.end()};
}

std::string IndicatorTable(const DatafileSeries& series, const IndicatorTableOptions& options) {
  std::vector<Indicator> chosen = options.indicators;
  if (chosen.empty()) {
    for (const IndicatorDef& def : Indicators()) chosen.push_back(def.indicator);
  }
  std::vector<std::vector<double>> values;
  values.reserve(chosen.size());
  for (Indicator indicator : chosen) values.push_back(ComputeIndicator(series, indicator));

  // The bars shown: dates are in file order, which the service keeps ascending, but the range is
  // taken bar by bar so that a file out of order still shows exactly the bars asked for.
  std::vector<std::size_t> shown;
  for (std::size_t i = 0; i < series.size(); ++i) {
    const std::int32_t date = series.dates[i];
    if ((options.from == 0 || date >= options.from) && (options.to == 0 || date <= options.to)) {
      shown.push_back(i);
    }
  }
  if (options.last != 0 && shown.size() > options.last) {
    shown.erase(shown.begin(), shown.end() - static_cast<std::ptrdiff_t>(options.last));
  }

  std::string out = "Date";
  for (Indicator indicator : chosen) (out += ',') += Definition(indicator).name;
  out += '\n';
  out.reserve(out.size() + shown.size() * (10 + 12 * chosen.size()));
  char digits[16];
  for (std::size_t i : shown) {
    const auto end = std::to_chars(digits, digits + sizeof digits, series.dates[i]).ptr;
    out.append(digits, end);
    for (const std::vector<double>& column : values) {
      out += ',';
      if (HasValue(column[i])) AppendValue(out, TableValue(column[i]), true);
    }
    out += '\n';
  }
  return out;
}

bool ParseBarDate(std::string_view text, std::int32_t& date) {
  auto number = [&text](std::size_t at, std::size_t length, int& value) {
    if (at + length > text.size()) return false;
    const char* first = text.data() + at;
    const auto [end, ec] = std::from_chars(first, first + length, value);
    return ec == std::errc() && end == first + length;
  };
  int year = 0;
  int month = 0;
  int day = 0;
  bool read = false;
  if (text.size() == 8) {
    read = number(0, 4, year) && number(4, 2, month) && number(6, 2, day);
  } else if (text.size() == 10 && text[4] == '-' && text[7] == '-') {
    read = number(0, 4, year) && number(5, 2, month) && number(8, 2, day);
  } else if (text.size() == 10 && text[2] == '/' && text[5] == '/') {
    read = number(6, 4, year) && number(0, 2, month) && number(3, 2, day);
  }
  if (!read) return false;
  const std::chrono::year_month_day ymd{std::chrono::year(year),
                                        std::chrono::month(static_cast<unsigned>(month)),
                                        std::chrono::day(static_cast<unsigned>(day))};
  if (!ymd.ok()) return false;
  date = year * 10000 + month * 100 + day;
  return true;
}

}  // namespace corvanet
