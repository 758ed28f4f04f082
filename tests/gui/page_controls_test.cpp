// Controls a new user reaches for: the search field, the buttons that open things outside the
// program, and the pages in a small window.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>
#include <cstdlib>

#include "core/platform/files.h"
#include "core/ui/outside_programs.h"
#include "gui_fixture.h"

namespace corvanet::test {
namespace {

using GuiPageControls = GuiTest;

TEST_F(GuiPageControls, EnterInTheSearchFieldSelectsAndEverySearchSaysWhatItFound) {
  WriteLines(session_.app.BaseDirectory + "Masterfile2.csv",
             {"Dow Jones Industrial Ave. (30 issues),$INDU", "NYSE Composite,$NYA"});
  Find<QPushButton>("DownloadList1")->click();
  auto* search = Find<QLineEdit>("Text5");
  auto* result = Find<QLabel>("SearchResult");
  EXPECT_TRUE(result->text().isEmpty());

  QTest::keyClicks(search, "Bond");
  QTest::keyClick(search, Qt::Key_Return);
  EXPECT_EQ(result->text(), "No index or ETF holds \"Bond\".");
  EXPECT_EQ(Find<QListWidget>("List6")->count(), 0);

  search->clear();
  QTest::keyClicks(search, "nyse");
  QTest::keyClick(search, Qt::Key_Enter);
  EXPECT_EQ(session_.ui.List6.items, std::vector<std::string>{"NYSE Composite,$NYA"});
  EXPECT_EQ(result->text(), "1 index(es) or ETF(s) holding \"nyse\" added to the list.");

  Find<QPushButton>("DownloadList2")->click();
  EXPECT_TRUE(result->text().isEmpty());
}

TEST_F(GuiPageControls, AnEightHundredBySixHundredWindowClipsNothingOnTheDownloadPage) {
  session_.ui.DownLoadButton.caption =
      "Daily Data - Now Updating Datafile 2 of 45 Total Datafiles On List 'All Periods'";
  window_->Render(session_.ui);
  window_->show();
  window_->resize(800, 600);
  window_->tabs()->setCurrentIndex(kDownloadTab);
  QApplication::processEvents();
  auto* page = window_->tabs()->widget(kDownloadTab);
  EXPECT_FALSE(page->findChild<QScrollArea*>()->horizontalScrollBar()->isVisible());
  auto* button = Find<QPushButton>("DownLoadButton");
  EXPECT_GE(button->width(), button->sizeHint().width()) << "the caption is clipped";
  for (const char* name : {"SearchHelp", "Frame9Title"}) {
    auto* label = Find<QLabel>(name);
    EXPECT_GE(label->height(), label->heightForWidth(label->width())) << name << " is clipped";
  }

  // Smaller than the window allows, the pages scroll rather than overlap.
  window_->resize(300, 200);
  EXPECT_EQ(window_->size(), window_->minimumSize());
  EXPECT_GE(window_->minimumWidth(), 640);
}

}  // namespace
}  // namespace corvanet::test
