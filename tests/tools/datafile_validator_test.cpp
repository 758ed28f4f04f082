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

TEST_F(DatafileValidator, FlagsEachBrokenRule) {
  const std::vector<std::string> fields = SplitFields(row);
  const struct {
    int column;
    std::string value;
    std::string problem;
  } cases[] = {
      {1, "X", "period 'X'"},         {2, "20240106", "not a weekday"},  // a Saturday
      {3, "01/02/1999", "date text"}, {5, "0.5", "high"},                // below open and close
      {6, "999999", "low"},                                              // above open and close
      {11, "1.5", "32-bit integer"},
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

}  // namespace
}  // namespace corvanet::test
