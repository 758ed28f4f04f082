#include "core/platform/atomic_file_writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "core/platform/file_access.h"
#include "core/platform/files.h"
#include "core/platform/run_lock.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

// A part of another file copied between what the writer writes itself: by the system where it can,
// through the process where it cannot (a file system of another kind, such as /dev/shm, on kernels
// that refuse copies between those). A source shorter than asked fails the writer and leaves the
// target as it was.
TEST(AtomicFileWriterTest, CopyFromTakesThePartAskedForOrFails) {
  TempDir dir;
  std::string content;
  for (int row = 0; content.size() < 200 * 1024; ++row) content += std::to_string(row) + ",x\r\n";
  const std::uint64_t size = content.size();
  std::vector<std::string> sources{dir / "source.csv"};
  const std::string elsewhere = "/dev/shm/corvanet-copy-" + std::to_string(::getpid());
  if (fs::is_directory("/dev/shm")) sources.push_back(elsewhere);
  for (const std::string& source : sources) {
    SCOPED_TRACE(source);
    WriteFile(source, content);
    const int from = OpenForReading(source);
    ASSERT_GE(from, 0);
    for (const auto& [offset, length] :
         {std::pair<std::uint64_t, std::uint64_t>{0, size}, {1000, 70000}, {size - 10, 10}}) {
      AtomicFileWriter writer(dir / "t.csv");
      writer.Write("head,");
      writer.CopyFrom(from, offset, length);
      writer.Write(",tail");
      EXPECT_TRUE(writer.Commit()) << writer.error();
      EXPECT_EQ(ReadFile(dir / "t.csv"), "head," + content.substr(offset, length) + ",tail");
    }
    AtomicFileWriter beyond_the_end(dir / "t.csv");
    beyond_the_end.CopyFrom(from, size - 10, 20);
    EXPECT_FALSE(beyond_the_end.Commit());
    EXPECT_EQ(beyond_the_end.error(), "the file copied from got shorter");
    EXPECT_EQ(ReadFile(dir / "t.csv"), "head," + content.substr(size - 10) + ",tail");
    CloseFile(from);
  }
  fs::remove(elsewhere);
}

// A child process names its temporary files by its own process id, never its parent's: the two
// would otherwise draw the same names from the same random state, and one of them fail to write.
// Nor does it write as the run its parent holds the lock for: its files are locked as any others.
TEST(AtomicFileWriterTest, AForkedChildWritesAsItself) {
  TempDir dir;
  RunLock run;
  ASSERT_TRUE(run.Acquire(dir.path(), "02:00:00"));
  AtomicFileWriter parent(dir / "parent.txt");  // the process id is known before the fork
  ASSERT_TRUE(parent.is_open());
  const pid_t child = ::fork();
  if (child == 0) {
    AtomicFileWriter writer(dir / "child.txt");
    const std::string own = "child.txt.tmp-" + std::to_string(::getpid()) + "-";
    bool named_as_itself = false;
    bool locked = false;
    for (const std::string& entry : FileNames(dir.path())) {
      if (entry.rfind(own, 0) != 0) continue;
      named_as_itself = true;
      const int other = ::open((dir / entry).c_str(), O_RDONLY);
      locked = other >= 0 && ::flock(other, LOCK_EX | LOCK_NB) != 0;
    }
    ::_exit(writer.is_open() && named_as_itself && locked ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// A commit replaces the whole file, and only a commit: a writer abandoned, discarded or failing
// leaves the old file and no temporary file.
TEST(AtomicFileWriterTest, OnlyACommitReplacesTheFileAndAFailureLeavesNoTemporaryFile) {
  TempDir dir;
  WriteFile(dir / "t.ini", "old content that is longer than the new one\r\n");
  {
    AtomicFileWriter writer(dir / "t.ini");
    writer.WriteLine("one");
    writer.Write("two");
    writer.WriteLine("");
    EXPECT_EQ(ReadFile(dir / "t.ini"), "old content that is longer than the new one\r\n");
    EXPECT_TRUE(writer.Commit());
    EXPECT_EQ(ReadFile(dir / "t.ini"), "one\r\ntwo\r\n");
  }
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
  EXPECT_EQ(FileNames(dir.path()), (std::vector<std::string>{"folder.ini", "t.ini"}));
}

// A run sweeps leftovers while fetches it started earlier are writing. Under the run lock those
// writers take no locks of their own: only their names keep the sweep from taking their files, at
// any moment from their creation to their renaming.
TEST(AtomicFileWriterTest, ASweepNeverTakesAFileThisProcessIsWriting) {
  TempDir dir;
  RunLock run;
  ASSERT_TRUE(run.Acquire(dir.path(), "02:00:00"));
  std::atomic<bool> writing{true};
  int removed = 0;
  std::thread sweeper([&] {
    while (writing) removed += RemoveStaleTemporaryFiles(dir.path());
  });
  int failed = 0;
  for (int i = 0; i < 3000; ++i) {
    AtomicFileWriter writer(dir / "t.csv");
    writer.WriteLine(std::to_string(i));
    if (!writer.Commit()) ++failed;
  }
  writing = false;
  sweeper.join();
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(removed, 0);
  EXPECT_EQ(ReadFile(dir / "t.csv"), "2999\r\n");
}

// Another process's sweep takes what a dead writer left, never what a living one is writing.
TEST(AtomicFileWriterTest, ASweepInAnotherProcessTakesOnlyAbandonedFiles) {
  TempDir dir;
  {
    AtomicFileWriter dead(dir / "dead.csv");
    dead.WriteLine("half");
    const std::vector<std::string> names = FileNames(dir.path());
    ASSERT_EQ(names.size(), 1U);
    // As a killed writer leaves it: closed, under its name, with its lock gone.
    fs::copy_file(dir / *names.begin(), dir / ("left" + names.begin()->substr(4)));
  }
  AtomicFileWriter living(dir / "living.csv");
  living.WriteLine("whole");
  const pid_t child = ::fork();
  if (child == 0) ::_exit(RemoveStaleTemporaryFiles(dir.path()));
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_TRUE(living.Commit());
  EXPECT_EQ(FileNames(dir.path()), std::vector<std::string>{"living.csv"});
}

}  // namespace
}  // namespace corvanet::test
