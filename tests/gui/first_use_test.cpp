// A new user's first steps in the window, against the demo service: typing the log-in over the
// initial texts, the master list arriving after the first save, and the full lists fetching the
// periods of their own files whichever list was shown before.
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QRadioButton>

#include "core/app/settings.h"
#include "gui_service_fixture.h"

namespace corvanet::test {
namespace {

using GuiFirstUse = GuiServiceTest;

TEST_F(GuiFirstUse, TypingOverAnyFieldKeepsEveryCharacter) {
  struct Case {
    const char* field;
    std::string WindowState::*value;
    std::string typed;
  };
  // The password's first character was lost when its echo mode changed under the typing.
  const Case cases[] = {
      {"Password", &WindowState::Password, "secret"},
      {"UserName", &WindowState::UserName, "demo"},
      {"IPAddress", &WindowState::IPAddress, "127.0.0.1:8080"},
      {"RetryNumber", &WindowState::RetryNumber, "12"},
      {"Text5", &WindowState::Text5, "Nasdaq"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.field);
    TypeOver(c.field, c.typed);
    EXPECT_EQ(session_.ui.*c.value, c.typed);
    EXPECT_EQ(Find<QLineEdit>(c.field)->text().toStdString(), c.typed);
  }
  EXPECT_EQ(Find<QLineEdit>("Password")->echoMode(), QLineEdit::Password);

  // More typed at the end of a password already there is added to it, not put in its place.
  auto* password = Find<QLineEdit>("Password");
  password->setFocus();
  password->end(false);
  QTest::keyClicks(password, "99");
  EXPECT_EQ(session_.ui.Password, "secret99");
  EXPECT_TRUE(messages.empty());
}

TEST_F(GuiFirstUse, ClickingIntoAnInitialTextSelectsItForReplacing) {
  window_->show();
  window_->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
  window_->tabs()->setCurrentIndex(2);
  auto* user = Find<QLineEdit>("UserName");
  QTest::mouseClick(user, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
  ASSERT_TRUE(ProcessUntil([user] { return user->hasSelectedText(); }));
  QTest::keyClicks(user, "demo");
  EXPECT_EQ(session_.ui.UserName, "demo");
}

TEST_F(GuiFirstUse, SavingTheLogInFetchesTheMasterListAndSaysSo) {
  auto* hint = Find<QLabel>("MasterListHint");
  auto* master = Find<QListWidget>("List5");
  EXPECT_EQ(master->count(), 0);
  EXPECT_FALSE(hint->isHidden());
  EXPECT_NE(hint->text().indexOf("Save Settings"), -1) << hint->text().toStdString();

  EnterLogIn(service.password());
  service.SetFaults({"*/Masterfile2.csv delay 500 times 1"});
  Click("SaveToINI");
  EXPECT_TRUE(window_->running());
  auto* status = Find<QLabel>("StatusText");
  EXPECT_TRUE(ProcessUntil([status] {
    return status->text() == "Fetching the list of indexes and ETFs from the data service ...";
  }));
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_EQ(master->count(), 12);
  EXPECT_TRUE(hint->isHidden());
  EXPECT_EQ(Find<QLabel>("StatusText")->text().left(48),
            "The list of indexes and ETFs was fetched: 12 iss");
  EXPECT_EQ(Requests("/Masterfile2.csv"), 1);

  // Once it is there, a save does not fetch it again.
  Click("SaveToINI");
  EXPECT_FALSE(window_->running());
  EXPECT_EQ(Requests("/Masterfile2.csv"), 1);
}

TEST_F(GuiFirstUse, AMasterListThatCannotBeFetchedSaysWhatToDo) {
  EnterLogIn("not the password");
  Click("SaveToINI");
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_EQ(Find<QListWidget>("List5")->count(), 0);
  EXPECT_NE(Find<QLabel>("StatusText")->text().indexOf("could not be fetched"), -1);
  EXPECT_NE(Find<QLabel>("MasterListHint")->text().indexOf("Reload Saved Settings"), -1);
}

class GuiFullLists : public GuiServiceTest {
 protected:
  // List 1: one index, daily only.
  void SetUp() override { SaveLogInAndListOne({"$NYA"}); }

  std::array<int, 4> Boxes() const {
    return {session_.ui.DailyInterval, session_.ui.WeeklyInterval, session_.ui.MonthlyInterval,
            session_.ui.QuarterlyInterval};
  }
  std::array<bool, 4> Shown() {
    std::array<bool, 4> shown{};
    const char* names[] = {"DailyInterval", "WeeklyInterval", "MonthlyInterval",
                           "QuarterlyInterval"};
    for (std::size_t i = 0; i < 4; ++i) shown[i] = Find<QCheckBox>(names[i])->isChecked();
    return shown;
  }
  // Update files fetched per period since the last call.
  std::array<int, 4> PeriodsFetched() {
    const char* files[] = {"Update-Daily.csv", "Update-Weekly.csv", "Update-Monthly.csv",
                           "Update-Quarterly.csv"};
    std::array<int, 4> now{};
    std::array<int, 4> since{};
    for (std::size_t i = 0; i < 4; ++i) {
      now[i] = Requests(files[i]);
      since[i] = now[i] - seen_[i];
    }
    seen_ = now;
    return since;
  }

  std::array<int, 4> seen_{};
};

TEST_F(GuiFullLists, AllPeriodsAfterListOneAndAllDailyAfterAllPeriodsFetchTheirOwnPeriods) {
  Click("DownloadList1");
  EXPECT_EQ(Boxes(), (std::array<int, 4>{1, 0, 0, 0}));
  PeriodsFetched();

  // Neither full list was ever saved: their files fix nothing, their own periods must.
  Click("DownloadList7");
  EXPECT_EQ(Boxes(), (std::array<int, 4>{1, 1, 1, 1}));
  EXPECT_EQ(Shown(), (std::array<bool, 4>{true, true, true, true}));
  RunAndWait();
  EXPECT_EQ(PeriodsFetched(), (std::array<int, 4>{1, 1, 1, 1}));

  Click("DownloadList6");
  EXPECT_EQ(Boxes(), (std::array<int, 4>{1, 0, 0, 0}));
  EXPECT_EQ(Shown(), (std::array<bool, 4>{true, false, false, false}));
  RunAndWait();
  EXPECT_EQ(PeriodsFetched(), (std::array<int, 4>{1, 0, 0, 0}));

  // Saved now, their files hold the same periods, and a new session reads them so.
  EXPECT_EQ(ReadLines(session_.ui.PathToLists + "Download7.csv")[2], "WeeklyInterval,1");
  Click("DownloadList1");
  Click("DownloadList7");
  EXPECT_EQ(Boxes(), (std::array<int, 4>{1, 1, 1, 1}));
  Click("DownloadList6");
  EXPECT_EQ(Boxes(), (std::array<int, 4>{1, 0, 0, 0}));
}

}  // namespace
}  // namespace corvanet::test
