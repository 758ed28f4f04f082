// The rewriter ends every file with exactly the content written; what it may touch on the way
// depends on how the content changed, and a failed append leaves the old content.
#include "core/platform/file_rewriter.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace corvanet::test {
namespace {

using Change = FileRewriter::Change;

ino_t InodeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

std::string Lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

struct RewriteCase {
  const char* name;
  const char* old_content;         // nullptr: no file yet
  std::vector<std::string> lines;  // after the known bytes
  Change change;
  std::size_t known = 0;  // bytes of the old content taken as written, unread
  bool linked = false;    // the old file has a second name, which must keep the old content
};

// The last line of a text that holds more than blanks, found the plain way.
std::string PlainLastLine(const std::string& text) {
  std::string last;
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(begin, end - begin);
    if (line.find_first_not_of(" \t\r") != std::string::npos) {
      last = line.substr(0, line.find_last_not_of(" \t\r") + 1);
    }
    begin = end + 1;
  }
  return last;
}

TEST(FileRewriterTest, EndsWithTheNewContentTouchingOnlyWhatChanged) {
  const std::string row(300, '7');
  const std::string long_tail(5000, '8');  // more than one page of the file
  // Many times the rewriter's read-ahead: its last line is never among the first bytes read.
  std::vector<std::string> many_rows{"Date,Close"};
  for (int i = 1; i <= 1000; ++i) many_rows.push_back(std::to_string(i) + "," + row);
  const std::string many = Lines(many_rows);
  const std::size_t before_last_row = many.size() - many_rows.back().size() - 2;
  const RewriteCase cases[] = {
      {"same content", "D,C\r\n1,2\r\n", {"D,C", "1,2"}, Change::kNone},
      {"one row more", "D,C\r\n1,2\r\n", {"D,C", "1,2", "3," + row}, Change::kAppended},
      {"last line had no end", "D,C\r\n1,2", {"D,C", "1,2", "3,4"}, Change::kAppended},
      {"revised row", "D,C\r\n1,2\r\n3,4\r\n", {"D,C", "1,9", "3,4"}, Change::kReplaced},
      {"revised last row", "D,C\r\n1,2\r\n", {"D,C", "1,3", "2,4"}, Change::kReplaced},
      {"shorter", "D,C\r\n1,2\r\n3,4\r\n", {"D,C", "1,2"}, Change::kReplaced},
      {"empty", "D,C\r\n", {}, Change::kReplaced},
      {"no file yet", nullptr, {"D,C", "1,2"}, Change::kReplaced},
      {"tail past a page", "D,C\r\n", {"D,C", long_tail}, Change::kReplaced},
      {"old file was empty", "", {"D,C"}, Change::kAppended},
      {"known rows, one more", "D,C\r\n1,2\r\n", {"3,4"}, Change::kAppended, 10},
      {"known rows, nothing more", "D,C\r\n1,2\r\n", {}, Change::kNone, 10},
      {"known rows, then a revised one", "D,C\r\n1,2\r\n3,4\r\n", {"3,5"}, Change::kReplaced, 10},
      {"two names", "D,C\r\n1,2\r\n", {"D,C", "1,2", "3,4"}, Change::kReplaced, 0, true},
      {"many rows, cut short", many.c_str(),
       std::vector<std::string>(many_rows.begin(), many_rows.begin() + 10), Change::kReplaced},
      {"many rows, the last revised", many.c_str(), {"1000,8"}, Change::kReplaced, before_last_row},
  };
  TempDir dir;
  FileRewriter rewriter;  // one for all cases, as a run reuses it
  for (const RewriteCase& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string path = dir / "datafile.csv";
    const std::string second_name = dir / "second.csv";
    std::filesystem::remove(path);
    std::filesystem::remove(second_name);
    if (c.old_content != nullptr) WriteFile(path, c.old_content);
    if (c.linked) std::filesystem::create_hard_link(path, second_name);
    const ino_t before = InodeOf(path);
    ASSERT_TRUE(rewriter.Open(path));
    if (c.known > 0) {
      ASSERT_TRUE(rewriter.TakeAsWritten(c.known));
    }
    for (const std::string& line : c.lines) rewriter.WriteLine(line);
    // What the datafile ended on before, for the check that it never moves backwards.
    EXPECT_EQ(rewriter.LastLineOfOld(),
              PlainLastLine(c.old_content != nullptr ? c.old_content : ""));
    ASSERT_TRUE(rewriter.Commit()) << rewriter.error();
    EXPECT_EQ(rewriter.change(), c.change);
    const std::string known = c.known > 0 ? std::string(c.old_content, c.known) : "";
    EXPECT_EQ(ReadFile(path), known + Lines(c.lines));
    EXPECT_EQ(rewriter.identity(), IdentityOf(path));
    if (c.change != Change::kReplaced) {
      EXPECT_EQ(InodeOf(path), before) << "written in place";
    }
    if (c.linked) {
      EXPECT_EQ(ReadFile(second_name), c.old_content);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), c.linked ? 2 : 1)
        << "no temporary file stays";
  }
}

// An append the file system refuses half-way (here a file size limit standing in for a full
// disk) is taken back; so is everything when the rewriter is discarded or cannot write.
TEST(FileRewriterTest, FailuresLeaveTheOldContent) {
  TempDir dir;
  const std::string path = dir / "datafile.csv";
  const std::string old_content = "Date,Close\r\n1,2\r\n";
  WriteFile(path, old_content);

  FileRewriter rewriter;
  ASSERT_TRUE(rewriter.Open(path));
  rewriter.WriteLine("Date,Close");
  rewriter.WriteLine("1,2");
  rewriter.WriteLine("3,4444444444");
  struct rlimit saved {};
  ::getrlimit(RLIMIT_FSIZE, &saved);
  const auto previous_handler = ::signal(SIGXFSZ, SIG_IGN);
  struct rlimit small = saved;
  small.rlim_cur = old_content.size() + 5;
  ::setrlimit(RLIMIT_FSIZE, &small);
  const bool committed = rewriter.Commit();
  ::setrlimit(RLIMIT_FSIZE, &saved);
  ::signal(SIGXFSZ, previous_handler);
  EXPECT_FALSE(committed);
  EXPECT_FALSE(rewriter.error().empty());
  EXPECT_EQ(ReadFile(path), old_content);

  ASSERT_TRUE(rewriter.Open(path));
  rewriter.WriteLine("Date,Open");
  rewriter.Discard();
  EXPECT_EQ(ReadFile(path), old_content);

  std::filesystem::remove(path);
  EXPECT_FALSE(rewriter.Open(dir / "missing/datafile.csv"));
  EXPECT_FALSE(rewriter.Commit());
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 0);
}

}  // namespace
}  // namespace corvanet::test
