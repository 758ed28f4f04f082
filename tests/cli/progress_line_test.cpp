// The progress line of `run` and `stats`: its text, and the line itself as a person at a terminal
// sees it (on a pseudo-terminal) or a log file gets it (nothing at all).
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "cli/progress_line.h"
#include "run_fixture.h"

namespace corvanet::test {
namespace {

using cli::ProgressLine;

TEST(ProgressLineTextTest, ShowsRateAndTimeLeftOnlyOnceTheyMeanSomething) {
  struct Case {
    int in_hand;
    int total;
    std::string symbol;
    double elapsed;
    std::string text;
  };
  const std::vector<Case> cases = {
      {1, 340, "$NYA", 0.0, "Datafile 1 of 340  $NYA Daily"},
      {5, 340, "$NYA", 0.5, "Datafile 5 of 340  $NYA Daily"},   // under a second
      {1, 340, "$NYA", 30.0, "Datafile 1 of 340  $NYA Daily"},  // nothing done yet
      {11, 340, "$SOX", 4.0, "Datafile 11 of 340  $SOX Daily  2.5/s  2:12 left"},
      {340, 340, "$SOX", 10.0, "Datafile 340 of 340  $SOX Daily  33.9/s  0:00 left"},
      {3001, 9000, "XLK", 100.0, "Datafile 3001 of 9000  XLK Daily  30.0/s  3:20 left"},
      {2, 20000, "XLK", 2.0, "Datafile 2 of 20000  XLK Daily  0.5/s  11:06:38 left"},
      {7, 0, "", 3.0, "Datafile 7  2.0/s"},  // total and datafile unknown
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ProgressLine::Compose(c.in_hand, c.total, c.symbol, "Daily", c.elapsed), c.text);
  }
}

struct PtyResult {
  int code = -1;
  std::string output;  // standard output and standard error, as the terminal got them
};

// Runs corvanet-cli with standard output and error on a pseudo-terminal 60 columns wide.
PtyResult RunOnTerminal(const std::vector<std::string>& args) {
  winsize size{};
  size.ws_col = 60;
  size.ws_row = 24;
  int master = -1;
  const pid_t pid = forkpty(&master, nullptr, nullptr, &size);
  if (pid == 0) {
    std::vector<std::string> all = {BinaryPath("corvanet-cli")};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& arg : all) argv.push_back(arg.data());
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  PtyResult result;
  if (pid < 0) return result;
  char buffer[4096];
  for (;;) {
    const ssize_t got = ::read(master, buffer, sizeof buffer);
    if (got > 0) {
      result.output.append(buffer, static_cast<std::size_t>(got));
    } else if (got < 0 && errno == EINTR) {
      continue;
    } else {
      break;  // EIO once the program has ended and closed the terminal
    }
  }
  ::close(master);
  int status = 0;
  ::waitpid(pid, &status, 0);
  result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

// A run slowed down by the service, so the line is redrawn several times.
class ProgressLineTest : public RunTest {
 protected:
  ProgressLineTest() : RunTest(DemoServiceOptions{.faults = {"*CompositeStats.csv delay 150"}}) {}
  void SetUp() override {
    RunTest::SetUp();
    MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
  }
  std::vector<std::string> Args(std::initializer_list<std::string> command) const {
    std::vector<std::string> args = {"--base-dir", base_arg()};
    args.insert(args.end(), command);
    return args;
  }
};

TEST_F(ProgressLineTest, OnATerminalTheLineIsDrawnAndWipedBeforeTheSummary) {
  for (const char* command : {"run", "stats"}) {
    const PtyResult result = RunOnTerminal(Args({command, "2"}));
    const std::string& shown = result.output;
    EXPECT_EQ(result.code, 0) << command << shown;
    EXPECT_NE(shown.find("\rDatafile 1 of 3  "), std::string::npos) << command << shown;
    EXPECT_NE(shown.find(" Daily"), std::string::npos) << command;
    // The last drawing is wiped before the summary is printed over it.
    const std::size_t last_draw = shown.rfind("\rDatafile ");
    const std::size_t wiped = shown.find("\r\x1b[K", last_draw + 1);
    ASSERT_NE(wiped, std::string::npos) << command << shown;
    const std::size_t summary = shown.find(
        std::string(command) == "run" ? "Datafiles updated by merge" : "Datafiles split");
    EXPECT_GT(summary, wiped) << command << shown;
    // No drawing is longer than the terminal, so none wraps.
    for (std::size_t at = shown.find("\rDatafile "); at != std::string::npos;
         at = shown.find("\rDatafile ", at + 1)) {
      EXPECT_LT(shown.find("\x1b[K", at) - at - 1, 60U) << shown.substr(at, 80);
    }
  }
}

TEST_F(ProgressLineTest, QuietPrintsNothingOnSuccessAndTheWholeStoryOnFailure) {
  const CliResult good = RunProcess("--base-dir '" + base_arg() + "' -q run 2");
  EXPECT_EQ(good.code, 0);
  EXPECT_EQ(good.out + good.err, "");

  service.SetFaults({"*/Update-Daily.csv status 404"});
  const CliResult failed = RunProcess("--base-dir '" + base_arg() + "' -q run 2");
  EXPECT_EQ(failed.code, cli::kExitRunFailures);
  EXPECT_EQ(failed.out, "");
  EXPECT_NE(failed.err.find("Problem: Daily: Update-Daily.csv could not be fetched: HTTP 404"),
            std::string::npos)
      << failed.err;

  const CliResult refused = RunProcess("--base-dir '" + base_arg() + "' --quiet list 6 clear");
  EXPECT_EQ(refused.code, cli::kExitRefused);
  EXPECT_EQ(refused.out, "");
  EXPECT_NE(refused.err.find("Cannot clear this download list."), std::string::npos);
}

}  // namespace
}  // namespace corvanet::test
