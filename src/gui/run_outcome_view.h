#pragma once
// The result of the last download at the foot of the download page: the core's heading, the
// problems line and the run summary, on red when the run failed. Its size follows the window, not
// the text, so a long summary scrolls inside it instead of pushing the download button about.
#include <QGroupBox>
#include <QString>

#include "core/state/window_state.h"

class QTextBrowser;

namespace corvanet::gui {

class RunOutcomeView final : public QGroupBox {
  Q_OBJECT

 public:
  explicit RunOutcomeView(QWidget* parent = nullptr);
  void Render(const WindowState& state);
  // Only its least height: it grows with the room the page has, and a page that prefers more
  // than the window offers scrolls.
  QSize sizeHint() const override;

  bool failed() const { return failed_; }
  QString text() const;

 private:
  QTextBrowser* text_;
  QString shown_html_;
  bool failed_ = false;
};

}  // namespace corvanet::gui
