#pragma once
// The two list boxes of the download page. The master list offers a drag whose text the core makes
// from the selection; the download list takes such a drop, and removes its selected items on a
// double click or the Delete key, all through the core's handlers.
#include <QListWidget>
#include <functional>
#include <string>

#include "core/state/window_state.h"

namespace corvanet::gui {

class MasterListBox final : public QListWidget {
  Q_OBJECT

 public:
  // `drag_text` returns the text to drag, or "" when the drag is refused.
  explicit MasterListBox(std::function<std::string()> drag_text, QWidget* parent = nullptr);

 protected:
  void startDrag(Qt::DropActions supported_actions) override;

 private:
  std::function<std::string()> drag_text_;
};

class DownloadListBox final : public QListWidget {
  Q_OBJECT

 public:
  struct Events {
    std::function<void(const std::string&)> dropped;  // the drag text
    std::function<void()> double_clicked;
    std::function<void(int)> key_released;  // the classic virtual-key code
  };
  explicit DownloadListBox(Events events, QWidget* parent = nullptr);

  // Public so a test can deliver a drop: Qt routes drop events only during a real drag.
  void dropEvent(QDropEvent* event) override;

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;

 private:
  Events events_;
};

// Shows the box's items and selection, repopulating only when the items changed.
void ShowListBox(QListWidget* widget, const ListBox& box);
// Copies the widget's selection into the box (the core's handlers read it from there).
void ReadSelection(const QListWidget* widget, ListBox& box);
// The classic virtual-key code of a Qt key (Delete is 46); 0 for keys without one here. Qt's own
// code of the "." key is also 46, so the codes must not be passed through unmapped.
int VirtualKeyCode(int qt_key);

}  // namespace corvanet::gui
