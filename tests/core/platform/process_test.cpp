#include "core/platform/process.h"
#include "core/platform/paths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/test_support.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

// A helper program in its own folder that writes its arguments, one a line, and the variable the
// batch runner adds to Complete.txt in the folder it runs in.
std::string HelperFolder(const TempDir& dir) {
  WriteFile(dir / "bin/Complete.exe",
            "#!/bin/sh\nfor a in \"$@\"; do echo \"$a\"; done >> Complete.txt\n"
            "echo \"$CORVANET_MARK\" >> Complete.txt\n");
  fs::permissions(dir / "bin/Complete.exe", fs::perms::owner_all);
  return dir / "bin/";
}

void WaitUntilEnded(BatchProcess& batch) {
  ASSERT_TRUE(WaitFor([&] { return !batch.Running(); }));
}

// Each CR LF line is one command, read with the runner's quoting: an argument written with
// QuoteBatchArgument comes back whole, whatever it holds, and nothing in it is expanded or run.
TEST(StartHiddenBatchTest, RunsEachLineWithItsQuotedArgumentsWhole) {
  TempDir dir;
  const std::string program_folder = HelperFolder(dir);
  std::vector<std::string> arguments{"/data/Meta  Stock/$NYA.csv",
                                     "it's \"quoted\"",
                                     "%PATH% $HOME ${X:-y}",
                                     "a&b;c|d>e",
                                     " -h ",
                                     "*",
                                     "$(touch run)",
                                     "`touch run`",
                                     "back\\slash",
                                     "tab\there",
                                     ""};
  // A Windows file name cannot hold '"', and cmd's quoting cannot carry one through.
  if (kSep == '\\') std::erase(arguments, "it's \"quoted\"");
  std::string line = "Call Complete.exe";
  for (const std::string& argument : arguments) line += " " + QuoteBatchArgument(argument);
  WriteFile(dir / "work/Make.bat",
            line + " *\r\n\r\nComplete.exe plain  words\r\nCall Complete.exe");
  BatchProcess batch =
      StartHiddenBatch("Make.bat", dir / "work", program_folder, {"CORVANET_MARK=m"});
  ASSERT_TRUE(batch.started());
  WaitUntilEnded(batch);
  std::vector<std::string> expected = arguments;
  expected.insert(expected.end(), {"*", "m", "plain", "words", "m", "m"});
  EXPECT_EQ(ReadLines(dir / "work/Complete.txt"), expected);
  EXPECT_FALSE(Exists(dir / "work/run")) << "a quoted command substitution is not run";

  WriteFile(dir / "other/Make.bat", "Call Complete.exe third\r\n");
  batch = StartHiddenBatch(dir / "other/Make.bat", dir / "work", program_folder);
  WaitUntilEnded(batch);
  EXPECT_EQ(ReadLines(dir / "work/Complete.txt").at(expected.size()), "third");
}

}  // namespace
}  // namespace corvanet::test
