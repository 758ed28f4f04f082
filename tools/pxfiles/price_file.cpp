#include "pxfiles/price_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "pxfiles/line_source.h"
#include "pxfiles/system_io.h"

namespace corvanet::pxfiles {

namespace {

constexpr std::size_t kColumns = 10;
// A price line is rarely shorter than this; used only to size the data file image up front.
constexpr std::size_t kShortestLine = 40;

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// Splits at commas into trimmed fields and returns their count; kColumns + 1 stands for more.
std::size_t SplitColumns(std::string_view line, std::array<std::string_view, kColumns>& fields) {
  std::size_t count = 0;
  for (;;) {
    if (count == kColumns) return kColumns + 1;
    const std::size_t comma = line.find(',');
    fields[count++] = Trim(line.substr(0, comma));
    if (comma == std::string_view::npos) return count;
    line.remove_prefix(comma + 1);
  }
}

bool ParseValue(std::string_view text, double& value) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const char* end = text.data() + text.size();
  const auto [stop, ec] = std::from_chars(text.data(), end, value);
  return !text.empty() && ec == std::errc() && stop == end && std::isfinite(value);
}

bool IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

// YYYYMMDD with a day the calendar has, in the years the CYYMMDD form holds as a float exactly.
bool ParseDate(std::string_view text, int& date) {
  if (text.size() != 8) return false;
  const auto [stop, ec] = std::from_chars(text.data(), text.data() + text.size(), date);
  if (ec != std::errc() || stop != text.data() + text.size()) return false;
  const int year = date / 10000;
  const int month = date / 100 % 100;
  const int day = date % 100;
  static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (year < 1900 || year > 2999 || month < 1 || month > 12 || day < 1) return false;
  const int days = kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
  return day <= days;
}

// Line by line, with the state the checks between lines need.
class Reader {
 public:
  explicit Reader(PriceFile& file) : file_(file) {}

  // A bar line; false with `error` (without the line number) when it is not one.
  bool Bar(std::string_view line, std::string& error) {
    std::array<std::string_view, kColumns> fields;
    const std::size_t count = SplitColumns(line, fields);
    if (count != kColumns) {
      error = count > kColumns
                  ? "more than " + std::to_string(kColumns) + " fields"
                  : "only " + std::to_string(count) + " of " + std::to_string(kColumns) + " fields";
      return false;
    }
    if (!Identity(fields, error)) return false;
    int date = 0;
    if (!ParseDate(fields[3], date)) {
      error = "date '" + std::string(fields[3]) + "' is not a real date (YYYYMMDD)";
      return false;
    }
    if (bars_ > 0 && date <= file_.last_date) {
      error = "date " + std::to_string(date) + " does not follow " +
              std::to_string(file_.last_date) + " (dates must rise)";
      return false;
    }
    BarValues values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (!ParseValue(fields[4 + i], values[i])) {
        error = "'" + std::string(fields[4 + i]) + "' is not a number";
        return false;
      }
    }
    if (bars_ == kMaxBars) {
      error = "more than " + std::to_string(kMaxBars) + " bars, more than a data file can hold";
      return false;
    }
    if (!file_.data.Add(date, values, error)) return false;
    if (bars_++ == 0) file_.first_date = date;
    file_.last_date = date;
    return true;
  }

  std::size_t bars() const { return bars_; }

 private:
  // The ticker and period letter of every line are those of the first.
  bool Identity(const std::array<std::string_view, kColumns>& fields, std::string& error) {
    const std::string_view symbol = fields[0];
    const std::string_view period = fields[2];
    if (bars_ == 0) {
      if (symbol.empty()) {
        error = "the ticker is empty";
        return false;
      }
      if (period.size() != 1 || std::string_view("DWM").find(period[0]) == std::string_view::npos) {
        error = "period '" + std::string(period) + "' is not D, W or M";
        return false;
      }
      file_.symbol = symbol;
      file_.name = fields[1];
      file_.period = period[0];
      return true;
    }
    if (symbol != file_.symbol) {
      error = "ticker '" + std::string(symbol) + "' differs from '" + file_.symbol + "'";
      return false;
    }
    if (period.size() != 1 || period[0] != file_.period) {
      error = "period '" + std::string(period) + "' differs from '" + file_.period + "'";
      return false;
    }
    return true;
  }

  PriceFile& file_;
  std::size_t bars_ = 0;
};

}  // namespace

bool ReadPriceFile(const std::string& path, PriceFile& file, std::string& error) {
  LineSource source;
  if (!source.Open(path, error)) return false;
  if (const std::optional<std::uint64_t> size = system::RegularFileSize(path)) {
    file.data.Reserve(std::min(kMaxBars, static_cast<std::size_t>(*size) / kShortestLine));
  }
  Reader reader(file);
  std::string_view line;
  std::size_t number = 0;
  bool any_line = false;
  for (;;) {
    const LineSource::Result result = source.Next(line, error);
    if (result == LineSource::Result::kEnd) break;
    ++number;
    if (result == LineSource::Result::kError) {
      error = "line " + std::to_string(number) + ": " + error;
      return false;
    }
    any_line = true;
    // Blank lines (an editor's last line) carry nothing; the header starts with "<ticker>".
    if (Trim(line).empty()) continue;
    if (number == 1 && Trim(line).front() == '<') continue;
    if (!reader.Bar(line, error)) {
      error = "line " + std::to_string(number) + ": " + error;
      return false;
    }
  }
  if (reader.bars() == 0) {
    error = any_line ? "holds no bars" : "is empty";
    return false;
  }
  return true;
}

}  // namespace corvanet::pxfiles
