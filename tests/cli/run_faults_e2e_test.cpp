// Faults of the data service and bad files on disk, run by corvanet-cli against the demo service:
// the datafile in question fails with a log line and a summary line, the others are updated, and
// nothing already on disk is damaged.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

class RunFaultsTest : public DailyListRunTest {
 protected:
  // Runs list 2 with logging on and checks the failing datafile and the others.
  void ExpectOnlyNyaFails(const std::string& reason) {
    const CliResult run = RunIn({"--log", "run", "2"});
    EXPECT_EQ(run.code, 3) << run.out;
    EXPECT_TRUE(Contains(run.out, "Datafiles failed: 1")) << run.out;
    EXPECT_TRUE(Contains(run.out, "  $NYA Daily: " + reason)) << run.out;
    EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), Before("$NYA.csv"));
    EXPECT_NE(ReadFile(data("Daily/$SOX.csv")), Before("$SOX.csv")) << "the others are updated";
    EXPECT_EQ(ValidateDatafile(data("Daily/$INDU.csv")), std::vector<std::string>{});
    const std::string log = ReadFile(base() + "Rondex/LogFile.txt");
    EXPECT_TRUE(Contains(log, "NYSEDaily-CompositeStats.csv")) << log;
    // Only the settings report names the password (the file is its owner's alone).
    for (const std::string& line : ReadLines(base() + "Rondex/LogFile.txt")) {
      if (line.rfind("Password.Text:", 0) == 0) continue;
      EXPECT_FALSE(Contains(line, service.password())) << line;
      EXPECT_FALSE(Contains(line, service.user() + ":")) << line;
    }
  }
};

// Every fault of a whole-file fetch: the service falls behind, so each datafile needs one.
TEST_F(RunFaultsTest, AFailedWholeFetchFailsOnlyItsDatafile) {
  service.Advance(7);
  const struct {
    const char* rule;
    const char* reason;
  } faults[] = {{"status 500", "HTTP 500"},
                {"status 404", "HTTP 404"},
                {"truncate", "body cut short"},
                {"drop", "connection dropped"}};
  for (const auto& fault : faults) {
    SCOPED_TRACE(fault.rule);
    service.SetFaults({std::string("*/NYSEDaily-CompositeStats.csv ") + fault.rule});
    ExpectOnlyNyaFails(fault.reason);
    EXPECT_EQ(ReadFile(data("Base/NYSEDaily-CompositeStats.csv")).size(),
              std::filesystem::file_size(data("Base/NYSEDaily-CompositeStats.csv")));
  }
}

TEST_F(RunFaultsTest, ATimeOutFailsOnlyItsDatafile) {
  service.Advance(7);
  ::setenv("CORVANET_HTTP_TIMEOUT", "1", 1);
  service.SetFaults({"*/NYSEDaily-CompositeStats.csv delay 2500"});
  ExpectOnlyNyaFails("timed out");
  ::unsetenv("CORVANET_HTTP_TIMEOUT");
}

TEST_F(RunFaultsTest, WrongCredentialsFailEveryDatafileAndWriteNothing) {
  ASSERT_EQ(RunIn({"settings", "Password=wrong"}).code, 0);
  service.Advance(1);
  const int whole_files = Requests("CompositeStats");
  const CliResult run = RunList(2);
  EXPECT_EQ(run.code, 3);
  // Merged with the update file of the last run, which the datafiles already hold.
  EXPECT_TRUE(Contains(run.out,
                       "Problem: Daily: Update-Daily.csv could not be fetched: HTTP 401 "
                       "(the data service refused the user name and password); merged with the "
                       "update file kept from an earlier run"))
      << run.out;
  EXPECT_EQ(Requests("CompositeStats"), whole_files) << "nothing needed a request";
  EXPECT_EQ(Snapshot("Daily"), before_);
}

// An update file that fails, in each way, does not skip its period: a datafile missing on disk is
// made from its base copy and the update file kept from the last run, a missing base copy is
// fetched whole as usual, and the update file's failure is named (exit 3). The kept update file
// survives an empty answer.
TEST_F(RunFaultsTest, AFailedUpdateFileMergesWithTheKeptOne) {
  ::setenv("CORVANET_RETRY_PAUSE_MS", "0", 1);
  const std::string kept_update = ReadFile(data("Base/Update-Daily.csv"));
  const std::string sox_base = data("Base/SOXDaily-CompositeStats.csv");
  ASSERT_TRUE(Exists(sox_base));
  const struct {
    const char* what;
    std::vector<std::string> faults;
    std::string cause;
  } cases[] = {
      {"HTTP 500", {"*/Update-Daily.csv status 500"}, "could not be fetched: HTTP 500"},
      {"cut short", {"*/Update-Daily.csv truncate"}, "could not be fetched: body cut short"},
      {"empty", {}, "holds no update rows"},
      {"unreachable", {}, "could not be fetched: could not connect"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::filesystem::remove(data("Daily/$NYA.csv"));
    std::filesystem::remove(data("Daily/$SOX.csv"));
    std::filesystem::remove(sox_base);
    service.SetFaults(c.faults);
    const std::string served = ReadFile(ServiceFile("Update-Daily.csv"));
    if (std::string(c.what) == "empty") WriteFile(ServiceFile("Update-Daily.csv"), "");
    if (std::string(c.what) == "unreachable") service.Stop();
    const CliResult run = RunList(2);
    EXPECT_EQ(run.code, 3) << run.out;
    EXPECT_TRUE(Contains(run.out, "Problem: Daily: Update-Daily.csv " + c.cause)) << run.out;
    EXPECT_TRUE(Contains(run.out, "; merged with the update file kept from an earlier run"))
        << run.out;
    EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), Before("$NYA.csv"));
    EXPECT_EQ(ReadFile(data("Base/Update-Daily.csv")), kept_update);
    if (service.running()) {
      EXPECT_EQ(ReadFile(data("Daily/$SOX.csv")), Before("$SOX.csv"));
    } else {
      EXPECT_TRUE(Contains(run.out, "  $SOX Daily: could not connect")) << run.out;
      service.Start();
    }
    WriteFile(ServiceFile("Update-Daily.csv"), served);
    service.SetFaults({});
    ASSERT_EQ(RunList(2).code, 0);
  }
  ::unsetenv("CORVANET_RETRY_PAUSE_MS");
}

TEST_F(RunFaultsTest, GarbledUpdateLinesAreLeftOutAndTheRestMerges) {
  service.Advance(1);
  std::string update = "garbage\r\n\r\nNYSE\r\nSOX             D,2024,short\r\n";
  update += ReadFile(ServiceFile("Update-Daily.csv"));
  WriteFile(ServiceFile("Update-Daily.csv"), update);
  const CliResult run = RunList(2);
  EXPECT_EQ(run.code, 3) << run.out;
  EXPECT_TRUE(Contains(run.out, "Datafiles updated by merge: 3")) << run.out;
  // The lines that name a listed symbol are reported; the others belong to nobody the run takes.
  EXPECT_TRUE(Contains(run.out, "Rows left out: 2\n")) << run.out;
  EXPECT_TRUE(Contains(run.out, "$NYA Daily: Update-Daily.csv line 3: the row is blank"))
      << run.out;
  EXPECT_EQ(ValidateDatafile(data("Daily/$SOX.csv")), std::vector<std::string>{});
}

TEST_F(RunFaultsTest, AGarbledBaseCopyIsReplacedOrLeavesTheDatafileAlone) {
  service.Advance(1);
  const std::string base_copy = data("Base/NYSEDaily-CompositeStats.csv");
  std::vector<std::string> lines = ReadLines(base_copy);
  lines[lines.size() / 2] = "D,2025,garbled";
  WriteLines(base_copy, lines);
  service.SetFaults({"*/NYSEDaily-CompositeStats.csv status 500"});
  ExpectOnlyNyaFails("HTTP 500");

  service.SetFaults({});
  const CliResult healed = RunList(2);
  EXPECT_EQ(healed.code, 0) << healed.out;
  EXPECT_EQ(ValidateDatafile(data("Daily/$NYA.csv")), std::vector<std::string>{});
}

TEST_F(RunFaultsTest, SymbolsThatCannotBeFileNamesAreSkipped) {
  std::vector<std::string> list = ReadLines(base() + "Lists/Download2.csv");
  list.insert(list.begin() + 6, {"Escape,$../../x", "Slash,$A/B"});
  WriteLines(base() + "Lists/Download2.csv", list);
  // The service lists them too, so the list check keeps them and they reach the run.
  std::string master = ReadFile(ServiceFile("Masterfile2.csv"));
  master += "Escape,$../../x\r\nSlash,$A/B\r\n";
  WriteFile(ServiceFile("Masterfile2.csv"), master);
  const CliResult run = RunIn({"--log", "run", "2"});
  EXPECT_EQ(run.code, 3);
  EXPECT_TRUE(Contains(run.out, "$../../x Daily: symbol cannot be used in a file name")) << run.out;
  EXPECT_TRUE(Contains(run.out, "$A/B Daily: symbol cannot be used in a file name"));
  EXPECT_TRUE(Contains(run.out, "Datafiles failed: 2"));
  EXPECT_FALSE(Exists(base() + "CSVFiles/x.csv"));
  EXPECT_TRUE(Contains(ReadFile(base() + "Rondex/LogFile.txt"), "cannot be used in a file name"));
}

// A full disk: every failed write is reported with its file, no file is left cut short, and the
// run goes on with the next datafile.
TEST_F(RunTest, AFullDiskLosesNothingAndSaysWhichFilesFailed) {
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
    EXPECT_FALSE(Contains(name, ".tmp-")) << name;
    if (entry.is_regular_file() && entry.path().parent_path().filename() != "Base" &&
        entry.path().extension() == ".csv") {
      EXPECT_EQ(ValidateDatafile(name), std::vector<std::string>{}) << name;
    }
  }
}

}  // namespace
}  // namespace corvanet::test
