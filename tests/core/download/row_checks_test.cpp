// The merge's row checks, which look at sixteen or eight bytes at a time, against the plain
// byte-by-byte reading of the same rule: every byte value at every place of a row long enough for
// each way of looking (16 + 8 + 3 bytes), next to every neighbour that could carry into it.
#include <gtest/gtest.h>

#include <string>

#include "core/download/row_checks.h"

namespace corvanet {
namespace {

bool PlainControl(std::string_view row) {
  for (const char c : row) {
    const auto u = static_cast<unsigned char>(c);
    if ((u < 0x20 && c != '\t') || u == 0x7f) return true;
  }
  return false;
}

std::size_t PlainCommas(std::string_view row) {
  std::size_t commas = 0;
  bool quoted = false;
  for (const char c : row) {
    if (c == '"') quoted = !quoted;
    if (c == ',' && !quoted) ++commas;
  }
  return commas;
}

TEST(RowChecks, AgreeWithTheByteByByteRuleForEveryByteAndNeighbour) {
  // Neighbours that make a byte-wise subtraction or addition borrow or carry.
  const char neighbours[] = {'\0', '\x01', '\x1f', ' ', ',', '\x7f', '\x80', '\xff', 'D'};
  for (int value = 0; value < 256; ++value) {
    for (const char neighbour : neighbours) {
      for (std::size_t place = 0; place < 27; ++place) {
        std::string row(27, neighbour == ',' ? 'x' : neighbour);
        row[place] = static_cast<char>(value);
        if (place + 1 < row.size()) row[place + 1] = neighbour;
        SCOPED_TRACE(testing::Message() << "byte " << value << " at " << place << " beside "
                                        << static_cast<int>(neighbour));
        ASSERT_EQ(HoldsControlCharacter(row), PlainControl(row));
        const RowShape shape = ShapeOf(row);
        ASSERT_EQ(shape.control, PlainControl(row));
        ASSERT_EQ(shape.field_commas, PlainCommas(row));
      }
    }
  }
}

TEST(RowChecks, QuotedCommasDoNotSeparateFields) {
  const struct {
    std::string row;
    std::size_t commas;
  } rows[] = {
      {"D,20240102,01/02/2024,1,2,3", 5},
      {"Period,\"Date, as text\",Close", 2},
      {"\"a,b,c,d,e,f,g,h,i\",1", 1},
      {"", 0},
      {",,,,,,,,,,,,,,,,", 16},
      // More commas than one byte lane of sixteen-byte steps can count.
      {std::string(16 * 300 + 5, ','), 16 * 300 + 5},
  };
  for (const auto& [row, commas] : rows) {
    EXPECT_EQ(CountFieldCommas(row), commas) << row;
    EXPECT_EQ(ShapeOf(row).field_commas, commas) << row;
  }
}

// The date rules at the calendar's edges: the day after the last of a month, of a leap February
// and of a year is "tomorrow", and a row on it passes while the day after does not.
TEST(RowChecks, DatesAreCalendarDaysNoLaterThanTomorrow) {
  const struct {
    LocalDateTime today;
    const char* tomorrow;
  } days[] = {{{.year = 2024, .month = 2, .day = 28}, "20240229"},
              {{.year = 2025, .month = 2, .day = 28}, "20250301"},
              {{.year = 2025, .month = 12, .day = 31}, "20260101"}};
  for (const auto& d : days) {
    SCOPED_TRACE(d.tomorrow);
    const std::string latest = LatestRowDate(d.today);
    EXPECT_EQ(latest, d.tomorrow);
    EXPECT_EQ(CheckRow(std::string("D,") + d.tomorrow + ",x", 2, "", latest), RowFault::kNone);
  }
  const struct {
    const char* row;
    const char* previous;
    RowFault fault;
  } rows[] = {
      {"D,20240229,x", "20240228", RowFault::kNone},  {"D,20250229,x", "", RowFault::kDate},
      {"D,20241301,x", "", RowFault::kDate},          {"D,2024-1-1,x", "", RowFault::kDate},
      {"D,20240301,x", "20240301", RowFault::kOrder}, {"D,20260102,x", "", RowFault::kFuture},
      {"D,20240301", "", RowFault::kFields},          {"", "", RowFault::kBlank},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.row);
    EXPECT_EQ(CheckRow(r.row, 2, r.previous, "20260101"), r.fault);
  }
}

}  // namespace
}  // namespace corvanet
