#include "demo_service/market_model.h"

#include <algorithm>
#include <cmath>

#include "demo_service/random.h"

namespace corvanet::demo {

namespace {

// Largest share of constituents that sit exactly on each moving average (200 ... 4): the shorter
// the average, the likelier a close lands on it.
constexpr std::array<double, 5> kEqualShare = {0.002, 0.004, 0.006, 0.01, 0.02};

std::int32_t Count(double value) {
  return static_cast<std::int32_t>(RoundToWhole(value));
}

double Whole(double value) {
  return static_cast<double>(RoundToWhole(value));
}

// Running sums keep the five averages at a few additions per bar instead of summing up to 200
// closes for each.
void PushClose(LevelState& level, double close) {
  for (std::size_t i = 0; i < kAverageLengths.size(); ++i) {
    const int length = kAverageLengths[i];
    level.sums[i] += close;
    if (level.count >= length) {
      const int leaving = (level.next - length + LevelState::kWindow) % LevelState::kWindow;
      level.sums[i] -= level.closes[static_cast<std::size_t>(leaving)];
    }
  }
  level.closes[static_cast<std::size_t>(level.next)] = close;
  level.next = (level.next + 1) % LevelState::kWindow;
  level.count = std::min(level.count + 1, LevelState::kWindow);
}

// Average of the latest closes for the average at `index` (fewer while the history is short).
double Average(const LevelState& level, std::size_t index) {
  return level.sums[index] / std::min(kAverageLengths[index], level.count);
}

constexpr std::size_t kAverage18 = 2;

// Rounds a bar to cents and keeps high >= open, close >= low > 0 after the rounding.
void SetPrices(double open, double high, double low, double close, double& out_open,
               double& out_high, double& out_low, double& out_close) {
  out_open = std::max(0.01, Cents(open));
  out_close = std::max(0.01, Cents(close));
  out_high = std::max({Cents(high), out_open, out_close});
  out_low = std::max(0.01, std::min({Cents(low), out_open, out_close}));
}

// Draws the counts of a bar whose composite moved by `ret` against a typical move of `sigma`,
// and moves the level's running values on. Returns the share of advances among the constituents
// that changed, which also splits the day's volume.
double DrawBreadth(const Composite& composite, LevelState& level, double ret, double sigma,
                   Random& rng, Row& row) {
  const int constituents = composite.constituents;
  PushClose(level, row.close);
  const double x = ret / sigma;
  level.mood = 0.8 * level.mood + 0.2 * rng.Normal();
  const double advance_share = Logistic(1.4 * x + 0.6 * level.mood);

  const std::int32_t missing = constituents >= 50 ? Count(constituents * rng.Uniform(0, 0.01)) : 0;
  row.traded = constituents - missing;
  const double unchanged_share = rng.Uniform(0.005, 0.03) / (1 + std::fabs(x));
  row.unchanged = Count(row.traded * unchanged_share);
  row.advances = Count((row.traded - row.unchanged) * advance_share);
  row.declines = row.traded - row.unchanged - row.advances;

  double deviation_30 = 0, deviation_200 = 0, share_30 = 0.5;
  for (std::size_t i = 0; i < kAverageLengths.size(); ++i) {
    const int length = kAverageLengths[i];
    const double spread = sigma * std::sqrt(length / 3.0);
    const double deviation = (row.close / Average(level, i) - 1) / spread;
    const double share = Logistic(1.7 * deviation + 0.3 * level.mood);
    row.equal[i] = Count(constituents * rng.Uniform(0, kEqualShare[i]));
    row.above[i] = Count((constituents - row.equal[i]) * share);
    row.below[i] = constituents - row.equal[i] - row.above[i];
    row.percent_above[i] = Cents(100.0 * row.above[i] / constituents);
    if (length == 30) deviation_30 = deviation, share_30 = share;
    if (length == 200) deviation_200 = deviation;
  }

  level.up_share =
      Clamp(level.up_share + 0.08 * (share_30 - level.up_share) + 0.02 * rng.Normal(), 0.03, 0.97);
  const double in_trend = constituents * (1 - rng.Uniform(0.05, 0.12));
  row.up_trends = Count(in_trend * level.up_share);
  row.down_trends = std::min(Count(in_trend * (1 - level.up_share)), constituents - row.up_trends);
  row.new_up_trends =
      std::min(row.up_trends, Count(row.up_trends * rng.Uniform(0, 0.04) * (1 + std::max(0.0, x))));
  row.new_down_trends = std::min(
      row.down_trends, Count(row.down_trends * rng.Uniform(0, 0.04) * (1 + std::max(0.0, -x))));

  const double high_pressure = Logistic(1.5 * deviation_30 + deviation_200 - 3 + 0.5 * x);
  const double low_pressure = Logistic(-1.5 * deviation_30 - deviation_200 - 3 - 0.5 * x);
  row.new_highs = Count(constituents * 0.2 * high_pressure * rng.Uniform(0.5, 1.5));
  row.new_lows = std::min(Count(constituents * 0.2 * low_pressure * rng.Uniform(0.5, 1.5)),
                          constituents - row.new_highs);
  row.new_highs_first_day = Count(row.new_highs * rng.Uniform(0.2, 0.6));
  row.new_lows_first_day = Count(row.new_lows * rng.Uniform(0.2, 0.6));
  row.q_new_highs = Count(row.new_highs * rng.Uniform(0.3, 0.8));
  row.q_new_lows = Count(row.new_lows * rng.Uniform(0.3, 0.8));
  row.q_new_highs_first_day = Count(row.q_new_highs * rng.Uniform(0.2, 0.6));
  row.q_new_lows_first_day = Count(row.q_new_lows * rng.Uniform(0.2, 0.6));

  const double range = row.high - row.low;
  level.range = level.count == 1 ? range : 0.9 * level.range + 0.1 * range;
  const double middle = Average(level, kAverage18);
  row.upper_channel = Cents(middle + 2 * level.range);
  row.lower_channel = std::max(0.01, Cents(middle - 2 * level.range));
  row.pivot = Cents((row.high + row.low + row.close) / 3);

  const double net = row.advances - row.declines;
  level.ad_line += net;
  level.fast_average += 0.1 * (net - level.fast_average);
  level.slow_average += 0.05 * (net - level.slow_average);
  const double oscillator = level.fast_average - level.slow_average;
  level.summation += oscillator;
  level.high_low_line += row.new_highs - row.new_lows;
  auto& free = row.free_values;
  free[0] = net;
  free[1] = level.ad_line;
  free[2] = row.new_highs - row.new_lows;
  free[3] = level.high_low_line;
  free[4] = Cents(oscillator);
  free[5] = Cents(level.summation);
  free[6] = Cents(static_cast<double>(row.advances) / std::max(row.declines, 1));
  free[9] = Cents(100.0 * row.advances / std::max(row.traded, 1));
  return advance_share;
}

// The values that need the bar's volumes: the volume spread and the Arms index.
void FinishFreeValues(Row& row) {
  auto& free = row.free_values;
  const double volume_ratio = row.up_volume / std::max(row.down_volume, 1.0);
  free[7] = row.up_volume > 0 ? Cents(free[6] / volume_ratio) : 0;
  free[8] = row.up_volume - row.down_volume;
}

void DrawDailyVolumes(const Composite& composite, double advance_share, double x, Random& rng,
                      Row& row) {
  row.total_volume = Whole(composite.constituents * composite.volume_per_issue *
                           std::exp(0.25 * rng.Normal()) * (1 + 0.15 * std::fabs(x)));
  const double unchanged_share =
      row.traded > 0 ? 0.5 * row.unchanged / static_cast<double>(row.traded) : 0;
  const double changed = row.total_volume - Whole(row.total_volume * unchanged_share);
  row.up_volume = Whole(changed * Clamp(advance_share + 0.06 * rng.Normal(), 0.01, 0.99));
  row.down_volume = changed - row.up_volume;
  row.trade_volume = Whole(row.total_volume / rng.Uniform(150, 450));
}

void AddToPeriod(PeriodBuilder& builder, const Row& day, double close_before,
                 double eq_close_before) {
  if (builder.bars == 0) {
    builder = PeriodBuilder{};
    builder.start_close = close_before;
    builder.start_eq_close = eq_close_before;
    builder.open = day.open;
    builder.high = day.high;
    builder.low = day.low;
    builder.eq_open = day.eq_open;
    builder.eq_high = day.eq_high;
    builder.eq_low = day.eq_low;
  }
  ++builder.bars;
  builder.high = std::max(builder.high, day.high);
  builder.low = std::min(builder.low, day.low);
  builder.eq_high = std::max(builder.eq_high, day.eq_high);
  builder.eq_low = std::min(builder.eq_low, day.eq_low);
  builder.total_volume += day.total_volume;
  builder.up_volume += day.up_volume;
  builder.down_volume += day.down_volume;
  builder.trade_volume += day.trade_volume;
}

Row ClosePeriod(const Composite& composite, std::uint64_t seed, Period period, int day_number,
                const Row& day, PeriodBuilder& builder, LevelState& level) {
  Random rng(seed, static_cast<std::uint64_t>(composite.id), static_cast<std::uint64_t>(period),
             static_cast<std::uint64_t>(day_number));
  Row row;
  row.period = PeriodLetter(period);
  row.date = day.date;
  row.open = builder.open;
  row.high = builder.high;
  row.low = builder.low;
  row.close = day.close;
  row.eq_open = builder.eq_open;
  row.eq_high = builder.eq_high;
  row.eq_low = builder.eq_low;
  row.eq_close = day.eq_close;
  const double ret = row.close / builder.start_close - 1;
  DrawBreadth(composite, level, ret, composite.volatility * std::sqrt(builder.bars), rng, row);
  row.total_volume = builder.total_volume;
  row.up_volume = builder.up_volume;
  row.down_volume = builder.down_volume;
  row.trade_volume = builder.trade_volume;
  FinishFreeValues(row);
  builder.bars = 0;
  return row;
}

}  // namespace

ModelState StartModel(const Composite& composite) {
  ModelState state;
  state.close = composite.start_price;
  state.eq_close = composite.start_price;
  state.log_anchor = std::log(composite.start_price);
  return state;
}

void StepDay(const Composite& composite, std::uint64_t seed, int day, ModelState& state,
             BarSink& sink) {
  Random rng(seed, static_cast<std::uint64_t>(composite.id), 0, static_cast<std::uint64_t>(day));
  const double sigma = composite.volatility;
  const double close_before = state.close;
  const double eq_close_before = state.eq_close;

  state.log_anchor += composite.drift;
  double shock = rng.Normal();
  if (rng.Uniform() < 0.02) shock *= 3;  // the odd crash or rally day
  const double log_return = composite.drift +
                            composite.reversion * (state.log_anchor - std::log(close_before)) +
                            sigma * shock;
  const double eq_log_return = 0.85 * log_return + 0.4 * sigma * rng.Normal();

  Row row;
  row.period = 'D';
  row.date = DateNumber(day);
  auto draw_bar = [&](double before, double log_ret, double& open, double& high, double& low,
                      double& close) {
    const double o = before * (1 + 0.25 * sigma * rng.Normal());
    const double c = before * std::exp(log_ret);
    const double h = std::max(o, c) * (1 + std::fabs(0.45 * sigma * rng.Normal()));
    const double l = std::min(o, c) * (1 - std::min(0.5, std::fabs(0.45 * sigma * rng.Normal())));
    SetPrices(o, h, l, c, open, high, low, close);
  };
  draw_bar(close_before, log_return, row.open, row.high, row.low, row.close);
  draw_bar(eq_close_before, eq_log_return, row.eq_open, row.eq_high, row.eq_low, row.eq_close);

  const double ret = row.close / close_before - 1;
  const double advance_share = DrawBreadth(composite, state.levels[0], ret, sigma, rng, row);
  DrawDailyVolumes(composite, advance_share, ret / sigma, rng, row);
  FinishFreeValues(row);

  state.last_day = day;
  state.close = row.close;
  state.eq_close = row.eq_close;
  sink.Bar(Period::kDaily, row);

  const unsigned ended = EndedPeriods(day);
  for (int p = 1; p < kPeriodCount; ++p) {
    const auto period = static_cast<Period>(p);
    PeriodBuilder& builder = state.builders[static_cast<std::size_t>(p - 1)];
    AddToPeriod(builder, row, close_before, eq_close_before);
    if ((ended & (1u << p)) != 0) {
      sink.Bar(period, ClosePeriod(composite, seed, period, day, row, builder,
                                   state.levels[static_cast<std::size_t>(p)]));
    }
  }
}

}  // namespace corvanet::demo
