// What the service sends is checked row by row before a datafile takes it: a bad update row costs
// the datafile none of its rows, a bad whole file is refused and named with its line, and a whole
// file that ends earlier (a bar withdrawn) replaces the datafile only after keeping it.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

std::string Date(const std::string& row) {
  return row.size() >= 10 ? row.substr(2, 8) : "";
}

class ServiceRowsTest : public ListTwoRunTest {
 protected:
  static constexpr std::size_t kRowStart = 16;  // after the symbol's 15 characters and a blank
  std::string NyaFile() const { return ServiceFile("NYSEDaily-CompositeStats.csv"); }
  // The update file's lines, and the index of NYSE's line holding `row`.
  static std::size_t LineOf(const std::vector<std::string>& lines, const std::string& row) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (lines[i].starts_with("NYSE ") && lines[i].substr(kRowStart) == row) return i;
    }
    ADD_FAILURE() << "no update line for " << row;
    return 0;
  }
};

// Each fault of NYSE's newest update row, the row of the datafile's last bar: the datafile keeps
// that row (and every other), the run names the line and why, exits 3, and the next good run
// merges as if nothing had happened (no merge index entry was sealed on the bad rows).
TEST_F(ServiceRowsTest, ABadUpdateRowCostsTheDatafileNoRow) {
  const std::string update_file = ServiceFile("Update-Daily.csv");
  const std::vector<std::string> good = ReadLines(update_file);
  const std::string datafile = ReadFile(data("Daily/$NYA.csv"));
  const std::vector<std::string> rows = ReadLines(data("Daily/$NYA.csv"));
  const std::string& last = rows.back();
  const std::size_t at = LineOf(good, last);
  const std::size_t before = LineOf(good, rows[rows.size() - 2]);
  const auto with_date = [](std::string line, const std::string& date) {
    return line.replace(kRowStart + 2, 8, date);
  };
  const struct {
    const char* what;
    std::function<void(std::vector<std::string>&)> edit;
    std::size_t line;  // from 0
    std::string why;
  } cases[] = {
      {"its last field cut off", [&](auto& l) { l[at].erase(l[at].rfind(',')); }, at,
       "the row has 67 fields, not 68"},
      {"a NUL", [&](auto& l) { l[at][kRowStart + 40] = '\0'; }, at,
       "the row holds a control character"},
      {"a date that is no date", [&](auto& l) { l[at] = with_date(l[at], "20251340"); }, at,
       "the row's date \"20251340\" is no date"},
      {"a blank row", [&](auto& l) { l[at] = "NYSE"; }, at, "the row is blank"},
      {"a date from the future", [&](auto& l) { l[at] = with_date(l[at], "20991231"); }, at,
       "the row is dated 20991231, after tomorrow"},
      {"two rows swapped", [&](auto& l) { std::swap(l[at], l[before]); }, at,
       "the row is dated " + Date(rows[rows.size() - 2]) + ", not after the row before it"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<std::string> lines = good;
    c.edit(lines);
    WriteLines(update_file, lines);
    const CliResult run = RunIn({"--log", "run", "2"});
    EXPECT_EQ(run.code, 3) << run.out;
    EXPECT_TRUE(Contains(run.out, "Datafiles failed: 0")) << run.out;
    EXPECT_TRUE(Contains(run.out, "Rows left out: 1\n  $NYA Daily: Update-Daily.csv line " +
                                      std::to_string(c.line + 1) + ": " + c.why + "\n"))
        << run.out;
    EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), datafile);

    WriteLines(update_file, good);
    EXPECT_EQ(RunList(2).code, 0);
    EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), datafile);
  }
  // With a newer bar behind the bad row the datafile waits for it rather than take it over a gap.
  service.Advance(1);
  std::vector<std::string> lines = ReadLines(update_file);
  lines[LineOf(lines, last)].erase(lines[LineOf(lines, last)].rfind(','));
  WriteLines(update_file, lines);
  EXPECT_EQ(RunIn({"run", "2"}).code, 3);
  EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), datafile);
  EXPECT_EQ(ValidateDatafile(data("Daily/$SOX.csv")), std::vector<std::string>{});
}

// A whole file with one bad row is refused whole, named with the line that made it so, and the
// datafile stays as it stood.
TEST_F(ServiceRowsTest, AWholeFileWithABadRowIsRefusedAndNamed) {
  service.Advance(7);  // more than the update file holds: the whole file is needed
  const std::vector<std::string> whole = ReadLines(NyaFile());
  const std::string datafile = ReadFile(data("Daily/$NYA.csv"));
  const auto fields = [](const std::string& line, int count) {
    std::size_t end = 0;
    for (int i = 0; i < count; ++i) end = line.find(',', end + 1);
    return line.substr(0, end);
  };
  const struct {
    const char* what;
    std::function<void(std::vector<std::string>&)> edit;
    std::string reason;
  } cases[] = {
      {"row 200 from the future", [](auto& l) { l[200].replace(2, 8, "20991231"); },
       "NYSEDaily-CompositeStats.csv line 201: the row is dated 20991231, after tomorrow"},
      {"two rows swapped", [](auto& l) { std::swap(l[200], l[201]); },
       "NYSEDaily-CompositeStats.csv line 202: the row is dated " + Date(whole[200]) +
           ", not after the row before it"},
      {"a row of 60 fields", [&](auto& l) { l[300] = fields(l[300], 60); },
       "NYSEDaily-CompositeStats.csv line 301: the row has 60 fields, not 68"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<std::string> lines = whole;
    c.edit(lines);
    WriteLines(NyaFile(), lines);
    const CliResult run = RunList(2);
    EXPECT_EQ(run.code, 3);
    EXPECT_TRUE(Contains(run.out, "Datafiles failed: 1\n  $NYA Daily: " + c.reason +
                                      "; the service's file is refused\n"))
        << run.out;
    EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), datafile);
  }
  WriteLines(NyaFile(), whole);
  EXPECT_EQ(RunList(2).code, 0);
  EXPECT_EQ(ValidateDatafile(data("Daily/$NYA.csv")), std::vector<std::string>{});
}

// The service withdraws its last bar from the whole file and the update file: the complete shorter
// file replaces the datafile, which is kept first. A body cut inside a row is refused as before.
TEST_F(ServiceRowsTest, AWithdrawnBarReplacesTheDatafileWhichIsKept) {
  const std::string datafile = ReadFile(data("Daily/$NYA.csv"));
  const std::string last = LastRow("Daily/$NYA.csv");
  const auto withdraw = [&](const std::string& row) {
    std::vector<std::string> update = ReadLines(ServiceFile("Update-Daily.csv"));
    update.erase(update.begin() + static_cast<long>(LineOf(update, row)));
    WriteLines(ServiceFile("Update-Daily.csv"), update);
  };
  std::vector<std::string> whole = ReadLines(NyaFile());
  ASSERT_EQ(whole.back(), last);
  whole.pop_back();
  WriteLines(NyaFile(), whole);
  withdraw(last);
  const CliResult run = RunList(2);
  EXPECT_EQ(run.code, 0) << run.out;
  const std::string kept = data("Base/Replaced/Daily/$NYA.csv");
  EXPECT_TRUE(Contains(run.out,
                       "Note: $NYA Daily: replaced by the service's shorter file; the "
                       "previous one is in " +
                           kept))
      << run.out;
  EXPECT_EQ(ReadFile(kept), datafile);
  EXPECT_EQ(ReadLines(data("Daily/$NYA.csv")), whole);
  EXPECT_EQ(RunList(2).code, 0) << "once replaced, it is up to date";

  // The next bar withdrawn too, but the file cut inside its new last row.
  const std::string replaced = ReadFile(data("Daily/$NYA.csv"));
  withdraw(whole.back());
  whole.pop_back();
  std::string body;
  for (const std::string& line : whole) body += line + "\r\n";
  WriteFile(NyaFile(), body.substr(0, body.size() - whole.back().size() / 2));
  const CliResult cut = RunList(2);
  EXPECT_EQ(cut.code, 3);
  EXPECT_TRUE(Contains(cut.out, "$NYA Daily: the service's file ends on ")) << cut.out;
  EXPECT_TRUE(Contains(cut.out, " (its last line is cut short)\n")) << cut.out;
  EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), replaced);
  EXPECT_EQ(ReadFile(kept), datafile) << "the one generation kept stays";
}

}  // namespace
}  // namespace corvanet::test
