#include "core/indicators/datafile_series.h"

namespace corvanet {

namespace {
constexpr int kDateColumn = 2;
constexpr int kDateTextColumn = 3;
constexpr int kFirstLooseColumn = kCompositeColumnCount - kLooseColumnCount + 1;
}  // namespace

std::span<const double> DatafileSeries::Column(int column) const {
  if (column < 1 || column > kCompositeColumnCount) return {};
  return columns[static_cast<std::size_t>(column - 1)];
}

ColumnSet NumericColumns() {
  ColumnSet set;
  for (int c = 4; c < kFirstLooseColumn; ++c) set.set(static_cast<std::size_t>(c - 1));
  return set;
}

bool ReadDatafileSeries(const std::string& path, const ColumnSet& wanted, DatafileSeries& series,
                        DatafileError& error) {
  series = {};
  const ColumnSet columns = wanted & NumericColumns();
  ColumnSet read = columns;
  read.set(kDateColumn - 1);
  read.reset(kDateTextColumn - 1);

  CompositeFile file;
  CloseOnReturn closing{file};
  CompositeRow row;
  if (!file.Open(path) || !ReadCompositeHeader(file)) {
    error = file.error();
    // A file of no lines holds no bars; that is not a fault of the file.
    if (error.number == kErrorInputPastEnd) error = {};
    return !error.has_error();
  }
  while (ReadCompositeRow(file, row, read)) {
    series.dates.push_back(row.RowDate);
    for (int c = 4; c < kFirstLooseColumn; ++c) {
      const auto i = static_cast<std::size_t>(c - 1);
      if (!columns.test(i)) continue;
      const std::int32_t* whole = IntegerField(row, c);
      series.columns[i].push_back(whole != nullptr ? *whole : *DoubleField(row, c));
    }
  }
  error = file.error();
  if (!error.has_error()) return true;
  series = {};
  return false;
}

}  // namespace corvanet
