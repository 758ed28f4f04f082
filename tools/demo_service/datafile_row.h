#pragma once
// One bar of a composite datafile: the 68 columns in file order, and how they are written.
// Values are held already rounded to what the file shows (cents, whole counts and volumes), so
// the consistency between columns holds for the written text too.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvanet::demo {

// Moving-average lengths in column order: 200, 30, 18, 9, 4.
inline constexpr std::array<int, 5> kAverageLengths = {200, 30, 18, 9, 4};
inline constexpr int kColumnCount = 68;
inline constexpr int kFreeValueCount = 14;  // FV2 ... FV15

struct Row {
  char period = 'D';
  int date = 0;  // YYYYMMDD
  double open = 0, high = 0, low = 0, close = 0;
  double upper_channel = 0, pivot = 0, lower_channel = 0;
  std::int32_t up_trends = 0, new_up_trends = 0, down_trends = 0, new_down_trends = 0;
  double total_volume = 0;
  std::int32_t advances = 0, declines = 0;
  double up_volume = 0, down_volume = 0;
  std::int32_t new_highs = 0, new_lows = 0, traded = 0, unchanged = 0;
  std::array<double, 5> percent_above{};  // in kAverageLengths order
  std::array<std::int32_t, 5> above{}, below{}, equal{};
  std::int32_t q_new_highs = 0, q_new_lows = 0;
  std::int32_t new_highs_first_day = 0, new_lows_first_day = 0;
  std::int32_t q_new_highs_first_day = 0, q_new_lows_first_day = 0;
  double eq_open = 0, eq_high = 0, eq_low = 0, eq_close = 0;
  double trade_volume = 0;
  std::array<double, kFreeValueCount> free_values{};
};

// The header line (68 names, no line end).
const std::string& DatafileHeader();

// Rounds half away from zero. Much cheaper than the library's rounding, which matters at millions
// of rows; exact for the magnitudes held here.
inline std::int64_t RoundToWhole(double value) {
  return static_cast<std::int64_t>(value >= 0 ? value + 0.5 : value - 0.5);
}

// Rounds to cents, the precision of every non-integer column.
inline double Cents(double value) {
  return static_cast<double>(RoundToWhole(value * 100.0)) / 100.0;
}

// The text of a row: its 68 fields, comma-separated, without a line end. Numbers are written as
// the service writes them: no exponent, no trailing zeros, no "." for whole values. Formats into
// a buffer of its own, since a large data set has millions of rows.
class RowText {
 public:
  // Valid until the next call.
  std::string_view Format(const Row& row);

 private:
  void Integer(std::int64_t value);
  void Hundredths(double value);
  void Comma() { *end_++ = ','; }

  // 68 fields of at most 21 characters and a comma each.
  char buffer_[2048];
  char* end_ = buffer_;
};

}  // namespace corvanet::demo
