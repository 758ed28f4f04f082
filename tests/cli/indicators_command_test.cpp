// corvanet-cli indicators over datafiles a real run fetched from the demo service.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

using Lines = std::vector<std::string>;

Lines SplitLines(const std::string& text) {
  Lines lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

Lines Fields(const std::string& line) {
  Lines fields;
  std::istringstream in(line);
  for (std::string field; std::getline(in, field, ',');) fields.push_back(field);
  if (!line.empty() && line.back() == ',') fields.emplace_back();
  return fields;
}

class IndicatorsCommandTest : public DailyListRunTest {
 protected:
  // The datafile's rows, header left out.
  Lines Rows(const std::string& relative) {
    Lines rows = ReadLines(data(relative));
    rows.erase(rows.begin());
    return rows;
  }
};

TEST_F(IndicatorsCommandTest, OneRowPerBarWithTheDatafilesDates) {
  const CliResult all = RunIn({"indicators", "$NYA"});
  ASSERT_EQ(all.code, 0) << all.err;
  const Lines table = SplitLines(all.out);
  const Lines rows = Rows("Daily/$NYA.csv");
  ASSERT_GT(rows.size(), 200u);
  ASSERT_EQ(table.size(), rows.size() + 1);
  // The dates are the datafile's; the values are the indicator tests' business.
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ASSERT_EQ(Fields(table[i + 1]).size(), 16u) << table[i + 1];
    ASSERT_EQ(Fields(table[i + 1])[0], Fields(rows[i])[1]);
  }

  // A range: the same values as the whole table.
  const std::string from = Fields(table[table.size() - 5])[0];
  const CliResult range =
      RunIn({"indicators", "$NYA", "--only", "TRIN,ADLine", "--from", from, "--last", "2"});
  ASSERT_EQ(range.code, 0) << range.err;
  const Lines tail = SplitLines(range.out);
  ASSERT_EQ(tail.size(), 3u);
  EXPECT_EQ(tail[0], "Date,TRIN,ADLine");
  const Lines last = Fields(table.back());
  EXPECT_EQ(tail[2], last[0] + "," + last[15] + "," + last[2]);
}

TEST_F(IndicatorsCommandTest, ClearErrorsChangeNothing) {
  const struct Case {
    Lines args;
    int code;
    std::string says;
  } cases[] = {
      {{"indicators", "$NOPE"}, 4, "there is no Daily datafile of $NOPE"},
      {{"indicators", "$NYA", "--period", "W"}, 4, "there is no Weekly datafile of $NYA"},
      {{"indicators", "../$NYA"}, 4, "no Daily datafile"},
      {{"indicators", "$NYA", "--period", "X"}, 2, "expected D, W, M or Q"},
      {{"indicators", "$NYA", "--from", "2024-13-01"}, 2, "expected YYYY-MM-DD"},
      {{"indicators", "$NYA", "--only", "ADLine,Bogus"}, 2, "no indicator is named \"Bogus\""},
      {{"indicators", "$NYA", "--last", "0"}, 2, "--last"},
      {{"indicators"}, 2, "SYMBOL"},
  };
  const auto before = Snapshot("Daily");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.args.back());
    const CliResult result = RunIn(c.args);
    EXPECT_EQ(result.code, c.code);
    EXPECT_TRUE(Contains(result.err, c.says)) << result.err;
    EXPECT_FALSE(Contains(result.out, "Date,"));
  }
  EXPECT_EQ(Snapshot("Daily"), before);
}

}  // namespace
}  // namespace corvanet::test
