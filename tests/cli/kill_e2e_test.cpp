// An All Periods run with statistic files, price files and MetaStock conversion, killed with
// SIGKILL at random moments: after each kill every file is the old one or the new one, whole, and
// the next run leaves the tree an uninterrupted run leaves. CORVANET_KILL_ROUNDS sets how often
// (CI runs 20; a thorough check 100).
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <thread>

#include "cli/run_fixture.h"
#include "support/metastock_reader.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;
using Tree = std::map<std::string, std::string>;

int Rounds() {
  const char* text = std::getenv("CORVANET_KILL_ROUNDS");
  return text != nullptr && std::atoi(text) > 0 ? std::atoi(text) : 2;
}

// Files whose content a run appends to or stamps with the time, and the merge index, which names
// inodes and times (what the next run makes of an index a kill left is what the test checks):
// not part of the comparison.
bool Volatile(const std::string& relative) {
  for (const char* name :
       {"LogFile.txt", "MSXlog.txt", "RunLock.txt", "Complete.txt", "MergeIndex.txt"}) {
    if (relative.ends_with(name)) return true;
  }
  return false;
}

Tree ReadTree(const std::string& root) {
  Tree tree;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_regular_file()) continue;
    const std::string relative = fs::relative(entry.path(), root).string();
    if (!Volatile(relative)) tree[relative] = ReadFile(entry.path().string());
  }
  return tree;
}

void CopyTree(const std::string& from, const std::string& to) {
  fs::remove_all(to);
  fs::copy(from, to, fs::copy_options::recursive);
}

class KillTest : public RunTest {
 protected:
  void SetUp() override {
    RunTest::SetUp();
    ASSERT_EQ(RunIn({"settings", "ImplementSpecialFunctions=1", "MakeMetaStockPxFiles=1",
                     "OHLCVV=1", "EqWtOHLCVV=1", "AutoCreateOneStatFiles=1", "RunWithAllPeriods=1",
                     "Advances=1", "NewHighs=1"})
                  .code,
              0);
    ASSERT_EQ(RunIn({"list", "7", "vendor", "eSignal", "periods", "D,W,M,Q"}).code, 0);
    ASSERT_EQ(RunList(7).code, 0);
    service.Advance(1);
  }
  // Starts the run as its own process and kills it after `after`; false when it ended first.
  bool RunAndKill(std::chrono::microseconds after) const {
    const pid_t child = ::fork();
    if (child == 0) {
      ::chdir(start().c_str());
      ::execl(BinaryPath("corvanet-cli").c_str(), "corvanet-cli", "--base-dir", base_arg().c_str(),
              "run", "7", static_cast<char*>(nullptr));
      ::_exit(127);
    }
    std::this_thread::sleep_for(after);
    const bool killed = ::kill(child, SIGKILL) == 0;
    int status = 0;
    ::waitpid(child, &status, 0);
    // A converter batch the run started goes on and holds the run lock until it ends.
    const int lock = ::open((base() + "Rondex/RunLock.txt").c_str(), O_RDWR | O_CLOEXEC);
    if (lock >= 0) {
      ::flock(lock, LOCK_EX);
      ::close(lock);
    }
    return killed && WIFSIGNALED(status);
  }
};

TEST_F(KillTest, EveryFileIsOldOrNewAndTheNextRunFinishesTheJob) {
  const std::string old_copy = dir / "old";
  CopyTree(base(), old_copy);
  const Tree old_tree = ReadTree(old_copy);
  const auto started = std::chrono::steady_clock::now();
  ASSERT_EQ(RunList(7).code, 0);
  const auto duration = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::steady_clock::now() - started);
  const Tree new_tree = ReadTree(base());

  std::mt19937 random(20261123);
  std::uniform_int_distribution<long> moment(0, duration.count());
  int killed = 0;
  for (int round = 0; round < Rounds(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    CopyTree(old_copy, base());
    if (RunAndKill(std::chrono::microseconds(moment(random)))) ++killed;
    for (const auto& [name, content] : ReadTree(base())) {
      if (name.find(".tmp-") != std::string::npos) continue;  // swept by the next run
      const auto old_file = old_tree.find(name);
      const auto new_file = new_tree.find(name);
      const bool is_old = old_file != old_tree.end() && old_file->second == content;
      const bool is_new = new_file != new_tree.end() && new_file->second == content;
      // Batch files are appended to by design; MetaStock folders are checked as folders.
      if (name.ends_with(".bat") || name.starts_with("MetaStock/")) continue;
      EXPECT_TRUE(is_old || is_new) << name;
    }
    for (const char* folder : {"MetaStock/Daily", "MetaStock/EqWtPriceFiles/Weekly"}) {
      EXPECT_EQ(ReadMetastockFolder(base() + folder).problems, std::vector<std::string>{})
          << folder;
    }
    ASSERT_EQ(RunList(7).code, 0);
    const Tree after = ReadTree(base());
    for (const auto& [name, content] : new_tree) {
      const auto found = after.find(name);
      ASSERT_NE(found, after.end()) << name;
      EXPECT_EQ(found->second, content) << name;
    }
    EXPECT_EQ(after.size(), new_tree.size());
  }
  RecordProperty("killed", killed);
  std::printf("kill test: %d of %d runs killed before their end\n", killed, Rounds());
  EXPECT_GT(killed, 0) << "no kill landed inside a run";
}

}  // namespace
}  // namespace corvanet::test
