#pragma once
// What a front end shows of a datafile: a named series (an indicator or a datafile column) and the
// indicators as a CSV table, one row per bar.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/indicators/breadth_indicators.h"

namespace corvanet {

// The columns a series needs: an indicator's (by its name) or the catalogue column of that name.
// Empty for a name that is neither, or a column that holds no number (Period, FV2 ... FV15).
ColumnSet ColumnsOfSeries(std::string_view name);
// One value per bar of the series named; all NaN for a name ColumnsOfSeries does not know.
std::vector<double> SeriesValues(const DatafileSeries& series, std::string_view name);

struct IndicatorTableOptions {
  std::vector<Indicator> indicators;  // the columns, in this order; empty = every indicator
  std::int32_t from = 0;              // the first date shown (YYYYMMDD); 0 = from the first bar
  std::int32_t to = 0;                // the last; 0 = to the last bar
  std::size_t last = 0;               // only the last N bars of that range; 0 = all
};

// "Date,NetAdvances,..." and one line per bar shown, ended by "\n": the datafile's date, then each
// value rounded to four decimals and written by the number rule (no blank in front), an empty
// field for no value. The indicators are
// worked out over the whole file, so a range shows the same numbers as the whole table does.
std::string IndicatorTable(const DatafileSeries& series, const IndicatorTableOptions& options);

// A date as YYYYMMDD, YYYY-MM-DD or MM/DD/YYYY; false for anything else or a day that is no day of
// the calendar.
bool ParseBarDate(std::string_view text, std::int32_t& date);

}  // namespace corvanet
