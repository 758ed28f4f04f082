// The datafile validator catches each kind of broken row and file, so tests that rely on it are
// not passing by accident.
#include "support/datafile_validator.h"

#include <gtest/gtest.h>

#include "core/platform/field_reader.h"
#include "support/demo_service.h"

namespace corvanet::test {
namespace {

class DatafileValidator : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto lines = ReadLines(service.data_set_folder("data") + "NYSEDaily-CompositeStats.csv");
    header = lines[0];
    row = lines[1];
    next_row = lines[2];
  }

  // The sound row with column `column` (1-based) replaced.
  std::string With(int column, const std::string& value) const {
    std::vector<std::string> fields = SplitFields(row);
    fields[static_cast<std::size_t>(column - 1)] = value;
    std::string text;
    for (const std::string& field : fields) text += (text.empty() ? "" : ",") + field;
    return text;
  }

  DemoService service{DemoServiceOptions{.composites = 1, .years = 1, .start = false}};
  std::string header, row, next_row;
};

TEST_F(DatafileValidator, AcceptsAGeneratedRow) {
  EXPECT_TRUE(ValidateRow(row).empty());
}

TEST_F(DatafileValidator, FlagsEachBrokenRule) {
  const std::vector<std::string> fields = SplitFields(row);
  const struct {
    int column;
    std::string value;
    std::string problem;
  } cases[] = {
      {1, "X", "period 'X'"},
      {2, "20240106", "not a weekday"},  // a Saturday
      {3, "01/02/1999", "date text"},
      {5, "0.5", "high"},    // below open and close
      {6, "999999", "low"},  // above open and close
      {11, "1.5", "32-bit integer"},
      {16, "0", "advances + declines + unchanged"},
      {18, "1e15", "up volume + down volume"},
      {24, "12.34", "percent above"},
      {30, "0", "above + below + equal"},
      {20, "100000", "new highs + new lows"},
      {46, "100000", "first-day new highs"},
  };
  for (const auto& c : cases) {
    const std::vector<std::string> problems = ValidateRow(With(c.column, c.value));
    ASSERT_FALSE(problems.empty()) << "column " << c.column << " = " << c.value;
    bool named = false;
    for (const std::string& p : problems) named = named || p.find(c.problem) != std::string::npos;
    EXPECT_TRUE(named) << "column " << c.column << ": " << problems.front();
  }
  EXPECT_FALSE(ValidateRow(row + ",extra").empty());
}

TEST_F(DatafileValidator, ChecksLineEndsPeriodsAndDateOrder) {
  TempDir dir;
  WriteLines(dir / "good.csv", {header, row, next_row});
  EXPECT_TRUE(ValidateDatafile(dir / "good.csv").empty());

  WriteFile(dir / "lf.csv", header + "\r\n" + row + "\n");
  EXPECT_EQ(ValidateDatafile(dir / "lf.csv"),
            std::vector<std::string>{"line 2: does not end with CR LF"});

  WriteLines(dir / "order.csv", {header, next_row, row});
  ASSERT_EQ(ValidateDatafile(dir / "order.csv").size(), 1u);
  EXPECT_NE(ValidateDatafile(dir / "order.csv")[0].find("does not follow"), std::string::npos);

  WriteLines(dir / "mixed.csv", {header, row, "W" + next_row.substr(1)});
  EXPECT_NE(ValidateDatafile(dir / "mixed.csv")[0].find("period W after rows of period D"),
            std::string::npos);

  WriteLines(dir / "header.csv", {"Period,Date", row});
  EXPECT_NE(ValidateDatafile(dir / "header.csv")[0].find("header"), std::string::npos);
}

}  // namespace
}  // namespace corvanet::test
