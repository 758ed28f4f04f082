#pragma once
// The checks the merge makes on every row it copies: hundreds of thousands per run, so they look
// at eight bytes at a time.
#include <cstddef>
#include <string>
#include <string_view>

#include "core/platform/clock.h"

namespace corvanet {

// The commas that separate fields: a quoted text field may hold commas of its own (a header name,
// say), and those must not make a row look garbled.
std::size_t CountFieldCommas(std::string_view row);

// A row the datafile must not take: one holding a NUL or another control character (a tab aside).
bool HoldsControlCharacter(std::string_view row);

// Both of the above from one pass over the row.
struct RowShape {
  std::size_t field_commas = 0;
  bool control = false;
};
RowShape ShapeOf(std::string_view row);

// Why a row of the service cannot stand in a datafile. A row is checked as a datafile would read
// it: its shape, then its date (characters 3-10), which must name a day, come after the row
// before it and be no later than tomorrow: the service publishes a bar once its day has begun
// somewhere, never days ahead, and a date from the future would block every later merge.
enum class RowFault { kNone, kBlank, kControl, kFields, kDate, kFuture, kOrder };

// The checks above of one row, whose shape is known, in a file whose rows have `field_commas`
// commas. `previous_date` is the date of the row before it (empty for the first), `latest_date`
// the latest date a row may carry (LatestRowDate).
RowFault CheckRow(std::string_view row, const RowShape& shape, std::size_t field_commas,
                  std::string_view previous_date, std::string_view latest_date);
inline RowFault CheckRow(std::string_view row, std::size_t field_commas,
                         std::string_view previous_date, std::string_view latest_date) {
  return CheckRow(row, ShapeOf(row), field_commas, previous_date, latest_date);
}
// What was wrong with a row, for the run summary: "the row has 60 fields, not 68".
std::string DescribeRowFault(RowFault fault, std::string_view row, std::size_t field_commas);

// Whether eight characters are a YYYYMMDD date of the calendar.
bool IsCalendarDate(std::string_view date);
// The YYYYMMDD date of the day after `today`.
std::string LatestRowDate(const LocalDateTime& today);

}  // namespace corvanet
