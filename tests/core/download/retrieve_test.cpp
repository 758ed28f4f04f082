// What every request of a run carries from the settings, and what a fetch over the largest body
// leaves: nothing in the Base folder, and a log line that names the limit.
#include "core/download/retrieve.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "core/download/download_fixture.h"
#include "core/state/log.h"

namespace corvanet::test {
namespace {

TEST(RetrieveTest, TheSettingsReachEveryRequestAndABodyOverTheLimitLeavesNothing) {
  DownloadFixture f;
  Session& s = f.session;
  s.ui.GenerateLogFile = 1;
  s.ui.CAFile = " /srv/own-authority.pem ";
  ::setenv("CORVANET_CA_FILE", "/etc/corvanet/authority.pem", 1);
  s.ui.MaxDownloadMB = "1";
  const FetchRequest request = ServiceRequest(s, "NYSEDaily-CompositeStats.csv");
  ::unsetenv("CORVANET_CA_FILE");
  EXPECT_EQ(request.extra_authorities,
            (std::vector<std::string>{"/srv/own-authority.pem", "/etc/corvanet/authority.pem"}));
  EXPECT_EQ(request.max_body_bytes, kMiB);
  EXPECT_EQ(request.stall_seconds, 30);
  s.ui.CAFile.clear();
  EXPECT_EQ(ServiceRequest(s, "x").extra_authorities, std::vector<std::string>{});

  const std::string name = "NYSEDaily-CompositeStats.csv";
  f.service.SetFile(std::string(DownloadFixture::kServicePath) + name,
                    DownloadFixture::Datafile({1, 2}) + std::string(kMiB, 'x'));
  const FetchResult result = RetrieveDataFile(s, name, name);
  EXPECT_EQ(result.status, FetchStatus::kTooLarge);
  EXPECT_FALSE(Exists(f.base(name)));
  EXPECT_TRUE(std::filesystem::is_empty(BaseFolder(s)));
  EXPECT_TRUE(Contains(ReadFile(LogFilePath(s)),
                       "RetrieveDataFile - " + name +
                           " - the body is larger than 1 MiB, the limit of the setting "
                           "MaxDownloadMB; nothing of it was kept - nothing saved"));

  s.ui.MaxDownloadMB = "2";
  EXPECT_TRUE(RetrieveDataFile(s, name, name).ok());
}

}  // namespace
}  // namespace corvanet::test
