// The pool of connections against the demo service on 127.0.0.1: each fetch ends as the
// one-at-a-time client's fetch of the same file ends, whatever its neighbours do, and nothing a
// caller does not commit is left on disk.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "core/platform/fetch_pool.h"
#include "core/platform/http.h"
#include "support/demo_service.h"

namespace corvanet::test {
namespace {

constexpr const char* kData = "/ovalith/data/";

class FetchPoolTest : public ::testing::Test {
 protected:
  FetchRequest Request(const std::string& name, long timeout_seconds = 10) const {
    return {service.url(kData + name), service.user(), service.password(), timeout_seconds};
  }
  std::string ServiceFile(const std::string& name) const {
    return service.data_set_folder("data") + name;
  }
  // What is in the local folder, so a test can prove no temporary file stayed.
  std::vector<std::string> LocalFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(local.path())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  DemoService service;
  TempDir local;
};

// One fetch per fault, side by side on fewer connections than fetches, each compared with the
// same fetch made alone by the one-at-a-time client.
TEST_F(FetchPoolTest, EachFetchEndsAsItsOwnSerialFetchEnds) {
  const struct {
    const char* file;
    const char* rule;  // empty: served normally
  } cases[] = {
      {"NYSEDaily-CompositeStats.csv", "status 500"},
      {"AMEXDaily-CompositeStats.csv", "truncate"},
      {"DJ30Daily-CompositeStats.csv", "drop"},
      {"SOXDaily-CompositeStats.csv", "delay 3000"},  // beyond the time limit of 1 s
      {"NASDAQDaily-CompositeStats.csv", "status 401"},
      {"NYSEWeekly-CompositeStats.csv", ""},
      {"AMEXWeekly-CompositeStats.csv", "delay 300"},
      {"DJ30Weekly-CompositeStats.csv", ""},
      {"SOXWeekly-CompositeStats.csv", ""},
  };
  std::vector<std::string> rules;
  for (const auto& c : cases) {
    if (*c.rule != '\0') rules.push_back(std::string("*/") + c.file + " " + c.rule);
  }
  service.SetFaults(rules);
  std::vector<FetchResult> serial;
  CurlHttpClient client;
  for (const auto& c : cases) {
    WriteFile(local / c.file, "kept");
    serial.push_back(client.FetchToFile(Request(c.file, 1), local / c.file));
  }

  FetchPool pool(3);
  std::vector<FetchPool::Ticket> tickets;
  for (const auto& c : cases) tickets.push_back(pool.Add(Request(c.file, 1), local / c.file));
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(cases[i].file);
    const FetchResult result = pool.Commit(tickets[i]);
    EXPECT_EQ(result.status, serial[i].status);
    EXPECT_EQ(result.Describe(), serial[i].Describe());
    const std::string expected = result.ok() ? ReadFile(ServiceFile(cases[i].file)) : "kept";
    EXPECT_EQ(ReadFile(local / cases[i].file), expected);
  }
  std::vector<std::string> names;
  for (const auto& c : cases) names.push_back(c.file);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(LocalFiles(), names) << "no temporary file stays";
}

// A body not committed never reaches its target, whether it is cancelled before, during or after
// its transfer or left to the pool's end; the pool ends without waiting for a slow answer.
TEST_F(FetchPoolTest, NothingUncommittedIsLeftBehind) {
  service.SetFaults({"*/SOXDaily-CompositeStats.csv delay 30000"});
  WriteFile(local / "kept.csv", "kept");
  {
    FetchPool pool(2);
    const FetchPool::Ticket slow =
        pool.Add(Request("SOXDaily-CompositeStats.csv", 60), local / "kept.csv");
    const FetchPool::Ticket arrived =
        pool.Add(Request("NYSEDaily-CompositeStats.csv"), local / "kept.csv");
    const FetchPool::Ticket waiting =
        pool.Add(Request("AMEXDaily-CompositeStats.csv"), local / "kept.csv");
    const FetchPool::Ticket committed =
        pool.Add(Request("DJ30Daily-CompositeStats.csv"), local / "dj30.csv");
    pool.Add(Request("DJ30Weekly-CompositeStats.csv"), local / "kept.csv");  // never claimed
    pool.Cancel(waiting);
    EXPECT_TRUE(pool.Commit(committed).ok());
    pool.Cancel(arrived);
    pool.Cancel(slow);
  }
  EXPECT_EQ(ReadFile(local / "kept.csv"), "kept");
  EXPECT_EQ(ReadFile(local / "dj30.csv"), ReadFile(ServiceFile("DJ30Daily-CompositeStats.csv")));
  EXPECT_EQ(LocalFiles(), (std::vector<std::string>{"dj30.csv", "kept.csv"}));
}

// Connections the service closes (a dropped answer, a restart) are opened again for the next
// fetches; a refused password fails each fetch on its own.
TEST_F(FetchPoolTest, ClosedConnectionsAreOpenedAgain) {
  FetchPool pool(2);
  const auto fetch = [&](const std::string& name) {
    return pool.Commit(pool.Add(Request(name), local / name));
  };
  EXPECT_TRUE(fetch("NYSEDaily-CompositeStats.csv").ok());
  EXPECT_TRUE(fetch("AMEXDaily-CompositeStats.csv").ok());
  service.SetFaults({"*/DJ30Daily-* drop"});
  EXPECT_EQ(fetch("DJ30Daily-CompositeStats.csv").status, FetchStatus::kDropped);
  EXPECT_TRUE(fetch("SOXDaily-CompositeStats.csv").ok());
  service.Restart();
  EXPECT_TRUE(fetch("NYSEWeekly-CompositeStats.csv").ok());
  FetchRequest wrong = Request("AMEXWeekly-CompositeStats.csv");
  wrong.password = "wrong";
  const FetchResult refused = pool.Commit(pool.Add(wrong, local / "refused.csv"));
  EXPECT_EQ(refused.http_status, 401);
  EXPECT_FALSE(Exists(local / "refused.csv"));
}

}  // namespace
}  // namespace corvanet::test
