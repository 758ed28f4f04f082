#pragma once
// The classic breadth indicators, worked out per bar from a datafile's columns. A value that cannot
// be known is NaN ("no value"): before an average has enough bars, where a ratio would divide by
// zero, and on every bar of a composite that lacks a column the indicator needs. The help page
// Indicators.htm states each formula; the two must change together.
#include <cmath>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

#include "core/indicators/datafile_series.h"

namespace corvanet {

enum class Indicator {
  kNetAdvances,
  kAdvanceDeclineLine,
  kMcClellanOscillator,
  kSummationIndex,
  kMcClellanRatioAdjusted,
  kSummationRatioAdjusted,
  kNetNewHighs,
  kHighLowIndex,
  kShareAbove4ma,
  kShareAbove9ma,
  kShareAbove18ma,
  kShareAbove30ma,
  kShareAbove200ma,
  kUpDownVolumeRatio,
  kTrin,
};

struct IndicatorDef {
  Indicator indicator;
  std::string_view name;     // the CSV header and the name the command line and settings use
  std::string_view caption;  // what the chart shows
};

inline constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
inline bool HasValue(double value) {
  return !std::isnan(value);
}

// Every indicator, in the order of the command line's columns.
std::span<const IndicatorDef> Indicators();
// Exact, case-sensitive; nullptr for a name that is no indicator.
const IndicatorDef* FindIndicator(std::string_view name);
const IndicatorDef& Definition(Indicator indicator);

// The datafile columns an indicator is worked out from.
ColumnSet ColumnsOf(Indicator indicator);

// One value per bar of `series`, which must hold ColumnsOf(indicator).
std::vector<double> ComputeIndicator(const DatafileSeries& series, Indicator indicator);

// The averages, exposed for their own tests. The exponential average of `period` bars starts, on
// bar period - 1, at the simple average of the first `period` values and then moves by
// 2 / (period + 1) of each new value's distance; earlier bars have no value.
std::vector<double> ExponentialAverage(std::span<const double> values, int period);
// The simple average of the last `period` values; no value on the first period - 1 bars.
std::vector<double> SimpleAverage(std::span<const double> values, int period);

}  // namespace corvanet
