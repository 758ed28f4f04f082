#include "core/platform/process.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/test_support.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

// A helper program in its own folder that leaves a mark in the folder it runs in.
std::string HelperFolder(const TempDir& dir) {
  WriteFile(dir / "bin/Complete.exe", "#!/bin/sh\necho \"$1\" >> Complete.txt\n");
  fs::permissions(dir / "bin/Complete.exe", fs::perms::owner_all);
  return dir / "bin/";
}

TEST(StartHiddenBatchTest, RunsCrLfBatchLinesNamedRelativeOrAbsolute) {
  TempDir dir;
  const std::string program_folder = HelperFolder(dir);
  WriteFile(dir / "work/Make.bat", "Call Complete.exe first\r\nCall Complete.exe second\r\n");
  ASSERT_TRUE(StartHiddenBatch("Make.bat", dir / "work", program_folder));
  ASSERT_TRUE(WaitFor([&] { return ReadLines(dir / "work/Complete.txt").size() == 2; }));
  EXPECT_EQ(ReadLines(dir / "work/Complete.txt"), (std::vector<std::string>{"first", "second"}));

  WriteFile(dir / "other/Make.bat", "Call Complete.exe third\r\n");
  ASSERT_TRUE(StartHiddenBatch(dir / "other/Make.bat", dir / "work", program_folder));
  ASSERT_TRUE(WaitFor([&] { return ReadLines(dir / "work/Complete.txt").size() == 3; }));
  EXPECT_EQ(ReadLines(dir / "work/Complete.txt").back(), "third");
}

}  // namespace
}  // namespace corvanet::test
