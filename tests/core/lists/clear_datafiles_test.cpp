#include "core/lists/clear_datafiles.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

TEST(ClearDataFilesTest, DeletesOnlyDatafilesOfTheDataFolderAndItsPeriodFolders) {
  TestSession t;
  const std::vector<std::pair<std::string, bool>> files = {
      {"Daily/$INDU.csv", false},
      {"Monthly/$NYA.CSV", false},
      {"Quarterly/temp.csv", false},
      {"NYSEDaily-CompositeStats.csv", false},  // vendor Other keeps its datafiles here
      {"Masterfile2.csv", true},                // not a datafile
      {"thesis.docx", true},
      {"Daily/notes.txt", true},
      {"Base/NYSEDaily-CompositeStats.csv", true},
      {"Daily/Sub/kept.csv", true},  // subfolders are not walked
  };
  for (const auto& [name, kept] : files) WriteFile(t.data(name), "x");
  fs::remove_all(t.data("Weekly"));  // a missing period folder is made
  EXPECT_TRUE(ClearDataFiles_Click(t.session));
  for (const auto& [name, kept] : files) EXPECT_EQ(Exists(t.data(name)), kept) << name;
  EXPECT_TRUE(fs::is_empty(t.data("Weekly")));
  EXPECT_FALSE(Exists(t.data("Daily/temp.csv")));
  EXPECT_TRUE(t.shell.boxes.empty());
}

// Folders a careless setting may name: none of their files may go, and the user is told why.
TEST(ClearDataFilesTest, RefusesFoldersItDoesNotOwn) {
  TestSession t;
  const std::string above = fs::path(t.base()).parent_path().parent_path().string() + "/";
  const struct {
    std::string folder;
    const char* reason;
  } cases[] = {
      {"/", "the root of the file system"},
      {t.base(), "the installation folder"},
      {t.base() + "CSVFiles/../", "the installation folder"},
      {above, "a folder above the installation folder"},
      {t.base("Nowhere/"), "does not exist"},
  };
  WriteFile(t.masterfile(), "kept");
  for (const auto& c : cases) {
    SCOPED_TRACE(c.folder);
    t.shell.boxes.clear();
    t.session.ui.PathToDataFiles = c.folder;
    EXPECT_FALSE(ClearDataFiles_Click(t.session));
    ASSERT_EQ(t.shell.boxes.size(), 1U);
    EXPECT_TRUE(Contains(t.shell.boxes[0].text, c.reason)) << t.shell.boxes[0].text;
    EXPECT_EQ(ReadFile(t.masterfile()), "kept");
  }
  EXPECT_FALSE(fs::exists(t.base("Nowhere")));
}

}  // namespace
}  // namespace corvanet::test
