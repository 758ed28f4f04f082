// The window shows the state it is given and sends the user's edits through the core.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>
#include <QTextBlock>
#include <thread>

#include "core/app/settings.h"
#include "core/lists/masterfile.h"
#include "core/platform/files.h"
#include "gui/help_browser.h"
#include "gui_fixture.h"

namespace corvanet::test {
namespace {

using GuiWindow = GuiTest;

TEST_F(GuiWindow, EditsRunTheControlsChangeHandlers) {
  auto* retries = Find<QLineEdit>("RetryNumber");
  retries->setFocus();
  retries->selectAll();
  QTest::keyClick(retries, Qt::Key_Backspace);
  // Emptying the field is refused by the core, which says so and puts back the default.
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].request.text,
            "Please enter a whole numerical value.\nRetry number will now be reset to the default "
            "value.");
  EXPECT_EQ(session_.ui.RetryNumber, "3");
  EXPECT_EQ(retries->text(), "3");

  QTest::keyClicks(retries, "5");
  EXPECT_EQ(session_.ui.RetryNumber, "35");
  EXPECT_EQ(messages.size(), 1u);

  // An option button clears its partner through the settings table.
  Find<QAbstractButton>("SystemMessagesNo")->click();
  EXPECT_TRUE(session_.ui.SystemMessagesNo);
  EXPECT_FALSE(session_.ui.SystemMessagesYes);
  EXPECT_FALSE(Find<QAbstractButton>("SystemMessagesYes")->isChecked());
  // Clicking the chosen option again leaves it chosen.
  Find<QAbstractButton>("SystemMessagesNo")->click();
  EXPECT_TRUE(Find<QAbstractButton>("SystemMessagesNo")->isChecked());
  EXPECT_TRUE(session_.ui.SystemMessagesNo);
}

TEST_F(GuiWindow, ReportFromAnotherThreadIsRenderedOnTheWindowThread) {
  WindowState reported = session_.ui;
  reported.DownLoadButton.caption = "Daily Data - Now Updating Datafile 2 of 9";
  reported.ProgressBar1 = {0, 9, 4, true};
  std::thread worker([&] {
    // Two reports before the window runs its events: the later one wins.
    WindowState first = reported;
    first.DownLoadButton.caption = "stale";
    window_->observer().StateChanged(first);
    window_->observer().StateChanged(reported);
  });
  worker.join();
  auto* button = Find<QPushButton>("DownLoadButton");
  ASSERT_TRUE(ProcessUntil(
      [&] { return button->text().toStdString() == reported.DownLoadButton.caption; }));
  auto* bar = Find<QWidget>("ProgressBar1");
  EXPECT_FALSE(bar->isHidden());
}

}  // namespace
}  // namespace corvanet::test

namespace corvanet::test {
namespace {

// Clearing moves the datafiles to the desktop's trash where there is one, and deletes them where
// there is none; either way the status line says how many went and where.
TEST_F(GuiWindow, ClearingDatafilesUsesTheTrashAndSaysSo) {
  struct Case {
    const char* what;
    bool has_trash;
    const char* said;
  };
  const Case cases[] = {
      {"a desktop with a trash", true, "2 datafile(s) of "},
      {"no trash", false, "were deleted: there is no trash to move them to."},
  };
  const std::string data = session_.ui.PathToDataFiles;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string trash_folder = dir_.path() + "Trash/files/";
    trash = nullptr;
    if (c.has_trash) {
      // The desktop's own trash, kept inside the test's folder.
      qputenv("XDG_DATA_HOME", QByteArray::fromStdString(dir_.path()));
      trash = gui::QtDesktopActions().move_to_trash;
    }
    WriteFile(data + "Daily/$NYA.csv", "x");
    WriteFile(data + "Weekly/$NYA.csv", "x");
    WriteFile(data + "Base/$NYAWeekly-CompositeStats.csv", "kept");
    Find<QPushButton>("ClearDataFiles")->click();
    EXPECT_FALSE(Exists(data + "Daily/$NYA.csv"));
    EXPECT_FALSE(Exists(data + "Weekly/$NYA.csv"));
    EXPECT_TRUE(Exists(data + "Base/$NYAWeekly-CompositeStats.csv"));
    const std::string status = Find<QLabel>("StatusText")->text().toStdString();
    EXPECT_TRUE(Contains(status, c.said)) << status;
    if (c.has_trash) {
      EXPECT_TRUE(Contains(status, "were moved to the trash (" + trash_folder + ")")) << status;
      EXPECT_TRUE(Exists(trash_folder + "$NYA.csv"));
      EXPECT_FALSE(Exists(trash_folder + "temp.csv")) << "the program's own empty files go";
    }
  }
  qunsetenv("XDG_DATA_HOME");
}

TEST_F(GuiWindow, TheDesktopShortcutStartsThisInstallationWithItsIcon) {
  const std::string desktop = dir_.path() + "Desktop/";
  ASSERT_TRUE(CreateFolders(desktop));
  qputenv("XDG_DESKTOP_DIR", QByteArray::fromStdString(desktop));
  Find<QPushButton>("CreateShortcut")->click();
  qunsetenv("XDG_DESKTOP_DIR");
  const std::string entry = ReadFile(desktop + "Palvery.desktop");
  EXPECT_TRUE(Contains(entry, " --base-dir \"" + session_.app.BaseDirectory + "\"\n")) << entry;
  const std::string icon = session_.app.ProgramDirectory + "corvanet.svg";
  EXPECT_TRUE(Contains(entry, "\nIcon=" + icon + "\n")) << entry;
  EXPECT_TRUE(Contains(ReadFile(icon), "<svg"));
}

// Closing asks about the list in hand too when its box holds what its file does not.
TEST_F(GuiWindow, ClosingWithAnEditedListOffersToSaveIt) {
  struct Case {
    const char* what;
    bool edit;
    const char* question;
  };
  const Case cases[] = {
      {"an edited list", true,
       "Save Corvanet settings and the changes to Download List 2 before closing?"},
      {"a list as saved", false, "Save Corvanet settings before closing?"},
  };
  WriteFile(MasterFilePath(session_), "S&P 100 Index,$OEX\r\n");
  Find<QPushButton>("DownloadList2")->click();
  Find<QAbstractButton>("DailyInterval")->click();
  Find<QAbstractButton>("VendoreSignal")->click();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    if (c.edit) {
      QTest::keyClicks(Find<QLineEdit>("Text5"), "oex");
      Find<QPushButton>("AddByString")->click();
    } else {
      // A window that was closed once does not ask again; a new one over the same session does.
      window_.reset();
      window_ = std::make_unique<gui::MainWindow>(session_);
    }
    messages.clear();
    answers = {Answer::kYes};
    window_->show();
    window_->close();
    EXPECT_FALSE(window_->isVisible());
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages[0].request.text, c.question);
    // Yes saved the list with the settings.
    EXPECT_TRUE(
        Contains(ReadFile(session_.ui.PathToLists + "Download2.csv"), "S&P 100 Index,$OEX"));
  }
}

}  // namespace
}  // namespace corvanet::test
