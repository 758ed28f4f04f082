#include "support/datafile_validator.h"

#include <array>
#include <fstream>

#include "core/platform/field_reader.h"
#include "core/platform/text.h"

namespace corvanet::test {

namespace {

constexpr int kColumns = 68;
constexpr std::size_t kMaxProblems = 50;

// Columns (0-based) by meaning.
enum Column : int {
  kPeriod = 0,
  kDate,
  kDateText,
  kOpen,
  kHigh,
  kLow,
  kClose,
  kUpperChannel,
  kPivot,
  kLowerChannel,
  kUpTrends,
  kNewUpTrends,
  kDownTrends,
  kNewDownTrends,
  kTotalVolume,
  kAdvances,
  kDeclines,
  kUpVolume,
  kDownVolume,
  kNewHighs,
  kNewLows,
  kTraded,
  kUnchanged,
  kPercentAbove200,
  kAbove200 = 28,
  kQNewHighs = 43,
  kQNewLows,
  kNewHighsFirstDay,
  kNewLowsFirstDay,
  kQNewHighsFirstDay,
  kQNewLowsFirstDay,
  kEqOpen,
  kEqHigh,
  kEqLow,
  kEqClose,
  kTradeVolume,
  kFirstFreeValue
};

bool IsIntegerColumn(int c) {
  return c == kDate || (c >= kUpTrends && c <= kNewDownTrends) || c == kAdvances ||
         c == kDeclines || (c >= kNewHighs && c <= kUnchanged) ||
         (c >= kAbove200 && c <= kQNewLowsFirstDay);
}

bool IsNumberColumn(int c) {
  return c >= kOpen && c < kFirstFreeValue && c != kDateText;
}

bool IsValidWeekday(int date) {
  const int y = date / 10000, m = date / 100 % 100, d = date % 100;
  if (m < 1 || m > 12 || d < 1) return false;
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
  if (d > kDays[m - 1] + (m == 2 && leap ? 1 : 0)) return false;
  // Zeller's congruence: 0 = Saturday, 1 = Sunday.
  const int mm = m < 3 ? m + 12 : m, yy = m < 3 ? y - 1 : y;
  const int h =
      (d + 13 * (mm + 1) / 5 + yy % 100 + yy % 100 / 4 + yy / 100 / 4 + 5 * (yy / 100)) % 7;
  return h >= 2;
}

std::string Text(double value) {
  return TrimmedNumberText(value);
}

class RowCheck {
 public:
  explicit RowCheck(std::string_view row) : fields_(SplitFields(row)) {}

  std::vector<std::string> Run() {
    if (fields_.size() != kColumns) {
      Problem("has " + std::to_string(fields_.size()) + " fields, not 68");
      return problems_;
    }
    if (!Types()) return problems_;
    Dates();
    Prices(kOpen, kHigh, kLow, kClose, "");
    Prices(kEqOpen, kEqHigh, kEqLow, kEqClose, "EqWt ");
    return problems_;
  }

 private:
  void Problem(std::string text) { problems_.push_back(std::move(text)); }
  double V(int c) const { return values_[static_cast<std::size_t>(c)]; }

  bool Types() {
    const std::string& period = fields_[kPeriod];
    if (period != "D" && period != "W" && period != "M" && period != "Q") {
      Problem("period '" + period + "' is not D, W, M or Q");
    }
    for (int c = kDate; c < kFirstFreeValue; ++c) {
      if (c == kDateText) continue;
      const std::string& field = fields_[static_cast<std::size_t>(c)];
      double value = 0;
      int whole = 0;
      if (IsIntegerColumn(c) ? !ParseInteger(field, whole) : !ParseNumber(field, value)) {
        Problem("column " + std::to_string(c + 1) + " '" + field + "' is not " +
                (IsIntegerColumn(c) ? "a 32-bit integer" : "a number"));
        continue;
      }
      values_[static_cast<std::size_t>(c)] = IsIntegerColumn(c) ? whole : value;
      if (IsNumberColumn(c) && values_[static_cast<std::size_t>(c)] < 0) {
        Problem("column " + std::to_string(c + 1) + " is negative");
      }
    }
    return problems_.empty();
  }

  void Dates() {
    const std::string& date = fields_[kDate];
    if (date.size() != 8 || !IsValidWeekday(static_cast<int>(V(kDate)))) {
      Problem("date " + date + " is not a weekday's YYYYMMDD");
      return;
    }
    const std::string text = date.substr(4, 2) + "/" + date.substr(6, 2) + "/" + date.substr(0, 4);
    if (fields_[kDateText] != text) {
      Problem("date text " + fields_[kDateText] + " does not match " + date);
    }
  }

  void Prices(int open, int high, int low, int close, const std::string& name) {
    if (V(high) < std::max(V(open), V(close))) {
      Problem(name + "high " + Text(V(high)) + " is below the open or close");
    }
    if (V(low) > std::min(V(open), V(close))) {
      Problem(name + "low " + Text(V(low)) + " is above the open or close");
    }
    if (V(low) <= 0) Problem(name + "low " + Text(V(low)) + " is not above 0");
  }

  std::vector<std::string> fields_;
  std::array<double, kColumns> values_{};
  std::vector<std::string> problems_;
};

}  // namespace

std::vector<std::string> ValidateRow(std::string_view row) {
  return RowCheck(row).Run();
}

std::vector<std::string> ValidateDatafile(const std::string& path) {
  std::vector<std::string> problems;
  std::ifstream in(path, std::ios::binary);
  if (!in) return {"cannot open " + path};
  std::string line;
  int number = 0;
  std::string period, last_date;
  auto add = [&](const std::string& text) {
    if (problems.size() < kMaxProblems)
      problems.push_back("line " + std::to_string(number) + ": " + text);
  };
  while (std::getline(in, line)) {
    ++number;
    if (line.empty() || line.back() != '\r') {
      add("does not end with CR LF");
    } else {
      line.pop_back();
    }
    if (number == 1) {
      if (SplitFields(line).size() != kColumns) add("the header does not hold 68 fields");
      continue;
    }
    for (const std::string& problem : ValidateRow(line)) add(problem);
    const std::vector<std::string> fields = SplitFields(line);
    if (fields.size() < 2) continue;
    if (period.empty()) period = fields[0];
    if (fields[0] != period) add("period " + fields[0] + " after rows of period " + period);
    if (!last_date.empty() && fields[1] <= last_date) {
      add("date " + fields[1] + " does not follow " + last_date);
    }
    last_date = fields[1];
  }
  if (number == 0) add("the file is empty");
  return problems;
}

}  // namespace corvanet::test
