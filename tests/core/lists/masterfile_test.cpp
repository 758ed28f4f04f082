#include "core/lists/masterfile.h"

#include <gtest/gtest.h>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

TEST(MasterfileTest, TheServiceAddressTakesWhatABrowserShows) {
  struct Case {
    const char* typed;
    const char* host;
  };
  const Case cases[] = {
      {"127.0.0.1:8080", "127.0.0.1:8080"},
      {"http://127.0.0.1:8080/", "127.0.0.1:8080"},
      {"HTTP://data.example:81//", "data.example:81"},
      {"  127.0.0.1:8080  ", "127.0.0.1:8080"},
      {"HTTPS://data.example:8443/", "https://data.example:8443"},
      {"", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(ServiceHost(c.typed), c.host) << c.typed;

  TestSession t;
  t.session.ui.IPAddress = "http://127.0.0.1:8080/";
  SelectMasterfile(t.session);
  EXPECT_EQ(t.session.app.DataSetURL, "127.0.0.1:8080/ovalith/data/");
  EXPECT_EQ(t.session.ui.IPAddress, "http://127.0.0.1:8080/") << "the field keeps what was typed";
  t.session.ui.IPAddress = "https://data.example";
  SelectMasterfile(t.session);
  EXPECT_EQ(ServiceUrl(t.session.app.DataSetURL, "Masterfile2.csv"),
            "https://data.example/ovalith/data/Masterfile2.csv");
}

}  // namespace
}  // namespace corvanet::test
