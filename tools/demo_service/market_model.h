#pragma once
// The market model behind the generated data: a price random walk per composite and breadth
// statistics drawn around it, so the columns move together as they would on a real exchange
// (a strong day has many advances, much up-volume and new highs). Weekly, monthly and quarterly
// bars aggregate the daily bars' prices and volumes; their counts are drawn for the period as a
// whole, since a constituent that rose on three days of a week is still one advance for the week.
#include <array>
#include <cstdint>

#include "demo_service/calendar.h"
#include "demo_service/catalog.h"
#include "demo_service/datafile_row.h"

namespace corvanet::demo {

// What one period (daily, weekly, ...) carries from one of its bars to the next.
struct LevelState {
  static constexpr int kWindow = 200;         // the longest moving average
  std::array<double, kWindow> closes{};       // ring of the latest closes
  int count = 0;                              // closes in the ring
  int next = 0;                               // slot of the next close
  double range = 0;                           // smoothed high-low range: the channel's width
  double up_share = 0.5;                      // share of constituents in an up-trend
  double mood = 0;                            // the persistent part of breadth
  double ad_line = 0;                         // running sum of advances minus declines
  double fast_average = 0, slow_average = 0;  // of advances minus declines
  double summation = 0;                       // running sum of their difference
  double high_low_line = 0;                   // running sum of new highs minus new lows
  std::array<double, 5> sums{};               // of the latest closes, per average length
};

// The weekly, monthly or quarterly bar that is still open.
struct PeriodBuilder {
  int bars = 0;
  double start_close = 0, start_eq_close = 0;  // closes before the period's first day
  double open = 0, high = 0, low = 0, eq_open = 0, eq_high = 0, eq_low = 0;
  double total_volume = 0, up_volume = 0, down_volume = 0, trade_volume = 0;
};

struct ModelState {
  int last_day = 0;  // days since 1970-01-01 of the newest daily bar
  double close = 0, eq_close = 0;
  double log_anchor = 0;  // the level the price drifts along; it is pulled back toward it
  std::array<LevelState, kPeriodCount> levels{};
  std::array<PeriodBuilder, kPeriodCount - 1> builders{};  // weekly, monthly, quarterly
};

ModelState StartModel(const Composite& composite);

class BarSink {
 public:
  virtual ~BarSink() = default;
  virtual void Bar(Period period, const Row& row) = 0;
};

// Makes the daily bar of `day` (a weekday after state.last_day) and every period bar that this
// day completes, handing each to `sink` (daily first).
void StepDay(const Composite& composite, std::uint64_t seed, int day, ModelState& state,
             BarSink& sink);

}  // namespace corvanet::demo
