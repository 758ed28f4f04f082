#include "core/app/first_masterfile.h"

#include <gtest/gtest.h>

#include "core/app/settings.h"
#include "core/download/download_fixture.h"
#include "core/platform/files.h"

namespace corvanet::test {
namespace {

constexpr const char* kMasterfilePath = "/ovalith/data/Masterfile2.csv";

class FirstMasterfileTest : public ::testing::Test, protected DownloadFixture {
 protected:
  // What a window would have shown of StatusText at each report.
  struct StatusRecorder final : StateObserver {
    void StateChanged(const WindowState& state) override { seen.push_back(state.StatusText); }
    std::vector<std::string> seen;
  };
};

TEST_F(FirstMasterfileTest, MissingOnlyOnceTheLogInIsEntered) {
  struct Case {
    std::string user, password;
    bool on_disk;
    bool missing;
  };
  const WindowState initial;
  const Case cases[] = {
      {initial.UserName, initial.Password, false, false},
      {"user", initial.Password, false, false},
      {"user", "", false, false},
      {"user", "secret", false, true},
      {"user", "secret", true, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.user + "/" + c.password);
    session.ui.UserName = c.user;
    session.ui.Password = c.password;
    RemoveFile(dir.path() + "Masterfile2.csv");
    if (c.on_disk) {
      ASSERT_TRUE(WriteWholeFile(dir.path() + "Masterfile2.csv", "NYSE,$NYA\r\n"));
    }
    EXPECT_EQ(MasterfileMissing(session), c.missing);
  }
}

TEST_F(FirstMasterfileTest, FetchingFillsTheMasterListAndSaysSoBeforeAndAfter) {
  service.SetFile(kMasterfilePath, "NYSE Composite,$NYA\r\nNasdaq Composite,$COMPQ\r\n");
  StatusRecorder recorder;
  session.observer = &recorder;
  EXPECT_NE(EmptyMasterListHint(session.ui), "");

  EXPECT_TRUE(FetchMasterfile(session));
  ASSERT_FALSE(recorder.seen.empty());
  EXPECT_EQ(recorder.seen.front(),
            "Fetching the list of indexes and ETFs from the data service ...");
  EXPECT_EQ(session.ui.List5.items,
            (std::vector<std::string>{"NYSE Composite,$NYA", "Nasdaq Composite,$COMPQ"}));
  EXPECT_EQ(session.ui.StatusText.rfind("The list of indexes and ETFs was fetched: 2 issue(s).", 0),
            0u);
  EXPECT_FALSE(MasterfileMissing(session));
  EXPECT_EQ(EmptyMasterListHint(session.ui), "");
  session.observer = nullptr;
}

TEST_F(FirstMasterfileTest, AListThatCannotBeFetchedSaysWhatToCheckAndWhatToDo) {
  service.SetStatus(kMasterfilePath, 401);
  EXPECT_FALSE(FetchMasterfile(session));
  EXPECT_EQ(session.ui.List5.size(), 0u);
  EXPECT_NE(session.ui.StatusText.find("could not be fetched"), std::string::npos);
  EXPECT_NE(EmptyMasterListHint(session.ui).find("Reload Saved Settings"), std::string::npos);
  session.ui.Password = WindowState().Password;
  EXPECT_NE(EmptyMasterListHint(session.ui).find("enter your user name and password"),
            std::string::npos);
}

TEST_F(FirstMasterfileTest, ReloadShowsAMasterListFetchedForTheFirstTimeAtOnce) {
  service.SetFile(kMasterfilePath, "NYSE Composite,$NYA\r\n");
  LoadConfiguration_Click(session);
  EXPECT_EQ(session.ui.List5.items, std::vector<std::string>{"NYSE Composite,$NYA"});
}

}  // namespace
}  // namespace corvanet::test
