#include "gui/page.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace corvanet::gui {

Page::Page(PageHost& host)
    : host_(host), bind_(host), scroll_(new QScrollArea), content_(new QWidget) {
  scroll_->setWidget(content_);
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(scroll_);
  lockable_ = {content_};
}

void Page::SetLocked(bool locked) {
  // The page itself is the tab's to enable (QTabWidget::setTabEnabled), so only parts inside it are
  // locked; a disabled part keeps its children disabled whatever a render sets on them.
  for (QWidget* part : lockable_) part->setEnabled(!locked);
}

QLabel* Note(const QString& text) {
  auto* label = new QLabel(text);
  label->setWordWrap(true);
  return label;
}

QGroupBox* Group(const char* name, const QString& title, QLayout* content) {
  auto* frame = new QGroupBox(title);
  frame->setObjectName(name);
  frame->setLayout(content);
  return frame;
}

QPushButton* InertExitButton(const char* name) {
  auto* button = new QPushButton("Exit");
  button->setObjectName(name);
  button->setEnabled(false);
  return button;
}

void Page::ShowWhole(QWidget* widget) {
  scroll_->ensureWidgetVisible(widget, 0, 0);
}

}  // namespace corvanet::gui
