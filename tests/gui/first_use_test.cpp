// A new user's first steps in the window, against the demo service: typing the log-in over the
// initial texts, the master list arriving after the first save (or saying why not), and the full
// lists fetching the periods of their own files whichever list was shown before.
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QRadioButton>

#include "core/app/settings.h"
#include "gui_service_fixture.h"

namespace corvanet::test {
namespace {

using GuiFirstUse = GuiServiceTest;

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

// What the window says leads to a fetch of what is typed and chosen, never back to what failed.
TEST_F(GuiFirstUse, AMasterListThatCannotBeFetchedSaysWhyAndSavingTriesAgain) {
  auto* master = Find<QListWidget>("List5");
  auto* status = Find<QLabel>("StatusText");
  auto* hint = Find<QLabel>("MasterListHint");
  EnterLogIn("not the password");
  Click("SaveToINI");
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_EQ(master->count(), 0);
  EXPECT_EQ(status->text(),
            "The list of indexes and ETFs could not be fetched: the data service refused the user "
            "name and password. Correct them and click Save Settings to try again.");
  for (const QString& advice : {status->text(), hint->text()}) {
    EXPECT_EQ(advice.indexOf("Reload Saved Settings"), -1) << advice.toStdString();
    EXPECT_NE(advice.indexOf("Save Settings"), -1) << advice.toStdString();
  }

  TypeOver("Password", service.password());
  Click("SaveToINI");
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_EQ(master->count(), 12);

  // Another data set has a list of its own: the hint leads to fetching it, keeping the choice.
  Find<QCheckBox>("AllUS")->click();
  EXPECT_EQ(master->count(), 0);
  EXPECT_EQ(hint->text().indexOf("Reload Saved Settings"), -1) << hint->text().toStdString();
  EXPECT_NE(hint->text().indexOf("Save Settings"), -1) << hint->text().toStdString();
  Click("SaveToINI");
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_TRUE(Find<QCheckBox>("AllUS")->isChecked());
  EXPECT_GT(master->count(), 0);
  EXPECT_EQ(Requests("/MasterfileUS.csv"), 1);
}

}  // namespace
}  // namespace corvanet::test
