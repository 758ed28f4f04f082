// What a user already has is never lost, whatever the service sends or the settings say: runs of
// corvanet-cli against the demo service with hostile bodies, master files and folders.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

class DataSafetyTest : public ListTwoRunTest {
 protected:
  std::string NyaFile() const { return ServiceFile("NYSEDaily-CompositeStats.csv"); }
};

// A master file that the field reader would read shifted is never installed, so the list check
// cannot empty the lists. One cut short at a line boundary reads as valid: it is held back until a
// second fetch gives the same bytes, and a list is copied under a name of its own before it loses
// anything.
TEST_F(DataSafetyTest, ABadMasterFileNeverEmptiesTheLists) {
  const std::string list = ReadFile(base() + "Lists/Download2.csv");
  const std::string installed = ReadFile(base() + "Masterfile2.csv");
  const std::string whole = ReadFile(ServiceFile("Masterfile2.csv"));
  std::vector<std::string> master = ReadLines(ServiceFile("Masterfile2.csv"));
  master[0] = "\"NYSE Composite,$NYA";  // still one comma, but an unbalanced quote
  WriteLines(ServiceFile("Masterfile2.csv"), master);
  EXPECT_EQ(RunIn({"settings"}).code, 0);  // start-up fetches the master file
  RunIn({"--log", "refresh-masterfile"});
  EXPECT_EQ(ReadFile(base() + "Lists/Download2.csv"), list);
  EXPECT_EQ(ReadFile(base() + "Masterfile2.csv"), installed);
  EXPECT_TRUE(Contains(Log(), "does not read as a name and a symbol")) << Log();

  // Cut short once, then whole again: nothing changes, and the held file goes.
  const std::vector<std::string> cut = {"Dow Jones Industrial Average,$INDU"};
  const std::string held = data("Base/Masterfile2.csv.held");
  WriteLines(ServiceFile("Masterfile2.csv"), cut);
  const CliResult refused = RunIn({"list", "2"});  // start-up's fetch is the first
  EXPECT_EQ(refused.code, 0);
  EXPECT_EQ(ReadFile(base() + "Masterfile2.csv"), installed);
  EXPECT_EQ(ReadLines(held), cut);
  WriteFile(ServiceFile("Masterfile2.csv"), whole);
  EXPECT_EQ(RunIn({"refresh-masterfile"}).code, 0);
  EXPECT_FALSE(Exists(held));
  EXPECT_EQ(ReadFile(base() + "Lists/Download2.csv"), list);

  // Cut short twice alike: the service means it. The list is kept before it loses two symbols.
  WriteLines(ServiceFile("Masterfile2.csv"), cut);
  EXPECT_EQ(RunIn({"list", "2"}).code, 0);
  EXPECT_EQ(ReadLines(held), cut);
  EXPECT_EQ(ReadFile(base() + "Lists/Download2.csv"), list);
  const CliResult second = RunIn({"refresh-masterfile"});
  EXPECT_EQ(second.code, 0) << second.out;
  std::vector<std::string> copies;
  for (const auto& entry : fs::directory_iterator(base() + "Lists/Copies")) {
    copies.push_back(entry.path().string());
  }
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_EQ(ReadFile(copies[0]), list);
  EXPECT_TRUE(Contains(second.out, "Download List 2 as it was is kept in " + copies[0] + "\n"))
      << second.out;
  EXPECT_EQ(ReadLines(base() + "Lists/Download2.csv").size(), 6U);
}

// A FIFO where the program expects a file would hold open() for ever, and the run lock with it: the
// run ends, a datafile that needs the path fails with a message, and the FIFO stays.
TEST_F(DataSafetyTest, AFifoWhereAFileBelongsNeverHoldsARun) {
  struct Case {
    std::string path;
    int code;
    std::string said;
  };
  const Case cases[] = {
      {data("Daily/$NYA.csv"), 3, "$NYA Daily: "},
      {data("Base/SOXDaily-CompositeStats.csv"), 3, "CompositeStats.csv: not a regular file"},
      {base() + "Lists/Download2.csv", 4, "Download2.csv, is missing"},
      {base() + "Rondex/LogFile.txt", 0, "Datafiles failed: 0"},
      {data("PX/Daily/$INDU.csv"), 3, "$INDU.csv: not a regular file"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    const std::string content = ReadFile(c.path);
    fs::remove(c.path);
    if (!MakeFifo(c.path)) GTEST_SKIP() << "this file system holds no FIFOs";
    const CliResult run = RunProcess("--base-dir '" + base_arg() + "' --log run 2", "", 60);
    EXPECT_EQ(run.code, c.code) << run.out << run.err;
    EXPECT_TRUE(Contains(run.out, c.said)) << run.out;
    if (fs::is_fifo(c.path)) {
      fs::remove(c.path);
      WriteFile(c.path, content);
    }
  }
}

// Clearing deletes datafiles only, and only in a folder the program owns.
TEST_F(DataSafetyTest, ClearingStaysInItsFolder) {
  WriteFile(dir / "thesis.docx", "years of work");
  WriteFile(dir / "notes.csv", "mine");
  for (const char* folder : {"PathToDataFiles=../", "PathToDataFiles="}) {
    SCOPED_TRACE(folder);
    ASSERT_EQ(RunIn({"settings", folder}).code, 0);
    const CliResult clear = RunIn({"clear-datafiles"});
    EXPECT_EQ(clear.code, 4);
    EXPECT_TRUE(Contains(clear.out, "Datafiles were not cleared")) << clear.out;
    EXPECT_EQ(ReadFile(dir / "thesis.docx"), "years of work");
    EXPECT_EQ(ReadFile(dir / "notes.csv"), "mine");
    EXPECT_TRUE(Exists(base() + "Masterfile2.csv"));
  }
  ASSERT_EQ(RunIn({"settings", "PathToDataFiles=CSVFiles/"}).code, 0);
  WriteFile(data("Daily/readme.txt"), "mine");
  EXPECT_EQ(RunIn({"clear-datafiles"}).code, 0);
  EXPECT_FALSE(Exists(data("Daily/$NYA.csv")));
  EXPECT_TRUE(Exists(data("Daily/readme.txt")));
  EXPECT_TRUE(Exists(data("Base/NYSEDaily-CompositeStats.csv")));
}

// Temporary files a dead run left (under this very process id, as a container started afresh
// would give) block no write and are swept from every folder the program writes to.
TEST_F(DataSafetyTest, LeftoverTemporaryFilesBlockNothingAndAreSwept) {
  service.Advance(1);
  const std::string pid = std::to_string(::getpid());
  std::vector<std::string> leftovers;
  for (const char* file :
       {"CSVFiles/Daily/$NYA.csv", "CSVFiles/Base/Update-Daily.csv", "CSVFiles/PX/Daily/$SOX.csv",
        "Lists/Download2.csv", "Rondex/Rondex.ini", "Masterfile2.csv"}) {
    for (int counter = 0; counter < 3; ++counter) {
      leftovers.push_back(base() + file + ".tmp-" + pid + "-" + std::to_string(counter));
      WriteFile(leftovers.back(), "half");
    }
  }
  const CliResult run = RunList(2);
  EXPECT_EQ(run.code, 0) << run.out;
  EXPECT_TRUE(Contains(run.out, "Datafiles updated by merge: 3")) << run.out;
  for (const std::string& leftover : leftovers) EXPECT_FALSE(Exists(leftover)) << leftover;
}

// Folders deleted by hand are made again at the start of a run.
TEST_F(DataSafetyTest, DeletedFoldersAreMadeAgain) {
  fs::remove_all(data("Daily"));
  fs::remove_all(data("PX"));
  const CliResult run = RunList(2);
  EXPECT_EQ(run.code, 0) << run.out;
  EXPECT_EQ(ValidateDatafile(data("Daily/$NYA.csv")), std::vector<std::string>{});
  EXPECT_TRUE(Exists(data("PX/Daily/$NYA.csv")));
}

// Symbols reach the service percent-encoded; their files keep the listed names.
TEST_F(DataSafetyTest, SymbolsWithBlanksAndHashesReachTheServiceAsThemselves) {
  fs::copy_file(NyaFile(), ServiceFile("BRK BDaily-CompositeStats.csv"));
  std::string update = ReadFile(ServiceFile("Update-Daily.csv"));
  for (const std::string& line : ReadLines(ServiceFile("Update-Daily.csv"))) {
    if (line.rfind("NYSE ", 0) == 0) update += "BRK B" + line.substr(5) + "\r\n";
  }
  WriteFile(ServiceFile("Update-Daily.csv"), update);
  WriteFile(ServiceFile("Masterfile2.csv"),
            ReadFile(ServiceFile("Masterfile2.csv")) + "Berkshire,BRK B\r\nHash,NYSE#\r\n");
  std::vector<std::string> list = ReadLines(base() + "Lists/Download2.csv");
  list.insert(list.end(), {"Berkshire,BRK B", "Hash,NYSE#"});
  WriteLines(base() + "Lists/Download2.csv", list);
  const CliResult run = RunList(2);
  EXPECT_EQ(ReadFile(data("Daily/BRK B.csv")), ReadFile(data("Daily/$NYA.csv"))) << run.out;
  EXPECT_EQ(Requests("/ovalith/data/NYSE#Daily-CompositeStats.csv"), 1) << service.log();
  EXPECT_TRUE(Contains(run.out, "NYSE# Daily: HTTP 404")) << run.out;
  EXPECT_FALSE(Exists(data("Daily/NYSE#.csv")));
}

}  // namespace
}  // namespace corvanet::test
