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
    FetchRequest request;
    request.url = service.url(kData + name);
    request.user = service.user();
    request.password = service.password();
    request.timeout_seconds = timeout_seconds;
    return request;
  }
  std::string ServiceFile(const std::string& name) const {
    return service.data_set_folder("data") + name;
  }
  // What is in the local folder, so a test can prove no temporary file stayed.
  std::vector<std::string> LocalFiles() const { return FileNames(local.path()); }

  DemoService service;
  TempDir local;
};

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

}  // namespace
}  // namespace corvanet::test
