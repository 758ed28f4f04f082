// Whole runs of corvanet-cli against the demo data service.
#include <gtest/gtest.h>

#include "cli/run_fixture.h"
#include "core/platform/text.h"

namespace corvanet::test {
namespace {

// The newest row of a service symbol in the service's update file of a period.
std::string NewestUpdateRow(const std::string& update_file, const std::string& symbol) {
  std::string newest;
  for (const std::string& line : ReadLines(update_file)) {
    if (line.substr(0, 15).find_first_not_of(' ') != std::string::npos &&
        std::string(Trim(line.substr(0, 15))) == symbol) {
      newest = line.substr(16);
    }
  }
  return newest;
}

// The first run fetches every datafile whole; four bars on, a run only merges; more than five
// bars behind, each datafile is fetched whole once and merged.
TEST_F(RunTest, FirstRunFetchesEveryBaseCopyTheNextOnlyMergesAndFarBehindFetchesOnce) {
  MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
  const CliResult first = RunList(2);
  ASSERT_EQ(first.code, 0) << first.out << first.err;
  EXPECT_TRUE(Contains(first.out, "Datafiles fetched whole: 3")) << first.out;
  for (const char* name : {"Daily/$NYA.csv", "Daily/$INDU.csv", "Daily/$SOX.csv"}) {
    EXPECT_EQ(ValidateDatafile(data(name)), std::vector<std::string>{}) << name;
  }

  // Four new bars: each base copy now ends on the oldest update row, the last day a merge can
  // still find its overlap without fetching the whole file.
  service.Advance(4);
  const int whole_fetches = Requests("CompositeStats.csv");
  const CliResult second = RunList(2);
  ASSERT_EQ(second.code, 0) << second.out;
  EXPECT_TRUE(Contains(second.out, "Datafiles updated by merge: 3")) << second.out;
  EXPECT_TRUE(Contains(second.out, "Datafiles fetched whole: 0"));
  EXPECT_EQ(Requests("CompositeStats.csv"), whole_fetches) << "no datafile fetched whole";
  const std::string update = ServiceFile("Update-Daily.csv");
  EXPECT_EQ(LastRow("Daily/$NYA.csv"), NewestUpdateRow(update, "NYSE"));
  EXPECT_EQ(LastRow("Daily/$INDU.csv"), NewestUpdateRow(update, "DJ30"));
  EXPECT_EQ(LastRow("Daily/$SOX.csv"), NewestUpdateRow(update, "SOX"));

  service.Advance(7);
  const int before = Requests("NYSEDaily-CompositeStats.csv");
  const CliResult far_behind = RunList(2);
  ASSERT_EQ(far_behind.code, 0) << far_behind.out;
  EXPECT_TRUE(Contains(far_behind.out, "Datafiles fetched whole: 3")) << far_behind.out;
  EXPECT_EQ(Requests("NYSEDaily-CompositeStats.csv"), before + 1);
  EXPECT_EQ(LastRow("Daily/$NYA.csv"), NewestUpdateRow(update, "NYSE"));
  EXPECT_EQ(ValidateDatafile(data("Daily/$SOX.csv")), std::vector<std::string>{});
}

TEST_F(RunTest, EachVendorNamesItsDatafilesItsOwnWay) {
  const std::vector<std::string> issues{"$INDU", "$SOX"};
  const struct {
    const char* vendor;
    std::vector<std::string> files;
  } cases[] = {
      {"eSignal", {"Daily/$INDU.csv", "Daily/$SOX.csv"}},
      {"Reuters", {"Daily/_DJI.csv", "Daily/_SOXX.csv"}},
      {"Yahoo", {"Daily/^DJI.csv", "Daily/^SOX.csv"}},
      {"Other", {"DJ30Daily-CompositeStats.csv", "SOXDaily-CompositeStats.csv"}},
  };
  for (const auto& c : cases) {
    MakeList(1, c.vendor, "D", issues);
    ASSERT_EQ(RunList(1).code, 0) << c.vendor;
    for (const std::string& file : c.files) {
      EXPECT_EQ(ValidateDatafile(data(file)), std::vector<std::string>{}) << c.vendor << file;
    }
  }
}

TEST_F(RunTest, AllDailyWithForceFullFetchesTheWholeMasterListEveryRun) {
  ASSERT_EQ(RunIn({"settings", "AllDailyForceFull=1"}).code, 0);
  ASSERT_EQ(RunIn({"list", "6", "vendor", "eSignal", "periods", "D"}).code, 0);
  ASSERT_EQ(RunList(6).code, 0);
  const CliResult second = RunList(6);
  ASSERT_EQ(second.code, 0) << second.out;
  EXPECT_TRUE(Contains(second.out, "Datafiles fetched whole: 12")) << second.out;
  EXPECT_EQ(Requests("XLKDaily-CompositeStats.csv"), 2);
}

TEST_F(RunTest, AWithdrawnSymbolLeavesTheUserListsWithAReport) {
  MakeList(2, "eSignal", "D", {"$NYA", "$SOX"});
  std::string master;
  for (const std::string& line : ReadLines(ServiceFile("Masterfile2.csv"))) {
    if (!Contains(line, "$SOX")) master += line + "\r\n";
  }
  WriteFile(ServiceFile("Masterfile2.csv"), master);
  const CliResult run = RunList(2);
  EXPECT_TRUE(Contains(run.out,
                       "Due to an update in Tessaly's Compilation List\n"
                       "the following symbols have been removed from your\n"
                       "download lists:\n"
                       "Download List 2 - Symbol:  $SOX\n"))
      << run.out;
  const std::string list = ReadFile(base() + "Lists/Download2.csv");
  EXPECT_FALSE(Contains(list, "$SOX"));
  EXPECT_TRUE(Contains(list, "$NYA"));
  EXPECT_FALSE(Contains(ReadFile(base() + "Masterfile2.csv"), "$SOX"));
}

TEST_F(RunTest, SystemMessagesAreShownAsTheOptionsAsk) {
  MakeList(2, "eSignal", "D", {"$NYA"});
  ASSERT_EQ(RunIn({"settings", "SystemMessagesYes=True", "DownloadCompleteMessageYes=True"}).code,
            0);
  const auto message = [&](const std::vector<std::string>& lines) {
    WriteLines(ServiceFile("Zennor_System.txt"), lines);
  };
  message({"-1", "", "Hidden"});
  CliResult run = RunList(2);
  EXPECT_FALSE(Contains(run.out, "Hidden"));
  EXPECT_TRUE(Contains(run.out, "Update for Download List 2 completed on "));

  message({"0", "", "Corvanet 4.2 is out", "exit", "never shown"});
  run = RunList(2);
  EXPECT_TRUE(Contains(run.out, "Corvanet 5.2 is out \nUpdate for Download List 2")) << run.out;
  EXPECT_FALSE(Contains(run.out, "never shown"));

  message({"1", "http://127.0.0.1/news", "Visit us"});
  run = RunIn({"--yes", "run", "2"});
  EXPECT_TRUE(Contains(run.out, "Do you want to go to the web site now?")) << run.out;
  EXPECT_TRUE(Contains(run.out, "Open: http://127.0.0.1/news"));

  std::filesystem::remove(ServiceFile("Zennor_System.txt"));
  run = RunList(2);
  EXPECT_EQ(run.code, 0) << "a missing message file never fails the run";
  EXPECT_FALSE(Contains(run.out, "Visit us")) << "a withdrawn message is not shown again";
  EXPECT_TRUE(Contains(run.out, "Update for Download List 2 completed on "));
}

// A start that runs a list asks for the list's update files while start-up waits for the master
// file, and the walk takes them instead of asking again; the periods the list leaves out are not
// asked for.
TEST_F(RunTest, TheUpdateFilesOfTheListToRunAreFetchedBesideTheStartUpMasterFile) {
  MakeList(3, "eSignal", "D,W", {"$NYA"});
  const std::size_t before = service.log().size();
  service.SetFaults({"*/Masterfile2.csv delay 400 times 1"});
  const CliResult run = RunList(3);
  ASSERT_EQ(run.code, 0) << run.out << run.err;
  const std::string log = service.log().substr(before);
  const std::size_t master_file = log.find("Masterfile2.csv");
  ASSERT_NE(master_file, std::string::npos) << log;
  for (const char* update_file : {"Update-Daily.csv", "Update-Weekly.csv"}) {
    EXPECT_LT(log.find(update_file), master_file) << update_file << " answered first:\n" << log;
    EXPECT_EQ(log.find(update_file, log.find(update_file) + 1), std::string::npos) << update_file;
  }
  EXPECT_FALSE(Contains(log, "Update-Monthly.csv")) << log;
  EXPECT_TRUE(Contains(run.out, "Datafiles fetched whole: 2")) << run.out;
}

// A run its checks refuse asks the data service for nothing: not even the update files a start
// fetches early for the list it goes on to run, which would reach the service with wrong or empty
// credentials.
TEST_F(RunTest, ARefusedRunRequestsNothing) {
  MakeList(3, "eSignal", "D,W", {"$NYA"});
  const std::string ini_path = base() + "Rondex/Rondex.ini";
  const std::string list_path = base() + "Lists/Download3.csv";
  const std::string ini = ReadFile(ini_path);
  const std::string list = ReadFile(list_path);
  // The settings file as a user may have left it: the command itself refuses an empty password.
  const auto with_line = [&ini](const std::string& key, const std::string& value) {
    const std::size_t at = ini.find("\n" + key + ",") + 1;
    return ini.substr(0, at) + key + "," + value + ini.substr(ini.find('\r', at));
  };
  struct Case {
    const char* why;
    std::string settings;
    std::string list;
  };
  const Case cases[] = {
      {"empty password", with_line("Password", ""), list},
      {"placeholder user name", with_line("UserName", "Enter username here"), list},
      {"placeholder password", with_line("Password", "Enter password here"), list},
      {"no vendor ticked", ini, "Vendor,None" + list.substr(list.find("\r\n"))},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    WriteFile(ini_path, c.settings);
    WriteFile(list_path, c.list);
    const int before = Requests("Update-");
    const CliResult run = RunList(3);
    EXPECT_EQ(run.code, 4) << run.out;
    EXPECT_EQ(Requests("Update-"), before) << service.log();
  }
}

TEST_F(RunTest, RunListNumStartsOneUnattendedRun) {
  MakeList(4, "eSignal", "D", {"$INDU"});
  WriteFile(start() + "RunListNum.txt", "4\r\n");
  const CliResult run = RunIn({});
  EXPECT_EQ(run.code, 0) << run.out;
  EXPECT_TRUE(Contains(run.out, "Datafiles fetched whole: 1"));
  EXPECT_EQ(ReadFile(start() + "RunListNum.txt"), "0\r\n");
  EXPECT_TRUE(Exists(data("Daily/$INDU.csv")));
}

// --quiet prints nothing on success (no progress line either) and the whole story on failure.
TEST_F(RunTest, QuietPrintsNothingOnSuccessAndTheWholeStoryOnFailure) {
  MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
  const CliResult good = RunProcess("--base-dir '" + base_arg() + "' -q run 2");
  EXPECT_EQ(good.code, 0);
  EXPECT_EQ(good.out + good.err, "");

  service.SetFaults({"*/Update-Daily.csv status 404"});
  const CliResult failed = RunProcess("--base-dir '" + base_arg() + "' -q run 2");
  EXPECT_EQ(failed.code, cli::kExitRunFailures);
  EXPECT_EQ(failed.out, "");
  EXPECT_TRUE(
      Contains(failed.err, "Problem: Daily: Update-Daily.csv could not be fetched: HTTP 404"))
      << failed.err;

  const CliResult refused = RunProcess("--base-dir '" + base_arg() + "' --quiet list 6 clear");
  EXPECT_EQ(refused.code, cli::kExitRefused);
  EXPECT_EQ(refused.out, "");
  EXPECT_TRUE(Contains(refused.err, "Cannot clear this download list."));
}

}  // namespace
}  // namespace corvanet::test
