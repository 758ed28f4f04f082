// Fetching ahead over a pool of connections and writing files on worker threads change nothing a
// user can see: one scenario of runs is played by two installations against the same demo service,
// one with the pool and the writer threads, the other fetching and writing one file at a time, and
// after every run both leave the same files (datafiles, base copies, statistic and price files,
// converter batches, MetaStock folders), the same log lines and the same report.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

struct Installation {
  std::string root;  // ends with '/'
  std::string connections;
  std::string writers;
};

class ParallelRunTest : public CliTest {
 protected:
  ParallelRunTest() : installations_{{dir / "pooled/", "8", "3"}, {dir / "serial/", "1", "1"}} {}
  ~ParallelRunTest() override {
    ::unsetenv("CORVANET_CONNECTIONS");
    ::unsetenv("CORVANET_WRITERS");
  }

  // Runs corvanet-cli with these arguments in every installation, under the service's faults as
  // they stand (every rule counts from zero again); the outputs in installation order.
  std::vector<CliResult> InEach(const std::vector<std::string>& args,
                                const std::vector<std::string>& faults = {}) {
    std::vector<CliResult> results;
    for (const Installation& installation : installations_) {
      service.SetFaults(faults);
      ::setenv("CORVANET_CONNECTIONS", installation.connections.c_str(), 1);
      ::setenv("CORVANET_WRITERS", installation.writers.c_str(), 1);
      std::vector<std::string> all{"--base-dir",
                                   installation.root.substr(0, installation.root.size() - 1)};
      all.insert(all.end(), args.begin(), args.end());
      results.push_back(Run(all));
    }
    service.SetFaults({});
    return results;
  }
  void SetUpInstallations() {
    for (const CliResult& result :
         InEach({"settings", "UserName=" + service.user(), "Password=" + service.password(),
                 "IPAddress=" + service.host_and_port(), "DownloadCompleteMessageNo=True",
                 "SystemMessagesNo=True", "ImplementSpecialFunctions=1", "MakeMetaStockPxFiles=1",
                 "OHLCVV=1", "EqWtOHLCVV=1", "AutoCreateOneStatFiles=1", "RunWithAllPeriods=1",
                 "RunWithList3=1", "Advances=1", "Declines=1", "TotalVolume=1", "NewHighs=1"})) {
      ASSERT_EQ(result.code, 0) << result.err;
    }
  }
  void InEachInstallation(const std::function<void(const std::string& root)>& change) {
    for (const Installation& installation : installations_) change(installation.root);
  }

  // Every file of an installation with its content, the installation's own folder and the times
  // of day written as placeholders; the log files' time stamps go the same way.
  std::map<std::string, std::string> Tree(const Installation& installation) const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(installation.root)) {
      if (!entry.is_regular_file()) continue;
      const std::string path = entry.path().string();
      files[path.substr(installation.root.size())] = Normal(installation, ReadFile(path));
    }
    return files;
  }
  static std::string Normal(const Installation& installation, std::string text) {
    for (std::size_t at = text.find(installation.root); at != std::string::npos;
         at = text.find(installation.root, at)) {
      text.replace(at, installation.root.size(), "<installation>/");
    }
    static const std::regex kTime(R"(\b\d{1,2}:\d{2}:\d{2}( [AP]M)?)");
    static const std::regex kSeconds(R"(\d+(\.\d+)? Seconds)");
    // The merge index's checksums and identities of files (inode numbers, times) are the
    // installation's own.
    static const std::regex kIdentities(R"((^|\n)[0-9a-f]{16},(\d+,\d+,\d+,\d+,)(\d+,){10})");
    text = std::regex_replace(text, kIdentities, "$1$2");
    text = std::regex_replace(text, kTime, "<time>");
    return std::regex_replace(text, kSeconds, "<n> Seconds");
  }

  // Both installations hold the same files, log and report after the run that gave `results`.
  void ExpectTheSame(const std::vector<CliResult>& results) {
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].code, results[1].code);
    EXPECT_EQ(Normal(installations_[0], results[0].out), Normal(installations_[1], results[1].out));
    const std::map<std::string, std::string> pooled = Tree(installations_[0]);
    const std::map<std::string, std::string> serial = Tree(installations_[1]);
    ASSERT_EQ(pooled.size(), serial.size());
    for (const auto& [name, content] : pooled) {
      ASSERT_TRUE(serial.contains(name)) << name;
      EXPECT_EQ(content, serial.at(name)) << name << " differs";
    }
  }
  std::string Report(const std::vector<CliResult>& results) const { return results[0].out; }

  DemoService service;
  Installation installations_[2];
};

TEST_F(ParallelRunTest, AllPeriodsWithFaultsStaleMissingAndForcedCopiesLeaveTheSameTrees) {
  SetUpInstallations();
  ASSERT_EQ(InEach({"list", "7", "vendor", "eSignal", "periods", "D,W,M,Q"})[0].code, 0);

  // First run, every base copy missing: whole fetches failing in every way, one held up.
  std::vector<CliResult> run = InEach(
      {"--log", "run", "7"},
      {"*/SOXDaily-CompositeStats.csv status 500", "*/DJ30Weekly-CompositeStats.csv truncate",
       "*/NYSEMonthly-CompositeStats.csv drop", "*/AMEXDaily-CompositeStats.csv delay 1500"});
  EXPECT_TRUE(Contains(Report(run), "Datafiles failed: 3")) << Report(run);
  EXPECT_TRUE(Contains(Report(run), "MetaStock conversion MakePxFiles.bat")) << Report(run);
  ExpectTheSame(run);

  // Seven bars behind the service, so every base copy is stale; some missing, one garbled.
  service.Advance(7);
  InEachInstallation([](const std::string& root) {
    fs::remove(root + "CSVFiles/Base/AMEXWeekly-CompositeStats.csv");
    fs::remove(root + "CSVFiles/Base/NASDAQMonthly-CompositeStats.csv");
    std::vector<std::string> lines = ReadLines(root + "CSVFiles/Base/SOXWeekly-CompositeStats.csv");
    lines[lines.size() / 2] = "W,2025,garbled";
    WriteLines(root + "CSVFiles/Base/SOXWeekly-CompositeStats.csv", lines);
  });
  run = InEach({"--log", "run", "7"}, {"*/DJ30Daily-CompositeStats.csv status 404",
                                       "*/NASDAQMonthly-CompositeStats.csv drop",
                                       "*/NYSEWeekly-CompositeStats.csv delay 1200"});
  EXPECT_TRUE(Contains(Report(run), "Datafiles failed: 2")) << Report(run);
  ExpectTheSame(run);

  // One bar on, every datafile merged from where its last merge stopped, while update files and
  // the closing steps' files fail.
  service.Advance(1);
  run = InEach({"--log", "run", "7"},
               {"*/Update-Weekly.csv status 404", "*/Update-Monthly.csv truncate",
                "*/Masterfile2.csv status 500", "*_System.txt status 503"});
  EXPECT_TRUE(Contains(Report(run), "Update-Weekly.csv could not be fetched")) << Report(run);
  ExpectTheSame(run);

  // A forced full download: a failed fetch merges on the kept copy, a cut one is refused.
  ASSERT_EQ(InEach({"settings", "AllPeriodsForceFull=1"})[0].code, 0);
  run = InEach({"--log", "run", "7"}, {"*/NYSEDaily-CompositeStats.csv status 500",
                                       "*/SOXMonthly-CompositeStats.csv truncate"});
  EXPECT_TRUE(Contains(Report(run), "the full download failed: HTTP 500")) << Report(run);
  ExpectTheSame(run);

  // Behind again, and every whole file refused: each datafile fails on its own.
  ASSERT_EQ(InEach({"settings", "AllPeriodsForceFull=0"})[0].code, 0);
  service.Advance(7);
  run = InEach({"--log", "run", "7"}, {"*-CompositeStats.csv status 401"});
  EXPECT_TRUE(Contains(Report(run), "Datafiles failed: 12")) << Report(run);
  ExpectTheSame(run);
}

// A base copy shared by two listed symbols (the service names $NYA's files NYSE) and a symbol
// listed twice: a body fetched ahead is taken only by the datafile it was fetched for, and files
// two datafiles share end as the later one wrote them.
TEST_F(ParallelRunTest, SharedAndRepeatedFilesEndAsTheLaterDatafileWroteThem) {
  SetUpInstallations();
  for (const CliResult& made :
       InEach({"list", "3", "vendor", "eSignal", "periods", "D,W", "add", "$NYA", "add", "$SOX"})) {
    ASSERT_EQ(made.code, 0) << made.err;
  }
  InEachInstallation([](const std::string& root) {
    std::vector<std::string> list = ReadLines(root + "Lists/Download3.csv");
    const std::string nya = list[list.size() - 2];
    list.push_back("NYSE Composite (service name),NYSE");
    list.push_back(nya);
    list.push_back("Semiconductors,$SOX");
    WriteLines(root + "Lists/Download3.csv", list);
  });
  std::string master = ReadFile(service.data_set_folder("data") + "Masterfile2.csv");
  WriteFile(service.data_set_folder("data") + "Masterfile2.csv",
            master + "NYSE Composite (service name),NYSE\r\n");

  std::vector<CliResult> run = InEach({"--log", "run", "3"});
  EXPECT_EQ(run[0].code, 0) << Report(run);
  ExpectTheSame(run);
  service.Advance(7);
  run = InEach({"--log", "run", "3"}, {"*/SOXWeekly-CompositeStats.csv truncate"});
  ExpectTheSame(run);

  // The statistic files alone, names cut short, one datafile garbled: its files stay as they were.
  ASSERT_EQ(InEach({"settings", "MaxFilenameLength=Limit to 8 Characters"})[0].code, 0);
  InEachInstallation([](const std::string& root) {
    std::vector<std::string> lines = ReadLines(root + "CSVFiles/Weekly/$SOX.csv");
    lines[3] = "W,20250101,garbled";
    WriteLines(root + "CSVFiles/Weekly/$SOX.csv", lines);
  });
  run = InEach({"--log", "stats", "3"});
  EXPECT_TRUE(Contains(Report(run), "$SOX Weekly: ")) << Report(run);
  ExpectTheSame(run);
}

}  // namespace
}  // namespace corvanet::test
