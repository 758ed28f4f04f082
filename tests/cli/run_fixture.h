#pragma once
// corvanet-cli runs against the demo data service on 127.0.0.1: an installation set up with the
// service's address and credentials, and helpers to look at what the runs left on disk.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/cli_fixture.h"
#include "support/datafile_validator.h"
#include "support/demo_service.h"

namespace corvanet::test {

class RunTest : public CliTest {
 protected:
  explicit RunTest(DemoServiceOptions options = {}) : service(std::move(options)) {}

  void SetUp() override {
    // Message boxes at the end of a run are tested on their own; here they would only add noise.
    ASSERT_EQ(RunIn({"settings", "UserName=" + service.user(), "Password=" + service.password(),
                     "IPAddress=" + service.address(), "DownloadCompleteMessageNo=True",
                     "SystemMessagesNo=True"})
                  .code,
              0);
  }

  // Saves user list `n` with a vendor, periods ("D,W") and the master items holding each text.
  void MakeList(int n, const std::string& vendor, const std::string& periods,
                const std::vector<std::string>& adds) {
    std::vector<std::string> args{"list", std::to_string(n), "vendor", vendor, "periods", periods};
    for (const std::string& text : adds) {
      args.push_back("add");
      args.push_back(text);
    }
    ASSERT_EQ(RunIn(args).code, 0);
  }
  CliResult RunList(int n) { return RunIn({"run", std::to_string(n)}); }

  std::string data(const std::string& relative) const { return base() + "CSVFiles/" + relative; }
  std::string LastRow(const std::string& relative) const {
    const std::vector<std::string> lines = ReadLines(data(relative));
    return lines.empty() ? "" : lines.back();
  }
  std::string ServiceFile(const std::string& name) const {
    return service.data_set_folder("data") + name;
  }
  // The datafiles of a period folder with their content, to prove a run changed nothing there.
  std::vector<std::pair<std::string, std::string>> Snapshot(const std::string& folder) const {
    std::vector<std::pair<std::string, std::string>> files;
    for (const auto& entry : std::filesystem::directory_iterator(data(folder))) {
      files.emplace_back(entry.path().filename().string(), ReadFile(entry.path().string()));
    }
    std::sort(files.begin(), files.end());
    return files;
  }
  int Requests(const std::string& path_part) const { return service.Requests(path_part); }
  std::string Log() const { return ReadFile(base() + "Rondex/LogFile.txt"); }

  DemoService service;
};

// List 2 ($NYA, $INDU, $SOX, daily) with traditional price files (no MetaStock format), after one
// good run: the state most run tests start from.
class ListTwoRunTest : public RunTest {
 protected:
  void SetUp() override {
    RunTest::SetUp();
    ASSERT_EQ(RunIn({"settings", "ImplementSpecialFunctions=1", "MakeMetaStockPxFiles=1",
                     "OHLCVV=1", "DoNotMakeMetaStockFormat=1"})
                  .code,
              0);
    MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
    ASSERT_EQ(RunList(2).code, 0);
  }
};

// List 2 ($NYA, $INDU, $SOX, daily) after one good run, without price files, and what its datafiles
// held then: where the fault scenarios start.
class DailyListRunTest : public RunTest {
 protected:
  void SetUp() override {
    RunTest::SetUp();
    MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
    ASSERT_EQ(RunList(2).code, 0);
    before_ = Snapshot("Daily");
  }
  // The content a datafile had after the first good run.
  std::string Before(const std::string& name) const {
    for (const auto& [file, content] : before_) {
      if (file == name) return content;
    }
    return {};
  }

  std::vector<std::pair<std::string, std::string>> before_;
};

}  // namespace corvanet::test
