// Runs against the demo service speaking HTTPS with a certificate of a throw-away authority: the
// run that trusts the authority updates its datafiles, one that does not stops before sending
// anything and keeps every file.
#include <gtest/gtest.h>

#include <cstdlib>

#include "cli/run_fixture.h"
#include "support/test_certificates.h"

namespace corvanet::test {
namespace {

// Made before the service, which serves its certificate.
struct ThrowAwayAuthority {
  TestAuthority authority;
  TestAuthority::Issued issued = authority.Issue({"IP:127.0.0.1", "DNS:localhost"});
};

class HttpsRunTest : protected ThrowAwayAuthority, public RunTest {
 protected:
  HttpsRunTest()
      : RunTest(DemoServiceOptions{.tls_certificate = issued.certificate, .tls_key = issued.key}) {}
  ~HttpsRunTest() override { ::unsetenv("CORVANET_CA_FILE"); }

  int BaseFiles() const {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(data("Base"))) {
      count += entry.path().filename() != "MergeIndex.txt" ? 1 : 0;
    }
    return count;
  }
};

TEST_F(HttpsRunTest, OnlyATrustedCertificateGetsTheRequests) {
  // A new installation whose master file never came, as its authority is not trusted yet: a full
  // list has nothing to walk, and the run says why instead of naming the lists it could not open.
  ASSERT_EQ(RunIn({"list", "7", "vendor", "eSignal", "periods", "D,W"}).code, 0);
  const CliResult first_start = RunList(7);
  EXPECT_EQ(first_start.code, 3) << first_start.out;
  EXPECT_TRUE(Contains(first_start.out, "The data service's certificate is not trusted"))
      << first_start.out;
  EXPECT_FALSE(Contains(first_start.out, "could not be opened")) << first_start.out;
  // Trusted through the setting: the datafiles come over TLS, and nothing warns of plain HTTP.
  ASSERT_EQ(RunIn({"settings", "CAFile=" + authority.certificate()}).code, 0);
  MakeList(2, "eSignal", "D", {"$NYA", "$INDU", "$SOX"});
  const CliResult first = RunList(2);
  ASSERT_EQ(first.code, 0) << first.out << first.err;
  EXPECT_FALSE(Contains(first.out, "unencrypted")) << first.out;
  EXPECT_EQ(ValidateDatafile(data("Daily/$NYA.csv")), std::vector<std::string>{});
  EXPECT_TRUE(Contains(RunIn({}).out, "Data service:     https://127.0.0.1:")) << RunIn({}).out;

  // Not trusted any more: the run stops at its first fetch, says why and how to fix it, exits 3,
  // and neither the service nor the files on disk see anything of it.
  ASSERT_EQ(RunIn({"settings", "CAFile="}).code, 0);
  service.Advance(1);
  const auto before = Snapshot("Daily");
  const int base_files = BaseFiles();
  const int requests = Requests("/ovalith/");
  const CliResult untrusted = RunList(2);
  EXPECT_EQ(untrusted.code, 3) << untrusted.out;
  EXPECT_TRUE(Contains(untrusted.out,
                       "The data service's certificate is not trusted: no authority this "
                       "computer trusts signed it"))
      << untrusted.out;
  EXPECT_TRUE(Contains(untrusted.out, "CORVANET_CA_FILE")) << untrusted.out;
  EXPECT_EQ(Requests("/ovalith/"), requests) << "no request reached the service";
  EXPECT_EQ(Snapshot("Daily"), before);
  EXPECT_EQ(BaseFiles(), base_files);

  // The authority named in the environment: trusted again.
  ::setenv("CORVANET_CA_FILE", authority.certificate().c_str(), 1);
  const CliResult again = RunList(2);
  EXPECT_EQ(again.code, 0) << again.out;
  EXPECT_NE(Snapshot("Daily"), before);
}

// Plain HTTP warns once per run when the address names another computer, and never for this one.
// 0.0.0.0 names no computer in particular, yet Linux connects it to this one: a plain service
// elsewhere as far as the address tells, which the demo service can answer.
TEST_F(RunTest, PlainHttpToAnotherComputerWarnsOncePerRun) {
  MakeList(2, "eSignal", "D", {"$NYA", "$INDU"});
  const CliResult loopback = RunList(2);
  ASSERT_EQ(loopback.code, 0) << loopback.out;
  EXPECT_FALSE(Contains(loopback.out, "unencrypted")) << loopback.out;

  ASSERT_EQ(RunIn({"settings", "IPAddress=0.0.0.0:" + std::to_string(service.port())}).code, 0);
  service.Advance(1);
  const CliResult elsewhere = RunIn({"--log", "run", "2"});
  EXPECT_EQ(elsewhere.code, 0) << elsewhere.out;
  const std::string warning =
      "Warning: the password is sent unencrypted; use https:// if the service offers it\n";
  EXPECT_TRUE(Contains(elsewhere.out, warning)) << elsewhere.out;
  EXPECT_EQ(elsewhere.out.find(warning), elsewhere.out.rfind(warning)) << "once";
  EXPECT_TRUE(Contains(elsewhere.out, "Datafiles updated by merge: 2")) << elsewhere.out;
}

}  // namespace
}  // namespace corvanet::test
