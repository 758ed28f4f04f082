#include "core/download/check_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

using Lines = std::vector<std::string>;

const Lines kHeader = {"eSignal,eSignal", "DailyInterval,1", "WeeklyInterval,0",
                       "MonthlyInterval,0", "QuarterlyInterval,0"};

Lines WithHeader(const Lines& issues) {
  Lines lines = kHeader;
  lines.insert(lines.end(), issues.begin(), issues.end());
  return lines;
}

constexpr std::string_view kReportStart =
    "Due to an update in Tessaly's Compilation List\r"
    "the following symbols have been removed from your\r"
    "download lists:\r";

class CheckListsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Blank lines and blanks around fields are passed over in the master file too.
    t.WriteMasterfile({"Dow Jones Industrial Ave. (DJIA) ,  $INDU  ", "", "NYSE Composite,$NYA",
                       "Nasdaq Composite,$COMPQ"},
                      false);
  }
  void Check() { CheckLists(s, s.ui.PathToLists, t.masterfile()); }
  void SetUpClock() { t.clock.now = {2026, 3, 15, 18, 5, 2}; }
  TestSession t;
  Session& s = t.session;
};

TEST_F(CheckListsTest, RemovesWithdrawnSymbolsAndReportsThemPerList) {
  SetUpClock();
  t.WriteList(2, WithHeader({"Dow,$INDU", "Gone Away,$GONE", "NYSE,$NYA"}));
  t.WriteList(5, WithHeader({"Nasdaq,$compq"}));  // differs from the master only in case
  Check();
  EXPECT_EQ(t.ReadList(2), WithHeader({"Dow,$INDU", "NYSE,$NYA"}));
  EXPECT_EQ(t.ReadList(5), kHeader);               // a list that lost every issue keeps its header
  EXPECT_FALSE(Exists(t.lists("Download1.csv")));  // missing lists are skipped
  EXPECT_TRUE(Exists(t.lists("Temp.csv")));
  EXPECT_EQ(ReadLines(t.lists("Temp.csv")), kHeader);
  ASSERT_EQ(t.shell.boxes.size(), 1u);
  const ScriptedShell::Box& box = t.shell.boxes[0];
  EXPECT_EQ(box.text, std::string(kReportStart) +
                          "Download List 2 - Symbol:  $GONE\r"
                          "Download List 2 as it was is kept in " +
                          t.lists("Copies/Download2-20260315-180502.csv") +
                          "\r"
                          "Download List 5 - Symbol:  $compq\r"
                          "Download List 5 as it was is kept in " +
                          t.lists("Copies/Download5-20260315-180502.csv") + "\r");
  EXPECT_EQ(ReadLines(t.lists("Copies/Download2-20260315-180502.csv")),
            WithHeader({"Dow,$INDU", "Gone Away,$GONE", "NYSE,$NYA"}));
  EXPECT_EQ(box.title, "Corvanet Download Lists");
  EXPECT_EQ(box.icon, Icon::kExclamation);
  EXPECT_EQ(box.buttons, Buttons::kOk);
}

// A master file cut short prunes a list again and again: every list as it was is kept under a name
// of its own, the newest ten of each list, none overwritten, and a list without a copy is not
// pruned at all.
TEST_F(CheckListsTest, EveryPrunedListIsKeptFirstTheNewestTenOfEach) {
  const Lines full = WithHeader({"Dow,$INDU", "Gone Away,$GONE"});
  const Lines other = WithHeader({"Gone,$GONE", "NYSE,$NYA"});
  for (int check = 0; check < 12; ++check) {
    t.clock.now = {2026, 3, 15, 18, check / 2, 0};  // two checks within each minute
    t.WriteList(1, full);
    t.WriteList(3, other);
    Check();
  }
  std::vector<std::string> kept;
  for (const auto& entry : std::filesystem::directory_iterator(t.lists("Copies"))) {
    kept.push_back(entry.path().filename().string());
  }
  std::sort(kept.begin(), kept.end());
  ASSERT_EQ(kept.size(), 20U);
  // The two oldest are gone (a second copy within a second sorts first here: '-' before '.').
  EXPECT_EQ(kept[0], "Download1-20260315-180100-2.csv");
  EXPECT_EQ(kept[1], "Download1-20260315-180100.csv");
  EXPECT_EQ(kept[9], "Download1-20260315-180500.csv");
  EXPECT_EQ(kept[10], "Download3-20260315-180100-2.csv");
  for (const std::string& name : kept) {
    EXPECT_EQ(ReadLines(t.lists("Copies/" + name)), name[8] == '1' ? full : other) << name;
  }

  // The copies' folder cannot be made: the list stays whole.
  std::filesystem::remove_all(t.lists("Copies"));
  WriteFile(t.lists("Copies"), "a file where the folder belongs");
  t.WriteList(1, full);
  Check();
  EXPECT_EQ(t.ReadList(1), full);
}

TEST_F(CheckListsTest, BrokenListsAreLeftAsTheyStoodWhileTheOthersAreChecked) {
  t.EnableLog();
  const Lines short_header = {"eSignal,eSignal", "DailyInterval,1"};
  const Lines dangling = WithHeader({"Gone,$GONE", "Half"});
  t.WriteList(1, short_header);
  t.WriteList(2, dangling);
  t.WriteList(4, WithHeader({"Gone,$GONE", "NYSE,$NYA"}));
  Check();
  EXPECT_EQ(t.ReadList(1), short_header);
  EXPECT_EQ(t.ReadList(2), dangling);
  EXPECT_EQ(t.ReadList(4), WithHeader({"NYSE,$NYA"}));
  ASSERT_EQ(t.shell.boxes.size(), 1u);
  EXPECT_EQ(t.shell.boxes[0].text, std::string(kReportStart) +
                                       "Download List 4 - Symbol:  $GONE\r"
                                       "Download List 4 as it was is kept in " +
                                       t.lists("Copies/Download4-20261123-000000.csv") + "\r");
  const std::string log = t.LogText();
  EXPECT_TRUE(Contains(log, "Download1.csv ends within its header; skipped"));
  EXPECT_TRUE(Contains(log, "Download2.csv has no symbol; skipped"));
}

TEST_F(CheckListsTest, AnUnreadableOrEmptyMasterFileChangesNoList) {
  const Lines lines = WithHeader({"Dow,$INDU"});
  t.WriteList(1, lines);
  CheckLists(s, s.ui.PathToLists, t.base("Missing.csv"));
  WriteFile(t.masterfile(), "\r\n\r\n");
  Check();
  EXPECT_EQ(t.ReadList(1), lines);
  EXPECT_TRUE(t.shell.boxes.empty());
}

}  // namespace
}  // namespace corvanet::test
