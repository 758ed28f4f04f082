#pragma once
// A datafile read into columns: one vector per column, one entry per bar. The indicators and the
// chart look at a column across all bars, where the statistic writers look at a row at a time.
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/stats/composite_row.h"

namespace corvanet {

struct DatafileSeries {
  std::vector<std::int32_t> dates;  // RowDate of each bar, in file order
  // Column c (1-68) at index c - 1, as doubles; empty for the columns that were not read.
  std::array<std::vector<double>, kCompositeColumnCount> columns;

  std::size_t size() const { return dates.size(); }
  // The values of a column (1-68); empty when it was not read or is out of range.
  std::span<const double> Column(int column) const;
};

// The numeric columns: every column but Period, the two dates and FV2 ... FV15, whose contents
// have no fixed meaning (and may be text).
ColumnSet NumericColumns();

// Reads the dates and the `wanted` numeric columns of every row. False, with `error` naming the
// file or the line, when it cannot be opened or a row is malformed; `series` is then empty, so
// half a file is never shown as the whole of it.
bool ReadDatafileSeries(const std::string& path, const ColumnSet& wanted, DatafileSeries& series,
                        DatafileError& error);

}  // namespace corvanet
