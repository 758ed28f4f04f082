#include "support/datafile_validator.h"

#include <fstream>

#include "core/download/row_checks.h"
#include "core/platform/field_reader.h"
#include "core/platform/text.h"

namespace corvanet::test {

namespace {

constexpr std::size_t kColumns = 68;
constexpr std::size_t kMaxProblems = 50;
constexpr std::size_t kDateText = 2;     // 0-based: the date as MM/DD/YYYY
constexpr std::size_t kFreeValues = 54;  // the loose columns after the statistics

// The problems of one row without its line end; `previous` is the last row's date.
std::vector<std::string> RowProblems(const std::vector<std::string>& fields,
                                     const std::string& period, const std::string& previous) {
  if (fields.size() != kColumns) return {"has " + std::to_string(fields.size()) + " fields"};
  std::vector<std::string> problems;
  if (fields[0] != period) problems.push_back("period '" + fields[0] + "', not " + period);
  if (!IsCalendarDate(fields[1]) || fields[1] <= previous) {
    problems.push_back("date " + fields[1] + " does not follow " + previous);
  }
  for (std::size_t c = 3; c < kFreeValues; ++c) {
    double value = 0;
    if (c != kDateText && !ParseNumber(fields[c], value)) {
      problems.push_back("column " + std::to_string(c + 1) + " '" + fields[c] + "' is no number");
    }
  }
  return problems;
}

}  // namespace

std::vector<std::string> ValidateDatafile(const std::string& path) {
  std::vector<std::string> problems;
  std::ifstream in(path, std::ios::binary);
  if (!in) return {"cannot open " + path};
  std::string line;
  std::string period;
  std::string previous;
  int number = 0;
  const auto add = [&](const std::string& text) {
    if (problems.size() < kMaxProblems) {
      problems.push_back("line " + std::to_string(number) + ": " + text);
    }
  };
  while (std::getline(in, line)) {
    ++number;
    if (line.empty() || line.back() != '\r') add("does not end with CR LF");
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::vector<std::string> fields = SplitFields(line);
    if (number == 1) {
      if (fields.size() != kColumns) add("the header does not hold 68 fields");
      continue;
    }
    if (period.empty()) period = fields[0];
    for (const std::string& problem : RowProblems(fields, period, previous)) add(problem);
    if (fields.size() > 1) previous = fields[1];
  }
  if (number == 0) add("the file is empty");
  return problems;
}

}  // namespace corvanet::test
