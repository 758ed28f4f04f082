#pragma once
// Datafiles for the statistic and price-file tests: a valid 68-column row where every numeric
// column holds its own column number (so a value in an output file tells which column it came
// from), with single columns overridden by name.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "core/stats/composite_row.h"
#include "support/test_support.h"

namespace corvanet::test {

class CompositeLine {
 public:
  // Period letter and date: RowDate YYYYMMDD and RowDateText MM/DD/YYYY of the same day.
  explicit CompositeLine(std::string period = "D", int date = 20121102) {
    for (int c = 1; c <= kCompositeColumnCount; ++c) fields_[c - 1] = std::to_string(c);
    fields_[0] = std::move(period);
    fields_[1] = std::to_string(date);
    const std::string digits = std::to_string(date);
    fields_[2] = digits.substr(4, 2) + "/" + digits.substr(6, 2) + "/" + digits.substr(0, 4);
  }
  // Sets a column by its catalogue name (or "RowDateText" for column 3).
  CompositeLine& Set(std::string_view column, std::string value) {
    const int c = column == "RowDateText" ? 3 : FindColumn(column);
    fields_[c - 1] = std::move(value);
    return *this;
  }
  CompositeLine& SetColumn(int column, std::string value) {
    fields_[column - 1] = std::move(value);
    return *this;
  }
  std::string Text() const {
    std::string text;
    for (const std::string& field : fields_) {
      if (!text.empty()) text += ',';
      text += field;
    }
    return text;
  }
  operator std::string() const { return Text(); }

 private:
  std::array<std::string, kCompositeColumnCount> fields_;
};

// The service's header line: its texts are never interpreted.
inline std::string CompositeHeader() {
  std::string header = "Per";
  for (int c = 2; c <= kCompositeColumnCount; ++c) header += ",Col" + std::to_string(c);
  return header;
}

// Header, then the rows, each line ended by CR LF.
inline void WriteDatafile(const std::string& path, const std::vector<std::string>& rows) {
  std::vector<std::string> lines{CompositeHeader()};
  lines.insert(lines.end(), rows.begin(), rows.end());
  WriteLines(path, lines);
}

}  // namespace corvanet::test
