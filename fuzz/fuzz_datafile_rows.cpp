// A composite datafile read row by row into the record, every column converted.
#include "core/stats/composite_row.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  CompositeFile file;
  if (!file.Open(fuzz::WriteInput("datafile.csv", data, size)) || !ReadCompositeHeader(file)) {
    return 0;
  }
  CompositeRow row;
  while (ReadCompositeRow(file, row, AllColumns())) {
    for (int column = 1; column <= kCompositeColumnCount; ++column) {
      double value = 0;
      GetStatisticValue(row, ColumnName(column)).ToDouble(value);
    }
  }
  return 0;
}
