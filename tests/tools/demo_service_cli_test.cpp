// Mistakes on the command line and in the environment: each gives a message that names the
// problem and a non-zero exit status (2 for usage mistakes, 1 for failures of the work).
#include <gtest/gtest.h>

#include "support/demo_service.h"

namespace corvanet::test {
namespace {

ProgramResult RunTool(const std::vector<std::string>& args) {
  return RunProgram(BinaryPath("corvanet-demo-service"), args, std::chrono::seconds(20));
}

void ExpectFailure(const std::vector<std::string>& args, int exit_code, const std::string& text) {
  const ProgramResult result = RunTool(args);
  std::string command;
  for (const std::string& arg : args) command += arg + " ";
  EXPECT_EQ(result.exit_code, exit_code) << command << "\n" << result.err;
  EXPECT_NE(result.err.find(text), std::string::npos) << command << "\n" << result.err;
}

TEST(DemoServiceCli, UsageMistakesExitWithStatus2) {
  TempDir dir;
  const std::string root = dir / "root";
  ExpectFailure({}, 2, "usage:");
  ExpectFailure({"launch"}, 2, "unknown command 'launch'");
  ExpectFailure({"generate", "--root", root, "--colour", "red"}, 2, "unknown option --colour");
  ExpectFailure({"generate", "--composites", "3"}, 2, "option --root is required");
  ExpectFailure({"generate", "--root", root, "--composites", "many"}, 2,
                "--composites wants a whole number from 1 to 100000, not 'many'");
  ExpectFailure({"generate", "--root", root, "--years", "0"}, 2, "--years wants");
  ExpectFailure({"generate", "--root", root, "--years"}, 2, "option --years needs a value");
  ExpectFailure({"generate", "--root", root, "--message-kind", "2"}, 2, "--message-kind wants");
  ExpectFailure({"generate", "--root", root, "extra"}, 2, "unexpected argument 'extra'");
  ExpectFailure({"advance", "--root", root, "--bars", "-1"}, 2, "--bars wants");
  ExpectFailure({"serve", "--root", root, "--password", "p"}, 2, "option --user is required");
  ExpectFailure({"serve", "--root", root, "--user", "a:b", "--password", "p"}, 2,
                "--user cannot hold ':'");
  ExpectFailure({"serve", "--root", root, "--user", "u", "--password", "p", "--fault", "*/x boom"},
                2, "unknown fault action 'boom'");
  EXPECT_FALSE(Exists(root));  // nothing was made on the way
  EXPECT_EQ(RunTool({"--help"}).exit_code, 0);
}

TEST(DemoServiceCli, RootsThatCannotBeUsedExitWithStatus1) {
  TempDir dir;
  WriteFile(dir / "file", "not a folder");
  ExpectFailure({"generate", "--root", dir / "file/root"}, 1, "cannot create the root folder");
  ExpectFailure({"advance", "--root", dir / "missing"}, 1, "does not exist");
  ExpectFailure({"advance", "--root", dir.path()}, 1, "run generate first");
  ExpectFailure({"serve", "--root", dir / "missing", "--user", "u", "--password", "p"}, 1,
                "no data tree under");
}

TEST(DemoServiceCli, ServeReportsABadRulesFileAndAPortInUse) {
  DemoService running;
  WriteLines(running.root() + "faults.txt", {"# fine", "*/Update-Daily.csv delay soon"});
  ExpectFailure({"serve", "--root", running.root(), "--user", "u", "--password", "p", "--faults",
                 running.root() + "faults.txt"},
                1, "line 2: delay wants milliseconds");
  ExpectFailure({"serve", "--root", running.root(), "--user", "u", "--password", "p", "--faults",
                 running.root() + "missing.txt"},
                1, "missing.txt: cannot read it");
  ExpectFailure({"serve", "--root", running.root(), "--user", "u", "--password", "p", "--port",
                 std::to_string(running.port())},
                1, "cannot listen on 127.0.0.1:" + std::to_string(running.port()));
}

}  // namespace
}  // namespace corvanet::test
