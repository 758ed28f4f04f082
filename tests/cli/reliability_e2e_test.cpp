// Runs that meet each other or a failing service: one run at a time per installation.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

class ReliabilityTest : public RunTest {
 protected:
  void SetUp() override {
    RunTest::SetUp();
    MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
  }
  // Starts `corvanet-cli run N` as its own process; its output goes to `output`.
  pid_t StartRun(int list, const std::string& output) const {
    const std::string command = "cd '" + start() + "' && exec '" + BinaryPath("corvanet-cli") +
                                "' --base-dir '" + base_arg() + "' run " + std::to_string(list) +
                                " >'" + output + "' 2>&1";
    const pid_t child = ::fork();
    if (child == 0) {
      ::execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
      ::_exit(127);
    }
    return child;
  }
  static int ExitStatus(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
};

// A second run while one is in progress is refused with who holds the installation; the first
// goes on undisturbed. (The kill test shows the lock goes with a killed run.)
TEST_F(ReliabilityTest, OneRunAtATimePerInstallation) {
  service.SetFaults({"*/DJ30Daily-CompositeStats.csv delay 1500"});
  const std::string output = dir / "first.txt";
  const pid_t first = StartRun(2, output);
  ASSERT_TRUE(WaitFor([&] { return Exists(data("Daily/$NYA.csv")); }));
  for (const auto& args : {std::initializer_list<std::string>{"run", "2"}, {"stats", "2"}}) {
    const CliResult second = RunIn(args);
    EXPECT_EQ(second.code, 5) << second.out;
    EXPECT_TRUE(Contains(second.out, "Another run has been in progress since ")) << second.out;
    EXPECT_TRUE(Contains(second.out, "(process " + std::to_string(first) + ").")) << second.out;
  }
  EXPECT_EQ(ExitStatus(first), 0) << ReadFile(output);
  for (const char* name : {"$NYA.csv", "$INDU.csv", "$SOX.csv"}) {
    EXPECT_EQ(ValidateDatafile(data(std::string("Daily/") + name)), std::vector<std::string>{});
  }
}

// A full disk: every failed write is reported with its file, no file is left cut short, and the
// run goes on with the next datafile.
TEST_F(ReliabilityTest, AFullDiskLosesNothingAndSaysWhichFilesFailed) {
  const std::string small = dir / "small";
  CreateFolders(small);
  if (::system(("mount -t tmpfs -o size=700k tmpfs '" + small + "' 2>/dev/null").c_str()) != 0) {
    GTEST_SKIP() << "no small file system can be mounted here";
  }
  struct Unmount {
    std::string folder;
    ~Unmount() { ::system(("umount '" + folder + "'").c_str()); }
  } unmount{small};
  ASSERT_EQ(RunIn({"settings", "PathToDataFiles=" + small + "/"}).code, 0);
  MakeList(2, "eSignal", "D,W", {"$NYA", "$INDU", "$SOX", "$COMPQ", "$SPX"});
  const CliResult run = RunIn({"--log", "run", "2"});
  EXPECT_EQ(run.code, 3) << run.out;
  EXPECT_TRUE(Contains(run.out, "No space left on device")) << run.out;
  EXPECT_TRUE(Contains(run.out, small + "/")) << "the failed file is named: " << run.out;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(small)) {
    const std::string name = entry.path().string();
    EXPECT_EQ(name.find(".tmp-"), std::string::npos) << name;
    if (entry.is_regular_file() && entry.path().parent_path().filename() != "Base" &&
        entry.path().extension() == ".csv") {
      EXPECT_EQ(ValidateDatafile(name), std::vector<std::string>{}) << name;
    }
  }
}

}  // namespace
}  // namespace corvanet::test
