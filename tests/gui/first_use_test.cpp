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

// A wrong password says why the master list did not come; the corrected one fetches it, once; and
// another data set's list is fetched by the same save, never by reloading what failed.
TEST_F(GuiFirstUse, SavingTheLogInFetchesTheMasterListOrSaysWhyNot) {
  auto* hint = Find<QLabel>("MasterListHint");
  auto* master = Find<QListWidget>("List5");
  auto* status = Find<QLabel>("StatusText");
  EXPECT_EQ(master->count(), 0);
  EXPECT_NE(hint->text().indexOf("Save Settings"), -1) << hint->text().toStdString();

  EnterLogIn("not the password");
  Click("SaveToINI");
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_EQ(master->count(), 0);
  EXPECT_EQ(status->text(),
            "The list of indexes and ETFs could not be fetched: the data service refused the user "
            "name and password. Correct them and click Save Settings to try again.");
  EXPECT_EQ(hint->text().indexOf("Reload Saved Settings"), -1) << hint->text().toStdString();

  TypeOver("Password", service.password());
  service.SetFaults({"*/Masterfile2.csv delay 500 times 1"});
  Click("SaveToINI");
  EXPECT_TRUE(window_->running());
  EXPECT_TRUE(ProcessUntil([status] {
    return status->text() == "Fetching the list of indexes and ETFs from the data service ...";
  }));
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_EQ(master->count(), 12);
  EXPECT_TRUE(hint->isHidden());
  EXPECT_EQ(status->text().left(48), "The list of indexes and ETFs was fetched: 12 iss");
  const int fetched = Requests("/Masterfile2.csv");
  Click("SaveToINI");  // once it is there, a save does not fetch it again
  EXPECT_FALSE(window_->running());
  EXPECT_EQ(Requests("/Masterfile2.csv"), fetched);

  Find<QCheckBox>("AllUS")->click();
  EXPECT_EQ(master->count(), 0);
  EXPECT_EQ(hint->text().indexOf("Reload Saved Settings"), -1) << hint->text().toStdString();
  Click("SaveToINI");
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_TRUE(Find<QCheckBox>("AllUS")->isChecked());
  EXPECT_GT(master->count(), 0);
  EXPECT_EQ(Requests("/MasterfileUS.csv"), 1);
}

}  // namespace
}  // namespace corvanet::test
