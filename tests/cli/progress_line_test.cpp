// The text of the progress line `run` and `stats` draw on a terminal.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/progress_line.h"

namespace corvanet::test {
namespace {

using cli::ProgressLine;

TEST(ProgressLineTextTest, ShowsRateAndTimeLeftOnlyOnceTheyMeanSomething) {
  struct Case {
    int in_hand;
    int total;
    std::string symbol;
    double elapsed;
    std::string text;
  };
  const std::vector<Case> cases = {
      {1, 340, "$NYA", 0.0, "Datafile 1 of 340  $NYA Daily"},
      {5, 340, "$NYA", 0.5, "Datafile 5 of 340  $NYA Daily"},   // under a second
      {1, 340, "$NYA", 30.0, "Datafile 1 of 340  $NYA Daily"},  // nothing done yet
      {11, 340, "$SOX", 4.0, "Datafile 11 of 340  $SOX Daily  2.5/s  2:12 left"},
      {340, 340, "$SOX", 10.0, "Datafile 340 of 340  $SOX Daily  33.9/s  0:00 left"},
      {3001, 9000, "XLK", 100.0, "Datafile 3001 of 9000  XLK Daily  30.0/s  3:20 left"},
      {2, 20000, "XLK", 2.0, "Datafile 2 of 20000  XLK Daily  0.5/s  11:06:38 left"},
      {7, 0, "", 3.0, "Datafile 7  2.0/s"},  // total and datafile unknown
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ProgressLine::Compose(c.in_hand, c.total, c.symbol, "Daily", c.elapsed), c.text);
  }
}

}  // namespace
}  // namespace corvanet::test
