// `schedule`: the unit files and crontab lines it writes for a list, checked by systemd's own
// verifier where it is installed, and the command itself with a stand-in systemctl on PATH.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "cli/schedule_units.h"
#include "cli_fixture.h"
#include "core/platform/process.h"

namespace corvanet::test {
namespace {

using cli::ScheduledRun;

TEST(ScheduleUnitsTest, PathsKeepTheirCharactersInEveryForm) {
  ScheduledRun run;
  run.list = 2;
  run.program = "/opt/my apps/corvanet-cli";
  run.base_directory = "/home/u/it's 100% $HOME/";
  run.program_directory = run.base_directory + "Rondex/";
  const std::string service = cli::ServiceUnitText(run);
  EXPECT_TRUE(Contains(service,
                       "ExecStart=\"/opt/my apps/corvanet-cli\" --base-dir "
                       "\"/home/u/it's 100%% $$HOME/\" run 2\n"))
      << service;
  EXPECT_TRUE(Contains(service, "WorkingDirectory=/home/u/it's 100%% $HOME/Rondex/\n"));
  EXPECT_TRUE(Contains(cli::CrontabLine(run),
                       " cd '/home/u/it'\\''s 100\\% $HOME/Rondex/' && "
                       "'/opt/my apps/corvanet-cli' --base-dir "
                       "'/home/u/it'\\''s 100\\% $HOME/' run 2"))
      << cli::CrontabLine(run);
}

// The Task Scheduler's task on Windows: its schtasks arguments, whose /TR command Windows splits
// back into the very words given, however the folders are named.
TEST(ScheduleUnitsTest, SchtasksCommandsKeepTheirWords) {
  struct Case {
    const char* word;
    const char* quoted;
  } const cases[] = {
      {"C:\\Tessaly\\Rondex\\corvanet-cli.exe", "C:\\Tessaly\\Rondex\\corvanet-cli.exe"},
      {"C:\\My Apps\\a&b", "\"C:\\My Apps\\a&b\""},
      {"D:\\x y\\", "\"D:\\x y\\\\\""},  // a closing backslash doubled before the quote
      {"say \"hi\"", "\"say \\\"hi\\\"\""},
      {"a\\\"b", "\"a\\\\\\\"b\""},  // backslashes before a quote doubled, plus one
      {"", "\"\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.word);
    EXPECT_EQ(QuotedForCommandLine(c.word), c.quoted);
  }

  ScheduledRun run;
  run.list = 3;
  run.hour = 7;
  run.minute = 5;
  run.program = "C:\\My Apps\\Rondex\\corvanet-cli.exe";
  run.base_directory = "C:\\My Apps\\";
  EXPECT_EQ(cli::SchtasksCreateArguments(run),
            (std::vector<std::string>{
                "/Create", "/F", "/TN", "Corvanet list 3", "/TR",
                "\"C:\\My Apps\\Rondex\\corvanet-cli.exe\" --base-dir \"C:\\My Apps\" run 3", "/SC",
                "DAILY", "/ST", "07:05"}));
  ASSERT_TRUE(cli::ParseDays("mon,wed-fri", run.days));
  const std::vector<std::string> weekly = cli::SchtasksCreateArguments(run);
  EXPECT_EQ(std::vector<std::string>(weekly.end() - 6, weekly.end()),
            (std::vector<std::string>{"/SC", "WEEKLY", "/D", "MON,WED,THU,FRI", "/ST", "07:05"}));
}

// The command run as a process, with a systemctl on PATH that logs its arguments and answers as a
// running (or absent) user instance would.
class ScheduleCommandTest : public CliTest {
 protected:
  void InstallSystemctl(bool running) {
    WriteFile(dir / "fakebin/systemctl", "#!/bin/sh\necho \"$*\" >> '" + (dir / "systemctl.log") +
                                             "'\n" + (running ? "exit 0\n" : "exit 1\n"));
    ASSERT_EQ(std::system(("chmod +x '" + (dir / "fakebin/systemctl") + "'").c_str()), 0);
  }
  CliResult Schedule(const std::string& args) const {
    return RunProcess("--base-dir '" + base_arg() + "' schedule " + args,
                      "PATH='" + (dir / "fakebin") + "':/usr/bin:/bin XDG_CONFIG_HOME='" +
                          (dir / "config") + "'");
  }
  std::string units() const { return dir / "config/systemd/user/"; }
};

TEST_F(ScheduleCommandTest, InstallsListsAndRemovesTheUserTimer) {
  InstallSystemctl(true);
  const CliResult scheduled = Schedule("3 --at 18:30 --days mon-fri");
  ASSERT_EQ(scheduled.code, 0) << scheduled.err;
  EXPECT_TRUE(Contains(scheduled.out, "List 3 runs Mon..Fri *-*-* 18:30:00"));
  const std::string timer = ReadFile(units() + "corvanet-list-3.timer");
  const std::string service = ReadFile(units() + "corvanet-list-3.service");
  // Lines end with CR LF, as in every file the program writes; systemd reads them so.
  EXPECT_TRUE(Contains(timer, "\r\nOnCalendar=Mon..Fri *-*-* 18:30:00\r\n"));
  EXPECT_TRUE(Contains(timer, "\r\nPersistent=true\r\n"));
  EXPECT_TRUE(Contains(service, "\r\nWorkingDirectory=" + base() + "Rondex/\r\n"));
  EXPECT_TRUE(Contains(service, "\r\nExecStart=\"" + BinaryPath("corvanet-cli") +
                                    "\" --base-dir \"" + base() + "\" run 3\r\n"))
      << service;
  EXPECT_EQ(ReadLines(dir / "systemctl.log"),
            (std::vector<std::string>{"--user show-environment", "--user daemon-reload",
                                      "--user enable --now corvanet-list-3.timer"}));

  // systemd's own reading of the files, where it is installed.
  if (std::system("command -v systemd-analyze >/dev/null 2>&1") == 0) {
    const std::string verify = "systemd-analyze verify '" + units() + "corvanet-list-3.timer' '" +
                               units() + "corvanet-list-3.service' > '" + (dir / "verify.txt") +
                               "' 2>&1";
    EXPECT_EQ(std::system(verify.c_str()), 0) << ReadFile(dir / "verify.txt");
  }

  ASSERT_EQ(Schedule("1 --at 06:00").code, 0);
  const CliResult listed = Schedule("--list");
  EXPECT_EQ(listed.code, 0);
  EXPECT_EQ(listed.out,
            "corvanet-list-1.timer  *-*-* 06:00:00\n"
            "corvanet-list-3.timer  Mon..Fri *-*-* 18:30:00\n");

  RemoveFile(dir / "systemctl.log");
  const CliResult removed = Schedule("--remove 3");
  EXPECT_EQ(removed.code, 0) << removed.err;
  EXPECT_FALSE(Exists(units() + "corvanet-list-3.timer"));
  EXPECT_FALSE(Exists(units() + "corvanet-list-3.service"));
  EXPECT_TRUE(Exists(units() + "corvanet-list-1.timer"));
  EXPECT_EQ(ReadLines(dir / "systemctl.log"),
            (std::vector<std::string>{"--user show-environment",
                                      "--user disable --now corvanet-list-3.timer",
                                      "--user daemon-reload"}));
  EXPECT_TRUE(Contains(Schedule("--remove 3").out, "List 3 has no schedule"));
}

TEST_F(ScheduleCommandTest, WithoutAUserSystemdPrintsTheCrontabLineAndWritesNothing) {
  InstallSystemctl(false);
  const CliResult result = Schedule("2 --at 7:05 --days sat-sun");
  ASSERT_EQ(result.code, 0) << result.err;
  EXPECT_TRUE(Contains(result.out, "crontab -e"));
  EXPECT_TRUE(Contains(result.out, "\n5 7 * * 6-7 cd '" + base() + "Rondex/' && '" +
                                       BinaryPath("corvanet-cli") + "' --base-dir '" + base() +
                                       "' run 2\n"))
      << result.out;
  EXPECT_FALSE(Exists(units()));
  EXPECT_EQ(ReadLines(dir / "systemctl.log"),
            (std::vector<std::string>{"--user show-environment"}));
}

}  // namespace
}  // namespace corvanet::test
