#pragma once
// The chart's choices and decisions as plain data: what is charted, which time span is in view, how
// a wheel step or a drag moves it, what the cross-hair reads. The window only draws them.
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/indicators/datafile_series.h"
#include "core/platform/file_access.h"

namespace corvanet {

inline constexpr std::size_t kChartPanes = 3;

// What the user last charted, kept per installation in ChartChoiceFile().
struct ChartChoice {
  std::string symbol;  // as a download list names it, "$NYA"
  std::string period = "Daily";
  bool price_as_line = false;  // else OHLC bars
  // The series of each pane below the price: an indicator or statistic column name; "" = none.
  std::array<std::string, kChartPanes> panes{"ADLine", "McClellanOscillator", ""};

  bool operator==(const ChartChoice&) const = default;
};

std::string ChartChoiceFile(const std::string& program_directory);
// The choice saved; the defaults for a missing file, and for any line that does not read (an
// unknown period or series name is dropped, so a damaged file cannot chart nonsense).
ChartChoice ReadChartChoice(const std::string& path);
bool WriteChartChoice(const std::string& path, const ChartChoice& choice);

// What a pane can show: the indicators, then the numeric columns of the datafile by catalogue name.
std::vector<std::string> ChartSeriesNames();
// The symbol of a list item "issue name,symbol" (the text after the last comma, without blanks).
std::string_view SymbolOfListItem(std::string_view item);

// A bar's place on the time axis: noon UTC of its day in milliseconds since 1970, so that no time
// zone moves it to another day.
double BarTime(std::int32_t date);
std::vector<double> BarTimes(std::span<const std::int32_t> dates);

// The span of time in view, in BarTime units.
struct TimeWindow {
  double first = 0;
  double last = 0;
  double width() const { return last - first; }
  bool operator==(const TimeWindow&) const = default;
};
// All of `times` with half a bar's room at either end (one day when there is a single bar).
TimeWindow WholeWindow(std::span<const double> times);
// `factor` < 1 narrows the view around `anchor`, which stays where it is on screen; the view never
// gets narrower than a few of the whole's `bars` nor wider than the whole, and stays inside it.
TimeWindow ZoomWindow(TimeWindow shown, TimeWindow whole, std::size_t bars, double anchor,
                      double factor);
// Moved by `shift` (positive = later), stopped at either end of the whole.
TimeWindow PanWindow(TimeWindow shown, TimeWindow whole, double shift);

// The index of the bar nearest to `time`; times ascending. Empty for no bars.
std::optional<std::size_t> NearestBar(std::span<const double> times, double time);

// The low and high of the values with a value inside the window, widened by a margin so lines do
// not touch the frame; nullopt when none is in view.
struct ValueSpan {
  double low = 0;
  double high = 0;
};
std::optional<ValueSpan> ValueSpanIn(std::span<const double> times, std::span<const double> values,
                                     TimeWindow window);

// The span widened to round ticks (1, 2, 2.5 or 5 times a power of ten apart), at most `max_ticks`
// of them (at least 2), so a short pane does not crowd its labels.
struct NiceScale {
  ValueSpan span;
  int ticks = 2;
};
NiceScale NiceScaleOf(ValueSpan span, int max_ticks);

// "2024-01-02  Close 4512.25  ADLine 120": the cross-hair's reading of one bar, "-" for a series
// without a value there.
struct NamedValue {
  std::string_view name;
  double value;
};
std::string CrossHairText(std::int32_t date, std::span<const NamedValue> values);

// Whether the file shown has changed since it was read (a run replaced it): compares what the
// system says of it now with what it said then.
struct ShownFile {
  std::string path;
  std::optional<FileIdentity> identity;
  bool Changed() const { return IdentityOf(path) != identity; }
};

}  // namespace corvanet
