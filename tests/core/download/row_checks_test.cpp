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

}  // namespace
}  // namespace corvanet
