#include "core/lists/clear_datafiles.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

bool IsEmptyFolder(const std::string& path) {
  return fs::is_directory(path) && fs::is_empty(path);
}

TEST(ClearDataFilesTest, EmptiesTheDataFolderAndItsPeriodFoldersOnly) {
  TestSession t;
  WriteFile(t.data("stray.txt"), "x");
  WriteFile(t.data("Daily/$INDU.csv"), "x");
  WriteFile(t.data("Monthly/$NYA.csv"), "x");
  WriteFile(t.data("Quarterly/temp.csv"), "x");
  WriteFile(t.data("Base/Masterfile2.csv"), "kept");
  WriteFile(t.data("Daily/Sub/kept.csv"), "kept");  // subfolders are not walked
  fs::remove_all(t.data("Weekly"));                 // a missing period folder is made
  ClearDataFiles_Click(t.session);
  for (const char* folder : {"Monthly", "Quarterly", "Weekly"}) {
    EXPECT_TRUE(IsEmptyFolder(t.data(folder))) << folder;
  }
  EXPECT_FALSE(Exists(t.data("stray.txt")));
  EXPECT_FALSE(Exists(t.data("Daily/$INDU.csv")));
  EXPECT_FALSE(Exists(t.data("Daily/temp.csv")));
  EXPECT_EQ(ReadFile(t.data("Base/Masterfile2.csv")), "kept");
  EXPECT_EQ(ReadFile(t.data("Daily/Sub/kept.csv")), "kept");
  EXPECT_TRUE(t.shell.boxes.empty());
}

TEST(ClearDataFilesTest, AMissingOrUnsetDataFolderIsLeftAlone) {
  TestSession t;
  t.EnableLog();
  t.session.ui.PathToDataFiles = t.base("Nowhere/");
  ClearDataFiles_Click(t.session);
  EXPECT_FALSE(fs::exists(t.base("Nowhere")));
  // An empty path would name the current folder; nothing there may go.
  WriteFile(t.base("Rondex/keep.txt"), "x");
  t.session.ui.PathToDataFiles.clear();
  ClearDataFiles_Click(t.session);
  EXPECT_TRUE(Exists(t.base("Rondex/keep.txt")));
  EXPECT_NE(t.LogText().find("does not exist; nothing cleared"), std::string::npos);
}

}  // namespace
}  // namespace corvanet::test
