#include "gui/list_boxes.h"

#include <QDrag>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QSignalBlocker>
#include <QStyledItemDelegate>
#include <algorithm>

namespace corvanet::gui {

namespace {

// Items never wider than the box: a long name is shortened in its middle, so the symbol at the end
// of every item stays in sight however narrow the window.
class FitToWidth final : public QStyledItemDelegate {
 public:
  explicit FitToWidth(QListView* view) : QStyledItemDelegate(view), view_(view) {}

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setWidth(std::min(size.width(), view_->viewport()->width()));
    return size;
  }

 private:
  QListView* view_;
};

}  // namespace

MasterListBox::MasterListBox(std::function<std::string()> drag_text, QWidget* parent)
    : QListWidget(parent), drag_text_(std::move(drag_text)) {
  setItemDelegate(new FitToWidth(this));
  setTextElideMode(Qt::ElideMiddle);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setResizeMode(QListView::Adjust);  // lays the items out again at each new width
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setDragEnabled(true);
  setDragDropMode(QAbstractItemView::DragOnly);
}

void MasterListBox::startDrag(Qt::DropActions /*supported_actions*/) {
  const std::string text = drag_text_();
  if (text.empty()) return;
  // Plain text only: the drop reads positions from it, as it would from any other program's text.
  auto* mime = new QMimeData;
  mime->setText(QString::fromStdString(text));
  auto* drag = new QDrag(this);
  drag->setMimeData(mime);
  drag->exec(Qt::CopyAction);
}

DownloadListBox::DownloadListBox(Events events, QWidget* parent)
    : QListWidget(parent), events_(std::move(events)) {
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setDragDropMode(QAbstractItemView::DropOnly);
  setAcceptDrops(true);
}

void DownloadListBox::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasText()) event->acceptProposedAction();
}

void DownloadListBox::dragMoveEvent(QDragMoveEvent* event) {
  if (event->mimeData()->hasText()) event->acceptProposedAction();
}

void DownloadListBox::dropEvent(QDropEvent* event) {
  if (!event->mimeData()->hasText()) return;
  event->acceptProposedAction();
  events_.dropped(event->mimeData()->text().toStdString());
}

void DownloadListBox::mouseDoubleClickEvent(QMouseEvent* event) {
  QListWidget::mouseDoubleClickEvent(event);
  events_.double_clicked();
}

void DownloadListBox::keyReleaseEvent(QKeyEvent* event) {
  QListWidget::keyReleaseEvent(event);
  if (!event->isAutoRepeat()) events_.key_released(VirtualKeyCode(event->key()));
}

void ShowListBox(QListWidget* widget, const ListBox& box) {
  const QSignalBlocker blocker(widget);
  const int count = static_cast<int>(box.size());
  bool same = widget->count() == count;
  for (int i = 0; same && i < count; ++i) {
    same = widget->item(i)->text().toStdString() == box.items[static_cast<std::size_t>(i)];
  }
  if (!same) {
    widget->clear();
    for (const std::string& item : box.items) widget->addItem(QString::fromStdString(item));
  }
  for (int i = 0; i < count; ++i) {
    QListWidgetItem* item = widget->item(i);
    const bool selected = box.selected[static_cast<std::size_t>(i)];
    if (item->isSelected() != selected) item->setSelected(selected);
  }
}

void ReadSelection(const QListWidget* widget, ListBox& box) {
  const int count = std::min(widget->count(), static_cast<int>(box.size()));
  for (int i = 0; i < count; ++i) {
    box.selected[static_cast<std::size_t>(i)] = widget->item(i)->isSelected();
  }
}

int VirtualKeyCode(int qt_key) {
  if ((qt_key >= Qt::Key_A && qt_key <= Qt::Key_Z) ||
      (qt_key >= Qt::Key_0 && qt_key <= Qt::Key_9)) {
    return qt_key;  // letters and digits share their codes
  }
  switch (qt_key) {
    case Qt::Key_Backspace:
      return 8;
    case Qt::Key_Tab:
      return 9;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return 13;
    case Qt::Key_Escape:
      return 27;
    case Qt::Key_Space:
      return 32;
    case Qt::Key_PageUp:
      return 33;
    case Qt::Key_PageDown:
      return 34;
    case Qt::Key_End:
      return 35;
    case Qt::Key_Home:
      return 36;
    case Qt::Key_Left:
      return 37;
    case Qt::Key_Up:
      return 38;
    case Qt::Key_Right:
      return 39;
    case Qt::Key_Down:
      return 40;
    case Qt::Key_Insert:
      return 45;
    case Qt::Key_Delete:
      return 46;
    default:
      return 0;
  }
}

}  // namespace corvanet::gui
