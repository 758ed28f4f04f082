// The download page: list boxes, vendor options and the run on the worker thread.
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>

#include "core/lists/masterfile.h"
#include "gui/list_boxes.h"
#include "gui_fixture.h"

namespace corvanet::test {
namespace {

class GuiDownloadPage : public GuiTest {
 protected:
  void SetUp() override {
    for (const char* item : {"Dow Industrials,$INDU", "Nasdaq Composite,$COMPQ",
                             "NYSE Composite,$NYA", "Amex Composite,$XAX"}) {
      session_.ui.List5.Add(item);
    }
    session_.app.CurrentListNumber = "1";
    window_->Render(session_.ui);
    master_ = Find<QListWidget>("List5");
    download_ = Find<QListWidget>("List6");
  }

  void Drop(const QString& text) {
    QMimeData mime;
    mime.setText(text);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    static_cast<gui::DownloadListBox*>(download_)->dropEvent(&drop);
    EXPECT_TRUE(drop.isAccepted());
  }

  static std::vector<std::string> Shown(const QListWidget* list) {
    std::vector<std::string> items;
    for (int i = 0; i < list->count(); ++i) items.push_back(list->item(i)->text().toStdString());
    return items;
  }

  QListWidget* master_ = nullptr;
  QListWidget* download_ = nullptr;
};

TEST_F(GuiDownloadPage, DropAddsTheNamedMasterItemsOnceAndKeysRemoveOnlyOnDelete) {
  EXPECT_EQ(master_->selectionMode(), QAbstractItemView::ExtendedSelection);
  EXPECT_EQ(download_->selectionMode(), QAbstractItemView::ExtendedSelection);
  // The selection the user makes is what the core's drag reads.
  master_->item(1)->setSelected(true);
  master_->item(3)->setSelected(true);
  EXPECT_EQ(session_.ui.List5.selected, (std::vector<bool>{false, true, false, true}));

  Drop("1|3");
  Drop("3|0");
  ASSERT_EQ(Shown(download_),
            (std::vector<std::string>{"Nasdaq Composite,$COMPQ", "Amex Composite,$XAX",
                                      "Dow Industrials,$INDU"}));

  download_->item(0)->setSelected(true);
  download_->item(2)->setSelected(true);
  // Qt's code of "." equals the classic code of Delete; it must not remove anything.
  QTest::keyClick(download_, Qt::Key_Period);
  EXPECT_EQ(download_->count(), 3);
  QTest::keyClick(download_, Qt::Key_Delete);
  ASSERT_EQ(Shown(download_), std::vector<std::string>{"Amex Composite,$XAX"});
  EXPECT_EQ(session_.ui.List6.items, std::vector<std::string>{"Amex Composite,$XAX"});

  download_->item(0)->setSelected(true);
  QTest::mouseDClick(download_->viewport(), Qt::LeftButton, Qt::NoModifier,
                     download_->visualItemRect(download_->item(0)).center());
  EXPECT_EQ(download_->count(), 0);
}

TEST_F(GuiDownloadPage, PeriodBoxesFollowTheStateAndAreDisabledForFullLists) {
  Find<QAbstractButton>("WeeklyInterval")->click();
  EXPECT_EQ(session_.ui.WeeklyInterval, 1);
  session_.ui.PeriodBoxesEnabled = false;
  window_->Render(session_.ui);
  EXPECT_FALSE(Find<QWidget>("WeeklyInterval")->isEnabled());
}

TEST_F(GuiDownloadPage, ListButtonsReshapeTheListActions) {
  Find<QPushButton>("DownloadList6")->click();
  EXPECT_EQ(session_.app.CurrentListNumber, "6");
  auto* save = Find<QPushButton>("SaveDownloadList");
  EXPECT_EQ(save->text(), "Save 'All Daily' Periods Download Settings");
  EXPECT_GE(save->minimumWidth(), 5175 / 15);
  EXPECT_TRUE(Find<QPushButton>("ClearList")->isHidden());
  EXPECT_FALSE(Find<QWidget>("DailyInterval")->isEnabled());

  Find<QPushButton>("DownloadList2")->click();
  EXPECT_EQ(save->text(), "Save Download List 2 Now");
  EXPECT_FALSE(Find<QPushButton>("ClearList")->isHidden());
  EXPECT_EQ(Find<QPushButton>("LoadDownloadFile")->text(), "Restore Download List 2");
  EXPECT_TRUE(Find<QWidget>("DailyInterval")->isEnabled());
}


// What the page shows of the list in hand: which list it is, its whole names and symbols, and no
// progress or result of another list.
TEST_F(GuiDownloadPage, TheListInHandIsMarkedAndShownWhole) {
  WriteFile(MasterFilePath(session_),
            "S&P 100 Index,$OEX\r\nNYSE Composite (2000 issues),$NYA\r\n");
  window_->resize(700, 600);
  window_->show();
  window_->tabs()->setCurrentIndex(kDownloadTab);
  session_.ui.ProgressBar1 = {0, 4, 3, true};
  window_->Render(session_.ui);

  Find<QPushButton>("DownloadList2")->click();
  for (int n = 1; n <= 7; ++n) {
    auto* button = Find<QPushButton>(QString("DownloadList%1").arg(n).toLatin1().constData());
    EXPECT_EQ(button->isChecked(), n == 2) << n;
    EXPECT_EQ(button->font().bold(), n == 2) << n;
  }
  // The last run's progress is not this list's.
  EXPECT_TRUE(Find<QWidget>("ProgressBar1")->isHidden());
  EXPECT_EQ(session_.ui.ProgressBar1.value, 0);

  // Names without a note keep every letter.
  Find<QPushButton>("MoveAllToDownloadList")->click();
  EXPECT_EQ(Shown(download_),
            (std::vector<std::string>{"S&P 100 Index,$OEX", "NYSE Composite,$NYA"}));

  // In a small window the symbol at the end of a long name still shows.
  session_.ui.List5.Add("Dow Jones Industrial Average of Thirty Blue Chips (DJIA),$INDU");
  window_->Render(session_.ui);
  QApplication::processEvents();
  const QListWidgetItem* longest = master_->item(master_->count() - 1);
  EXPECT_LE(master_->visualItemRect(longest).right(), master_->viewport()->width())
      << master_->viewport()->width();
}

// Every caption of the page is readable whole, and the result box takes its share of a large
// window.
TEST_F(GuiDownloadPage, CaptionsAreNotClippedAndTheResultGrowsWithTheWindow) {
  window_->resize(1400, 1000);
  window_->show();
  window_->tabs()->setCurrentIndex(kDownloadTab);
  for (const char* list : {"DownloadList6", "DownloadList7"}) {
    SCOPED_TRACE(list);
    Find<QPushButton>(list)->click();
    QApplication::processEvents();
    auto* save = Find<QPushButton>("SaveDownloadList");
    EXPECT_GE(save->width(), save->fontMetrics().horizontalAdvance(save->text()) + 8)
        << save->text().toStdString();
  }
  auto* result = Find<QWidget>("RunSummaryFrame");
  EXPECT_GE(result->height(), 12 * result->fontMetrics().lineSpacing()) << result->height();
}

}  // namespace
}  // namespace corvanet::test
