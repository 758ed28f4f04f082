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
#include "gui/help_browser.h"
#include "gui_fixture.h"

namespace corvanet::test {
namespace {

using GuiWindow = GuiTest;

TEST_F(GuiWindow, RendersCaptionsTitleAndTabsFromTheState) {
  session_.ui.DownLoadButton.caption = "Update 57 Datafile(s) On Download List 3 Now";
  session_.ui.DownLoadButton.bold = true;
  session_.ui.SaveDownloadList.visible = false;
  session_.ui.Label13.caption = "Halfway & on";
  window_->Render(session_.ui);

  auto* button = Find<QPushButton>("DownLoadButton");
  EXPECT_EQ(button->text(), "Update 57 Datafile(s) On Download List 3 Now");
  EXPECT_TRUE(button->font().bold());
  EXPECT_TRUE(Find<QPushButton>("SaveDownloadList")->isHidden());
  EXPECT_EQ(Find<QLabel>("Label13")->text(), "Halfway & on");
  EXPECT_EQ(window_->windowTitle(), "Corvanet for Ovalith");
  EXPECT_EQ(Find<QLabel>("DisplayVersionNum")->text(), "Version 5.1 - For Ovalith Subscribers");
  // Tab captions keep their accelerators; button captions show an ampersand as written.
  EXPECT_EQ(window_->tabs()->tabText(0), "I&ntroduction");
  EXPECT_EQ(window_->tabs()->tabText(3), "&Download File Settings");
  session_.ui.DownLoadButton.caption = "Save & Go";
  window_->Render(session_.ui);
  EXPECT_EQ(button->text(), "Save && Go");
}

TEST_F(GuiWindow, SpecialFunctionsTabFollowsTheCheckBox) {
  QTabWidget* tabs = window_->tabs();
  EXPECT_FALSE(tabs->isTabVisible(kSpecialFunctionsTab));
  auto* browse = Find<QPushButton>("BrowseToMSPxFilePath");
  EXPECT_TRUE(browse->isHidden());

  Find<QCheckBox>("ImplementSpecialFunctions")->click();
  EXPECT_EQ(session_.ui.ImplementSpecialFunctions, 1);
  EXPECT_TRUE(tabs->isTabVisible(kSpecialFunctionsTab));
  EXPECT_FALSE(browse->isHidden());
  EXPECT_TRUE(Find<QLineEdit>("PathToMSPxFiles")->font().bold());

  // Unticking hides the tab only; the emphasis and the browse button stay.
  Find<QCheckBox>("ImplementSpecialFunctions")->click();
  EXPECT_FALSE(tabs->isTabVisible(kSpecialFunctionsTab));
  EXPECT_FALSE(browse->isHidden());
  EXPECT_TRUE(Find<QLineEdit>("PathToMSPxFiles")->font().bold());
}

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

TEST_F(GuiWindow, DropDownsTakeItemsAndFreeText) {
  auto* limit = Find<QComboBox>("MaxFilenameLength");
  ASSERT_EQ(static_cast<std::size_t>(limit->count()), session_.ui.MaxFilenameLengthItems.size());
  limit->setCurrentIndex(2);
  EXPECT_EQ(session_.ui.MaxFilenameLength, session_.ui.MaxFilenameLengthItems[2]);
  // The second column of user file 3 is no setting; it is still the window's to change.
  auto* column = Find<QComboBox>("Stat2File3");
  column->setEditText("ClosePx");
  EXPECT_EQ(session_.ui.Stat2File3, "ClosePx");
  EXPECT_EQ(session_.ui.Stat1File3, "Select One");
}

TEST_F(GuiWindow, HelpButtonsShowTheirPageAtItsAnchorAndStayBoldAsTheCoreSays) {
  window_->show();
  window_->tabs()->setCurrentIndex(1);
  auto* browser = Find<gui::HelpBrowser>("WebBrowser2");
  EXPECT_TRUE(browser->source().toLocalFile().endsWith("SetupOverview.htm"));
  Find<QPushButton>("DownloadSettings")->click();
  QApplication::processEvents();
  EXPECT_EQ(browser->verticalScrollBar()->value(), 0);
  // The anchor's section is short and ends the page; it must still come to the top of the view.
  Find<QPushButton>("FullDownloads")->click();
  QApplication::processEvents();
  EXPECT_TRUE(browser->source().toLocalFile().endsWith("DownloadSettings.htm"));
  EXPECT_EQ(browser->source().fragment(), "FullDownloads");
  EXPECT_GT(browser->verticalScrollBar()->value(), 0);
  EXPECT_EQ(browser->cursorForPosition(QPoint(10, 10)).block().text(), "Full Downloads");
  EXPECT_TRUE(Find<QPushButton>("FullDownloads")->font().bold());

  Find<QPushButton>("SpecialFunctions")->click();
  Find<QPushButton>("SetUpOverview")->click();
  EXPECT_TRUE(Find<QPushButton>("SpecialFunctions")->font().bold());
  EXPECT_TRUE(Find<QPushButton>("SetUpOverview")->font().bold());
  EXPECT_FALSE(Find<QPushButton>("FullDownloads")->font().bold());
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

TEST_F(GuiWindow, ReportFromTheWindowThreadNeverRepaintsAnOlderState) {
  // A handler on the window's thread reports mid-way (the list removal does), then finishes.
  WindowState midway = session_.ui;
  midway.DownLoadButton.caption = "midway";
  window_->observer().StateChanged(midway);
  session_.ui.DownLoadButton.caption = "final";
  window_->Render(session_.ui);
  QApplication::processEvents();
  EXPECT_EQ(Find<QPushButton>("DownLoadButton")->text(), "final");
}

TEST_F(GuiWindow, ClosingAsksOnceAndCancelKeepsTheWindow) {
  window_->show();
  answers = {Answer::kCancel};
  window_->close();
  EXPECT_TRUE(window_->isVisible());
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].request.title, "Save Dialog");

  // An Exit button asks the question itself; the close that follows must not ask again.
  answers = {Answer::kNo};
  Find<QPushButton>("Exit2")->click();
  EXPECT_FALSE(window_->isVisible());
  EXPECT_EQ(messages.size(), 2u);
}

TEST_F(GuiWindow, ChoosingATabIsRememberedButARunCanBringAPageForward) {
  window_->tabs()->setCurrentIndex(2);
  EXPECT_EQ(session_.ui.CurrentTab, 2);
  // A render that does not change CurrentTab leaves the user's page in front.
  window_->Render(session_.ui);
  EXPECT_EQ(window_->tabs()->currentIndex(), 2);
  WindowState reported = session_.ui;
  reported.CurrentTab = kDownloadTab;
  window_->Render(reported);
  EXPECT_EQ(window_->tabs()->currentIndex(), kDownloadTab);
}

}  // namespace
}  // namespace corvanet::test

namespace corvanet::test {
namespace {

// Texts and buttons as the program has always had them: the log box's two sentences, the
// caption-only Exit buttons, and clearing without a question.
TEST_F(GuiWindow, KeepsTheProgramsOwnTextsAndButtons) {
  std::string labels;
  for (const QLabel* label : window_->findChildren<QLabel*>()) {
    labels += label->text().toStdString() + "\n";
  }
  for (const char* sentence :
       {"This setting is not saved in your configuration file and must be selected upon each new "
        "run of the Corvanet program.",
        "When requested by Tessaly support, however, this log file can be instrumental in "
        "identifying the cause of many errors."}) {
    EXPECT_NE(labels.find(sentence), std::string::npos) << sentence;
  }
  for (const char* name : {"Exit6", "Delete1", "Delete2"}) {
    auto* button = Find<QPushButton>(name);
    EXPECT_EQ(button->text(), "Exit") << name;
    EXPECT_FALSE(button->isEnabled()) << name;
  }
  WriteFile(session_.ui.PathToDataFiles + "Daily/$NYA.csv", "x");
  Find<QPushButton>("ClearDataFiles")->click();
  EXPECT_FALSE(Exists(session_.ui.PathToDataFiles + "Daily/$NYA.csv"));
  EXPECT_TRUE(messages.empty()) << "clearing asks nothing";
}

}  // namespace
}  // namespace corvanet::test
