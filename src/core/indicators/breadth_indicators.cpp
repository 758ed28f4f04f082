#include "core/indicators/breadth_indicators.h"


namespace corvanet {

namespace {

const IndicatorDef kIndicators[] = {
    {Indicator::kNetAdvances, "NetAdvances", "Net advances"},
    {Indicator::kAdvanceDeclineLine, "ADLine", "Advance-decline line"},
    {Indicator::kMcClellanOscillator, "McClellanOscillator", "McClellan oscillator"},
    {Indicator::kSummationIndex, "SummationIndex", "Summation index"},
    {Indicator::kMcClellanRatioAdjusted, "McClellanRatioAdjusted",
     "McClellan oscillator, ratio-adjusted"},
    {Indicator::kSummationRatioAdjusted, "SummationRatioAdjusted",
     "Summation index, ratio-adjusted"},
    {Indicator::kNetNewHighs, "NetNewHighs", "New highs - new lows"},
    {Indicator::kHighLowIndex, "HighLowIndex", "High-low index"},
    {Indicator::kShareAbove4ma, "ShareAbove4ma", "% above 4-period average"},
    {Indicator::kShareAbove9ma, "ShareAbove9ma", "% above 9-period average"},
    {Indicator::kShareAbove18ma, "ShareAbove18ma", "% above 18-period average"},
    {Indicator::kShareAbove30ma, "ShareAbove30ma", "% above 30-period average"},
    {Indicator::kShareAbove200ma, "ShareAbove200ma", "% above 200-period average"},
    {Indicator::kUpDownVolumeRatio, "UpDownVolumeRatio", "Up/down volume ratio"},
    {Indicator::kTrin, "TRIN", "Arms index (TRIN)"},
};

constexpr int kFastPeriod = 19;
constexpr int kSlowPeriod = 39;
constexpr int kHighLowPeriod = 10;
constexpr double kRatioScale = 1000;

// The columns an indicator reads come in groups that a composite carries or lacks together.
enum class Group { kAdvanceDecline, kVolume, kHighsLows, kMa4, kMa9, kMa18, kMa30, kMa200 };

// The returned lists live in static arrays: an initializer_list returned by value would dangle.
std::span<const std::string_view> GroupColumns(Group group) {
  static constexpr std::string_view kAdvanceDecline[] = {"Advances", "Declines"};
  static constexpr std::string_view kVolume[] = {"UpVolume", "DownVolume"};
  static constexpr std::string_view kHighsLows[] = {"NewHighs", "NewLows"};
  static constexpr std::string_view kMa4[] = {"Above4ma", "Below4ma", "Equal4ma"};
  static constexpr std::string_view kMa9[] = {"Above9ma", "Below9ma", "Equal9ma"};
  static constexpr std::string_view kMa18[] = {"Above18ma", "Below18ma", "Equal18ma"};
  static constexpr std::string_view kMa30[] = {"Above30ma", "Below30ma", "Equal30ma"};
  static constexpr std::string_view kMa200[] = {"Above200ma", "Below200ma", "Equal200ma"};
  switch (group) {
    case Group::kAdvanceDecline: return kAdvanceDecline;
    case Group::kVolume: return kVolume;
    case Group::kHighsLows: return kHighsLows;
    case Group::kMa4: return kMa4;
    case Group::kMa9: return kMa9;
    case Group::kMa18: return kMa18;
    case Group::kMa30: return kMa30;
    case Group::kMa200: return kMa200;
  }
  return {};
}

std::span<const Group> GroupsOf(Indicator indicator) {
  static constexpr Group kAdvanceDecline[] = {Group::kAdvanceDecline};
  static constexpr Group kVolume[] = {Group::kVolume};
  static constexpr Group kHighsLows[] = {Group::kHighsLows};
  static constexpr Group kCountsAndVolume[] = {Group::kAdvanceDecline, Group::kVolume};
  static constexpr Group kMa4[] = {Group::kMa4};
  static constexpr Group kMa9[] = {Group::kMa9};
  static constexpr Group kMa18[] = {Group::kMa18};
  static constexpr Group kMa30[] = {Group::kMa30};
  static constexpr Group kMa200[] = {Group::kMa200};
  switch (indicator) {
    case Indicator::kNetAdvances:
    case Indicator::kAdvanceDeclineLine:
    case Indicator::kMcClellanOscillator:
    case Indicator::kSummationIndex:
    case Indicator::kMcClellanRatioAdjusted:
    case Indicator::kSummationRatioAdjusted: return kAdvanceDecline;
    case Indicator::kNetNewHighs:
    case Indicator::kHighLowIndex: return kHighsLows;
    case Indicator::kShareAbove4ma: return kMa4;
    case Indicator::kShareAbove9ma: return kMa9;
    case Indicator::kShareAbove18ma: return kMa18;
    case Indicator::kShareAbove30ma: return kMa30;
    case Indicator::kShareAbove200ma: return kMa200;
    case Indicator::kUpDownVolumeRatio: return kVolume;
    case Indicator::kTrin: return kCountsAndVolume;
  }
  return {};
}

// A composite lacks a group when every column of it is zero on every bar: the service writes 0
// where it has no count, and an indicator built on those zeros would look real.
bool Carries(const DatafileSeries& series, Group group) {
  for (std::string_view name : GroupColumns(group)) {
    for (double value : series.Column(FindColumn(name))) {
      if (value != 0) return true;
    }
  }
  return false;
}

std::span<const double> Col(const DatafileSeries& series, std::string_view name) {
  return series.Column(FindColumn(name));
}

template <typename F>
std::vector<double> PerBar(std::size_t size, F value_of) {
  std::vector<double> out(size);
  for (std::size_t i = 0; i < size; ++i) out[i] = value_of(i);
  return out;
}

std::vector<double> Difference(std::span<const double> a, std::span<const double> b) {
  return PerBar(a.size(), [&](std::size_t i) { return a[i] - b[i]; });
}

double Ratio(double numerator, double denominator) {
  return denominator == 0 ? kNoValue : numerator / denominator;
}

// Running total from the first bar with a value on.
std::vector<double> RunningSum(std::span<const double> values) {
  std::vector<double> out(values.size(), kNoValue);
  double sum = 0;
  bool started = false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!HasValue(values[i])) {
      if (started) out[i] = sum;
      continue;
    }
    started = true;
    sum += values[i];
    out[i] = sum;
  }
  return out;
}

std::vector<double> Oscillator(std::span<const double> values) {
  const std::vector<double> fast = ExponentialAverage(values, kFastPeriod);
  const std::vector<double> slow = ExponentialAverage(values, kSlowPeriod);
  return Difference(fast, slow);  // NaN wherever the slow average has none yet
}

std::vector<double> NetAdvances(const DatafileSeries& series) {
  return Difference(Col(series, "Advances"), Col(series, "Declines"));
}

// 1000 x (A - D) / (A + D); a bar with neither advances nor declines counts as even (0).
std::vector<double> RatioAdjustedNetAdvances(const DatafileSeries& series) {
  const auto a = Col(series, "Advances");
  const auto d = Col(series, "Declines");
  return PerBar(a.size(), [&](std::size_t i) {
    const double total = a[i] + d[i];
    return total == 0 ? 0.0 : kRatioScale * (a[i] - d[i]) / total;
  });
}

std::vector<double> ShareAbove(const DatafileSeries& series, std::string_view above,
                               std::string_view below, std::string_view equal) {
  const auto a = Col(series, above);
  const auto b = Col(series, below);
  const auto e = Col(series, equal);
  return PerBar(a.size(), [&](std::size_t i) { return Ratio(100 * a[i], a[i] + b[i] + e[i]); });
}

std::vector<double> HighLowIndex(const DatafileSeries& series) {
  const auto highs = Col(series, "NewHighs");
  const auto lows = Col(series, "NewLows");
  // The record-high percent; 50 on a bar without new highs or lows, where neither side leads.
  const std::vector<double> record = PerBar(highs.size(), [&](std::size_t i) {
    const double total = highs[i] + lows[i];
    return total == 0 ? 50.0 : 100 * highs[i] / total;
  });
  return SimpleAverage(record, kHighLowPeriod);
}

std::vector<double> Trin(const DatafileSeries& series) {
  const auto a = Col(series, "Advances");
  const auto d = Col(series, "Declines");
  const auto up = Col(series, "UpVolume");
  const auto down = Col(series, "DownVolume");
  return PerBar(a.size(), [&](std::size_t i) {
    return d[i] == 0 || up[i] == 0 ? kNoValue : (a[i] / d[i]) / (up[i] / down[i]);
  });
}

std::vector<double> Values(const DatafileSeries& series, Indicator indicator) {
  switch (indicator) {
    case Indicator::kNetAdvances:
      return NetAdvances(series);
    case Indicator::kAdvanceDeclineLine:
      return RunningSum(NetAdvances(series));
    case Indicator::kMcClellanOscillator:
      return Oscillator(NetAdvances(series));
    case Indicator::kSummationIndex:
      return RunningSum(Oscillator(NetAdvances(series)));
    case Indicator::kMcClellanRatioAdjusted:
      return Oscillator(RatioAdjustedNetAdvances(series));
    case Indicator::kSummationRatioAdjusted:
      return RunningSum(Oscillator(RatioAdjustedNetAdvances(series)));
    case Indicator::kNetNewHighs:
      return Difference(Col(series, "NewHighs"), Col(series, "NewLows"));
    case Indicator::kHighLowIndex:
      return HighLowIndex(series);
    case Indicator::kShareAbove4ma:
      return ShareAbove(series, "Above4ma", "Below4ma", "Equal4ma");
    case Indicator::kShareAbove9ma:
      return ShareAbove(series, "Above9ma", "Below9ma", "Equal9ma");
    case Indicator::kShareAbove18ma:
      return ShareAbove(series, "Above18ma", "Below18ma", "Equal18ma");
    case Indicator::kShareAbove30ma:
      return ShareAbove(series, "Above30ma", "Below30ma", "Equal30ma");
    case Indicator::kShareAbove200ma:
      return ShareAbove(series, "Above200ma", "Below200ma", "Equal200ma");
    case Indicator::kUpDownVolumeRatio:
      return PerBar(series.size(), [up = Col(series, "UpVolume"), down = Col(series, "DownVolume")](
                                       std::size_t i) { return Ratio(up[i], down[i]); });
    case Indicator::kTrin:
      return Trin(series);
  }
  return {};
}

}  // namespace

std::span<const IndicatorDef> Indicators() {
  return kIndicators;
}

const IndicatorDef* FindIndicator(std::string_view name) {
  for (const IndicatorDef& def : kIndicators) {
    if (def.name == name) return &def;
  }
  return nullptr;
}

const IndicatorDef& Definition(Indicator indicator) {
  return kIndicators[static_cast<std::size_t>(indicator)];
}

ColumnSet ColumnsOf(Indicator indicator) {
  ColumnSet columns;
  for (Group group : GroupsOf(indicator)) {
    for (std::string_view name : GroupColumns(group)) {
      columns.set(static_cast<std::size_t>(FindColumn(name) - 1));
    }
  }
  return columns;
}

std::vector<double> ComputeIndicator(const DatafileSeries& series, Indicator indicator) {
  for (Group group : GroupsOf(indicator)) {
    if (!Carries(series, group)) return std::vector<double>(series.size(), kNoValue);
  }
  return Values(series, indicator);
}

std::vector<double> ExponentialAverage(std::span<const double> values, int period) {
  std::vector<double> out(values.size(), kNoValue);
  const auto n = static_cast<std::size_t>(period);
  if (period < 1 || values.size() < n) return out;
  double average = 0;
  for (std::size_t i = 0; i < n; ++i) average += values[i];
  average /= period;
  out[n - 1] = average;
  const double weight = 2.0 / (period + 1);
  for (std::size_t i = n; i < values.size(); ++i) {
    average += weight * (values[i] - average);
    out[i] = average;
  }
  return out;
}

std::vector<double> SimpleAverage(std::span<const double> values, int period) {
  std::vector<double> out(values.size(), kNoValue);
  const auto n = static_cast<std::size_t>(period);
  if (period < 1) return out;
  double sum = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    sum += values[i];
    if (i >= n) sum -= values[i - n];
    if (i + 1 >= n) out[i] = sum / period;
  }
  return out;
}

}  // namespace corvanet
