// What a command may do to an installation besides its own work: nothing while a run of another
// process holds it, nothing to the folder it was started from, nothing with a path that could
// carry a command into a batch, unit or crontab line; a lists folder deleted by hand is made again
// and a missing list is said; the password is never printed.
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/schedule_units.h"
#include "cli_fixture.h"

namespace corvanet::test {
namespace {

using Args = std::vector<std::string>;

// An installation with credentials, list 1 saved, and a datafile; nothing listens on port 9, so
// the master file refresh of every start fails at once and the one written here stays.
class InstallationGuardTest : public CliTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(RunIn({"settings", "UserName=u", "Password=s3cret", "IPAddress=127.0.0.1:9"}).code,
              0);
    WriteLines(base() + "Masterfile2.csv",
               {"Dow Jones Industrial Ave.,$INDU", "NYSE Composite,$NYA"});
    ASSERT_EQ(RunIn({"list", "1", "vendor", "eSignal", "periods", "D", "add", "dow"}).code, 0);
    WriteLines(base() + "CSVFiles/Daily/$INDU.csv", {"D,20250624,1,2,3,4"});
  }
  std::string list_file() const { return base() + "Lists/Download1.csv"; }
  std::string log_file() const { return base() + "Rondex/LogFile.txt"; }

  // The files a command must not touch while another run holds the installation.
  std::vector<std::string> Guarded() const {
    std::vector<std::string> contents;
    for (const std::string& path :
         {list_file(), settings_file(), log_file(), base() + "CSVFiles/Daily/$INDU.csv"}) {
      contents.push_back(Exists(path) ? ReadFile(path) : "<none>");
    }
    return contents;
  }

  CliResult RunWithInput(const Args& args, const std::string& input) const {
    std::istringstream in(input);
    std::ostringstream out;
    std::ostringstream err;
    cli::CliEnvironment environment;
    environment.start_directory = start();
    environment.change_directory = false;
    environment.input = &in;
    Args all{"--base-dir", base_arg()};
    all.insert(all.end(), args.begin(), args.end());
    const int code = cli::RunCli(all, out, err, environment);
    return {code, out.str(), err.str()};
  }
};

TEST_F(InstallationGuardTest, CommandsThatChangeFilesWaitForNoRunAndTheOthersLeaveItsLog) {
  // Another process's run: the lock held, its note written, its log being appended to.
  const std::intptr_t run = HoldForeignRunLock(base() + "Rondex/", "18:02:11 4242");
  WriteFile(log_file(), "18:02:12 - Not Set - SingleFileUpdate\r\n");
  const std::vector<std::string> before = Guarded();

  for (const Args& args : {Args{"--yes", "clear-datafiles"}, Args{"list", "1", "clear"},
                           Args{"list", "1", "add", "nyse"}, Args{"settings", "UpTrends=1"},
                           Args{"refresh-masterfile"}, Args{"schedule", "--remove", "1"},
                           Args{"run", "1"}, Args{"stats", "1"}}) {
    SCOPED_TRACE(args[0] + " " + args.back());
    const CliResult result = RunIn(args);
    EXPECT_EQ(result.code, cli::kExitBusy) << result.out << result.err;
    EXPECT_TRUE(Contains(result.out + result.err,
                         "Another run has been in progress since 18:02:11 (process 4242)."))
        << result.out << result.err;
    EXPECT_EQ(Guarded(), before);
  }
  // Reading goes on, and its start-up leaves the run's log and lists alone.
  const CliResult listed = RunIn({"--log", "list", "1"});
  EXPECT_EQ(listed.code, 0) << listed.err;
  EXPECT_EQ(listed.out, "Dow Jones Industrial Ave.,$INDU\n");
  EXPECT_EQ(RunIn({"settings"}).code, 0);
  std::vector<std::string> after = Guarded();
  EXPECT_TRUE(after[2].starts_with(before[2])) << after[2];  // the reader's log lines follow
  after[2] = before[2];
  EXPECT_EQ(after, before);

  ReleaseForeignRunLock(run);
  EXPECT_EQ(RunIn({"list", "1", "clear"}).code, 0);
  EXPECT_EQ(ReadLines(list_file()).size(), 5U);
}

TEST_F(InstallationGuardTest, ADeletedListsFolderIsMadeAgainAndAMissingListIsSaid) {
  std::filesystem::remove_all(base() + "Lists");

  const CliResult listed = RunIn({"list", "1"});
  EXPECT_EQ(listed.code, cli::kExitRefused);
  EXPECT_TRUE(Contains(listed.err, list_file() + " is missing")) << listed.err;

  const CliResult run = RunIn({"run", "1"});
  EXPECT_EQ(run.code, cli::kExitRefused);
  EXPECT_TRUE(Contains(run.out, "The file of Download List 1, " + list_file() + ", is missing."))
      << run.out;
  EXPECT_FALSE(Contains(run.out, "Please select a Data Vendor!")) << run.out;

  EXPECT_EQ(RunIn({"list", "1", "vendor", "eSignal", "periods", "D", "add", "nyse"}).code, 0);
  EXPECT_EQ(ReadLines(list_file()).back(), "NYSE Composite,$NYA");
  EXPECT_TRUE(Exists(base() + "Lists/Stats.csv"));  // what the folder carries comes back too
}

TEST_F(InstallationGuardTest, ThePasswordIsPrintedMaskedAndTakenFromStandardInput) {
  const CliResult shown = RunIn({"settings"});
  EXPECT_TRUE(Contains(shown.out, "\nPassword=********\n")) << shown.out;
  EXPECT_FALSE(Contains(shown.out, "s3cret"));

  const CliResult given =
      RunWithInput({"settings", "--password-stdin", "UpTrends=1"}, "n3w pw\r\n");
  ASSERT_EQ(given.code, 0) << given.err << given.out;
  const std::vector<std::string> lines = ReadLines(settings_file());
  EXPECT_EQ(lines[7], "Password,n3w pw");
  EXPECT_EQ(lines[14], "UpTrends, 1");

  const std::string stored = ReadFile(settings_file());
  const CliResult nothing = RunWithInput({"settings", "--password-stdin"}, "");
  EXPECT_EQ(nothing.code, cli::kExitUsage);
  EXPECT_EQ(ReadFile(settings_file()), stored);
}

// A line break in a path would end a batch, unit file or crontab line and start a command of its
// own: such a path is refused wherever it comes in, with a message, and nothing is written.
TEST_F(InstallationGuardTest, PathsHoldingControlCharactersAreRefused) {
  const std::string stored = ReadFile(settings_file());
  for (const char* path : {"/tmp/a\nrm -rf ~/", "/tmp/a\tb/", "/tmp/a\rb/"}) {
    SCOPED_TRACE(path);
    const CliResult result = RunIn({"settings", std::string("PathToMSPxFiles=") + path});
    EXPECT_EQ(result.code, cli::kExitUsage);
    EXPECT_TRUE(Contains(result.err, "line break or another control character")) << result.err;
    EXPECT_EQ(ReadFile(settings_file()), stored);
  }

  const CliResult installation = Run({"--base-dir", dir / "in\nstall", "list", "1"});
  EXPECT_EQ(installation.code, cli::kExitStartupFailed);
  EXPECT_TRUE(Contains(installation.err, "in?stall/ holds a line break")) << installation.err;
  EXPECT_FALSE(Exists(dir / "in\nstall"));

  // A settings file edited by hand: the folder is not taken, and the user is told at start-up.
  std::vector<std::string> lines = ReadLines(settings_file());
  lines[5] = "PathToMSPxFiles,Meta\x01Stock/";
  WriteLines(settings_file(), lines);
  const CliResult started = RunIn({"settings"});
  EXPECT_EQ(started.code, 0);
  EXPECT_TRUE(Contains(started.out, "The folder PathToMSPxFiles in " + settings_file() +
                                        " is not used: it holds a line break"))
      << started.out;
  EXPECT_TRUE(Contains(started.out, "\nPathToMSPxFiles=" + base() + "MetaStock/\n")) << started.out;

  cli::ScheduledRun scheduled;
  scheduled.program = "/opt/x\nExecStartPre=/bin/sh/corvanet-cli";
  scheduled.base_directory = base();
  scheduled.program_directory = base() + "Rondex/";
  EXPECT_NE(cli::ScheduleProblem(scheduled), "");
  scheduled.program = "/opt/it's 100% $HOME/corvanet-cli";
  EXPECT_EQ(cli::ScheduleProblem(scheduled), "");
}

}  // namespace
}  // namespace corvanet::test
