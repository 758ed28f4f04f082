// The merge of update rows into a datafile, against a real HTTP service on 127.0.0.1.
#include "core/download/update_datafile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "core/platform/text.h"

#include "core/download/datafile_names.h"
#include "core/download/download_fixture.h"
#include "core/platform/files.h"

namespace corvanet::test {
namespace {

using Kind = DatafileOutcome::Kind;

class UpdateDatafileTest : public ::testing::Test, public DownloadFixture {
 protected:
  static constexpr const char* kRemote = "/ovalith/data/NYSEDaily-CompositeStats.csv";

  void SetUp() override { SelectDatafile("$NYA"); }

  // Update rows of NYSE for the given days, oldest first, between other symbols' lines.
  void UpdateRowsFor(const std::vector<int>& days) {
    std::vector<std::string> lines;
    for (const int day : days) {
      lines.push_back(UpdateLine("SOX", Row(day, "7")));
      lines.push_back(UpdateLine("NYSE", Row(day)));
    }
    lines.push_back(UpdateLine("DJ30", Row(days.back(), "9")));
    WriteUpdateFile(lines);
  }

  DatafileOutcome Merge(bool fetched_whole = false) {
    UpdateFileIndex index;
    EXPECT_TRUE(index.Load(base("Update-Daily.csv")));
    return UpdateDatafile(session, index, fetched_whole);
  }

  std::vector<std::string> Destination() { return ReadLines(daily("$NYA.csv")); }
  static std::vector<std::string> Expected(const std::vector<int>& days) {
    std::vector<std::string> lines{Header()};
    for (const int day : days) lines.push_back(Row(day));
    return lines;
  }
};

// Merges that need no fetch: the update rows newer than the last common row are appended, at
// most the symbol's five oldest update rows are used, base rows after the first common row are
// dropped, and rows listed under the symbol without its first character count too.
TEST_F(UpdateDatafileTest, MergesTheUpdateRowsAfterTheLastCommonRowWithoutFetching) {
  const auto nyse = [](std::vector<int> days) {
    std::vector<std::string> lines;
    for (const int day : days) lines.push_back(UpdateLine("NYSE", Row(day)));
    return lines;
  };
  const struct {
    const char* what;
    std::vector<int> base;
    std::vector<std::string> update;
    std::vector<int> destination;
  } cases[] = {
      {"appends", {2, 3, 4, 5, 6}, nyse({4, 5, 6, 7, 8}), {2, 3, 4, 5, 6, 7, 8}},
      {"five oldest only", {1, 2, 3}, nyse({2, 3, 4, 5, 6, 7, 8}), {1, 2, 3, 4, 5, 6}},
      {"up to date", {6, 7, 8, 9, 10}, nyse({6, 7, 8, 9, 10}), {6, 7, 8, 9, 10}},
      {"no repeat of the match", {1, 2, 3}, nyse({2, 3}), {1, 2, 3}},
      {"first character dropped",
       {1, 2},
       {UpdateLine("NYSE", Row(2)), UpdateLine("YSE", Row(3)), UpdateLine("SE", Row(4)),
        UpdateLine("NYSE", Row(5))},
       {1, 2, 3, 5}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::filesystem::remove(daily("$NYA.csv"));
    WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile(c.base));
    std::vector<std::string> update{UpdateLine("SOX", Row(c.base.back(), "7"))};
    update.insert(update.end(), c.update.begin(), c.update.end());
    WriteUpdateFile(update);
    EXPECT_EQ(Merge().kind, Kind::kMerged);
    EXPECT_EQ(Destination(), Expected(c.destination));
  }
  EXPECT_EQ(service.total_requests(), 0);
}

TEST_F(UpdateDatafileTest, QuotedHeaderNamesHoldingCommasDoNotMakeTheBaseLookGarbled) {
  std::string header = Header();
  header.replace(0, header.find(','), "\"Period, letter\"");
  WriteFile(base("NYSEDaily-CompositeStats.csv"),
            header + "\r\n" + Row(2) + "\r\n" + Row(3) + "\r\n");
  UpdateRowsFor({3, 4});
  EXPECT_EQ(Merge().kind, Kind::kMerged);
  EXPECT_EQ(Destination(), (std::vector<std::string>{header, Row(2), Row(3), Row(4)}));
  EXPECT_EQ(service.total_requests(), 0);
}

TEST_F(UpdateDatafileTest, ARevisedRowDoesNotCountAsCommon) {
  WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile({1, 2, 3}));
  std::vector<std::string> lines{UpdateLine("NYSE", Row(3, "200")), UpdateLine("NYSE", Row(4))};
  WriteUpdateFile(lines);
  service.SetFile(kRemote, Datafile({1, 2, 3}) + Row(4) + "\r\n");
  EXPECT_EQ(Merge().kind, Kind::kFetchedWhole);
  EXPECT_EQ(Destination(), Expected({1, 2, 3, 4}));
}

TEST_F(UpdateDatafileTest, OneRowBehindFetchesAFreshBaseOnceAndMergesIt) {
  WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile({1, 2, 3}));
  UpdateRowsFor({5, 6, 7, 8, 9});
  service.SetFile(kRemote, Datafile({1, 2, 3, 4, 5, 6, 7}));
  session.ui.GenerateLogFile = 1;
  EXPECT_EQ(Merge().kind, Kind::kFetchedWhole);
  EXPECT_EQ(Destination(), Expected({1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(service.requests(kRemote), 1);
  EXPECT_EQ(session.run.GetFileCount, 1);
  EXPECT_TRUE(Contains(ReadFile(session.app.ProgramDirectory + "LogFile.txt"),
                       "UpdateDatafile - $NYA.csv$NYA - Can't update - getting full file"));
}

// The service's whole file is the datafile when the update file does not cover it, and so is a
// header alone for a composite that has no bars yet; an error page is never a datafile.
TEST_F(UpdateDatafileTest, AFreshWholeFileWithoutOverlapIsTheDatafile) {
  const struct {
    std::string served;
    Kind kind;
    const char* note;
    std::vector<std::string> destination;
  } cases[] = {
      {Datafile({1, 2, 3, 4}), Kind::kFetchedWhole, "the update file does not cover it",
       Expected({1, 2, 3, 4})},
      {Header() + "\r\n", Kind::kFetchedWhole, "the service has no rows for it yet", {Header()}},
      {"<html><body>Service Unavailable</body></html>\r\n", Kind::kFailed, "", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.note);
    std::filesystem::remove(daily("$NYA.csv"));
    WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile({1, 2}));
    UpdateRowsFor({8, 9});
    service.SetFile(kRemote, c.served);
    const int requests = service.requests(kRemote);
    const DatafileOutcome outcome = Merge();
    EXPECT_EQ(outcome.kind, c.kind);
    EXPECT_EQ(outcome.note, c.note);
    EXPECT_EQ(service.requests(kRemote) - requests, 2);
    EXPECT_EQ(Destination(), c.destination);
  }
}

// The datafile's last date is read through the link, so a shorter merge does not replace it.
TEST_F(UpdateDatafileTest, ADatafileReachedThroughALinkStillNeverMovesBackwards) {
  WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile({1, 2, 3}));
  UpdateRowsFor({3, 4});
  const std::string elsewhere = dir / "elsewhere.csv";
  WriteFile(elsewhere, Datafile({1, 2, 3, 4, 5, 6}));
  std::error_code ec;
  std::filesystem::create_symlink(elsewhere, daily("$NYA.csv"), ec);
  if (ec) GTEST_SKIP() << "no symbolic links here (Windows lets administrators alone make them)";
  EXPECT_EQ(Merge().kind, Kind::kFailed);
  EXPECT_EQ(Destination(), Expected({1, 2, 3, 4, 5, 6}));
}

TEST_F(UpdateDatafileTest, AFailedFallbackFetchLeavesDestinationAndBaseAsTheyStood) {
  WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile({1, 2}));
  WriteFile(daily("$NYA.csv"), Datafile({1}));
  UpdateRowsFor({8, 9});
  service.SetStatus(kRemote, 500);
  const DatafileOutcome outcome = Merge();
  EXPECT_EQ(outcome.kind, Kind::kFailed);
  EXPECT_TRUE(Contains(outcome.reason, "HTTP 500")) << outcome.reason;
  EXPECT_EQ(Destination(), Expected({1}));
  EXPECT_EQ(ReadFile(base("NYSEDaily-CompositeStats.csv")), Datafile({1, 2}));
}

TEST_F(UpdateDatafileTest, EmptyBaseIsFetchedAndAOneByteBaseCountsAsPresent) {
  WriteFile(base("NYSEDaily-CompositeStats.csv"), "");
  service.SetFile(kRemote, Datafile({1, 2, 3}));
  UpdateRowsFor({3, 4});
  std::string reason;
  ASSERT_TRUE(CheckForDataFile(session, reason));
  EXPECT_EQ(service.requests(kRemote), 1);
  EXPECT_EQ(Merge(true).kind, Kind::kFetchedWhole);
  EXPECT_EQ(Destination(), Expected({1, 2, 3, 4}));

  WriteFile(base("NYSEDaily-CompositeStats.csv"), "x");
  ASSERT_TRUE(CheckForDataFile(session, reason));
  EXPECT_EQ(service.requests(kRemote), 1) << "a one-byte base copy is not fetched again";
  EXPECT_EQ(Merge().kind, Kind::kFetchedWhole) << "no overlap with it: fetched whole";
  EXPECT_EQ(service.requests(kRemote), 2);
}

TEST_F(UpdateDatafileTest, NothingIsReadOrWrittenOnceFiveFetchesWereMade) {
  WriteFile(base("NYSEDaily-CompositeStats.csv"), Datafile({1, 2}));
  WriteFile(daily("$NYA.csv"), "old");
  UpdateRowsFor({2, 3});
  session.run.GetFileCount = 5;
  EXPECT_EQ(Merge().kind, Kind::kFailed);
  EXPECT_EQ(ReadFile(daily("$NYA.csv")), "old");

  // A fresh base copy that arrives as the fifth fetch is not merged with the update rows.
  UpdateRowsFor({8, 9});
  service.SetFile(kRemote, Datafile({1, 2, 8}));
  session.run.GetFileCount = 4;
  Merge();
  EXPECT_EQ(Destination(), Expected({1, 2, 8}));
}

// The index must give exactly the rows a rescan of the file gives, for any interleaving.
TEST(UpdateFileIndexTest, GivesTheRowsARescanGives) {
  TempDir dir;
  std::mt19937 random(7);
  const std::vector<std::string> symbols{"NYSE", "YSE", "SE", "SOX", "OX", "DJ30", "J30", "X"};
  for (int round = 0; round < 20; ++round) {
    std::vector<std::string> lines;
    for (int i = 0; i < 60; ++i) {
      const std::string& symbol = symbols[random() % symbols.size()];
      lines.push_back(DownloadFixture::UpdateLine(symbol, DownloadFixture::Row(i % 28 + 1)) +
                      (i % 3 == 0 ? "  " : ""));
    }
    WriteLines(dir / "Update.csv", lines);
    UpdateFileIndex index;
    ASSERT_TRUE(index.Load(dir / "Update.csv"));
    for (const std::string web : {"NYSE", "SOX", "DJ30", "X", "ZZZ"}) {
      std::vector<std::string> rescan;
      for (const std::string& line : lines) {
        const std::string symbol(Trim(std::string_view(line).substr(0, 15)));
        if (symbol == web || (web.size() > 1 && symbol == web.substr(1))) {
          rescan.emplace_back(Trim(std::string_view(line).substr(16)));
          if (rescan.size() == 5) break;
        }
      }
      std::vector<std::string> rows;
      for (const UpdateRow& row : index.RowsFor(web)) rows.emplace_back(row.text);
      ASSERT_EQ(rows, rescan) << web;
    }
  }
}

}  // namespace
}  // namespace corvanet::test
