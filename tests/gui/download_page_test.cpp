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

}  // namespace
}  // namespace corvanet::test
