#include "core/platform/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <string>

#include "support/test_support.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

std::set<std::string> Entries(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

unsigned Mode(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return 0;
  return info.st_mode & 0777U;
}

// A permissive umask, so an owner-only file cannot owe its mode to the environment.
class OpenUmask {
 public:
  OpenUmask() : old_(::umask(0)) {}
  ~OpenUmask() { ::umask(old_); }
  OpenUmask(const OpenUmask&) = delete;
  OpenUmask& operator=(const OpenUmask&) = delete;

 private:
  mode_t old_;
};

TEST(AtomicFileWriterTest, CommitReplacesTheWholeFile) {
  TempDir dir;
  WriteFile(dir / "t.ini", "old content that is longer than the new one\r\n");
  AtomicFileWriter writer(dir / "t.ini");
  ASSERT_TRUE(writer.is_open());
  writer.WriteLine("one");
  writer.Write("two");
  writer.WriteLine("");
  EXPECT_EQ(ReadFile(dir / "t.ini"), "old content that is longer than the new one\r\n");
  EXPECT_TRUE(writer.Commit());
  EXPECT_EQ(ReadFile(dir / "t.ini"), "one\r\ntwo\r\n");
  EXPECT_EQ(Entries(dir.path()), (std::set<std::string>{"t.ini"}));

  EXPECT_TRUE(WriteWholeFile(dir / "new.txt", "x"));
  EXPECT_EQ(ReadFile(dir / "new.txt"), "x");
}

TEST(AtomicFileWriterTest, FailureLeavesTheOldFileAndNoTemporaryFile) {
  TempDir dir;
  WriteFile(dir / "t.ini", "old\r\n");
  {
    AtomicFileWriter abandoned(dir / "t.ini");
    abandoned.WriteLine("half");
  }  // no Commit
  {
    AtomicFileWriter discarded(dir / "t.ini");
    discarded.WriteLine("half");
    discarded.Discard();
    EXPECT_FALSE(discarded.Commit());
  }
  EXPECT_EQ(ReadFile(dir / "t.ini"), "old\r\n");

  AtomicFileWriter nowhere(dir / "missing/t.ini");
  EXPECT_FALSE(nowhere.is_open());
  EXPECT_FALSE(nowhere.error().empty());
  nowhere.WriteLine("lost");
  EXPECT_FALSE(nowhere.Commit());
  EXPECT_FALSE(WriteWholeFile(dir / "missing/u.ini", "x"));
  EXPECT_FALSE(Exists(dir / "missing"));  // writers never create folders

  // A folder standing where the file should go: the rename fails and nothing is left behind.
  fs::create_directory(dir / "folder.ini");
  AtomicFileWriter blocked(dir / "folder.ini");
  blocked.WriteLine("x");
  EXPECT_FALSE(blocked.Commit());
  EXPECT_TRUE(fs::is_directory(dir / "folder.ini"));
  EXPECT_EQ(Entries(dir.path()), (std::set<std::string>{"t.ini", "folder.ini"}));
}

TEST(AtomicFileWriterTest, OwnerOnlyFilesAreCreatedAndReplacedAs0600) {
  OpenUmask umask_open;
  TempDir dir;
  EXPECT_TRUE(WriteWholeFile(dir / "secret.ini", "pw\r\n", FileAccess::kOwnerOnly));
  EXPECT_EQ(Mode(dir / "secret.ini"), 0600U);
  WriteFile(dir / "was_open.ini", "pw\r\n");
  fs::permissions(dir / "was_open.ini", fs::perms::all);
  EXPECT_TRUE(WriteWholeFile(dir / "was_open.ini", "pw2\r\n", FileAccess::kOwnerOnly));
  EXPECT_EQ(Mode(dir / "was_open.ini"), 0600U);
  EXPECT_TRUE(WriteWholeFile(dir / "plain.txt", "x"));
  EXPECT_EQ(Mode(dir / "plain.txt"), 0666U);
}

TEST(AppendLineTest, AppendsCrLfLinesAndCreatesOwnerOnlyFiles) {
  OpenUmask umask_open;
  TempDir dir;
  EXPECT_TRUE(AppendLine(dir / "log.txt", "first", FileAccess::kOwnerOnly));
  EXPECT_TRUE(AppendLine(dir / "log.txt", "second", FileAccess::kOwnerOnly));
  EXPECT_EQ(ReadFile(dir / "log.txt"), "first\r\nsecond\r\n");
  EXPECT_EQ(Mode(dir / "log.txt"), 0600U);

  EXPECT_TRUE(AppendLine(dir / "batch.bat", "Call A"));
  EXPECT_EQ(Mode(dir / "batch.bat"), 0666U);
  EXPECT_FALSE(AppendLine(dir / "missing/log.txt", "x"));
  EXPECT_FALSE(Exists(dir / "missing"));
}

TEST(FileOperationsTest, CopyDeleteAndTouch) {
  TempDir dir;
  WriteFile(dir / "to.csv", "old");
  EXPECT_FALSE(CopyFileReplacing(dir / "missing.csv", dir / "to.csv"));
  EXPECT_EQ(ReadFile(dir / "to.csv"), "old");
  WriteFile(dir / "from.csv", std::string(200 * 1024, 'r'));
  EXPECT_TRUE(CopyFileReplacing(dir / "from.csv", dir / "to.csv"));
  EXPECT_EQ(ReadFile(dir / "to.csv"), std::string(200 * 1024, 'r'));

  EXPECT_TRUE(TouchFile(dir / "to.csv"));
  EXPECT_EQ(FileSize(dir / "to.csv"), 200U * 1024);
  EXPECT_TRUE(TouchFile(dir / "empty.csv"));
  EXPECT_EQ(FileSize(dir / "empty.csv"), 0U);
  EXPECT_FALSE(FileSize(dir / "missing.csv").has_value());

  WriteFile(dir / "sub/keep.csv", "k");
  WriteFile(dir / "keep.txt", "k");
  const auto csv = [](std::string_view name) { return name.ends_with(".csv"); };
  int deleted = 0;
  EXPECT_TRUE(DeleteFilesIn(dir.path(), csv, &deleted));
  EXPECT_EQ(deleted, 3);
  EXPECT_EQ(Entries(dir.path()), (std::set<std::string>{"keep.txt", "sub"}));
  EXPECT_TRUE(Exists(dir / "sub/keep.csv"));
  EXPECT_FALSE(DeleteFilesIn(dir / "missing/", csv));
}

TEST(FileOperationsTest, OnlyTemporaryFilesOfOtherProcessesAreSwept) {
  TempDir dir;
  WriteFile(dir / "$NYA.csv.tmp-999999-0", "left by a killed run");
  WriteFile(dir / "$X.tmp-A.csv", "a datafile");
  WriteFile(dir / "notes.tmp-old", "the user's");
  WriteFile(dir / "$NYA.csv", "kept");
  AtomicFileWriter own(dir / "$SOX.csv");  // this process's, still being written
  ASSERT_TRUE(own.is_open());
  EXPECT_EQ(RemoveStaleTemporaryFiles(dir.path()), 1);
  const std::set<std::string> left = Entries(dir.path());
  EXPECT_EQ(left.count("$NYA.csv.tmp-999999-0"), 0U);
  EXPECT_EQ(left.size(), 4U);
  EXPECT_TRUE(own.Commit());
  EXPECT_TRUE(Exists(dir / "$SOX.csv"));
}

// The last line is read from the file's end, first from a short tail: a line or a run of blank
// lines reaching past that tail must still come back whole.
TEST(FileOperationsTest, LastLineOfReadsPastAShortTail) {
  TempDir dir;
  const std::string row(300, 'r');
  const std::string long_row = "D," + std::string(6000, '7');
  const std::string huge_row(70 * 1024, 'h');
  const struct {
    std::string content;
    std::string last;
  } cases[] = {
      {"", ""},
      {"\r\n  \r\n", ""},
      {"header\r\n" + row + "\r\n", row},
      {"header\r\n" + row, row},
      {"header\r\n" + row + "\r\n" + std::string(5000, '\n'), row},
      {std::string(4096 - 3, 'x') + "\r\n" + row + " \t\r\n", row},
      {"header\r\n" + long_row + "\r\n", long_row},
      {long_row, long_row},
      // Longer than any tail: its end is what is read.
      {"header\r\n" + huge_row + "\r\n", huge_row.substr(0, 64 * 1024 - 2)},
  };
  for (const auto& c : cases) {
    WriteFile(dir / "file.csv", c.content);
    EXPECT_EQ(LastLineOf(dir / "file.csv"), c.last) << c.content.size() << " bytes";
  }
  EXPECT_EQ(LastLineOf(dir / "missing.csv"), "");
}

}  // namespace
}  // namespace corvanet::test
