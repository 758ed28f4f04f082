// Failures that may pass are tried again after the walk, as the "Retries" box promises; the
// service's considered refusals are not, and a service that stops answering stops the run.
#include <gtest/gtest.h>

#include <cstdlib>

#include "cli/run_fixture.h"

namespace corvanet::test {
namespace {

using RetryTest = DailyListRunTest;

// One scenario per fault: which files fail, how many retries bring them in, what the run reports.
TEST_F(RetryTest, TransientFailuresAreTriedAgainAndOthersAreNot) {
  const struct {
    const char* retries;
    const char* fault;
    int code;
    const char* retried;  // the summary's line, or nullptr when nothing may be retried
    const char* pause;    // a pause the log must name, or nullptr
  } cases[] = {
      // The whole file of a datafile fails twice, the update file of its period once.
      {"3", "*/NYSEDaily-CompositeStats.csv status 503 times 2", 0,
       "Retried after a failure that may pass: 1 file(s), 1 recovered", "after a pause of 1 s"},
      // Once: the update file is fetched early, and a failure that may pass is fetched again when
      // the walk asks for the file, which then meets no failure at all.
      {"3", "*/Update-Daily.csv status 502 times 1", 0, nullptr, nullptr},
      // Twice: the walk's own fetch fails too.
      {"3", "*/Update-Daily.csv status 502 times 2", 0,
       "Retried after a failure that may pass: 1 file(s), 1 recovered", nullptr},
      // Too few rounds: reported as failed after them, the service's Retry-After honoured.
      {"1", "*/NYSEDaily-CompositeStats.csv status 429 times 5", 3,
       "Retried after a failure that may pass: 1 file(s), 0 recovered", "after a pause of 1 s"},
      // The service's considered answer: never retried.
      {"3", "*/NYSEDaily-CompositeStats.csv status 404", 3, nullptr, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault);
    // Each datafile needs its whole file again, so the fault meets the walk.
    service.Advance(7);
    ASSERT_EQ(RunIn({"settings", std::string("RetryNumber=") + c.retries}).code, 0);
    service.SetFaults({c.fault});
    const int requests_before = Requests("NYSEDaily-CompositeStats.csv");
    const std::string nya_before = ReadFile(data("Daily/$NYA.csv"));
    const CliResult run = RunIn({"--log", "run", "2"});
    EXPECT_EQ(run.code, c.code) << run.out;
    if (c.retried != nullptr) {
      EXPECT_TRUE(Contains(run.out, c.retried)) << run.out;
    } else {
      EXPECT_FALSE(Contains(run.out, "Retried")) << run.out;
      EXPECT_FALSE(Contains(Log(), "Retry 1 of"));
      // The walk's fetch and the fallback's, no more.
      EXPECT_LE(Requests("NYSEDaily-CompositeStats.csv") - requests_before, 2);
    }
    if (c.pause != nullptr) {
      EXPECT_TRUE(Contains(Log(), c.pause)) << c.pause;
    }
    for (const auto& [file, content] : Snapshot("Daily")) {
      EXPECT_EQ(ValidateDatafile(data("Daily/" + file)), std::vector<std::string>{}) << file;
    }
    // Brought in, $NYA ends where the others do; still failing, it is as it was.
    const bool recovered = c.code == 0;
    EXPECT_EQ(Contains(run.out, "Datafiles failed: 0"), recovered) << run.out;
    if (recovered) {
      EXPECT_EQ(LastRow("Daily/$NYA.csv").substr(0, 11), LastRow("Daily/$SOX.csv").substr(0, 11));
    } else {
      EXPECT_EQ(ReadFile(data("Daily/$NYA.csv")), nya_before);
    }
    service.SetFaults({});
    ASSERT_EQ(RunList(2).code, 0);
  }
}

// Every update file waits for ever: after three time-outs in a row the run asks nothing more and
// says what it did not try, instead of waiting out each request in turn; what needs no request
// (the daily datafiles, with their base copies and the update file kept from the last run) is
// still merged.
TEST_F(RetryTest, AServiceThatStopsAnsweringStopsTheRun) {
  MakeList(2, "eSignal", "D,W,M,Q", {});
  ::setenv("CORVANET_HTTP_TIMEOUT", "1", 1);
  service.SetFaults({"*/Update-*.csv delay 3000"});
  const CliResult run = RunIn({"--log", "run", "2"});
  ::unsetenv("CORVANET_HTTP_TIMEOUT");
  EXPECT_EQ(run.code, 3) << run.out;
  EXPECT_TRUE(Contains(run.out, "Datafiles updated by merge: 3")) << run.out;
  // The weekly, monthly and quarterly datafiles have no base copy yet.
  EXPECT_TRUE(
      Contains(run.out, "The data service does not answer; run stopped: 8 datafile(s) not tried"))
      << run.out;
  EXPECT_FALSE(Contains(run.out, "Retried")) << run.out;
  // Its update file may have been fetched early, but the walk never asked for it.
  EXPECT_FALSE(Contains(Log(), "RetrieveDataFile - Update-Quarterly.csv")) << Log();
  EXPECT_EQ(Snapshot("Daily"), before_);
}

}  // namespace
}  // namespace corvanet::test
