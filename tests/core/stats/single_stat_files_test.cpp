#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "core/app/settings.h"
#include "core/app/settings_buttons.h"
#include "core/stats/composite_fixture.h"
#include "core/stats/single_stat_files.h"
#include "core/stats/statistic_catalogue.h"
#include "core/stats/statistic_choices.h"
#include "support/test_session.h"

namespace corvanet {
namespace {

using test::Contains;
using test::CompositeLine;
using test::Exists;
using test::ReadFile;
using test::ReadLines;
using test::WriteDatafile;
using test::WriteLines;
using Lines = std::vector<std::string>;

// An installation with the composites $NYA and $INDU on user list 3 (Daily) and on the master
// file, and the single-statistic page at its defaults.
class SingleStatFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ts.WriteMasterfile({"NYSE Composite,$NYA", "Dow Industrials,$INDU"});
    WriteList(3, {1, 0, 0, 0});
  }

  void WriteList(int n, std::array<int, 4> periods) {
    Lines lines{"eSignal,eSignal", "DailyInterval," + std::to_string(periods[0]),
                "WeeklyInterval," + std::to_string(periods[1]),
                "MonthlyInterval," + std::to_string(periods[2]),
                "QuarterlyInterval," + std::to_string(periods[3])};
    if (n <= 5) {
      lines.insert(lines.end(), {"NYSE Composite,$NYA", "Dow Industrials,$INDU"});
    }
    ts.WriteList(n, lines);
  }

  std::string data(const std::string& relative) const { return ts.data(relative); }
  void Tick(std::string_view statistic) { SetCheck(ts.session, statistic, 1); }
  void Set(std::string_view key, std::string_view value) {
    ASSERT_TRUE(SetSetting(ts.session, *FindSetting(key), value, ValueSource::kUser));
  }
  StatFilesSummary Run(int list) {
    StatFilesSummary summary;
    MakeListStatFiles_Click(ts.session, list, &summary);
    return summary;
  }

  test::TestSession ts;
};

TEST_F(SingleStatFilesTest, UntickedListGivesNoFilesButTheCompletionTexts) {
  Tick("UpTrends");
  WriteList(7, {1, 1, 1, 1});
  WriteDatafile(data("Daily/$NYA.csv"), {CompositeLine()});
  ts.session.app.CurrentListNumber = "7";
  ts.session.ui.DailyInterval = 1;
  ts.clock.timer = 100;
  ts.session.run.RunStartTimer = 40;
  MakeSingleStatFiles(ts.session);
  EXPECT_FALSE(Exists(data("UpTrends/Daily/$NYA-UpTrends.csv")));
  const WindowState& ui = ts.session.ui;
  EXPECT_EQ(ui.DownLoadButton.caption,
            "Single Statistic Files Created ... (Elapsed time:  60.00 Seconds)");
  EXPECT_EQ(ui.DownloadProgressFrame.caption, "File creation complete");
  EXPECT_EQ(ui.Label13.caption, "Single statistic files created");
  EXPECT_FALSE(ui.ProgressBar1.visible);

  ts.session.ui.RunWithAllPeriods = 1;
  MakeSingleStatFiles(ts.session);
  EXPECT_TRUE(Exists(data("UpTrends/Daily/$NYA-UpTrends.csv")));
}

// A bad datafile ends the work for that composite and period only: its old files stay whole,
// the log names the failure, and the next composite is written.
TEST_F(SingleStatFilesTest, BadInputKeepsTheOldFilesAndGoesOn) {
  Tick("UpTrends");
  Tick("Declines");
  ts.EnableLog();
  const std::string nya = data("UpTrends/Daily/$NYA-UpTrends.csv");
  const std::string indu = data("UpTrends/Daily/$INDU-UpTrends.csv");
  std::string short_row = CompositeLine().Text();
  short_row.resize(short_row.rfind(','));
  struct Case {
    const char* what;
    std::vector<std::string> rows;
    bool empty_file;  // not even a header
    std::string logged;
  };
  const Case cases[] = {
      {"short row",
       {CompositeLine(), short_row, CompositeLine()},
       false,
       "MakeIndividualStatFile Error #  62 - Input past end of file (line 3 holds 67 of 68 "
       "fields) - $NYA.csv - Daily"},
      {"text in a count",
       {CompositeLine().Set("Declines", "none")},
       false,
       "MakeIndividualStatFile Error #  13 - Type mismatch (line 2, column 17 Declines: "
       "\"none\") - $NYA.csv - Daily"},
      {"empty file", {}, true, "MakeIndividualStatFile Error #  62 - Input past end of file"},
  };
  for (const Case& c : cases) {
    test::WriteFile(nya, "20000101,5\r\n");
    if (c.empty_file) {
      test::WriteFile(data("Daily/$NYA.csv"), "");
    } else {
      WriteDatafile(data("Daily/$NYA.csv"), c.rows);
    }
    WriteDatafile(data("Daily/$INDU.csv"), {CompositeLine("D", 20121102 + 1)});
    const StatFilesSummary summary = Run(3);
    EXPECT_EQ(ReadFile(nya), "20000101,5\r\n") << c.what;
    EXPECT_EQ(ReadLines(indu), Lines{"20121103,11"}) << c.what;
    EXPECT_TRUE(Contains(ts.LogText(), c.logged)) << c.what << "\n" << ts.LogText();
    ASSERT_EQ(summary.failures.size(), 1u) << c.what;
    EXPECT_EQ(summary.failures[0].symbol, "$NYA");
  }
  // No temporary file is left beside the kept one.
  Lines names;
  for (const auto& entry : std::filesystem::directory_iterator(data("UpTrends/Daily"))) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (Lines{"$INDU-UpTrends.csv", "$NYA-UpTrends.csv"}));
}

}  // namespace
}  // namespace corvanet
