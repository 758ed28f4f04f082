// The HTTP clients over TLS and their limits, against services on 127.0.0.1 that speak HTTPS with
// certificates of a throw-away authority: a certificate that fails its check costs the fetch
// before anything of the request is sent, and no failed fetch leaves a file behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "core/platform/fetch_pool.h"
#include "core/platform/http.h"
#include "support/stub_service.h"
#include "support/test_certificates.h"

namespace corvanet::test {
namespace {

TEST(ServiceAddressTest, TheSchemeDecidesTlsAndTheDefaultPort) {
  struct Case {
    const char* typed;
    bool secure;
    const char* host;
    int port;
    const char* path;
    bool exposes_password;
  };
  const Case cases[] = {
      {"127.0.0.1:8080", false, "127.0.0.1", 8080, "", false},
      {"HTTP://data.example.com:81/ovalith/data/", false, "data.example.com", 81, "/ovalith/data/",
       true},
      {" https://data.example.com ", true, "data.example.com", 443, "", false},
      {"127.0.0.1.example.com", false, "127.0.0.1.example.com", 80, "", true},
      {"http://[::1]:8080", false, "[::1]", 8080, "", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.typed);
    const std::optional<ServiceAddress> address = ParseServiceAddress(c.typed);
    ASSERT_TRUE(address.has_value());
    EXPECT_EQ(address->secure, c.secure);
    EXPECT_EQ(address->host, c.host);
    EXPECT_EQ(address->port, c.port);
    EXPECT_EQ(address->path, c.path);
    EXPECT_EQ(address->exposes_password(), c.exposes_password);
  }
  for (const char* bad : {"ftp://data.example.com", "https://", "data.example.com:65536",
                          "https://user:pw@data.example.com", "[::1"}) {
    std::string error;
    EXPECT_FALSE(ParseServiceAddress(bad, &error).has_value()) << bad;
    EXPECT_FALSE(error.empty()) << bad;
  }
}

constexpr const char* kFile = "/ovalith/data/NYSEDaily-CompositeStats.csv";
const std::string kBody = "Date,Close\r\n20240102,100.5\r\n";

class HttpsTest : public ::testing::Test {
 protected:
  FetchRequest Request(const StubService& service, const std::string& path = kFile) const {
    FetchRequest request;
    request.url = service.url(path);
    request.user = "user";
    request.password = "secret";
    request.timeout_seconds = 10;
    return request;
  }
  std::vector<std::string> LocalFiles() const { return FileNames(local.path()); }
  // The same request through the one-at-a-time client and through a pool: both must end alike.
  std::vector<FetchResult> FetchBothWays(const FetchRequest& request) {
    std::vector<FetchResult> results;
    CurlHttpClient client;
    results.push_back(client.FetchToFile(request, local / "kept.csv"));
    FetchPool pool(2);
    results.push_back(pool.Commit(pool.Add(request, local / "kept.csv")));
    return results;
  }

  TestAuthority authority;
  TempDir local;
};

// Every way a certificate fails: the fetch fails with the reason and the way out, the service's
// handler never sees the request (so no credentials went out), and the local copy stays.
TEST_F(HttpsTest, ACertificateThatFailsItsCheckCostsTheFetchBeforeTheRequest) {
  using std::chrono::hours;
  const TestAuthority stranger;
  TempDir scratch;
  WriteFile(scratch / "not-a-certificate.pem", "not a certificate\n");
  struct Case {
    const char* what;
    const char* name;  // the one name the certificate is made out for
    int from_hours;    // its validity counted from now
    int until_hours;
    std::string trusted;  // the authority file added, if any
    CertificateProblem problem;
    const char* advice;
  };
  const std::string ours = authority.certificate();
  using enum CertificateProblem;
  const Case cases[] = {
      {"self-made authority, not added", "IP:127.0.0.1", -1, 24, "", kUnknownAuthority,
       "CORVANET_CA_FILE"},
      {"another authority added", "IP:127.0.0.1", -1, 24, stranger.certificate(), kUnknownAuthority,
       "CAFile"},
      {"made out for another host", "DNS:data.example.com", -1, 24, ours, kWrongName, "IPAddress"},
      {"expired", "IP:127.0.0.1", -48, -24, ours, kExpired, "renew"},
      {"not valid yet", "IP:127.0.0.1", 24, 48, ours, kExpired, "clock"},
      {"added file is no certificate", "IP:127.0.0.1", -1, 24, scratch / "not-a-certificate.pem",
       kAuthorityFileUnusable, "not-a-certificate.pem"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const TestAuthority::Issued issued =
        authority.Issue({c.name}, hours(c.from_hours), hours(c.until_hours));
    StubService service(StubService::Tls{issued.certificate, issued.key});
    service.SetFile(kFile, kBody);
    WriteFile(local / "kept.csv", "kept");
    FetchRequest request = Request(service);
    if (!c.trusted.empty()) request.extra_authorities = {c.trusted};
    for (const FetchResult& result : FetchBothWays(request)) {
      EXPECT_EQ(result.status, FetchStatus::kUntrustedCertificate) << result.detail;
      EXPECT_EQ(result.certificate, c.problem) << result.detail;
      EXPECT_FALSE(result.transient());
      const std::string text = result.Describe();
      EXPECT_EQ(text.rfind("the data service's certificate is not trusted: ", 0), 0u) << text;
      EXPECT_TRUE(Contains(text, c.advice)) << text;
    }
    EXPECT_EQ(service.total_requests(), 0);
    EXPECT_EQ(ReadFile(local / "kept.csv"), "kept");
    EXPECT_EQ(LocalFiles(), std::vector<std::string>{"kept.csv"});
  }
}

// A certificate of the added authority, made out for the address: the files come, each
// connection's handshake serves many files, and an answer that points to plain HTTP is refused.
TEST_F(HttpsTest, ATrustedServiceServesOverKeptConnectionsAndNeverRedirectsToPlainHttp) {
  const TestAuthority::Issued issued = authority.Issue({"IP:127.0.0.1", "DNS:localhost"});
  StubService service(StubService::Tls{issued.certificate, issued.key});
  StubService plain;
  const std::vector<std::string> names = {"A", "B", "C", "D", "E", "F"};
  for (const std::string& name : names) service.SetFile("/" + name + ".csv", kBody + name);
  plain.SetFile(kFile, kBody);
  service.SetRedirect(kFile, plain.url(kFile));

  CurlHttpClient client;
  for (const std::string& name : names) {
    FetchRequest request = Request(service, "/" + name + ".csv");
    request.extra_authorities = {authority.certificate()};
    ASSERT_TRUE(client.FetchToFile(request, local / (name + ".csv")).ok()) << name;
    EXPECT_EQ(ReadFile(local / (name + ".csv")), kBody + name);
  }
  EXPECT_EQ(service.connections(), 1) << "one handshake for every file of a client";
  {
    FetchPool pool(2);
    std::vector<FetchPool::Ticket> tickets;
    for (const std::string& name : names) {
      FetchRequest request = Request(service, "/" + name + ".csv");
      request.extra_authorities = {authority.certificate()};
      tickets.push_back(pool.Add(request, local / (name + ".pooled")));
    }
    for (const FetchPool::Ticket ticket : tickets) EXPECT_TRUE(pool.Commit(ticket).ok());
  }
  EXPECT_LE(service.connections(), 1 + 2) << "at most one handshake per pooled connection";

  FetchRequest redirected = Request(service);
  redirected.extra_authorities = {authority.certificate()};
  const FetchResult result = client.FetchToFile(redirected, local / "redirected.csv");
  EXPECT_EQ(result.status, FetchStatus::kHttpError);
  EXPECT_EQ(result.http_status, 302);
  EXPECT_TRUE(Contains(result.Describe(), "plain-HTTP address")) << result.Describe();
  EXPECT_TRUE(Contains(result.Describe(), "refused")) << result.Describe();
  EXPECT_FALSE(Exists(local / "redirected.csv"));
  EXPECT_EQ(plain.total_requests(), 0) << "the password never went to the plain address";
}

// A body over the limit, announced or not, and one that stops coming: each fails and leaves
// nothing, through either client; a body within the limit without a length still arrives.
TEST_F(HttpsTest, ABodyOverTheLimitOrOneThatStopsComingFailsAndLeavesNothing) {
  const std::string big(3000, 'x');
  StubService service;
  service.SetFile("/announced.csv", big);
  service.SetFile("/unsized.csv", big);
  service.SetUnsized("/unsized.csv");
  // Two bytes, one sent: libcurl averages the speed over a few seconds, and a large first half
  // would keep that average above the limit for as long.
  service.SetFile("/stalled.csv", "ab");
  service.SetStalled("/stalled.csv");
  struct Case {
    const char* path;
    std::uint64_t limit;
    FetchStatus status;
  };
  const Case cases[] = {
      {"/announced.csv", 2000, FetchStatus::kTooLarge},
      {"/unsized.csv", 2000, FetchStatus::kTooLarge},
      {"/unsized.csv", 3000, FetchStatus::kOk},
      {"/stalled.csv", 0, FetchStatus::kTimedOut},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.path) + " limit " + std::to_string(c.limit));
    WriteFile(local / "kept.csv", "kept");
    FetchRequest request = Request(service, c.path);
    request.max_body_bytes = c.limit;
    request.stall_seconds = 1;
    for (const FetchResult& result : FetchBothWays(request)) {
      EXPECT_EQ(result.status, c.status) << result.Describe();
      if (c.status == FetchStatus::kTooLarge) {
        EXPECT_EQ(result.Describe(),
                  "the body is larger than 2000 bytes, the limit of the setting MaxDownloadMB; "
                  "nothing of it was kept");
        EXPECT_FALSE(result.transient());
      }
    }
    EXPECT_EQ(ReadFile(local / "kept.csv"), c.status == FetchStatus::kOk ? big : "kept");
    EXPECT_EQ(LocalFiles(), std::vector<std::string>{"kept.csv"});
  }
}

}  // namespace
}  // namespace corvanet::test
