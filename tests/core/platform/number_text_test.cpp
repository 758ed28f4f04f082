#include <gtest/gtest.h>

#include <limits>

#include "core/platform/text.h"

namespace corvanet {
namespace {

// Sign or blank, digits and point; fifteen significant digits rounded once (the form follows the
// rounded value, which can carry into a new power of ten); the exponent form for huge and tiny
// magnitudes.
TEST(NumberTextTest, SignBlankFifteenDigitsAndExponentForm) {
  const struct {
    double value;
    const char* text;
  } cases[] = {
      {-0.0, " 0"},  // a negative zero is still zero: no minus sign
      {-.5, "-.5"},
      {100, " 100"},  // trailing zeros of the whole part stay
      {0.1 + 0.2, " .3"},
      {-2.0 / 3, "-.666666666666667"},
      {12345.678901234567, " 12345.6789012346"},
      {999999999999999.9, " 1E+15"},  // rounding carries into a new power of ten
      {0.00009999999999999999, " .0001"},
      {-1.5E-05, "-1.5E-05"},
      {123456789012345678.0, " 1.23456789012346E+17"},
      {std::numeric_limits<double>::denorm_min(), " 4.94065645841247E-324"},
  };
  for (const auto& c : cases) EXPECT_EQ(NumberText(c.value), c.text) << c.value;
}

TEST(LeadingNumberTest, TakesTheNumberATextBeginsWith) {
  EXPECT_DOUBLE_EQ(LeadingNumber("2.5x"), 2.5);
  EXPECT_DOUBLE_EQ(LeadingNumber("1999.09 left"), 1999.09);
  EXPECT_DOUBLE_EQ(LeadingNumber(" -1"), -1);
  EXPECT_DOUBLE_EQ(LeadingNumber("1e3"), 1000);
  EXPECT_DOUBLE_EQ(LeadingNumber("1e"), 1);  // an exponent without digits is not taken
  EXPECT_DOUBLE_EQ(LeadingNumber(".5"), .5);
  EXPECT_DOUBLE_EQ(LeadingNumber("+7 apples"), 7);
  for (const char* none : {"abc", "", ".", "-", " ", "e5"}) {
    EXPECT_EQ(LeadingNumber(none), 0) << '"' << none << '"';
  }
}

TEST(ParseTextTest, WholeTextMustBeTheNumber) {
  int whole = 0;
  EXPECT_TRUE(ParseInteger(" 1", whole));
  EXPECT_EQ(whole, 1);
  EXPECT_TRUE(ParseInteger("-2", whole));
  EXPECT_EQ(whole, -2);
  for (const char* bad : {"", "+", "1.0", "1x", "99999999999"}) {
    EXPECT_FALSE(ParseInteger(bad, whole)) << bad;
  }
  double number = 0;
  EXPECT_TRUE(ParseNumber(" 2.5 ", number));
  EXPECT_DOUBLE_EQ(number, 2.5);
  EXPECT_FALSE(ParseNumber("2.5x", number));
  EXPECT_FALSE(ParseNumber("", number));
}

}  // namespace
}  // namespace corvanet
