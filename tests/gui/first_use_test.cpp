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

}  // namespace
}  // namespace corvanet::test
