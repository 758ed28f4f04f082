// A merge that starts where the last merge of its datafile met the update rows ends exactly as a
// merge that reads everything, and it only starts there while nothing it relies on has changed.
#include "core/download/merge_index.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>

#include "core/download/download_fixture.h"
#include "core/download/update_datafile.h"

namespace corvanet::test {
namespace {

// An index line of `rest` sealed with its checksum, as only the index itself or a forger writes it.
std::string Sealed(const std::string& rest) {
  std::uint64_t hash = 14695981039346656037ULL;
  for (const char c : rest) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
  char seal[17];
  std::snprintf(seal, sizeof seal, "%016llx", static_cast<unsigned long long>(hash));
  return seal + ("," + rest);
}

class MergeIndexTest : public ::testing::Test, public DownloadFixture {
 public:
  static constexpr const char* kRemote = "/ovalith/data/NYSEDaily-CompositeStats.csv";

  void SetUp() override {
    SelectDatafile("$NYA");
    session.ui.GenerateLogFile = 1;
  }

  void UpdateRows(const std::vector<std::string>& rows) {
    std::vector<std::string> lines{UpdateLine("SOX", Row(9, "7"))};
    for (const std::string& row : rows) lines.push_back(UpdateLine("NYSE", row));
    WriteUpdateFile(lines);
  }
  static std::vector<std::string> Rows(const std::vector<int>& days) {
    std::vector<std::string> rows;
    for (const int day : days) rows.push_back(Row(day));
    return rows;
  }

  struct Merged {
    DatafileOutcome::Kind kind;
    std::string datafile;
    int resumed = 0;
    std::size_t rejected = 0;
  };
  Merged Merge(bool with_index) {
    std::optional<MergeIndex> index;
    if (with_index) index.emplace(session);
    UpdateFileIndex update_rows;
    EXPECT_TRUE(update_rows.Load(base("Update-Daily.csv")));
    session.run.GetFileCount = 0;
    const DatafileOutcome outcome = UpdateDatafile(session, update_rows, false);
    Merged merged{outcome.kind, ReadFile(daily("$NYA.csv")), 0, outcome.rejected_rows.size()};
    if (index) {
      merged.resumed = index->resumed();
      EXPECT_TRUE(index->Save());
    }
    return merged;
  }
  std::string Log() const { return ReadFile(session.app.ProgramDirectory + "LogFile.txt"); }
};

TEST_F(MergeIndexTest, AMergeEndsAsWithoutTheIndexWhateverChangedSinceTheLastOne) {
  const std::string index_file = base(MergeIndex::kFileName);
  const std::string datafile = daily("$NYA.csv");
  const auto edit_index = [&] {
    std::string text = ReadFile(index_file);
    text[text.find("\r\n") + 20] ^= 1;  // a digit of where the checked rows end
    WriteFile(index_file, text);
  };
  // Sets one field of the entry and seals the line again, as only a forger would.
  const auto forge = [&](int field, const std::string& value) {
    return [&, field, value] {
      std::vector<std::string> lines = ReadLines(index_file);
      std::vector<std::string> fields;
      std::stringstream entry(lines[1]);
      for (std::string part; std::getline(entry, part, ',');) fields.push_back(part);
      fields[field] = value;
      std::string rest;
      for (std::size_t i = 1; i < fields.size(); ++i) rest += (i > 1 ? "," : "") + fields[i];
      lines[1] = Sealed(rest);
      WriteLines(index_file, lines);
    };
  };
  const auto replace_row_2 = [&] {
    std::string text = ReadFile(datafile);
    text.replace(text.find(Row(2)), Row(2).size(), Row(2, "55555"));
    WriteFile(datafile, text);
  };
  const std::string fresh_base =
      Datafile({1}) + Row(2, "66") + "\r\n" + Row(3) + "\r\n" + Row(4) + "\r\n";
  std::string bad_date = Row(6);
  bad_date.replace(2, 8, "20241399");
  const auto update = [&](std::vector<std::string> rows) {
    return [&, rows] { UpdateRows(rows); };
  };
  const std::string cut_short = Datafile({1, 2});
  const std::string all_rows = Datafile({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13});
  const struct {
    const char* what;
    std::function<void()> change;
    bool resumed;
    bool rejects_a_row = false;
  } cases[] = {
      {"nothing new", [] {}, true},
      {"a new bar", update(Rows({5, 6, 7, 8, 9})), true},
      {"the first update row revised", update({Row(4, "200"), Row(5), Row(6), Row(7)}), true},
      {"an update row among the rows checked before", update(Rows({3, 4, 5, 6, 7})), false},
      {"the datafile edited among the rows checked before", replace_row_2, false},
      {"the datafile cut short", [&] { WriteFile(datafile, cut_short); }, false},
      {"the datafile deleted", [&] { std::filesystem::remove(datafile); }, false},
      {"a fresh base copy", [&] { WriteFile(base("NYSEDaily-CompositeStats.csv"), fresh_base); },
       false},
      {"a damaged index line", edit_index, false},
      {"no index at all", [&] { WriteFile(index_file, "<html>"); }, false},
      {"a forged entry: where the checked rows end in the datafile", forge(4, "0"), false},
      // The datafile keeps its own rows from the bad one on, with the index as without it.
      {"a bad update row after the first one", update({Row(4), Row(5), bad_date, Row(7)}), true,
       true},
      // The merge starts where the last one stopped, finds no overlap, and fetches a fresh copy.
      {"no overlap any more",
       [&] {
         UpdateRows(Rows({12, 13}));
         service.SetFile(kRemote, all_rows);
       },
       false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::filesystem::remove(datafile);
    std::filesystem::remove(index_file);
    WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile({1, 2, 3, 4, 5, 6}));
    UpdateRows(Rows({4, 5, 6, 7, 8}));
    Merge(true);
    c.change();
    const std::string base_copy = ReadFile(base("NYSEDaily-CompositeStats.csv"));
    const std::optional<std::string> old_datafile =
        Exists(datafile) ? std::optional(ReadFile(datafile)) : std::nullopt;
    const int requests_before = service.total_requests();
    const Merged with_index = Merge(true);
    const int requests_with_index = service.total_requests() - requests_before;
    WriteFile(base("NYSEDaily-CompositeStats.csv"), base_copy);
    if (old_datafile) WriteFile(datafile, *old_datafile);
    if (!old_datafile) std::filesystem::remove(datafile);
    const Merged without = Merge(false);
    EXPECT_EQ(service.total_requests() - requests_before, 2 * requests_with_index);

    EXPECT_EQ(with_index.kind, without.kind);
    EXPECT_EQ(with_index.datafile, without.datafile);
    EXPECT_EQ(with_index.resumed, c.resumed ? 1 : 0);
    EXPECT_EQ(with_index.rejected, without.rejected);
    EXPECT_EQ(with_index.rejected > 0, c.rejects_a_row);
  }
  EXPECT_TRUE(Contains(Log(), "MergeIndex - " + index_file + " is not a merge index"));
  EXPECT_TRUE(Contains(Log(), "MergeIndex - " + index_file + " line 2 is garbled"));
}

// The look ahead of the next run takes a base copy's last date from the index instead of reading
// the copy's end: the merge records it, and only for the copy it read.
TEST_F(MergeIndexTest, KeepsTheDateOfTheBaseCopysLastRowForTheNextRunsLookAhead) {
  const std::string index_file = base(MergeIndex::kFileName);
  const std::string base_copy = base("NYSEDaily-CompositeStats.csv");
  const struct {
    const char* what;
    std::string base;
    std::string last_date;  // empty: none kept
  } cases[] = {
      {"rows after the first update row", Datafile({1, 2, 3, 4, 5, 6}),
       std::string(RowDate(Row(6)))},
      {"blank lines at the end", Datafile({1, 2, 3, 4, 5}) + "\r\n  \r\n",
       std::string(RowDate(Row(5)))},
      {"the first update row is the last", Datafile({1, 2, 3, 4}), std::string(RowDate(Row(4)))},
      {"a last line without a date", Datafile({1, 2, 3, 4, 5}) + "end of file\r\n", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::filesystem::remove(daily("$NYA.csv"));
    std::filesystem::remove(index_file);
    WriteFile(base_copy, c.base);
    UpdateRows(Rows({4, 5, 6, 7, 8}));
    Merge(true);
    const MergeIndex index(session);
    const std::string* date = index.BaseLastDate(daily("$NYA.csv"));
    EXPECT_EQ(date != nullptr ? *date : "", c.last_date);
  }
}

}  // namespace
}  // namespace corvanet::test
