// The Windows forms of the platform layer's system mechanisms: the run lock held by another
// process, names beyond ASCII, owner-only files, replacing a file someone reads, and batch files
// run by cmd.exe from a folder whose name cmd would otherwise parse.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>

#include "core/platform/file_access.h"
#include "core/platform/files.h"
#include "core/platform/process.h"
#include "core/platform/run_lock.h"
#include "core/platform/windows_text.h"
#include "support/child_process.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

constexpr const char* kHoldLockIn = "CORVANET_TEST_HOLD_RUN_LOCK_IN";

// Run by the test below as a second process: takes the run lock of the folder named in the
// environment and keeps it until the folder holds "release".
TEST(RunLockHolder, HoldsTheLockUntilReleased) {
  const char* folder = std::getenv(kHoldLockIn);
  if (folder == nullptr) GTEST_SKIP() << "started only by RunLockTest";
  RunLock lock;
  ASSERT_TRUE(lock.Acquire(folder, "18:02:11"));
  WriteFile(std::string(folder) + "held", "");
  WaitFor([&] { return Exists(std::string(folder) + "release"); }, std::chrono::seconds(60));
}

TEST(RunLockTest, AnotherProcessHoldingTheLockIsNamedAndItsEndFreesTheLock) {
  TempDir dir;
  std::string folder = dir.path();
  for (char& c : folder) c = c == '/' ? '\\' : c;
  SetEnvironmentVariableW(windows::Wide(kHoldLockIn).c_str(), windows::Wide(folder).c_str());
  const ChildId holder = SpawnChild(BinaryPath("core_tests"), {"--gtest_filter=RunLockHolder.*"},
                                    dir / "out", dir / "err");
  SetEnvironmentVariableW(windows::Wide(kHoldLockIn).c_str(), nullptr);
  ASSERT_TRUE(WaitFor([&] { return Exists(dir / "held"); }, std::chrono::seconds(30)))
      << ReadFile(dir / "out");

  RunLock second;
  EXPECT_FALSE(second.Acquire(folder, "18:03:00"));
  EXPECT_TRUE(second.holder().starts_with("Another run has been in progress since 18:02:11"))
      << second.holder();
  // Ended without a chance to let go, as a killed run ends: the system drops its lock.
  KillChild(holder);
  EXPECT_TRUE(second.Acquire(folder, "18:04:00")) << second.holder();
  EXPECT_GE(RunLock::HeldDescriptor(), 0);
  second.Release();
  EXPECT_EQ(RunLock::HeldDescriptor(), -1);
}

TEST(WindowsFilesTest, NamesBeyondAsciiReachTheSystemAsTheyAre) {
  TempDir dir;
  const std::string name = "B\xC3\xB6rse \xE2\x82\xAC-Daily.csv";  // "Börse €-Daily.csv"
  ASSERT_TRUE(WriteWholeFile(dir / name, "1\r\n"));
  ASSERT_TRUE(AppendLine(dir / name, "2"));
  EXPECT_EQ(ReadWholeFile(dir / name), "1\r\n2\r\n");
  EXPECT_EQ(LastLineOf(dir / name), "2");
  // The system holds the name in UTF-16, not the UTF-8 bytes read in some code page.
  WIN32_FIND_DATAW found{};
  HANDLE search = FindFirstFileW(windows::Wide(dir / "*.csv").c_str(), &found);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  FindClose(search);
  EXPECT_EQ(std::wstring(found.cFileName), L"B\u00f6rse \u20ac-Daily.csv");
  int deleted = 0;
  EXPECT_TRUE(DeleteFilesIn(
      dir.path(), [](std::string_view) { return true; }, &deleted));
  EXPECT_EQ(deleted, 1);
}

TEST(WindowsFilesTest, OwnerOnlyFilesAreTheUsersAloneFromTheStartAndWhenAppendedTo) {
  TempDir dir;
  ASSERT_TRUE(WriteWholeFile(dir / "Rondex.ini", "Password,pw\r\n", FileAccess::kOwnerOnly));
  EXPECT_TRUE(IsOwnerOnly(dir / "Rondex.ini"));
  WriteFile(dir / "LogFile.txt", "");
  OpenToOthers(dir / "LogFile.txt");
  ASSERT_FALSE(IsOwnerOnly(dir / "LogFile.txt"));
  ASSERT_TRUE(AppendLine(dir / "LogFile.txt", "line", FileAccess::kOwnerOnly));
  EXPECT_TRUE(IsOwnerOnly(dir / "LogFile.txt"));
  EXPECT_EQ(ReadWholeFile(dir / "LogFile.txt"), "line\r\n");
}

TEST(WindowsFilesTest, AFileBeingReadIsReplacedWholeAndTheReaderKeepsTheOldContent) {
  TempDir dir;
  WriteFile(dir / "data.csv", "old\r\n");
  const int reader = OpenForReading(dir / "data.csv");
  ASSERT_GE(reader, 0);
  EXPECT_TRUE(WriteWholeFile(dir / "data.csv", "new content\r\n"));
  char text[16] = {};
  EXPECT_EQ(ReadAt(reader, text, sizeof text, 0), 5);
  EXPECT_EQ(std::string(text), "old\r\n");
  CloseFile(reader);
  EXPECT_EQ(ReadWholeFile(dir / "data.csv"), "new content\r\n");
  EXPECT_EQ(RemoveStaleTemporaryFiles(dir.path()), 0);
}

TEST(WindowsBatchTest, RunsUnderCmdFromAFolderNamedWithCmdsSpecialCharacters) {
  TempDir dir;
  const std::string folder = dir / "Lists a&b %PATH% ^x\\";
  ASSERT_TRUE(CreateFolders(folder));
  const std::string helpers = dir / "helpers\\";
  ASSERT_TRUE(CreateFolders(helpers));
  // The helpers' folder leads PATH, and the extra variable reaches the batch.
  WriteFile(folder + "Run.bat",
            "echo %PATH%>\"%~dp0path.txt\"\r\necho %CORVANET_TEST_WORD%>\"%~dp0word.txt\"\r\n");
  BatchProcess batch =
      StartHiddenBatch(folder + "Run.bat", folder, helpers, {"CORVANET_TEST_WORD=converted"});
  ASSERT_TRUE(batch.started());
  EXPECT_TRUE(WaitFor([&] { return !batch.Running(); }, std::chrono::seconds(30)));
  EXPECT_EQ(ReadLines(folder + "word.txt"), std::vector<std::string>{"converted"});
  const std::vector<std::string> path = ReadLines(folder + "path.txt");
  ASSERT_EQ(path.size(), 1u);
  std::string first = helpers;
  first.pop_back();
  EXPECT_TRUE(path[0].starts_with(first + ";")) << path[0];
}

}  // namespace
}  // namespace corvanet::test
