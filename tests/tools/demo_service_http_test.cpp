// The demo service over real HTTP: authentication, paths, keep-alive, concurrency, the request
// log and shutting down.
#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "core/platform/http.h"
#include "support/demo_service.h"
#include "tools/http_probe.h"

namespace corvanet::test {
namespace {

constexpr const char* kNyseDaily = "/ovalith/data/NYSEDaily-CompositeStats.csv";

class DemoServiceHttp : public ::testing::Test {
 protected:
  FetchResult Fetch(const std::string& path, const std::string& local_path, std::string user = "",
                    std::string password = "") {
    FetchRequest request;
    request.url = service.url(path);
    request.user = user.empty() ? service.user() : user;
    request.password = user.empty() ? service.password() : password;
    request.timeout_seconds = 10;
    return client.FetchToFile(request, local_path);
  }

  DemoService service;
  CurlHttpClient client;
  TempDir local;
};

TEST_F(DemoServiceHttp, ServesEveryDataSetWithCredentials) {
  const FetchResult result = Fetch(kNyseDaily, local / "nyse.csv");
  ASSERT_TRUE(result.ok()) << result.Describe() << "\n" << service.log();
  EXPECT_EQ(ReadFile(local / "nyse.csv"),
            ReadFile(service.data_set_folder("data") + "NYSEDaily-CompositeStats.csv"));

  for (const char* path : {"/ovalith/data/Masterfile2.csv", "/ovalith/DataAll/Masterfile1.csv",
                           "/ovalith/DataUS/MasterfileUS.csv", "/ovalith/data/Update-Daily.csv",
                           "/ovalith/DataUS/DJ30Quarterly-CompositeStats.csv"}) {
    EXPECT_TRUE(Fetch(path, local / "file").ok()) << path;
  }
}

TEST_F(DemoServiceHttp, CollapsesTheDoubledSlashOfTheMessageFile) {
  const FetchResult result = Fetch("/ovalith/data//Zennor_System.txt", local / "message.txt");
  ASSERT_TRUE(result.ok()) << result.Describe();
  EXPECT_EQ(ReadLines(local / "message.txt").front(), "0");
}

TEST_F(DemoServiceHttp, RefusesMissingOrWrongCredentialsWithAChallenge) {
  HttpProbe probe;
  const Reply anonymous = probe.Get(service.url(kNyseDaily));
  EXPECT_EQ(anonymous.status, 401);
  EXPECT_NE(anonymous.headers.find("WWW-Authenticate: Basic"), std::string::npos)
      << anonymous.headers;

  WriteFile(local / "kept.csv", "old");
  for (const auto& [user, password] :
       std::vector<std::pair<std::string, std::string>>{{service.user(), "wrong"},
                                                        {"someone", service.password()},
                                                        {service.user(), service.password() + "x"},
                                                        {service.user() + ":", "x"}}) {
    const FetchResult result = Fetch(kNyseDaily, local / "kept.csv", user, password);
    EXPECT_EQ(result.http_status, 401) << user << " / " << password;
  }
  EXPECT_EQ(ReadFile(local / "kept.csv"), "old");
}

TEST(DemoServiceCredentials, AcceptsColonAtAndSlashInUserAndPassword) {
  DemoServiceOptions options;
  options.user = "me@example.com/desk";
  options.password = ":p@ss/w:rd:";
  DemoService service(options);
  HttpProbe probe;
  EXPECT_EQ(probe.Get(service.url(kNyseDaily), options.user, options.password).status, 200);
  EXPECT_EQ(probe.Get(service.url(kNyseDaily), options.user, ":p@ss/w").status, 401);
}

TEST_F(DemoServiceHttp, Answers404ForMissingFilesAndPathsOutsideTheTree) {
  HttpProbe probe;
  for (const char* path :
       {"/ovalith/data/NOSUCHDaily-CompositeStats.csv", "/ovalith/data/", "/ovalith/DataALL/",
        "/ovalith/data/../../.demo-state/universe.txt", "/.demo-state/universe.txt",
        "/ovalith/%2e%2e/.demo-state/universe.txt", "/etc/passwd"}) {
    const Reply reply = probe.Get(service.url(path), service.user(), service.password());
    EXPECT_EQ(reply.status, 404) << path;
    EXPECT_NE(reply.body.find("<html>"), std::string::npos) << path;
  }
}

TEST_F(DemoServiceHttp, ServesClientsConcurrently) {
  // Three requests held back a second each end after about one second if served side by side,
  // after three if served one after the other.
  service.SetFaults({"*/Update-* delay 1000"});
  const auto start = std::chrono::steady_clock::now();
  std::vector<std::future<FetchResult>> fetches;
  for (const char* period : {"Daily", "Weekly", "Monthly"}) {
    fetches.push_back(std::async(std::launch::async, [this, period] {
      CurlHttpClient own_client;
      const std::string name = std::string("Update-") + period + ".csv";
      FetchRequest request{service.url("/ovalith/data/" + name), service.user(), service.password(),
                           10};
      return own_client.FetchToFile(request, local / name);
    }));
  }
  for (auto& fetch : fetches) EXPECT_TRUE(fetch.get().ok());
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2500));
}

TEST_F(DemoServiceHttp, LogsOneLinePerRequestAndNeverTheCredentials) {
  ASSERT_TRUE(Fetch("/ovalith/data/Masterfile2.csv", local / "m.csv").ok());
  Fetch("/ovalith/data/Missing.csv", local / "x.csv");
  Fetch(kNyseDaily, local / "x.csv", "intruder", service.password());
  const std::string size = std::to_string(ReadFile(local / "m.csv").size());

  const std::string log = service.log();
  EXPECT_NE(log.find("GET /ovalith/data/Masterfile2.csv 200 " + size + "\n"), std::string::npos)
      << log;
  EXPECT_NE(log.find("GET /ovalith/data/Missing.csv 404 "), std::string::npos) << log;
  EXPECT_NE(log.find("GET /ovalith/data/NYSEDaily-CompositeStats.csv 401 "), std::string::npos);
  EXPECT_EQ(log.find(service.password()), std::string::npos);
  EXPECT_EQ(log.find("intruder"), std::string::npos);
  EXPECT_EQ(log.find("Basic"), std::string::npos);
}

TEST_F(DemoServiceHttp, StopsCleanlyAndRestartsOnTheSamePort) {
  const int port = service.port();
  service.Stop();
  EXPECT_EQ(service.last_exit_status(), 0);
  EXPECT_NE(service.log().find("stopped by SIGTERM"), std::string::npos);
  EXPECT_EQ(Fetch(kNyseDaily, local / "nyse.csv").status, FetchStatus::kCouldNotConnect);

  service.Start();
  EXPECT_EQ(service.port(), port);
  EXPECT_TRUE(Fetch(kNyseDaily, local / "nyse.csv").ok());
}

}  // namespace
}  // namespace corvanet::test
